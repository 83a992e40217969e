# SPDX-License-Identifier: BSD-3-Clause

"""Python and the C++ readers return the same numbers."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path

import numpy as np
import pytest

import stalwick
from sets import RECORDINGS, SWITCHES, canceled, each_sample, is_incomplete, of_sample, salvaged


def expected(session: stalwick.Session) -> bytes:
    parts = []
    for group in session.groups.values():
        traces, times = group.traces(), group.times().tobytes()
        for row in traces.T:
            parts += [row.tobytes(), times]
        for file in group.short_files.values():
            parts += [file.traces().tobytes(), file.times().tobytes()]
    events = session.events
    parts += [events.times.tobytes(), events.ttl.astype(np.uint16).tobytes()]
    raw = session.raw
    if raw is not None and has_the_headers_channels(raw):
        parts += [raw.times().tobytes(), raw.ttl().astype(np.uint32).tobytes()]
        parts += [raw.traces().tobytes()]
    return b"".join(parts)


def check(directory: Path) -> None:
    session = stalwick.open_session(directory, allow_incomplete=is_incomplete(directory))
    paths = []
    for group in session.groups.values():
        paths += [file.path for file in [*group.files.values(), *group.short_files.values()]]
    paths += [directory / "Events.vev"]
    if session.raw is not None and has_the_headers_channels(session.raw):
        paths += [session.raw.path]
    elif session.raw is not None:
        assert b"RawData.vrd: it ends inside record" in dump([session.raw.path], status=1).stderr
    assert dump(paths).stdout == expected(session)


def has_the_headers_channels(raw: stalwick.RawFile) -> bool:
    """Whether its records are as long as the header says; the C++ reader accepts no others."""
    return raw.num_channels == raw.header_channels


def dump(paths: list[Path], status: int = 0) -> subprocess.CompletedProcess[bytes]:
    done = subprocess.run([os.environ["DUMP_OUTPUTS"], *paths], capture_output=True)
    assert done.returncode == status, done.stderr.decode()
    return done


@pytest.mark.parametrize("recording", RECORDINGS)
def test_every_kind_of_recording(recording: str, synth, convert) -> None:
    check(convert(synth(*RECORDINGS[recording]), "--all"))


@pytest.mark.parametrize("switches", SWITCHES)
def test_every_switch(switches: str, synth, convert) -> None:
    check(convert(synth(*RECORDINGS["version 1.0"]), *SWITCHES[switches]))


@pytest.mark.parametrize("cut", [1, 100, 5000])
def test_a_cut_recording(cut: int, synth, convert, tmp_path: Path) -> None:
    recording = tmp_path / "cut.ord"
    recording.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:-cut])
    check(convert(recording, "--all"))


def test_a_canceled_conversion(synth, tmp_path: Path) -> None:
    for directory in canceled(synth, tmp_path):
        check(directory)


@pytest.mark.parametrize("recording", ["version 2.0", "version 1.0"])
def test_a_salvaged_recording(recording: str, synth, convert, tmp_path: Path) -> None:
    check(salvaged(recording, synth, convert, tmp_path))


@each_sample
@pytest.mark.filterwarnings("ignore::stalwick.StalwickWarning")
def test_every_shared_sample(sample: Path, convert) -> None:
    check(of_sample(sample, convert))
