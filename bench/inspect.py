#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Times stalwick-inspect against reading and decoding alone, in one interleaved run:

bench/inspect.py BUILD [SECONDS...]      256 channels; SECONDS are 60 and 120 if not given

Needs 7 MB a second in TMPDIR, read once before the first round. Medians of seven rounds.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROUNDS = 7


def run(command: list[str]) -> tuple[float, float, float]:
    """Wall seconds, CPU seconds and the peak of memory in MB."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"{command} ended with status {status}")
    seconds = time.perf_counter() - start
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def compare(build: Path, work: Path, length: int) -> None:
    recording = work / f"{length}s.ord"
    synth = build / "tools/ord_synth/ord_synth"
    subprocess.run([synth, "-q", "-c", "256", "-s", str(length), "-o", recording], check=True)
    inspect = [str(build / "cli/stalwick-inspect")]
    picture, page = str(work / "picture.png"), str(work / "page.html")
    one_second = ["--start", str(length * 0.75), "--seconds", "1"]
    commands = {
        "reading and decoding": [str(build / "bench/decode"), str(recording)],
        "info": [*inspect, "info", "--json", str(recording)],
        "report": [*inspect, "report", str(recording), "-o", page],
        "plot of all of it": [*inspect, "plot", str(recording), "-o", picture],
        "plot of one second": [*inspect, "plot", *one_second, str(recording), "-o", picture],
    }
    runs: dict[str, list[tuple[float, float, float]]] = {name: [] for name in commands}
    for _ in range(ROUNDS):
        for name, command in commands.items():
            runs[name].append(run(command))
    medians = {
        name: [statistics.median(column) for column in zip(*of_one)]
        for name, of_one in runs.items()
    }
    wall, cpu, _ = medians["reading and decoding"]
    size = recording.stat().st_size / 1e9
    print(f"\n| 256 channels, {length} s, {size:.2f} GB | wall | ratio | CPU | ratio | peak |")
    print("|---|---|---|---|---|---|")
    for name, (own_wall, own_cpu, peak) in medians.items():
        print(f"| {name} | {own_wall * 1e3:.0f} ms | {own_wall / wall:.2f} "
              f"| {own_cpu * 1e3:.0f} ms | {own_cpu / cpu:.2f} | {peak:.0f} MB |")
    recording.unlink()


def main() -> None:
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as work:
        for length in [int(text) for text in sys.argv[2:]] or [60, 120]:
            compare(Path(sys.argv[1]).resolve(), Path(work), length)


main()
