#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Measures the Python package on a synthetic recording:

bench/python.py BUILD [SECONDS]      256 channels; SECONDS is 60 if not given

Needs room for 51 MB per second in TMPDIR, all of it in the page cache; a directory in memory
leaves the disk out. Runs everything once in each of seven rounds; prints the medians of wall time
and of processor time, which all threads add to. Every result is compared before it is timed.
"""

import statistics
import subprocess
import sys
import tempfile
import time
import tracemalloc
from collections.abc import Callable
from pathlib import Path

import numpy as np

build = Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else sys.exit(__doc__)
sys.path.insert(0, str(build / "python"))

import stalwick  # noqa: E402

ROUNDS = 7
SECOND = 30000


def measure(actions: dict[str, Callable[[], object]]) -> dict[str, tuple[float, float]]:
    """Medians of wall and processor seconds of each action."""
    times: dict[str, list[tuple[float, float]]] = {name: [] for name in actions}
    for _ in range(ROUNDS):
        for name, action in actions.items():
            wall, processor = time.perf_counter(), time.process_time()
            action()
            spent = time.perf_counter() - wall, time.process_time() - processor
            times[name].append(spent)
    return {
        name: (statistics.median(w for w, _ in runs), statistics.median(p for _, p in runs))
        for name, runs in times.items()
    }


def open_and_count(directory: Path) -> None:
    with stalwick.open_session(directory) as session:
        assert session.num_samples > 0


def read_in_seconds(recording: stalwick.OrdRecording) -> None:
    for start in range(0, recording.num_samples, SECOND):
        recording.traces(None, start, min(start + SECOND, recording.num_samples))


def check(session: stalwick.Session, recording: stalwick.OrdRecording, target: Path) -> None:
    assert (recording.traces(None, 0, SECOND) == session.traces(None, 0, SECOND)).all()
    session.to_binary(target)
    flat = np.memmap(target, dtype="<i2", mode="r").reshape(session.num_samples, -1)
    for start in range(0, session.num_samples, 4 * SECOND):
        stop = min(start + 1000, session.num_samples)
        assert (flat[start:stop] == session.traces(None, start, stop)).all()


def memory_of(session: stalwick.Session, units: str) -> float:
    """The peak of memory relative to the size of the result."""
    tracemalloc.start()
    size = session.traces(None, 1000, 1000 + SECOND, units).nbytes
    peak = tracemalloc.get_traced_memory()[1] / size
    tracemalloc.stop()
    return peak


def report(directory: Path, path: Path) -> None:
    session, recording = stalwick.open_session(directory), stalwick.open_ord(path)
    target = directory / "flat.bin"
    check(session, recording, target)
    times = measure({
        "open_session": lambda: open_and_count(directory),
        "one second as int16": lambda: session.traces(None, 1000, 1000 + SECOND),
        "one second as uV": lambda: session.traces(None, 1000, 1000 + SECOND, "uV"),
        "to_binary": lambda: session.to_binary(target, overwrite=True),
        "open_ord": lambda: stalwick.open_ord(path),
        "traces of all of it": lambda: read_in_seconds(recording),
    })
    sizes = dict.fromkeys(("open_ord", "traces of all of it"), path.stat().st_size)
    sizes["to_binary"] = target.stat().st_size
    print(f"{'':22}{'wall':>12}{'processor':>14}")
    for name, (wall, processor) in times.items():
        line = f"{name:22}{1000 * wall:9.1f} ms{1000 * processor:11.1f} ms"
        if name in sizes:
            size = sizes[name] / 1e9
            line += f"   {size / wall:.2f} GB/s, {size / processor:.2f} GB a processor second"
        print(line)
    decoding, reading = times["open_ord"], times["traces of all of it"]
    print(f"traces at {decoding[0] / reading[0]:.2f} of open_ord's speed by wall time, "
          f"{decoding[1] / reading[1]:.2f} by processor time")
    for units in ("int16", "uV"):
        print(f"memory for {units:5} {memory_of(session, units):.2f} times what is returned")


def main() -> None:
    seconds = sys.argv[2] if len(sys.argv) > 2 else "60"
    with tempfile.TemporaryDirectory() as name:
        path = Path(name) / "rat.ord"
        synth = [build / "tools/ord_synth/ord_synth", "-q", "-c", "256", "-s", seconds]
        subprocess.run([*synth, "-o", path], check=True)
        convert = [build / "cli/stalwick-convert", "-q", "--no-sync", path]
        subprocess.run(convert, check=True, stdout=subprocess.DEVNULL)
        report(path.with_suffix(""), path)


main()
