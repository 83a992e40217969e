#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""The file of a report: earlier runs, links, names that are refused, and --skip-converted."""

import json
import os

from report_scene import ReportTest, limit_size, main


class ReportFile(ReportTest):
    def test_skipped_recording_has_its_outputs(self):
        self.make("a.ord")
        first = self.report("--checksum", "a.ord")["recordings"][0]
        second = self.report("--checksum", "--skip-converted", "a.ord")["recordings"][0]
        self.assertEqual(second["result"], "passed_over")
        by_name = {output["name"]: output for output in first["outputs"]}
        self.assertEqual({output["name"]: output for output in second["outputs"]}, by_name)
        self.assertEqual(second["sha256"], first["sha256"])
        self.assertIsNone(second["packets"])

    def skip(self, *arguments, status=0):
        run = self.run_convert("--report", "report.json", "--skip-converted", *arguments,
                               status=status)
        self.load()
        return run.stderr.decode()

    def test_what_matches_the_report_of_an_earlier_run_is_skipped_without_being_read(self):
        self.make("a.ord", "--all")
        self.report("--all", "a.ord")
        # A byte of a packet: only reading would detect it.
        stat = os.stat(self.path("a.ord"))
        with open(self.path("a.ord"), "r+b") as file:
            file.seek(16384 + 50_000)
            file.write(b"\xee" * 5000)
        os.utime(self.path("a.ord"), ns=(stat.st_atime_ns, stat.st_mtime_ns))
        as_reported = "skipped, it and its outputs match the report"
        self.assertIn(as_reported, self.skip("--all", "a.ord"))
        self.assertIn(as_reported, self.skip("a.ord"))  # from the report of the previous run
        self.assertEqual(self.load()["recordings"][0]["result"], "passed_over")
        os.utime(self.path("a.ord"), ns=(stat.st_atime_ns, stat.st_mtime_ns + 1000))
        self.assertNotIn("skipped", self.skip("a.ord", status=1))

    def test_what_differs_from_the_report_of_an_earlier_run_is_read(self):
        self.make("a.ord", "--all", "--channels", "32")
        reads = "skipped, its outputs are whole"
        first = self.report("a.ord")
        saved = json.dumps(first)

        def put_report(text):
            with open(self.path("report.json"), "w", encoding="utf-8") as file:
                file.write(text)

        def changed(**changes):
            entry = {**first["recordings"][0], **changes}
            return json.dumps({**first, "recordings": [entry]}, indent=2)

        for name, text in (
                ("another size", changed(bytes=first["recordings"][0]["bytes"] + 1)),
                ("another directory", changed(directory="/elsewhere")),
                ("another path", changed(path="/elsewhere/a.ord")),
                ("no time of change", changed(modified=None)),
                ("not whole", changed(result="with_losses")),
                ("an output less", changed(outputs=first["recordings"][0]["outputs"][1:])),
                ("not a list", changed(outputs=7)),
                ("not JSON", json.dumps(first, indent=2)[:-40])):
            with self.subTest(name):
                put_report(text)
                self.assertIn(reads, self.skip("a.ord"))
        os.remove(self.path("report.json"))
        self.assertIn(reads, self.skip("a.ord"))
        put_report(json.dumps(json.loads(saved), indent=2))
        # One more output than it has; then a shorter output.
        self.assertNotIn("skipped", self.skip("--raw", "a.ord"))
        put_report(json.dumps(json.loads(saved), indent=2))
        with open(self.path("a/CSC3.vcs"), "r+b") as file:
            file.truncate(16384 + 1044)
        for name in os.listdir(self.path("a")):
            if "_" in name or name == "RawData.vrd":
                os.remove(self.path("a/" + name))
        self.assertNotIn("skipped", self.skip("a.ord"))

    def test_report_of_an_earlier_run_is_replaced(self):
        self.make("a.ord")
        first = self.report("a.ord")
        second = self.report("-o", self.directory, "a.ord")
        self.assertNotEqual(first["started"], second["started"])
        self.assertIn("CSC1_01.vcs", [o["name"] for o in second["recordings"][0]["outputs"]])

    def test_link_to_a_report_stays_a_link(self):
        self.make("a.ord")
        self.report("a.ord")
        os.mkdir(self.path("kept"))
        os.rename(self.path("report.json"), self.path("kept/real.json"))
        os.symlink("kept/real.json", self.path("report.json"))
        self.report("a.ord")
        self.assertTrue(os.path.islink(self.path("report.json")))
        self.assertEqual(os.listdir(self.path("kept")), ["real.json"])

    def test_name_of_any_other_file_is_refused_before_anything_starts(self):
        self.make("a.ord")
        for name, contents in (("notes.json", b'{"mine": 1}\n'), ("empty.json", b"")):
            with open(self.path(name), "wb") as file:
                file.write(contents)
            run = self.run_convert("--report", name, "-o", "out", "a.ord", status=2)
            self.assertIn(b"is not a report of this program", run.stderr)
            with open(self.path(name), "rb") as file:
                self.assertEqual(file.read(), contents)
        self.run_convert("--report", "a.ord", "a.ord", status=2)
        self.run_convert("--report", ".", "a.ord", status=2)
        os.symlink("nowhere", self.path("link.json"))
        self.run_convert("--report", "link.json", "a.ord", status=2)
        self.assertEqual(sorted(os.listdir(self.directory)),
                         ["a.ord", "empty.json", "link.json", "notes.json"])

    def test_directory_that_does_not_exist_is_refused_before_anything_starts(self):
        self.make("a.ord")
        run = self.run_convert("--report", "none/report.json", "a.ord", status=2)
        self.assertIn(b"cannot write the report none/report.json: No such file", run.stderr)
        self.assertEqual(os.listdir(self.directory), ["a.ord"])

    def test_report_may_be_in_the_output_directory_that_the_run_creates(self):
        self.make("a.ord")
        self.run_convert("-o", "out", "--report", "out/report.json", "a.ord")
        self.load("out/report.json")

    def test_report_that_cannot_be_written_is_a_failure_and_leaves_the_old_one(self):
        self.make("a.ord", "--channels", "32")
        first = self.report("a.ord")
        # Every output is below the limit, the report is not.
        size = os.path.getsize(self.path("report.json"))
        largest = max(o["bytes"] for o in first["recordings"][0]["outputs"])
        many = []
        for i in range(1 + largest // size * 2):
            os.link(self.path("a.ord"), self.path(f"r{i}.ord"))
            many.append(f"r{i}.ord")
        run = self.run_convert("--report", "report.json", *many, status=1,
                               preexec_fn=lambda: limit_size(largest))
        self.assertIn(b"cannot write the report report.json: File too large", run.stderr)
        self.assertEqual(self.load(), first)
        self.assertEqual([name for name in os.listdir(self.directory) if "part" in name], [])


if __name__ == "__main__":
    main()
