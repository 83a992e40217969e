# SPDX-License-Identifier: BSD-3-Clause

"""Recordings that are read without converting them: the same numbers as in their outputs."""

from __future__ import annotations

import os
import random
from pathlib import Path

import numpy as np
import pytest

import stalwick
from sets import RECORDINGS, each_sample, is_incomplete, of_sample


def check_equal(recording: stalwick.OrdRecording, session: stalwick.Session) -> None:
    assert list(recording.groups) == list(session.groups)
    for name, group in session.groups.items():
        other = recording.groups[name]
        assert other.channel_ids == group.channel_ids
        assert other.sampling_frequency == group.sampling_frequency
        assert np.array_equal(other.traces(), group.traces()), name
        assert np.array_equal(other.times(), group.times()), name
        assert other.gaps == group.gaps
    events, expected = recording.events, session.events
    assert np.array_equal(events.times, expected.times)
    assert np.array_equal(events.ttl, expected.ttl)
    assert np.array_equal(events.previous[1:], expected.previous[1:])


@pytest.mark.parametrize("kind", RECORDINGS)
def test_every_kind_of_recording_gives_what_its_outputs_give(kind: str, synth, convert) -> None:
    path = synth(*RECORDINGS[kind])
    session = stalwick.open_session(convert(path, "--all"))
    recording = stalwick.open_ord(path)
    check_equal(recording, session)
    if len(session.events):
        assert recording.events.previous[0] == session.events.previous[0]


@each_sample
@pytest.mark.filterwarnings("ignore::stalwick.StalwickWarning")
def test_every_shared_sample_gives_what_its_outputs_give(sample: Path, convert) -> None:
    directory = of_sample(sample, convert)
    incomplete = is_incomplete(directory)
    session = stalwick.open_session(directory, allow_incomplete=incomplete)
    recording = stalwick.open_ord(sample, allow_incomplete=incomplete)
    if incomplete:  # it holds no more than whole blocks of records
        assert np.array_equal(recording.traces(stop=session.num_samples), session.traces())
    else:
        check_equal(recording, session)


@pytest.mark.parametrize("cut", [1, 100, 5000])
def test_a_cut_recording_gives_what_its_outputs_give(
    cut: int, synth, convert, tmp_path: Path
) -> None:
    path = tmp_path / "cut.ord"
    path.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:-cut])
    check_equal(stalwick.open_ord(path), stalwick.open_session(convert(path, "--all")))


def test_a_recording_without_data_has_no_samples(synth, tmp_path: Path) -> None:
    path = tmp_path / "empty.ord"
    path.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes()[:16384])
    recording = stalwick.open_ord(path)
    assert recording.traces().shape == (0, 64)
    assert len(recording.events) == 0


def test_any_part_of_any_channels_is_that_part_of_the_whole(synth) -> None:
    recording = stalwick.open_ord(synth(*RECORDINGS["version 2.0"]))
    numbers = random.Random(1)
    for group in recording.groups.values():
        whole = group.traces()
        for _ in range(40):
            start, stop = sorted(numbers.choices(range(len(whole) + 1), k=2))
            stop = min(stop, start + numbers.choice([0, 1, 9, 10, 11, 700]))
            positions = numbers.choices(range(whole.shape[1]), k=numbers.randint(1, 5))
            part = group.traces(positions, start, stop)
            assert np.array_equal(part, whole[start:stop, positions])


def test_microvolts_and_the_fields_names_are_those_of_a_session(synth, convert) -> None:
    path = synth(*RECORDINGS["version 1.0"])
    recording, session = stalwick.open_ord(path), stalwick.open_session(convert(path))
    wanted = ["CSC5", "CSC1"]
    scaled = recording.get_traces(100, 200, wanted, return_in_uV=True)
    assert np.array_equal(scaled, session.get_traces(100, 200, wanted, return_in_uV=True))
    assert recording.get_num_samples() == session.get_num_samples()
    assert recording.get_channel_gains().tolist() == session.get_channel_gains().tolist()


def test_the_flat_file_is_that_of_the_session(synth, convert, tmp_path: Path) -> None:
    path = synth(*RECORDINGS["version 2.0"])
    one = stalwick.open_ord(path).to_binary(tmp_path / "one")
    two = stalwick.open_session(convert(path)).to_binary(tmp_path / "two")
    assert one.read_bytes() == two.read_bytes()


def damage(source: Path, target: Path) -> Path:
    data = bytearray(source.read_bytes())
    data[2_000_000:2_200_000] = bytes(200_000)
    target.write_bytes(data)
    return target


def test_damage_raises_unless_incomplete_recordings_are_allowed(
    synth, convert, tmp_path: Path
) -> None:
    path = damage(synth(*RECORDINGS["version 2.0"]), tmp_path / "rat.ord")
    with pytest.raises(stalwick.StalwickError, match=r"rat.ord: byte 2\d{6}: no packet begins"):
        stalwick.open_ord(path)
    recording = stalwick.open_ord(path, allow_incomplete=True)
    assert recording.ends_in_damage
    out = convert(path, "--keep-partial", statuses=(1,))
    session = stalwick.open_session(out, allow_incomplete=True)
    whole = min(session.num_samples, recording.num_samples)
    assert whole > 5000
    assert np.array_equal(recording.traces(stop=whole), session.traces(stop=whole))


def test_a_kept_index_is_used_as_long_as_the_recording_is_the_same(
    synth, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    path = tmp_path / "rat.ord"
    path.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes())
    built = stalwick.open_ord(path, keep_index=True)
    kept = tmp_path / "rat.ord.index.npz"
    first = kept.read_bytes()
    again = stalwick.open_ord(path, keep_index=True)
    assert kept.read_bytes() == first
    assert np.array_equal(again.traces(), built.traces())
    assert np.array_equal(again.times(), built.times())
    assert np.array_equal(again.events.previous, built.events.previous)
    path.write_bytes(path.read_bytes()[:-5000])
    shorter = stalwick.open_ord(path, keep_index=True)
    assert shorter.num_samples < built.num_samples
    assert kept.read_bytes() != first


@pytest.mark.parametrize("content", [b"", b"no index", b"PK\x03\x04 and no more"])
def test_an_index_that_cannot_be_read_is_made_anew(
    content: bytes, synth, tmp_path: Path
) -> None:
    path = tmp_path / "rat.ord"
    path.write_bytes(synth(*RECORDINGS["version 1.0"]).read_bytes())
    (tmp_path / "rat.ord.index.npz").write_bytes(content)
    assert stalwick.open_ord(path, keep_index=True).num_samples == 30000


def test_an_index_of_another_recording_raises(synth, tmp_path: Path) -> None:
    path = tmp_path / "rat.ord"
    path.write_bytes(synth(*RECORDINGS["version 2.0"]).read_bytes())
    times = path.stat().st_atime_ns, path.stat().st_mtime_ns
    stalwick.open_ord(path, keep_index=True)
    data = bytearray(path.read_bytes())
    data[1_000_000:1_100_000] = bytes(100_000)
    path.write_bytes(data)
    os.utime(path, ns=times)
    with pytest.raises(stalwick.StalwickError, match="changed after its index was made"):
        stalwick.open_ord(path, keep_index=True).traces()


@pytest.mark.parametrize("content", [b"", b"-NumADChannels 300\r\n", b"no recording at all"])
def test_what_is_no_recording_is_named(content: bytes, tmp_path: Path) -> None:
    path = tmp_path / "x.ord"
    path.write_bytes(content)
    with pytest.raises(stalwick.StalwickError, match="x.ord: "):
        stalwick.open_ord(path)
    with pytest.raises(stalwick.StalwickError, match="gone.ord: "):
        stalwick.open_ord(tmp_path / "gone.ord")


def test_unknown_samples_and_channels_are_refused(synth) -> None:
    recording = stalwick.open_ord(synth(*RECORDINGS["version 1.0"]))
    with pytest.raises(IndexError):
        recording.traces(stop=30001)
    with pytest.raises(KeyError, match="CSC33"):
        recording.traces(["CSC33"])
    assert stalwick.open_ord(synth("--channels", "32", "--seconds", "0.1")).imu == {}
