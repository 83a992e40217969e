"""Python and the C++ readers give the same numbers."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path

import numpy as np
import pytest

import stalwick
from test_converted import RECORDINGS, SWITCHES


def expected(session: stalwick.Session) -> bytes:
    parts = []
    for group in session.groups.values():
        traces, times = group.traces(), group.times().tobytes()
        for row in traces.T:
            parts += [row.tobytes(), times]
    events = session.events
    parts += [events.times.tobytes(), events.ttl.astype(np.uint16).tobytes()]
    if session.raw is not None:
        raw = session.raw
        parts += [raw.times().tobytes(), raw.ttl().astype(np.uint32).tobytes()]
        parts += [raw.traces().tobytes()]
    return b"".join(parts)


def check(directory: Path) -> None:
    session = stalwick.open_session(directory)
    paths = [file.path for group in session.groups.values() for file in group.files.values()]
    paths += [directory / "Events.vev"]
    if session.raw is not None:
        paths += [session.raw.path]
    done = subprocess.run([os.environ["DUMP_OUTPUTS"], *paths], capture_output=True)
    assert done.returncode == 0, done.stderr.decode()
    assert done.stdout == expected(session)


@pytest.mark.parametrize("recording", RECORDINGS)
def test_every_kind_of_recording(recording: str, synth, convert) -> None:
    check(convert(synth(*RECORDINGS[recording]), "--all"))


@pytest.mark.parametrize("switches", SWITCHES)
def test_every_switch(switches: str, synth, convert) -> None:
    check(convert(synth(*RECORDINGS["version 1.0"]), *SWITCHES[switches]))
