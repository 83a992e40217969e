#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Recordings per minute by number of workers: bench/cluster.py BUILD [SECONDS [RECORDINGS]]

Each worker is stalwick-cluster bound to one core, as a task of the array, with survey,
conversion and verification. RECORDINGS (default 8) of 256 channels are SECONDS long (default 20)
and have all outputs, in TMPDIR, which needs 60 MB for each second of each recording. Also prints
the processor time and the largest memory of each step."""

import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

CLUSTER = Path(__file__).resolve().parent.parent / "workflow/stalwick-cluster"


def write_settings(directory, build):
    (directory / "settings.toml").write_text(
        f'convert = "{build}/cli/stalwick-convert"\ninspect = "{build}/cli/stalwick-inspect"\n'
        'options = ["--all"]\npages = false\n')


def make_recordings(directory, build, seconds, count):
    names = [f"r{number}.ord" for number in range(count)]
    for number, name in enumerate(names):
        subprocess.run([build / "tools/ord_synth/ord_synth", "-q", "--all", "-c", "256",
                        "-s", seconds, "--seed", str(number), "-o", directory / name], check=True)
    (directory / "recordings.tsv").write_text("\n".join(["path", *names]) + "\n")


def run_workers(directory, workers):
    """Seconds until the last one ended."""
    shutil.rmtree(directory / "results", ignore_errors=True)
    cores = sorted(os.sched_getaffinity(0))
    started = time.monotonic()
    running = [subprocess.Popen(["taskset", "--cpu-list", str(cores[task]), CLUSTER, "run",
                                 "--task", str(task), "--of", str(workers)],
                                cwd=directory, stderr=subprocess.DEVNULL)
               for task in range(workers)]
    if any([process.wait() for process in running]):
        sys.exit("a worker failed")
    return time.monotonic() - started


def measure_step(directory, step):
    process = subprocess.Popen([CLUSTER, step, "r0"], cwd=directory, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status:
        sys.exit(f"{step} failed")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024 / 1e6


def main():
    if not 2 <= len(sys.argv) <= 4:
        sys.exit(__doc__)
    build = Path(sys.argv[1]).resolve()
    seconds = sys.argv[2] if len(sys.argv) > 2 else "20"
    count = int(sys.argv[3]) if len(sys.argv) > 3 else 8
    with tempfile.TemporaryDirectory() as name:
        directory = Path(name)
        write_settings(directory, build)
        make_recordings(directory, build, seconds, count)
        print("| workers | recordings a minute |\n|---|---|")
        for workers in range(1, min(2, len(os.sched_getaffinity(0))) + 1):
            taken = run_workers(directory, workers)
            print(f"| {workers} | {count * 60 / taken:.1f} |", flush=True)
        shutil.rmtree(directory / "results")
        print("\n| step | processor time | largest memory |\n|---|---|---|")
        for step in ("survey", "convert", "verify"):
            cpu, memory = measure_step(directory, step)
            print(f"| {step} | {cpu:.2f} s | {memory:.0f} MB |", flush=True)


main()
