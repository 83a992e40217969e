#!/usr/bin/python3
"""Measures the Python package on a recording made for the purpose:

bench/python.py BUILD [SECONDS]      256 channels; SECONDS is 60 if not given

Needs room for 22 MB a second, half of it in the page cache. Times are the best of five.
"""

import subprocess
import sys
import tempfile
import time
import tracemalloc
from collections.abc import Callable
from pathlib import Path

build = Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else sys.exit(__doc__)
sys.path.insert(0, str(build / "python"))

import stalwick  # noqa: E402


def best(action: Callable[[], object]) -> float:
    seconds = []
    for _ in range(5):
        start = time.perf_counter()
        action()
        seconds.append(time.perf_counter() - start)
    return min(seconds)


def open_and_count(directory: Path) -> None:
    with stalwick.open_session(directory) as session:
        assert session.num_samples > 0


def measure_session(directory: Path) -> None:
    print(f"open_session              {1000 * best(lambda: open_and_count(directory)):8.1f} ms")
    with stalwick.open_session(directory) as session:
        for units in ("int16", "uV"):
            seconds = best(lambda: session.traces(None, 1000, 31000, units))
            tracemalloc.start()
            size = session.traces(None, 1000, 31000, units).nbytes
            memory = tracemalloc.get_traced_memory()[1] / size
            tracemalloc.stop()
            print(
                f"one second as {units:6}      {1000 * seconds:8.1f} ms, "
                f"memory {memory:.2f} times what is returned"
            )
        target = directory / "flat.bin"
        seconds = best(lambda: session.to_binary(target, overwrite=True))
        print(f"to_binary                 {target.stat().st_size / seconds / 1e9:8.2f} GB/s")


def measure_recording(path: Path, directory: Path) -> None:
    decoding = best(lambda: stalwick.open_ord(path))
    recording = stalwick.open_ord(path)

    def read() -> None:
        for start in range(0, recording.num_samples, 30000):
            recording.traces(None, start, min(start + 30000, recording.num_samples))

    reading = best(read)
    with stalwick.open_session(directory) as session:
        assert (recording.traces(None, 0, 30000) == session.traces(None, 0, 30000)).all()
    size = path.stat().st_size / 1e9
    print(f"open_ord, decoding it all {size / decoding:8.2f} GB/s of recording")
    print(f"its traces                {size / reading:8.2f} GB/s, {decoding / reading:.2f} of that")


def main() -> None:
    seconds = sys.argv[2] if len(sys.argv) > 2 else "60"
    with tempfile.TemporaryDirectory() as name:
        path = Path(name) / "rat.ord"
        synth = [build / "tools/ord_synth/ord_synth", "-q", "-c", "256", "-s", seconds]
        subprocess.run([*synth, "-o", path], check=True)
        convert = [build / "cli/stalwick-convert", "-q", "--no-sync", path]
        subprocess.run(convert, check=True, stdout=subprocess.DEVNULL)
        measure_session(path.with_suffix(""))
        measure_recording(path, path.with_suffix(""))


main()
