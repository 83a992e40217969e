#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""What a report has for each recording, compared with the outputs."""

import os
import signal
import subprocess

from report_scene import CONVERT, VALIDATOR, ReportTest, limit_size, main, sha256sum, silence, wait_for

RECORD_BYTES = {".vcs": 1044, ".vev": 184}


class Report(ReportTest):
    def test_schema_refuses_a_report_that_lacks_or_changes_a_key(self):
        self.make("a.ord")
        document = self.report("a.ord")
        for key in document:
            self.assertFalse(VALIDATOR.is_valid({k: v for k, v in document.items() if k != key}))
        entry = document["recordings"][0]
        for key in entry:
            broken = {k: v for k, v in entry.items() if k != key}
            self.assertFalse(VALIDATOR.is_valid({**document, "recordings": [broken]}), key)
        for change in ({"gaps": [{"at_seconds": 1}]}, {"result": "fine"}, {"surplus": 1}):
            self.assertFalse(VALIDATOR.is_valid({**document, "recordings": [{**entry, **change}]}))

    def test_report_of_a_whole_recording_lists_every_output(self):
        self.make("a.ord", "--all")
        entry = self.report("--all", "a.ord")["recordings"][0]
        self.assertEqual(entry["result"], "whole")
        self.assertEqual(entry["bytes"], os.path.getsize(self.path("a.ord")))
        self.assertEqual(entry["directory"], self.path("a"))
        self.assertEqual(sorted(o["name"] for o in entry["outputs"]),
                         sorted(os.listdir(self.path("a"))))
        for output in entry["outputs"]:
            size = os.path.getsize(self.path(os.path.join("a", output["name"])))
            self.assertEqual(output["bytes"], size)
            self.assertIsNone(output["sha256"])
            record = RECORD_BYTES.get(os.path.splitext(output["name"])[1])
            if record:
                self.assertEqual(output["records"], (size - 16384) / record)

    def test_report_agrees_with_the_survey_of_the_recording(self):
        self.make("a.ord", "--all", "--gap", "1:0.25")
        entry = self.report("--all", "a.ord")["recordings"][0]
        survey = self.inspect("a.ord")
        self.assertEqual([gap["missing_samples"] for gap in entry["gaps"]], [7500])
        for key in ("packets", "missing_samples", "gap_seconds",
                    "measured_rate", "drift_ppm", "repeated_timestamps", "short_steps", "bytes"):
            self.assertEqual(entry[key], survey[key], key)
        # By the header's rate here, by the measured one there.
        self.assertAlmostEqual(entry["duration_seconds"], survey["duration_seconds"], places=6)
        self.assertEqual(entry["gaps"], survey["gaps"])
        self.assertIsNone(entry["damage"])
        sizes = {output["name"]: (output["records"], output["bytes"])
                 for output in survey["outputs"]}
        self.assertEqual({output["name"]: (output["records"], output["bytes"])
                          for output in entry["outputs"]}, sizes)

    def test_report_of_a_recording_without_timestamps_has_no_gaps(self):
        self.make("a.ord", "--file-version", "1.0")
        entry = self.report("a.ord")["recordings"][0]
        self.assertIsNone(entry["gaps"])
        self.assertAlmostEqual(entry["duration_seconds"], 2, places=2)

    def test_report_has_the_time_of_the_last_change_to_the_microsecond(self):
        self.make("a.ord")
        os.utime(self.path("a.ord"), ns=(0, 1_700_000_000_123_456_000))
        entry = self.report("a.ord")["recordings"][0]
        self.assertEqual(entry["modified"], "2023-11-14T22:13:20.123456Z")

    def test_checksums_are_those_of_sha256sum(self):
        self.make("a.ord", "--all")
        entry = self.report("--checksum", "--all", "a.ord")["recordings"][0]
        self.assertEqual(entry["sha256"], sha256sum(self.path("a.ord")))
        self.assertGreater(len(entry["outputs"]), 40)
        for output in entry["outputs"]:
            self.assertEqual(output["sha256"], sha256sum(self.path("a/" + output["name"])))

    def test_report_of_a_damaged_recording_has_its_losses(self):
        self.make("a.ord")
        with open(self.path("a.ord"), "ab") as file:
            file.write(b"\xee" * 300)
        document = self.report("a.ord", status=3)
        entry = document["recordings"][0]
        self.assertEqual(entry["result"], "with_losses")
        self.assertEqual(len(entry["losses"]), 1)
        self.assertIn("300 trailing bytes", entry["losses"][0])
        self.assertEqual(entry["details"], [])

    def test_report_of_a_salvaged_recording_has_each_stretch_that_was_left_out(self):
        self.make("a.ord", "--channels", "64", "--gap", "1:0.25", "--insert", "500000:300",
                  "--drop-bytes", "900000:70")
        document = self.report("--salvage", "a.ord", status=3)
        self.assertTrue(document["options"]["salvage"])
        entry = document["recordings"][0]
        survey = self.inspect("a.ord")
        self.assertEqual(len(survey["damage"]), 2)
        self.assertEqual(entry["damage"], survey["damage"])
        self.assertEqual(entry["gaps"], survey["gaps"])
        self.make("old.ord", "--insert", "500000:300", "--file-version", "1.0")
        entry = self.report("--salvage", "old.ord", status=3)["recordings"][0]
        self.assertEqual(len(entry["damage"]), 1)
        stretch = entry["damage"][0]
        self.assertLess(stretch["position"], 500000)
        self.assertGreaterEqual(stretch["position"] + stretch["bytes"], 500300)
        self.assertIsNone(stretch["missing_samples"])
        self.make("b.ord")
        document = self.report("--salvage", "b.ord")
        self.assertEqual(document["recordings"][0]["damage"], [])
        self.assertFalse(self.report("b.ord")["options"]["salvage"])

    def test_report_of_failed_and_not_begun_recordings(self):
        self.make("a.ord")
        self.make("c.ord")
        document = self.report("--checksum", "-j", "1", "a.ord", "missing.ord", "c.ord", status=1)
        self.assertEqual([entry["result"] for entry in document["recordings"]],
                         ["whole", "failed", "not_begun"])
        failed, skipped = document["recordings"][1:]
        self.assertEqual(failed["outputs"], [])
        self.assertIsNone(failed["sha256"])
        self.assertIn("No such file", failed["details"][0]["text"])
        self.assertIsNone(skipped["status"])
        self.assertTrue(document["status"].startswith("Processing failed"), document["status"])

    def test_report_of_an_output_that_could_not_be_written_has_its_real_size(self):
        self.make("a.ord", "--all")
        limit = 40_000
        document = self.report("--raw", "a.ord", status=1, preexec_fn=lambda: limit_size(limit))
        entry = document["recordings"][0]
        self.assertEqual(entry["result"], "failed")
        self.assertIn("incomplete", [detail["kind"] for detail in entry["details"]])
        for output in entry["outputs"]:
            self.assertEqual(output["bytes"],
                             os.path.getsize(self.path("a/" + output["name"])))
            self.assertLessEqual(output["bytes"], limit)

    def test_report_of_a_canceled_run_has_the_result_of_each_recording(self):
        self.make("a.ord")
        os.mkfifo(self.path("b.ord"))
        run = subprocess.Popen([CONVERT, "--report", "report.json", "-j", "1", "--checksum",
                                "a.ord", "b.ord"], cwd=self.directory, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
        with open(self.path("b.ord"), "wb") as pipe, open(self.path("a.ord"), "rb") as recording:
            data = recording.read()
            pipe.write(data[:len(data) // 2])
            pipe.flush()
            wait_for(lambda: os.path.exists(self.path("b/Events.vev")))
            run.send_signal(signal.SIGTERM)
            try:
                # Packets continue until the command no longer takes them.
                pipe.write(data[len(data) // 2:])
                while run.poll() is None:
                    pipe.write(data[16384:])
                    pipe.flush()
            except BrokenPipeError:
                pass
            self.assertEqual(run.wait(), 143)
            silence(pipe)
        document = self.load()
        self.assertEqual(document["exit_status"], 143)
        self.assertEqual([entry["result"] for entry in document["recordings"]],
                         ["whole", "canceled"])
        self.assertEqual(document["status"], "Data processing canceled.")
        self.assertIsNone(document["recordings"][1]["sha256"])

    def test_killed_run_leaves_no_report(self):
        self.make("a.ord")
        os.mkfifo(self.path("b.ord"))
        run = subprocess.Popen([CONVERT, "--report", "report.json", "-j", "1", "a.ord", "b.ord"],
                               cwd=self.directory, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
        with open(self.path("b.ord"), "wb"):  # open: a.ord is done and the command waits for b.ord
            run.kill()
            run.wait()
        self.assertTrue(os.path.exists(self.path("a/Events.vev")))
        self.assertEqual(sorted(os.listdir(self.directory)), ["a", "a.ord", "b", "b.ord"])

    def test_checksum_needs_a_report(self):
        self.make("a.ord")
        run = self.run_convert("--checksum", "a.ord", status=2)
        self.assertIn(b"--checksum needs --report FILE.json", run.stderr)
        self.run_convert("--report", "", "a.ord", status=2)

    def convert_while_an_output_vanishes(self, standard_output):
        """Converts a.ord, and b.ord without its CSC7.vcs; returns the lines on standard error."""
        os.mkfifo(self.path("b.ord"))
        self.make("a.ord")
        run = subprocess.Popen([CONVERT, "--report", "report.json", "-j", "2", "--checksum",
                                "-k", "a.ord", "b.ord"], cwd=self.directory,
                               stdout=standard_output, stderr=subprocess.PIPE)
        with open(self.path("b.ord"), "wb") as pipe, open(self.path("a.ord"), "rb") as recording:
            pipe.write(recording.read())
            pipe.flush()
            wait_for(lambda: os.path.exists(self.path("b/CSC7.vcs")))
            os.rename(self.path("b/CSC7.vcs"), self.path("moved"))
        error = run.communicate()[1].decode()
        self.assertEqual(run.returncode, 1)
        return error

    def test_output_that_vanished_is_a_failure_of_its_checksum(self):
        # A recording that changes after its conversion has no checksum either.
        error = self.convert_while_an_output_vanishes(subprocess.DEVNULL)
        self.assertIn("CSC7.vcs: no SHA-256: No such file or directory", error)
        outputs = {o["name"]: o for o in self.load()["recordings"][1]["outputs"]}
        self.assertIsNone(outputs["CSC7.vcs"]["sha256"])
        self.assertEqual(outputs["CSC7.vcs"]["bytes"], 0)
        self.assertEqual(outputs["CSC8.vcs"]["sha256"], sha256sum(self.path("b/CSC8.vcs")))

    def test_failed_checksum_is_reported_even_if_the_status_cannot_be_printed(self):
        with open("/dev/full", "wb") as full:
            error = self.convert_while_an_output_vanishes(full)
        self.assertIn("cannot write to standard output", error)
        self.assertIn("CSC7.vcs: no SHA-256", error)


if __name__ == "__main__":
    main()
