#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Forty recordings through Snakemake's Slurm profile and through the array script.

  cluster_test.py BUILD

On a Slurm on this machine that the test starts and stops. In the first run one job is killed and
one exceeds its time limit; one recording is damaged, one cut and one missing. TMPDIR needs 2 GB."""

import contextlib
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from collections.abc import Callable
from pathlib import Path

from lab import WORKFLOW, Lab, Programs, wait_until
from slurm_on_this_machine import SlurmOnThisMachine

BUILD = Path(sys.argv[1] if len(sys.argv) > 1 else "build/release").resolve()
PROGRAMS = Programs.of_build(BUILD)
HELD = ("killed", "overtime")  # whole ones whose first conversion takes minutes
WHOLE = [f"r{number:02}" for number in range(35)]
SYNTH_CHANNELS = (32, 64, 128, 256)


def make_recordings(lab: Lab) -> None:
    for number, name in enumerate(WHOLE):
        channels = (8, 16, 24, *SYNTH_CHANNELS)[number % 7]
        options = ("-s", ("0.4", "0.8", "1.2")[number % 3], "--seed", str(number))
        if channels in SYNTH_CHANNELS:
            lab.make(name, "-c", str(channels), *options)
        else:
            lab.make_narrow(name, channels, *options)
    for name in HELD:
        lab.make(name, "-c", "32", "-s", "16")
    lab.make("damaged", "-c", "64", "--drop-bytes", "300000:77")
    lab.make("cut", "-c", "128", "--cut", "1000003")


class Cluster(unittest.TestCase):
    slurm: SlurmOnThisMachine
    recordings: Lab

    @classmethod
    def setUpClass(cls) -> None:
        directory = Path(tempfile.mkdtemp(prefix="stalwick-cluster."))
        cls.addClassCleanup(shutil.rmtree, directory)
        directory.chmod(0o755)
        cls.recordings = Lab(PROGRAMS, directory / "recordings")
        make_recordings(cls.recordings)
        cls.slurm = SlurmOnThisMachine(directory / "slurm")
        cls.enterClassContext(cls.slurm)

    def lab(self, name: str, **settings: object) -> Lab:
        lab = Lab(PROGRAMS, self.recordings.directory.parent / name, settings)
        lab.write_table(*(str(self.recordings.directory / f"{recording}.ord") for recording in
                          (*HELD, *WHOLE, "damaged", "cut", "missing")))
        lab.write_settings()
        for held in HELD:
            (lab.hold / held).touch()
        return lab

    def start(self, lab: Lab, *command: str) -> "subprocess.Popen[bytes]":
        log = (lab.directory / "log").open("ab")
        with log:
            process = subprocess.Popen(command, cwd=lab.directory, stdout=log, stderr=log,
                                       env={**lab.environment(), **self.slurm.environment})
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def end_both(self, lab: Lab, job_names: dict[str, str], goes_on: Callable[[], bool]) -> None:
        wait_until(lambda: all(map(lab.is_converting, HELD)) or not goes_on(),
                   "both conversions that last", 600)
        self.slurm.run("scontrol", "update", "job", self.job_of(job_names["overtime"]),
                       "TimeLimit=1")
        self.kill(self.job_of(job_names["killed"]))

    def job_of(self, name: str) -> str:
        """By its name and its place in an array."""
        jobs = [line.split()[0] for line in
                self.slurm.run("squeue", "-h", "-t", "R", "-o", "%A %j %K").splitlines()
                if line.split(maxsplit=1)[1] == name]
        self.assertEqual(len(jobs), 1, name)
        return jobs[0]

    def kill(self, job: str) -> None:
        """All processes of the job at once, as when its node runs out of memory."""
        listed = self.slurm.run("scontrol", "listpids", job, "worker").splitlines()[1:]
        pids = sorted({int(line.split()[0]) for line in listed if line.split()[1] == job})
        self.assertGreater(len(pids), 2)
        for pid in pids:  # Parents first, so that none can report what became of its child.
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL)

    def log_of(self, lab: Lab) -> str:
        return (lab.directory / "log").read_text()

    def check_end(self, lab: Lab) -> None:
        rows = lab.rows()
        self.assertEqual(len(rows), 40)
        self.assertEqual({name for name, row in rows.items() if row["result"] == "verified"},
                         {*WHOLE, *HELD, "cut"})
        self.assertIn("ends inside its", rows["cut"]["reason"])
        self.assertEqual(rows["damaged"]["result"], "kept_apart")
        self.assertRegex(rows["damaged"]["reason"], "damaged from byte.*remains is in salvaged")
        self.assertEqual(rows["missing"]["result"], "failed")
        self.assertIn("No such file", rows["missing"]["reason"])
        self.assertEqual({name.split("/")[1] for name in lab.outputs()
                          if name.startswith("converted/")}, {*WHOLE, *HELD, "cut"})
        for name, count in lab.conversions().items():
            if name != "missing":  # searched for in each run
                self.assertEqual(count, 2 if name in (*HELD, "damaged") else 1, name)
        check = subprocess.run("sha256sum --check --quiet manifests/*.sha256", shell=True,
                               cwd=lab.results, check=False)
        self.assertEqual(check.returncode, 0)
        self.assertEqual(list(lab.results.glob("unfinished/*")), [])

    def check_unchanged(self, before: dict[str, tuple[int, int, int]], lab: Lab) -> None:
        after = lab.outputs()
        self.assertGreater(len(before), 1000)
        self.assertEqual({name: after.get(name) for name in before}, before)

    def snakemake(self, lab: Lab, *options: str, profile: str = "slurm"
                  ) -> "subprocess.Popen[bytes]":
        # Restarts are left to the second run, so that it has something to continue.
        return self.start(lab, "snakemake", "--snakefile", str(WORKFLOW / "Snakefile"),
                          "--profile", str(WORKFLOW / "profiles" / profile),
                          "--restart-times", "0", "--max-status-checks-per-second", "20",
                          "--latency-wait", "10", *options)

    def test_local_profile_with_pages(self) -> None:
        lab = self.lab("local", pages=True)
        lab.write_table(*(str(self.recordings.directory / f"{name}.ord")
                          for name in ("r00", "damaged", "missing")))
        run = self.snakemake(lab, profile="local")
        self.assertEqual(run.wait(300), 0, self.log_of(lab))
        pages = {name: row["page"] for name, row in lab.rows().items()}
        self.assertEqual(pages, {"r00": "pages/r00.html", "damaged": "pages/damaged.html",
                                 "missing": ""})
        index = (lab.results / "index.html").read_text()
        for name in ("r00", "damaged"):
            self.assertIn(f'<a href="pages/{name}.html">{name}</a>', index)
            self.assertIn("</html>", (lab.results / f"pages/{name}.html").read_text())

    def test_snakemake_takes_braces_in_paths_as_they_are(self) -> None:
        for profile, results in (("local", "results"), ("local", "}r{"), ("slurm", "{name}")):
            lab = self.lab(f"{{lab}}-{profile}-{results}", results=results)
            recording = lab.directory / "{monday}/r00.ord"
            recording.parent.mkdir()
            recording.symlink_to(self.recordings.directory / "r00.ord")
            lab.write_table(str(recording))
            self.assertEqual(self.snakemake(lab, profile=profile).wait(300), 0, self.log_of(lab))
            self.assertEqual(lab.rows()["r00"]["result"], "verified")

    def test_snakemake(self) -> None:
        lab = self.lab("snakemake")
        first = self.snakemake(lab)
        self.end_both(lab, {name: f"convert.name={name} N/A" for name in HELD},
                      lambda: first.poll() is None)
        self.assertEqual(first.wait(900), 1, self.log_of(lab))
        rows = lab.rows()
        self.assertEqual(rows["killed"]["result"], "unfinished")
        self.assertEqual(rows["overtime"]["result"], "canceled")
        self.assertEqual({row["result"] for name, row in rows.items() if name in WHOLE},
                         {"verified"})
        before = lab.outputs()
        self.assertEqual(self.snakemake(lab).wait(900), 0, self.log_of(lab))
        self.check_end(lab)
        self.check_unchanged(before, lab)
        self.check_that_an_altered_byte_is_found(lab)

    def check_that_an_altered_byte_is_found(self, lab: Lab) -> None:
        output = lab.results / "converted/r03/CSC5.vcs"
        with output.open("r+b") as file:
            file.seek(20001)
            byte = file.read(1)[0]
            file.seek(20001)
            file.write(bytes([byte ^ 1]))
        again = self.snakemake(lab, "--force", "records/r03/verify.done")
        self.assertEqual(again.wait(900), 0, self.log_of(lab))
        row = lab.rows()["r03"]
        self.assertEqual(row["result"], "altered")
        self.assertIn("CSC5.vcs: its SHA-256 is not that", row["reason"])

    def submit(self, lab: Lab) -> None:
        submit = self.start(lab, str(WORKFLOW / "slurm/submit.sh"), "settings.toml", "20%10")
        self.assertEqual(submit.wait(120), 0, self.log_of(lab))

    def wait_for_jobs(self) -> None:
        wait_until(lambda: not self.slurm.has_jobs(), "the end of all jobs", 900)

    def test_array_script(self) -> None:
        lab = self.lab("array", scratch="scratch")
        lab.settings["scratch"] = str(lab.directory / "scratch")
        lab.write_settings()
        self.submit(lab)
        self.end_both(lab, {"killed": "stalwick 0", "overtime": "stalwick 1"},
                      self.slurm.has_jobs)
        self.wait_for_jobs()
        log = (lab.directory / "slurm-logs/task-1.log").read_text()
        self.assertIn("overtime: convert: canceled: canceled by SIGTERM", log)
        self.assertIn("in the queue again", log)
        rows = lab.rows()
        self.assertEqual(rows["killed"]["result"], "unfinished")
        # Its task was requeued, and continued with the rest.
        self.assertEqual(rows["overtime"]["result"], "verified")
        before = lab.outputs()
        self.submit(lab)
        self.wait_for_jobs()
        self.check_end(lab)
        self.check_unchanged(before, lab)
        self.assertEqual(os.listdir(lab.directory / "scratch"), [])


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("terminated"))  # with what it started
    started = time.monotonic()
    outcome = unittest.main(argv=[sys.argv[0], *sys.argv[2:]], exit=False, verbosity=2).result
    print(f"{time.monotonic() - started:.0f} s")
    sys.exit(not outcome.wasSuccessful())
