# SPDX-License-Identifier: BSD-3-Clause

"""The functions for MATLAB and Octave, run by Octave: the same numbers as the plain reader of
output_files.py finds in the same bytes, and errors for damage."""

from __future__ import annotations

import random
import shutil
import subprocess
from pathlib import Path

import numpy as np
import pytest

from output_files import AXES, channel_file, read_channel, read_events, read_raw, write
from sets import (
    RECORDINGS,
    SWITCHES,
    canceled,
    each_sample,
    is_incomplete,
    of_sample,
    packet_channels,
    salvaged,
)
from test_damage import CHANGES, damage_one_file, make_set

ROOT = Path(__file__).resolve().parents[2]
ORDER = [f"CSC{n}" for n in range(1, 257)]
ORDER += [f"{unit}_{axis}" for unit in ("Base", "AFE") for axis in AXES] + ["Ultrasonic"]


def octave(program: str) -> subprocess.CompletedProcess[str]:
    paths = f"addpath('{ROOT}/matlab'); addpath('{ROOT}/tests/matlab'); "
    command = ["octave-cli", "--no-gui", "--quiet", "--no-init-file", "--no-history"]
    done = subprocess.run([*command, "--eval", paths + program], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done


def read_sets(directories: list[Path], word: str = "whole") -> None:
    """Leaves DIRECTORY.found or DIRECTORY.error next to each."""
    names = directories[0].parent / "directories"
    names.write_text("".join(f"{word} {directory}\n" for directory in directories))
    octave(f"read_sets('{names}')")


def sibling(directory: Path, ending: str) -> Path:
    return directory.with_name(directory.name + ending)


def expected_bytes(directory: Path, raw_channels: int) -> bytes:
    """The expected output of read_sets.m, from the files' bytes."""
    parts = []
    for name in ORDER:
        path = directory / f"{name}.vcs"
        if path.exists():
            samples, times = read_channel(path.read_bytes())
            parts += [np.array(samples, "<i2").tobytes(), np.array(times, "<i8").tobytes()]
    events = read_events((directory / "Events.vev").read_bytes())
    parts += [np.array([t for t, _ in events], "<i8").tobytes(), bytes(v for _, v in events)]
    raw = directory / "RawData.vrd"
    if raw.exists():
        records = read_raw(raw.read_bytes(), raw_channels)
        parts += [np.array([time for time, _, _ in records], "<i8").tobytes()]
        parts += [bytes(ttl for _, ttl, _ in records)]
        parts += [np.array([values for _, _, values in records], "<i4").tobytes()]
    return b"".join(parts)


def check(directory: Path, raw_channels: int) -> None:
    read_sets([directory], "incomplete" if is_incomplete(directory) else "whole")
    error = sibling(directory, ".error")
    assert not error.exists(), error.read_text()
    assert sibling(directory, ".found").read_bytes() == expected_bytes(directory, raw_channels)


@pytest.mark.parametrize("recording", RECORDINGS)
def test_every_kind_of_recording_reads_as_its_bytes(recording: str, synth, convert) -> None:
    arguments = RECORDINGS[recording]
    check(convert(synth(*arguments), "--all"), int(arguments[1]))


@pytest.mark.parametrize("switches", SWITCHES)
def test_every_switch_gives_a_set_that_reads_as_its_bytes(switches: str, synth, convert) -> None:
    check(convert(synth(*RECORDINGS["version 1.0"]), *SWITCHES[switches]), 32)


def test_a_set_of_a_cut_recording_reads_as_its_bytes(synth, convert, tmp_path: Path) -> None:
    recording = tmp_path / "cut.ord"
    recording.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:-5000])
    check(convert(recording, "--all"), 64)


def test_a_set_without_samples_reads_as_its_bytes(synth, convert, tmp_path: Path) -> None:
    recording = tmp_path / "empty.ord"
    recording.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:16384])
    check(convert(recording, "--all"), 64)


def test_the_sets_of_a_canceled_conversion_read_as_their_bytes(synth, tmp_path: Path) -> None:
    for directory in canceled(synth, tmp_path):
        check(directory, 64)


def test_a_salvaged_set_reads_as_its_bytes(synth, convert, tmp_path: Path) -> None:
    check(salvaged("version 2.0", synth, convert, tmp_path), 64)


@each_sample
def test_every_shared_sample_reads_as_its_bytes(sample: Path, convert) -> None:
    check(of_sample(sample, convert), packet_channels(sample))


def test_records_that_end_early_move_those_after_them(tmp_path: Path) -> None:
    directory = tmp_path / "recording"
    directory.mkdir()
    records = [(0, list(range(512))), (20000, [7] * 70), (90000, list(range(512))), (107066, [5])]
    for name in ("CSC1", "CSC2"):
        write(directory / f"{name}.vcs", channel_file(name, 30000, records))
    write(directory / "Events.vev", (make_events(tmp_path)))
    check(directory, 2)


def make_events(tmp_path: Path) -> bytes:
    whole = tmp_path / "events"
    whole.mkdir()
    make_set(whole, random.Random(1))
    return (whole / "Events.vev").read_bytes()


@pytest.mark.parametrize("seed", range(0, CHANGES, 250))
def test_a_damaged_set_is_an_error_or_is_read_as_its_bytes_are(tmp_path: Path, seed: int) -> None:
    whole = tmp_path / "whole"
    whole.mkdir()
    make_set(whole, random.Random(seed))
    damaged = [tmp_path / f"damaged{number}" for number in range(seed, seed + 250)]
    done = {}
    for number, directory in enumerate(damaged, seed):
        shutil.copytree(whole, directory)
        done[directory] = damage_one_file(directory, random.Random(number))
    read_sets(damaged)
    raised = 0
    for directory, (what, may_stay_unseen) in done.items():
        fault = sibling(directory, ".fault")
        assert not fault.exists(), f"{directory.name}: {what}: {fault.read_text()}"
        if sibling(directory, ".error").exists():
            raised += 1
            assert str(directory) in sibling(directory, ".error").read_text(errors="replace")
        else:
            assert may_stay_unseen, f"{directory.name}: {what}: no error"
            assert sibling(directory, ".found").read_bytes() == expected_bytes(directory, 3), what
    assert 75 < raised < 250, "the changes are not of both kinds"


def test_parts_of_files_and_the_fields_of_the_structs(tmp_path: Path) -> None:
    directory = tmp_path / "recording"
    directory.mkdir()
    make_set(directory, random.Random(5))
    octave(f"check_parts('{directory}')")


@pytest.mark.parametrize("name", ["readVcs", "readVev", "readVrd", "readSession"])
def test_every_function_has_a_help_text(name: str) -> None:
    text = octave(f"disp(help('stalwick.{name}'))").stdout
    assert f"{name.upper()}  " in text
    assert f"stalwick.{name}(" in text
