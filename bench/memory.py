#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""The memory use of stalwick-convert: bench/memory.py BUILD_DIRECTORY [SECONDS]

Converts recordings of 256 channels with all outputs, one second and SECONDS (default 100) long, and
a few damaged ones, and prints the peak of each; none is below this script's own, about
15 MB. TMPDIR needs 60 MB for each of SECONDS. A conversion that ends with another exit status than
expected ends this script too."""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

DAMAGED = {
    "empty": b"",
    "one line": b"x" * 16384,
    "junk": os.urandom(1000000),
    "claims 4,294,967,295 channels": b"\n-NumADChannels 4294967295\n-SamplingFrequency 1\n"
                                     b"-ADMaxValue 1\n-ADBitVolts 1\n-InputRange 1\n"
                                     b"-FileVersion 1.0\n",
}


def peak_of(command):
    """The exit status and the largest resident size in MB."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_maxrss * 1024 / 1e6


def measure(convert, title, recording, expected):
    with tempfile.TemporaryDirectory(dir=recording.parent) as outputs:
        command = [convert, "--all", "--no-sync", "-o", outputs, recording]
        status, peak = peak_of(command)
    if status != expected:
        sys.exit(f"{title}: the command ended with status {status}")
    print(f"| {title} | {peak:.0f} MB |", flush=True)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    build = Path(sys.argv[1])
    convert, synth = build / "cli/stalwick-convert", build / "tools/ord_synth/ord_synth"
    seconds = sys.argv[2] if len(sys.argv) == 3 else "100"
    print("| recording, all outputs | peak memory |\n|---|---|")
    with tempfile.TemporaryDirectory() as name:
        recording = Path(name) / "measured.ord"
        for length in ("1", seconds):
            recording.unlink(missing_ok=True)
            subprocess.run([synth, "--quiet", "--channels", "256", "--all", "--seconds", length,
                            "--output", recording], check=True)
            measure(convert, f"256 channels, {length} s", recording, 0)
        for title, content in DAMAGED.items():
            recording.write_bytes(content)
            measure(convert, title, recording, 1)


main()
