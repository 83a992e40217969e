# SPDX-License-Identifier: BSD-3-Clause

"""Recordings of every version and switch, converted by the command and read by the package: the
same numbers as the plain reader of output_files.py finds in the same bytes."""

from __future__ import annotations

import warnings
from pathlib import Path

import numpy as np
import pytest

import stalwick
from output_files import read_channel, read_events, read_raw
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


def check_channels(session: stalwick.Session, directory: Path) -> int:
    compared = 0
    for group in session.groups.values():
        traces, times = group.traces(), group.times()
        for position, name in enumerate(group.channel_ids):
            samples, expected_times = read_channel((directory / f"{name}.vcs").read_bytes())
            assert np.array_equal(traces[:, position], np.array(samples, dtype=np.int16)), name
            assert np.array_equal(times, np.array(expected_times, dtype=np.int64)), name
            compared += 1
        for name, file in group.short_files.items():
            samples, expected_times = read_channel((directory / f"{name}.vcs").read_bytes())
            assert (file.traces().tolist(), file.times().tolist()) == (samples, expected_times)
            compared += 1
    return compared


def check_set(directory: Path, raw_channels: int | None = None) -> stalwick.Session:
    incomplete = is_incomplete(directory)
    session = stalwick.open_session(directory, allow_incomplete=incomplete)
    assert check_channels(session, directory) == len(list(directory.glob("*.vcs")))
    events = session.events
    expected = read_events((directory / "Events.vev").read_bytes())
    assert list(zip(events.times.tolist(), events.ttl.tolist())) == expected
    if session.raw is not None:
        check_raw(session.raw, directory, raw_channels or session.raw.num_channels)
    return session


def check_raw(raw: stalwick.RawFile, directory: Path, channels: int) -> None:
    records = read_raw((directory / "RawData.vrd").read_bytes(), channels)
    assert raw.num_samples == len(records)
    assert raw.times().tolist() == [time for time, _, _ in records]
    assert raw.ttl().tolist() == [ttl for _, ttl, _ in records]
    assert raw.traces().tolist() == [values for _, _, values in records]


@pytest.mark.parametrize("recording", RECORDINGS)
def test_every_kind_of_recording_reads_as_its_bytes(recording: str, synth, convert) -> None:
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        check_set(convert(synth(*RECORDINGS[recording]), "--all"))


@pytest.mark.parametrize("switches", SWITCHES)
def test_every_switch_gives_a_set_that_reads_as_its_bytes(switches: str, synth, convert) -> None:
    check_set(convert(synth(*RECORDINGS["version 2.0"]), *SWITCHES[switches]))


@pytest.mark.parametrize("cut", [1, 100, 5000])
def test_a_recording_that_was_cut_gives_a_set_that_reads_as_its_bytes(
    cut: int, synth, convert, tmp_path: Path
) -> None:
    recording = tmp_path / "cut.ord"
    recording.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:-cut])
    check_set(convert(recording, "--all"))


def test_a_recording_without_data_gives_a_set_without_samples(
    synth, convert, tmp_path: Path
) -> None:
    recording = tmp_path / "empty.ord"
    recording.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:16384])
    directory = convert(recording, "--all")
    check_set(directory)
    assert stalwick.open_session(directory).traces().shape == (0, 64)


def test_a_set_whose_recording_is_damaged_is_read_as_far_as_it_goes(
    synth, convert, tmp_path: Path
) -> None:
    data = bytearray(synth(*RECORDINGS["version 2.0"]).read_bytes())
    # Zeros for longer than a span: no packet begins there, and the conversion ends.
    data[2_000_000:2_200_000] = bytes(200_000)
    recording = tmp_path / "damaged.ord"
    recording.write_bytes(data)
    directory = convert(recording, "--all", "--keep-partial", statuses=(1,))
    with pytest.raises(stalwick.IncompleteFileError, match="was not closed"):
        stalwick.open_session(directory)
    session = stalwick.open_session(directory, allow_incomplete=True)
    assert session.num_samples > 5000
    assert check_channels(session, directory) == 64 + 9 + 9 + 1


def test_the_sets_of_a_canceled_conversion_read_as_their_bytes(synth, tmp_path: Path) -> None:
    first, second = (check_set(directory) for directory in canceled(synth, tmp_path))
    assert 0 < first.num_samples < 30000
    assert second.traces().shape == (0, 64)


@pytest.mark.parametrize("recording", ["version 2.0", "version 1.0"])
def test_a_salvaged_set_reads_as_its_bytes(recording: str, synth, convert, tmp_path: Path) -> None:
    session = check_set(salvaged(recording, synth, convert, tmp_path))
    counts = session.ad.layout.counts
    assert np.count_nonzero(counts[:-1] < 512) == 2, "a record ends before each skipped stretch"
    missing = sum(gap.missing_samples for gap in session.gaps)
    has_timestamps = recording == "version 2.0"
    assert missing == (30000 - session.num_samples if has_timestamps else 0)


@each_sample
@pytest.mark.filterwarnings("ignore::stalwick.StalwickWarning")
def test_every_shared_sample_reads_as_its_bytes(sample: Path, convert) -> None:
    check_set(of_sample(sample, convert), packet_channels(sample))


def test_gaps_of_the_recording_are_found_to_the_sample(synth, convert) -> None:
    session = stalwick.open_session(convert(synth(*RECORDINGS["gaps"])))
    assert [gap.missing_samples for gap in session.gaps] == [7500, 30]
    first, second = session.gaps
    assert first.start_frame <= 15000 <= first.end_frame
    assert second.start_frame <= 45000 - 7500 <= second.end_frame


def test_a_second_conversion_into_the_directory_is_a_set_of_its_own(synth, convert) -> None:
    recording = synth("--channels", "32", "--seconds", "0.1")
    directory = convert(recording)
    again = convert(recording)
    for path in again.iterdir():
        path.rename(directory / f"{path.stem}_01{path.suffix}")
    first = stalwick.open_session(directory)
    second = stalwick.open_session(directory, suffix="_01")
    assert first.other_runs == ["_01"]
    assert np.array_equal(first.traces(), second.traces())
