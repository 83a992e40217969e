#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""`stalwick-inspect verify` as a process, on outputs of stalwick-convert.

  verify_command_test.py INSPECT CONVERT ORD_SYNTH
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest

INSPECT, CONVERT, SYNTH = sys.argv[1:4]
HEADER = 16384


class VerifyCommand(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.addCleanup(self.temporary.cleanup)
        self.recording = self.path("rec.ord")
        subprocess.run([SYNTH, "-q", "-c", "32", "-s", "0.3", "--all", "-o", self.recording], check=True)
        self.convert()

    def path(self, *names):
        return os.path.join(self.temporary.name, *names)

    def convert(self, *options):
        subprocess.run([CONVERT, "-q", "--no-sync", "--all", *options, self.recording],
                       check=True, stdout=subprocess.DEVNULL)

    def verify(self, *arguments):
        run = subprocess.run([INSPECT, "verify", *arguments], capture_output=True, text=True)
        return run.returncode, run.stdout.splitlines(), run.stderr.splitlines()

    def change(self, name, at):
        with open(self.path("rec", name), "r+b") as file:
            file.seek(at)
            byte = file.read(1)[0]
            file.seek(at)
            file.write(bytes([byte ^ 4]))

    def test_whole_sets_have_one_line_each(self):
        self.convert()
        status, lines, errors = self.verify(self.path("rec"), "--against", self.recording)
        self.assertEqual((status, len(lines), errors), (0, 2, []), lines)
        for line in lines:
            self.assertRegex(line, "whole, everything that .*rec.ord gives$")
        status, lines, errors = self.verify(self.path("rec"))
        self.assertEqual((status, len(lines), errors), (0, 2, []), lines)
        for line in lines:
            self.assertTrue(line.endswith(": whole, not compared with the recording (--against)"))

    def test_file_that_was_not_closed_is_one_line_without_a_place(self):
        name = self.path("rec", "CSC3.vcs")
        with open(name, "r+b") as file:
            text = file.read(HEADER).rstrip(b"\0")
            changed = re.sub(rb"-TimeClosed [^\r]*", b"-TimeClosed File was not closed properly", text)
            self.assertNotEqual(changed, text)
            file.seek(0)
            file.write(changed.ljust(HEADER, b"\0"))
        status, lines, errors = self.verify(self.path("rec"))
        self.assertEqual((status, errors), (1, []))
        self.assertEqual(lines[0], f"{name}: it was not closed, its end may be missing; convert the recording again, "
                                   "unless a conversion is still writing it")

    def test_name_in_brackets_is_a_name(self):
        recording, outputs = self.path("[a]"), self.path("[rec]")
        os.rename(self.recording, recording)
        os.rename(self.path("rec"), outputs)
        for arguments in (["info", "[a]"], ["info", "--quick", "[a]", "[a]"],
                          ["verify", "[rec]"], ["verify", "--against", "[a]", "[rec]"]):
            run = subprocess.run([INSPECT, *arguments], capture_output=True, text=True,
                                 cwd=self.temporary.name)
            self.assertEqual((run.returncode, run.stderr), (0, ""), arguments)

    def test_finding_is_a_line_with_file_record_and_byte(self):
        self.change("RawData.vrd", HEADER + 7 * 200 + 100)
        status, lines, errors = self.verify(self.path("rec"))
        self.assertEqual((status, len(lines), errors), (1, 2, []), lines)
        self.assertTrue(lines[0].startswith(self.path("rec", "RawData.vrd: record 7 at byte ")))
        self.assertTrue(lines[1].endswith(": 1 finding"), lines)

        self.change("CSC3.vcs", HEADER + 2 * 1044 + 20 + 2 * 5)
        status, lines, errors = self.verify("--against", self.recording, self.path("rec"))
        self.assertEqual((status, len(lines), errors), (1, 3, []), lines)
        place = f"CSC3.vcs: record 2 at byte {HEADER + 2 * 1044 + 30}: its sample 5 is "
        self.assertTrue(any(place in line for line in lines), lines)

    def test_one_directory_that_is_not_whole_does_not_hide_the_others(self):
        status, lines, errors = self.verify(self.path("none"), self.path("rec"))
        self.assertEqual((status, len(lines), len(errors)), (1, 1, 1))
        self.assertIn("none: not verified: ", errors[0])

    def salvage(self, version):
        """A recording with three damaged places, and its outputs with --salvage."""
        name = self.path(f"damaged{version}.ord")
        subprocess.run([SYNTH, "-q", "-c", "32", "-s", "0.6", "--all", "--file-version", version,
                        "--utc-offset", "77", "--insert", "100000:300", "--drop-bytes", "200000:70",
                        "--insert", "300000:9000", "-o", name], check=True)
        run = subprocess.run([CONVERT, "-q", "--no-sync", "--all", "--salvage", name], check=False,
                             capture_output=True)
        self.assertEqual(run.returncode, 3, run.stderr)
        return name, self.path(f"damaged{version}")

    def test_salvaged_sets_are_whole_if_they_are_called_so(self):
        for version in ("2.0", "1.0"):
            recording, outputs = self.salvage(version)
            for arguments in (["--salvaged", outputs],
                              ["--salvaged", "--against", recording, outputs]):
                status, lines, errors = self.verify(*arguments)
                self.assertEqual((status, errors), (0, []), lines)
                self.assertIn(": whole", lines[-1])
            status, lines, _ = self.verify(outputs)
            self.assertEqual(status, 1)
            self.assertIn("which no record but the last may have", lines[0])
            status, lines, _ = self.verify("--against", recording, outputs)
            self.assertEqual(status, 1)

    def test_changed_byte_of_a_salvaged_set_is_found(self):
        recording, outputs = self.salvage("2.0")
        name = os.path.join(outputs, "CSC7.vcs")
        size = os.path.getsize(name)
        last = size - 1044  # that record follows every skipped stretch
        for at in (last, last + 8, last + 16, last + 20):
            with open(name, "r+b") as file:
                file.seek(at)
                byte = file.read(1)[0]
                file.seek(at)
                file.write(bytes([byte ^ 4]))
                file.flush()
                status, lines, _ = self.verify("--salvaged", "--against", recording, outputs)
                self.assertEqual((status, len(lines)), (1, 2), lines)
                self.assertIn(f"CSC7.vcs: record {(size - HEADER) // 1044 - 1} at byte {at}",
                              lines[0])
                file.seek(at)
                file.write(bytes([byte]))
        status, lines, _ = self.verify("--salvaged", "--against", recording, outputs)
        self.assertEqual(status, 0, lines)

    def test_directory_without_outputs_is_not_whole(self):
        status, lines, errors = self.verify(self.temporary.name)
        self.assertEqual((status, lines), (1, []))
        self.assertIn("there are no outputs", errors[0])

    def test_recording_that_cannot_be_read_is_said(self):
        status, lines, errors = self.verify("--against", self.path("none.ord"), self.path("rec"))
        self.assertEqual((status, lines), (1, []))
        self.assertIn("none.ord: not compared with: ", errors[0])

    def test_wrong_usage_is_named_first(self):
        for arguments, what in (([], "no DIRECTORY was given"), (["--bogus", "x"], "--bogus"),
                                (["--against", "", "x"], "--against"),
                                (["--against", "a", "--against", "b", "x"], "only once")):
            status, lines, errors = self.verify(*arguments)
            self.assertEqual((status, lines, len(errors)), (2, [], 1), arguments)
            self.assertIn(what, errors[0])

    def test_output_that_cannot_be_printed_is_a_failure(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            run = subprocess.run([INSPECT, "verify", self.path("rec")], stdout=full,
                                 stderr=subprocess.DEVNULL)
        self.assertEqual(run.returncode, 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
