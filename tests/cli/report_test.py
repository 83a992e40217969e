#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks the reports of stalwick-convert --report against their schema and against the outputs.

  report_test.py CONVERT INSPECT ORD_SYNTH DOCS_DIRECTORY
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import jsonschema

CONVERT, INSPECT, ORD_SYNTH, DOCS = map(os.path.abspath, sys.argv[1:5])
RECORD_BYTES = {".vcs": 1044, ".vev": 184}


def load_validator():
    directory = pathlib.Path(DOCS).resolve()
    schema = json.loads((directory / "report.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    resolver = jsonschema.RefResolver(base_uri=directory.as_uri() + "/", referrer=schema)
    return jsonschema.Draft202012Validator(schema, resolver=resolver)


VALIDATOR = load_validator()


def sha256sum(path):
    return subprocess.run(["sha256sum", path], capture_output=True, check=True,
                          text=True).stdout.split()[0]


class Report(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.directory = temporary.name

    def path(self, name):
        return os.path.join(self.directory, name)

    def make(self, name, *options):
        subprocess.run([ORD_SYNTH, "-q", "-s", "2", "-o", self.path(name), *options], check=True)
        return name

    def run_convert(self, *arguments, status=0, **others):
        run = subprocess.run([CONVERT, *arguments], cwd=self.directory, capture_output=True,
                             check=False, **others)
        self.assertEqual(run.returncode, status, run.stderr)
        return run

    def load(self, name="report.json"):
        with open(self.path(name), encoding="utf-8") as file:
            document = json.load(file)
        for error in VALIDATOR.iter_errors(document):
            self.fail(f"{list(error.path)}: {error.message}")
        return document

    def report(self, *arguments, status=0, **others):
        self.run_convert("--report", "report.json", *arguments, status=status, **others)
        document = self.load()
        self.assertEqual(document["exit_status"], status)
        self.assertEqual([name for name in os.listdir(self.directory) if "part" in name], [])
        return document

    def inspect(self, name, *options):
        run = subprocess.run([INSPECT, "info", "--json", self.path(name)], capture_output=True,
                             check=False)
        return json.loads(run.stdout)

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

    def test_report_of_a_recording_without_timestamps_knows_no_gaps(self):
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

    def test_report_of_a_canceled_run_says_how_far_it_came(self):
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

    def test_recording_that_is_passed_over_has_its_outputs(self):
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

    def test_what_the_report_of_an_earlier_run_has_is_passed_over_without_being_read(self):
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

    def test_what_differs_from_the_report_of_an_earlier_run_is_looked_at(self):
        self.make("a.ord", "--all", "--channels", "32")
        looked = "skipped, its outputs are whole"
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
                self.assertIn(looked, self.skip("a.ord"))
        os.remove(self.path("report.json"))
        self.assertIn(looked, self.skip("a.ord"))
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

    def test_report_may_stand_in_the_output_directory_that_the_run_creates(self):
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

    def test_checksum_needs_a_report(self):
        self.make("a.ord")
        run = self.run_convert("--checksum", "a.ord", status=2)
        self.assertIn(b"--checksum needs --report FILE.json", run.stderr)
        self.run_convert("--report", "", "a.ord", status=2)

    def test_output_that_vanished_is_a_failure_of_its_checksum(self):
        # A recording that changes after its conversion has no checksum either.
        os.mkfifo(self.path("b.ord"))
        self.make("a.ord")
        run = subprocess.Popen([CONVERT, "--report", "report.json", "-j", "2", "--checksum",
                                "-k", "a.ord", "b.ord"], cwd=self.directory,
                               stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        with open(self.path("b.ord"), "wb") as pipe, open(self.path("a.ord"), "rb") as recording:
            pipe.write(recording.read())
            pipe.flush()
            wait_for(lambda: os.path.exists(self.path("b/CSC7.vcs")))
            os.rename(self.path("b/CSC7.vcs"), self.path("moved"))
        error = run.communicate()[1].decode()
        self.assertEqual(run.returncode, 1)
        self.assertIn("CSC7.vcs: no SHA-256: No such file or directory", error)
        outputs = {o["name"]: o for o in self.load()["recordings"][1]["outputs"]}
        self.assertIsNone(outputs["CSC7.vcs"]["sha256"])
        self.assertEqual(outputs["CSC7.vcs"]["bytes"], 0)
        self.assertEqual(outputs["CSC8.vcs"]["sha256"], sha256sum(self.path("b/CSC8.vcs")))


def limit_size(size):
    import resource
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)


def silence(pipe):
    """Drops the data that closing a pipe without a reader would write."""
    try:
        pipe.flush()
    except BrokenPipeError:
        pass
    except ValueError:
        pass


def wait_for(condition):
    deadline = time.monotonic() + 60
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.01)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
