#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Tests stalwick-cluster, the steps of the workflow, with the real commands.

  steps_test.py CONVERT INSPECT ORD_SYNTH
"""

import fcntl
import hashlib
import json
import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from lab import WORKFLOW, Lab, Programs, wait_until

sys.path.insert(0, str(WORKFLOW))
sys.dont_write_bytecode = True

from stalwick_cluster.commands import Commands  # noqa: E402
from stalwick_cluster.resources import output_bytes, request_for  # noqa: E402
from stalwick_cluster.settings import SettingsError, load_settings  # noqa: E402
from stalwick_cluster.table import load_table  # noqa: E402
from stalwick_cluster.transfer import TransferError, copy_checked  # noqa: E402

PROGRAMS = Programs(*(os.path.abspath(path) for path in sys.argv[1:4]))
SHORT = ("-c", "32", "-s", "0.5")


class WithLab(unittest.TestCase):
    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.lab = Lab(PROGRAMS, Path(temporary.name) / "lab")

    def run_all(self, status: int = 0) -> str:
        run = self.lab.run("run")
        self.assertEqual(run.returncode, status, run.stderr)
        self.assertEqual(list(self.lab.results.glob("unfinished/*")), [])
        return run.stderr

    def report(self, status: int) -> dict[str, dict[str, str]]:
        run = self.lab.run("report")
        self.assertEqual(run.returncode, status, run.stdout + run.stderr)
        return self.lab.rows()

    def one(self) -> None:
        self.lab.make("a", *SHORT)
        self.lab.write_table("a.ord")


class Tables(WithLab):
    def load(self, *rows: str, header: str = "path") -> dict[str, object]:
        self.lab.write_table(*rows, header=header)
        return dict(load_table(self.lab.directory / "recordings.tsv"))

    def refuse(self, *rows: str, header: str = "path") -> str:
        with self.assertRaises(SettingsError) as caught:
            self.load(*rows, header=header)
        return str(caught.exception)

    def test_columns_are_found_by_name_between_tabs_or_commas(self) -> None:
        for separator in ("\t", ","):
            found = self.load(separator.join(["r07", "notes", "/d/a.ord"]),
                              header=separator.join(["name", "comment", "path"]))
            self.assertEqual([str(getattr(found["r07"], "path"))], ["/d/a.ord"])

    def test_recordings_of_one_name_are_refused_until_they_have_names(self) -> None:
        self.assertIn("line 3: day1 occurs twice", self.refuse("mon/day1.ord", "tue/day1.ord"))
        found = self.load("mon/day1.ord\tmon", "tue/day1.ord\ttue", header="path\tname")
        self.assertEqual(list(found), ["mon", "tue"])

    def test_tables_that_cannot_be_meant_are_refused(self) -> None:
        self.assertIn("no column path", self.refuse("a.ord", header="file"))
        self.assertIn("contains no recording", self.refuse())
        self.assertIn("line 2: no path", self.refuse("\tx", header="path\tname"))
        self.assertIn("cannot name", self.refuse("a b.ord"))
        self.assertIn("cannot name", self.refuse("a.ord\t../b", header="path\tname"))
        self.assertIn("64 hexadecimal", self.refuse("a.ord\t12", header="path\tsha256"))


class SettingsFile(WithLab):
    def test_unknown_and_wrong_settings_are_refused(self) -> None:
        for key, value in (("recording", "x"), ("options", ["--salvage"]), ("pages", 1),
                           ("megabytes_per_second", 0), ("scratch", "$NOT_SET_HERE/x")):
            lab = Lab(PROGRAMS, self.lab.directory / key, {key: value})
            lab.write_table("a.ord")
            run = lab.run("count")
            self.assertEqual(run.returncode, 2, key)
            self.assertIn(key if key != "options" else "--salvage", run.stderr)
            self.assertEqual(run.stderr.count("\n"), 1)

    def test_relative_paths_start_from_its_directory(self) -> None:
        self.lab.settings.update(recordings="t.tsv", results="r", scratch="s", convert="./c")
        settings = load_settings(self.lab.write_settings())
        self.assertEqual([settings.recordings, settings.results, settings.scratch,
                          Path(settings.convert)],
                         [self.lab.directory / name for name in ("t.tsv", "r", "s", "c")])


class Run(WithLab):
    def test_each_recording_ends_where_it_belongs(self) -> None:
        self.lab.make("whole", *SHORT)
        self.lab.make_narrow("narrow", 8, "-s", "0.5")
        self.lab.make("damaged", *SHORT, "--drop-bytes", "90000:37")
        self.lab.make("cut", *SHORT, "--cut", "200001")
        self.lab.write_table("whole.ord", "narrow.ord", "damaged.ord", "cut.ord", "missing.ord")
        self.run_all()
        rows = self.report(status=1)
        self.assertEqual({name: row["result"] for name, row in rows.items()}, {
            "whole": "verified", "narrow": "verified", "damaged": "kept_apart",
            "cut": "verified", "missing": "failed"})
        self.assertEqual(rows["whole"]["reason"], "")
        self.assertIn("ends inside its", rows["cut"]["reason"])
        self.assertRegex(rows["damaged"]["reason"], "damaged from byte.*remains is in salvaged")
        self.assertIn("No such file", rows["missing"]["reason"])
        self.assertEqual(rows["narrow"]["channels"], 8)
        self.assertTrue((self.lab.results / "converted/narrow/CSC8.vcs").exists())
        self.assertFalse((self.lab.results / "converted/narrow/CSC9.vcs").exists())
        self.assertEqual(sorted(os.listdir(self.lab.results / "converted")),
                         ["cut", "narrow", "whole"])
        self.assertEqual(os.listdir(self.lab.results / "salvaged"), ["damaged"])
        table = (self.lab.results / "report.tsv").read_text().splitlines()
        self.assertEqual([line.split("\t")[2] for line in table[1:]],
                         [row["result"] for row in rows.values()])
        self.assertIn("No such file", (self.lab.results / "index.html").read_text())

    def test_outputs_are_those_of_the_command(self) -> None:
        self.one()
        self.run_all()
        subprocess.run([PROGRAMS.convert, "-q", "--all", str(self.lab.directory / "a.ord")],
                       check=True, stdout=subprocess.DEVNULL)
        for path in (self.lab.directory / "a").iterdir():
            made = (self.lab.results / "converted/a" / path.name).read_bytes()
            self.assertEqual(made[16384:], path.read_bytes()[16384:], path.name)

    def test_a_second_run_writes_no_output_again(self) -> None:
        self.lab.make("a", *SHORT)
        self.lab.make("b", *SHORT, "--drop-bytes", "90000:37")
        self.lab.write_table("a.ord", "b.ord")
        self.run_all()
        before = self.lab.outputs()
        self.assertGreater(len(before), 60)
        self.lab.settings["convert"] = "/bin/false"
        self.run_all()
        self.assertEqual(self.lab.outputs(), before)
        self.report(status=3)

    def test_a_recording_that_was_missing_is_converted_when_it_is_there(self) -> None:
        self.lab.write_table("a.ord")
        self.run_all()
        self.lab.make("a", *SHORT)
        self.run_all()
        self.assertEqual(self.report(status=0)["a"]["result"], "verified")

    def test_outputs_of_an_earlier_state_are_never_replaced(self) -> None:
        self.one()
        self.run_all()
        before = self.lab.outputs()
        self.lab.make("a", *SHORT, "--seed", "2")
        self.assertIn("move it away", self.run_all(status=1))
        self.assertEqual(self.lab.outputs(), before)
        self.assertEqual(self.report(status=1)["a"]["result"], "failed")

    def test_tasks_share_the_recordings(self) -> None:
        for name in "abc":
            self.lab.make(name, *SHORT)
        self.lab.write_table("a.ord", "b.ord", "c.ord")
        for task, made in ((0, ["a", "c"]), (1, ["a", "b", "c"])):
            self.assertEqual(self.lab.run("run", "--task", str(task), "--of", "2").returncode, 0)
            self.assertEqual(sorted(os.listdir(self.lab.results / "converted")), made)


class Alteration(WithLab):
    def alter(self, path: Path) -> None:
        """One byte, with the same modification time: only its value differs."""
        times = path.stat().st_atime_ns, path.stat().st_mtime_ns
        content = bytearray(path.read_bytes())
        content[len(content) // 2] ^= 1
        path.write_bytes(content)
        os.utime(path, ns=times)

    def test_an_output_altered_before_its_verification_is_reported(self) -> None:
        self.one()
        for step in ("survey", "convert"):
            self.assertEqual(self.lab.run(step, "a").returncode, 0)
        self.alter(self.lab.results / "converted/a/CSC7.vcs")
        self.run_all()
        row = self.report(status=1)["a"]
        self.assertEqual(row["result"], "altered")
        self.assertIn("CSC7.vcs: its SHA-256 is not that of its conversion", row["reason"])
        self.assertIn("CSC7.vcs: record", row["reason"])

    def test_an_output_altered_later_is_found_by_verifying_again(self) -> None:
        self.one()
        self.run_all()
        self.alter(self.lab.results / "converted/a/CSC7.vcs")
        self.assertEqual(self.lab.run("verify", "a").returncode, 0)
        self.assertEqual(self.report(status=1)["a"]["result"], "altered")

    def test_the_manifest_finds_what_was_altered_later(self) -> None:
        self.one()
        self.run_all()
        check = ["sha256sum", "--check", "--quiet", "manifests/converted-a.sha256"]
        self.assertEqual(subprocess.run(check, cwd=self.lab.results, check=False).returncode, 0)
        self.alter(self.lab.results / "converted/a/Events.vev")
        found = subprocess.run(check, cwd=self.lab.results, check=False, capture_output=True,
                               text=True)
        self.assertIn("converted/a/Events.vev: FAILED", found.stdout)

    def test_a_recording_altered_on_its_way_to_the_cluster_is_refused(self) -> None:
        path = self.lab.make("a", *SHORT)
        sent = hashlib.sha256(path.read_bytes()).hexdigest()
        self.lab.write_table(f"a.ord\t{sent}", header="path\tsha256")
        self.alter(path)
        self.run_all(status=1)
        self.assertIn("not that of the table", self.report(status=1)["a"]["reason"])
        self.assertEqual(self.lab.outputs(), {})
        self.alter(path)
        self.run_all()
        self.report(status=0)

    def test_a_copy_that_differs_from_its_checksum_is_refused(self) -> None:
        source = self.lab.directory / "source"
        source.mkdir()
        (source / "x").write_bytes(b"abc" * 1000)
        outputs = [{"name": "x", "bytes": 3000,
                    "sha256": hashlib.sha256(b"abc" * 1000).hexdigest()}]
        copy_checked(outputs, source, self.lab.directory / "first", Commands())
        self.alter(source / "x")
        with self.assertRaises(TransferError):
            copy_checked(outputs, source, self.lab.directory / "second", Commands())

    def test_an_output_altered_between_scratch_and_results_is_never_put_in_place(self) -> None:
        self.one()
        wrapper = self.lab.directory / "altering.sh"
        wrapper.write_text('#!/bin/bash\n"$STALWICK_CONVERT" "$@" || exit\n'
                           'printf x | dd of="$(ls "$SCRATCH"/a.convert-*/out/a/CSC3.vcs)" bs=1 '
                           "seek=20000 conv=notrunc status=none\n")
        wrapper.chmod(0o755)
        os.environ["SCRATCH"] = str(self.lab.directory / "scratch")
        self.addCleanup(os.environ.pop, "SCRATCH")
        held = self.lab.settings["convert"]
        self.lab.settings.update(scratch="$SCRATCH", convert=str(wrapper))
        self.assertIn("CSC3.vcs: the copy's SHA-256 is not that of", self.run_all(status=1))
        self.assertEqual(self.lab.outputs(), {})
        self.lab.settings["convert"] = held
        self.run_all()
        self.report(status=0)
        self.assertEqual(os.listdir(os.environ["SCRATCH"]), [])


class Interruption(WithLab):
    def start_and_hold(self) -> "subprocess.Popen[str]":
        self.lab.make("a", "-c", "32", "-s", "10")
        self.lab.make("b", *SHORT)
        self.lab.write_table("a.ord", "b.ord")
        (self.lab.hold / "a").touch()
        started = self.lab.start("run")
        wait_until(lambda: self.lab.is_converting("a"), "the conversion of a")
        return started

    def finish(self) -> None:
        self.run_all()
        self.assertEqual(sorted(os.listdir(self.lab.results / "converted")), ["a", "b"])
        self.report(status=0)

    def test_sigterm_ends_the_conversion_and_the_next_run_takes_up_the_rest(self) -> None:
        started = self.start_and_hold()
        started.send_signal(signal.SIGTERM)
        _, errors = started.communicate(timeout=60)
        self.assertEqual(started.returncode, 143)
        self.assertIn("a: convert: canceled: canceled by SIGTERM", errors)
        self.assertEqual(list(self.lab.results.glob("unfinished/*")), [])
        rows = self.report(status=1)
        self.assertEqual([row["result"] for row in rows.values()], ["canceled", "not_begun"])
        self.finish()

    def test_a_killed_job_is_reported_and_its_recording_converted_once(self) -> None:
        started = self.start_and_hold()
        started.kill()
        started.wait(timeout=60)
        self.addCleanup(started.communicate)
        row = self.report(status=1)["a"]
        self.assertEqual(row["result"], "unfinished")
        self.assertIn("no end is recorded", row["reason"])
        # The conversion outlives its job here, and nobody may interfere with it.
        self.assertIn("a: survey: another job works on it", self.lab.run("run").stderr)
        os.kill(int((self.lab.hold / "a.pid").read_text()), signal.SIGKILL)
        wait_until(self.is_unlocked, "the end of the conversion")
        self.finish()

    def is_unlocked(self) -> bool:
        with (self.lab.results / "records/a/lock").open() as lock:
            try:
                fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError:
                return False
        return True

    def test_a_finished_conversion_of_a_killed_job_is_taken_up_by_its_report(self) -> None:
        self.one()
        wrapper = self.lab.directory / "last_word.sh"
        wrapper.write_text('#!/bin/bash\n"$STALWICK_CONVERT" "$@"\nkill -KILL $PPID\n')
        wrapper.chmod(0o755)
        self.lab.settings["convert"] = str(wrapper)
        self.assertEqual(self.lab.run("run").returncode, -signal.SIGKILL)
        attempt, = self.lab.results.glob("unfinished/*/out/a")
        inodes = {path.name: path.stat().st_ino for path in attempt.iterdir()}
        self.lab.settings["convert"] = "/bin/false"
        self.run_all()
        self.report(status=0)
        self.assertEqual({path.name: path.stat().st_ino
                          for path in (self.lab.results / "converted/a").iterdir()}, inodes)

    def test_a_full_disk_is_an_error_of_the_job_and_leaves_nothing(self) -> None:
        self.one()
        wrapper = self.lab.directory / "full.sh"
        wrapper.write_text('#!/bin/bash\nulimit -f 30\nexec "$STALWICK_CONVERT" "$@"\n')
        wrapper.chmod(0o755)
        held = self.lab.settings["convert"]
        self.lab.settings["convert"] = str(wrapper)
        self.assertIn("File too large", self.run_all(status=1))
        self.assertIn("File too large", self.report(status=1)["a"]["reason"])
        self.lab.settings["convert"] = held
        self.run_all()
        self.report(status=0)


class Page(WithLab):
    def test_a_page_is_made_while_the_recording_is_converted(self) -> None:
        self.one()
        self.assertEqual(self.lab.run("survey", "a").returncode, 0)
        with (self.lab.results / "records/a/lock").open() as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.assertEqual(self.lab.run("convert", "a").returncode, 1)
            self.assertEqual(self.lab.run("page", "a").returncode, 0)
        self.assertTrue((self.lab.results / "pages/a.html").is_file())

    def test_pages_that_cannot_be_made_hinder_nothing(self) -> None:
        self.lab.settings["pages"] = True
        self.one()
        self.lab.write_table("a.ord", "missing.ord")
        self.run_all()
        rows = self.report(status=1)
        self.assertEqual([row["page"] for row in rows.values()], ["pages/a.html", ""])
        self.assertEqual(rows["a"]["result"], "verified")


class Resources(WithLab):
    def test_the_estimated_outputs_are_those_of_the_survey(self) -> None:
        path = self.lab.make("a", "-c", "64", "-s", "20", "--all")
        info = json.loads(subprocess.run([PROGRAMS.inspect, "info", "--json", str(path)],
                                         check=True, capture_output=True).stdout)
        quick = json.loads(subprocess.run([PROGRAMS.inspect, "info", "--quick", "--json",
                                           str(path)], check=True, capture_output=True).stdout)
        settings = load_settings(self.lab.write_settings())
        actual = sum(output["bytes"] for output in info["outputs"])
        for document in (info, quick):
            self.assertAlmostEqual(output_bytes(document, settings) / actual, 1, delta=0.02)
        once = request_for(["convert"], info, settings)
        again = request_for(["convert"], info, settings, attempt=2)
        self.assertEqual((again.memory_mb, again.minutes), (2 * once.memory_mb, 2 * once.minutes))
        self.assertEqual(request_for(["survey"], {"bytes": 60e9}, settings).minutes, 21)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
