#!/usr/bin/env python3
"""Measures the memory that stalwick-convert takes: measure_memory.py STALWICK_CONVERT ORD_SYNTH [SECONDS]

Converts a recording of 256 channels with all outputs, one second and SECONDS (default 100) long,
and a few damaged ones. Prints the largest resident size of each and ends with status 1 when one is
above its limit."""
import os, subprocess, sys, tempfile
from pathlib import Path

MEGABYTE = 1e6


def peak_of(command):
    """The exit status and the largest resident size in bytes."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_maxrss * 1024


def measure(convert, name, recording, limit, outputs):
    status, peak = peak_of([convert, "--all", "--no-sync", "-o", str(outputs), str(recording)])
    verdict = "ok" if peak < limit else "ABOVE ITS LIMIT"
    print(f"{name}: {peak / MEGABYTE:.0f} MB of {limit / MEGABYTE:.0f} MB, "
          f"exit status {status}: {verdict}")
    return peak < limit


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    convert, synth = sys.argv[1:3]
    seconds = sys.argv[3] if len(sys.argv) == 4 else "100"
    held = True
    with tempfile.TemporaryDirectory() as name:
        directory = Path(name)
        for length, limit in (("1", 150e6), (seconds, 1.6e9)):
            recording = directory / f"wide{length}.ord"
            subprocess.run([synth, "--channels", "256", "--all", "--seconds", length, "--output",
                            str(recording)], check=True, stdout=subprocess.DEVNULL)
            held &= measure(convert, f"256 channels, {length} s", recording, limit, directory)
        bad = {"empty": b"", "one line": b"x" * 16384, "junk": os.urandom(1000000),
               "too many channels": b"\n-NumADChannels 4294967295\n-SamplingFrequency 1\n"
                                    b"-ADMaxValue 1\n-ADBitVolts 1\n-InputRange 1\n"
                                    b"-FileVersion 1.0\n"}
        for title, content in bad.items():
            recording = directory / "bad.ord"
            recording.write_bytes(content)
            held &= measure(convert, title, recording, 100e6, directory)
    sys.exit(0 if held else 1)


if __name__ == "__main__":
    main()
