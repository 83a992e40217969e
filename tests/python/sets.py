# SPDX-License-Identifier: BSD-3-Clause

"""Recordings and sets of outputs for the tests of all readers."""

from __future__ import annotations

import os
import signal
import subprocess
import time
from collections.abc import Callable
from pathlib import Path
from typing import BinaryIO

import pytest

from output_files import HEADER_SIZE

RECORDINGS = {
    "version 2.0": ("--channels", "64", "--seconds", "1", "--all"),
    "version 1.0": ("--channels", "32", "--seconds", "1", "--all", "--file-version", "1.0"),
    "256 channels": ("--channels", "256", "--seconds", "0.3", "--per-sample-states"),
    "a mask": ("--channels", "128", "--seconds", "0.3", "--mask", "0-15,20"),
    "gaps": ("--channels", "32", "--seconds", "2", "--gap", "0.5:0.25", "--gap", "1.5:0.001"),
    "another rate": ("--channels", "32", "--seconds", "1", "--rate", "12345", "--base-imu"),
    "before 1970": ("--channels", "32", "--seconds", "0.2", "--utc-offset", "-9000000000000000"),
}
SWITCHES = {
    "every output": ("--all",),
    "channels alone": (),
    "sensors alone": ("--no-csc", "--base-imu", "--afe-imu", "--ultrasonic"),
    "channels and raw data": ("--raw",),
}

#: The shared recordings, if the environment names their directory.
SAMPLES = (
    sorted(Path(os.environ["STALWICK_SAMPLES"]).glob("*.ord"))
    if "STALWICK_SAMPLES" in os.environ
    else []
)
each_sample = pytest.mark.parametrize("sample", SAMPLES, ids=[path.stem for path in SAMPLES])

Synth = Callable[..., Path]
Convert = Callable[..., Path]


def canceled(synth: Synth, directory: Path) -> list[Path]:
    """The sets of a conversion that was canceled by SIGINT while it converted the first of two
    recordings: one ends in the middle, the other holds no data."""
    data = synth(*RECORDINGS["version 2.0"]).read_bytes()
    out = directory / "out"
    names = [directory / "first.ord", directory / "second.ord"]
    # A pipe: the conversion cannot be faster than its input.
    os.mkfifo(names[0])
    names[1].write_bytes(data)
    command = [os.environ["STALWICK_CONVERT"], "--no-sync", "--all", "-j1", "-o", out, *names]
    process = subprocess.Popen(
        command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
        # A shell's background job, which this may be, ignores it.
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
    )
    with open(names[0], "wb", buffering=0) as pipe:
        feed_until_canceled(process, pipe, data, out / "first" / "Events.vev")
    status = process.communicate()[0]
    assert (status, process.returncode) == ("Data processing canceled.\n", -signal.SIGINT)
    return [out / "first", out / "second"]


def feed_until_canceled(
    process: subprocess.Popen[str], pipe: BinaryIO, data: bytes, made: Path
) -> None:
    """Two thirds of the data; then SIGINT, and as much as the conversion needs to continue."""
    position = pipe.write(data[: len(data) * 2 // 3])
    while not made.exists():
        time.sleep(0.002)
    process.send_signal(signal.SIGINT)
    try:
        while process.poll() is None and position < len(data):
            position += pipe.write(data[position : position + 5000])
            time.sleep(0.002)
    except BrokenPipeError:
        pass


def salvaged(recording: str, synth: Synth, convert: Convert, directory: Path) -> Path:
    """The set of a recording that is damaged in two places."""
    data = bytearray(synth(*RECORDINGS[recording]).read_bytes())
    for place, length in ((300_000, 100), (600_000, 70_000)):
        data[place : place + length] = bytes(byte ^ 0xFF for byte in data[place : place + length])
    path = directory / "damaged.ord"
    path.write_bytes(data)
    return convert(path, "--all", "--salvage", statuses=(3,))


def of_sample(sample: Path, convert: Convert) -> Path:
    """The set of a shared recording; skips the test if the recording is refused."""
    directory = convert(sample, "--all", statuses=(0, 1, 3))
    if not directory.exists():
        pytest.skip("the recording is refused")
    return directory


def is_incomplete(directory: Path) -> bool:
    """Whether the conversion did not reach its end."""
    headers = (path.read_bytes()[:HEADER_SIZE] for path in directory.glob("*.vcs"))
    return any(b"File was not closed properly" in header for header in headers)


def packet_channels(recording: Path) -> int:
    """Channels that the recording's first packet describes; docs/ord-format.md."""
    flags = recording.read_bytes()[HEADER_SIZE + 1 : HEADER_SIZE + 2]
    return 32 << (flags[0] >> 6) if flags else 32
