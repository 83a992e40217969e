# SPDX-License-Identifier: BSD-3-Clause

"""The flat file for spike sorters and its sidecar."""

import json
import threading
from pathlib import Path

import numpy as np
import pytest

import stalwick
from output_files import channel_file, write
from stalwick.frames import turn_round, turn_round_in_numpy

RATE = 30000
COUNT = 3000


@pytest.fixture
def session(tmp_path: Path) -> stalwick.Session:
    numbers = np.random.default_rng(1)
    directory = tmp_path / "recording"
    directory.mkdir()
    for channel in range(1, 6):
        samples = numbers.integers(-32768, 32768, COUNT).tolist()
        records = [
            (10**6 + s * 100 // 3 + (50_000 if s >= 1024 else 0), samples[s : s + 512])
            for s in range(0, COUNT, 512)
        ]
        data = channel_file(f"CSC{channel}", RATE, records)
        write(directory / f"CSC{channel}.vcs", data)
    return stalwick.open_session(directory)


def sidecar(path: Path) -> dict:
    return json.loads(path.with_name(path.name + ".json").read_text())


def test_samples_stand_one_instant_after_the_other(session, tmp_path: Path) -> None:
    path = session.to_binary(tmp_path / "rat.bin")
    assert path == tmp_path / "rat.bin"
    found = np.fromfile(path, dtype="<i2").reshape(COUNT, 5)
    assert np.array_equal(found, session.traces())


def test_chosen_channels_and_samples_are_written_in_their_order(session, tmp_path: Path) -> None:
    path = session.to_binary(tmp_path / "x", channels=["CSC4", "CSC1"], start=700, stop=1900)
    found = np.fromfile(path, dtype="<i2").reshape(1200, 2)
    assert np.array_equal(found, session.traces(["CSC4", "CSC1"], 700, 1900))
    assert sidecar(path)["channel_names"] == ["CSC4", "CSC1"]


def test_floats_are_microvolts(session, tmp_path: Path) -> None:
    path = session.to_binary(tmp_path / "x", dtype="float32")
    found = np.fromfile(path, dtype="<f4").reshape(COUNT, 5)
    assert np.array_equal(found, session.traces(units="uV"))
    assert sidecar(path)["gain_to_uv"] == 1.0


def test_the_sidecar_says_what_a_reader_needs(session, tmp_path: Path) -> None:
    path = session.to_binary(tmp_path / "rat.bin", start=100)
    assert sidecar(path) == {
        "file": "rat.bin",
        "dtype": "int16",
        "byte_order": "little",
        "order": "sample by sample, in each the channels as listed",
        "sampling_frequency": 30000.0,
        "num_samples": COUNT - 100,
        "num_channels": 5,
        "channel_names": ["CSC1", "CSC2", "CSC3", "CSC4", "CSC5"],
        "gain_to_uv": 4.0,
        "offset_to_uv": 0.0,
        "start_frame": 100,
        "start_time_microseconds": 1_003_333,
        "gaps": [{"after_sample": 412, "before_sample": 924, "missing_samples": 1500}],
    }


def test_chunks_of_every_size_give_the_same_file(
    session, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("stalwick.binary_file._CHUNK_BYTES", 1)
    monkeypatch.setattr("stalwick.binary_file._CHUNK_RECORDS", 1)
    path = session.to_binary(tmp_path / "x", start=17)
    found = np.fromfile(path, dtype="<i2").reshape(-1, 5)
    assert np.array_equal(found, session.traces(start=17))


@pytest.mark.parametrize("turn", [turn_round, turn_round_in_numpy])
@pytest.mark.parametrize(
    "channels, samples", [(1, 1), (3, 512), (5, 1000), (8, 32), (9, 33), (64, 1536), (20, 1031)]
)
def test_turning_round_is_a_transposition(turn, channels: int, samples: int) -> None:
    rows = np.arange(channels * samples, dtype=np.int32).astype(np.int16).reshape(channels, -1)
    out = np.empty((samples, channels), dtype=np.int16)
    turn(rows, out)
    assert np.array_equal(out, rows.T)


@pytest.mark.parametrize("start, stop", [(0, 2560), (0, 3000), (5, 900), (600, 601), (1024, 1536)])
def test_samples_are_turned_round_alike_with_and_without_the_compiled_module(
    session, monkeypatch: pytest.MonkeyPatch, start: int, stop: int
) -> None:
    names = ["CSC5", "CSC1", "CSC2"]
    frames = np.empty((2, stop - start, 3), dtype=np.int16)
    session.ad.read_frames(names, frames[0], start)
    monkeypatch.setattr("stalwick.continuous_file.compiled", None)
    monkeypatch.setattr("stalwick.frames.compiled", None)
    session.ad.read_frames(names, frames[1], start)
    assert np.array_equal(frames[0], session.traces(names, start, stop))
    assert np.array_equal(frames[1], frames[0])


def test_nothing_that_exists_is_replaced_unasked(session, tmp_path: Path) -> None:
    for name in ("rat.bin", "rat.bin.json"):
        write(tmp_path / name, b"old")
        with pytest.raises(stalwick.StalwickError, match=f"{name}: it exists"):
            session.to_binary(tmp_path / "rat.bin")
        assert (tmp_path / name).read_bytes() == b"old"
        (tmp_path / name).unlink()
    write(tmp_path / "rat.bin", b"old")
    session.to_binary(tmp_path / "rat.bin", overwrite=True)
    assert (tmp_path / "rat.bin").stat().st_size == COUNT * 5 * 2


@pytest.mark.parametrize("name", ["rat.bin.part", "rat.bin.json.part"])
def test_another_exports_part_is_not_touched(session, tmp_path: Path, name: str) -> None:
    part = write(tmp_path / name, b"of another")
    with pytest.raises(stalwick.StalwickError, match=f"{name}: it exists"):
        session.to_binary(tmp_path / "rat.bin")
    assert part.read_bytes() == b"of another"
    assert sorted(p.name for p in tmp_path.iterdir()) == [name, "recording"]


def test_damage_leaves_no_file(session, tmp_path: Path) -> None:
    path = session.directory / "CSC2.vcs"
    data = bytearray(path.read_bytes())
    data[16384 + 3 * 1044] ^= 1
    write(path, bytes(data))
    with pytest.raises(stalwick.DamagedFileError, match="record 3"):
        stalwick.open_session(session.directory).to_binary(tmp_path / "rat.bin")
    assert [p.name for p in tmp_path.iterdir()] == ["recording"]
    assert threading.active_count() == 1


def test_the_bar_ends_at_a_hundred_per_cent(session, tmp_path: Path, capsys) -> None:
    session.to_binary(tmp_path / "a", progress=True)
    assert "100 %" in capsys.readouterr().err
    session.to_binary(tmp_path / "b")
    assert capsys.readouterr().err == ""


def sensor(directory: Path) -> Path:
    target = directory / "sensor"
    target.mkdir()
    write(target / "Base_LAX.vcs", channel_file("Base_LAX", 3000, [(0, [1, 2, 3])]))
    return target


def test_any_group_has_a_flat_file(tmp_path: Path) -> None:
    base = stalwick.open_session(sensor(tmp_path)).imu["Base"]
    path = base.to_binary(tmp_path / "x")
    assert np.fromfile(path, dtype="<i2").tolist() == [1, 2, 3]
    assert sidecar(path)["gain_to_uv"] == 1.0


def test_an_unknown_type_is_refused(session, tmp_path: Path) -> None:
    with pytest.raises(ValueError, match="int32"):
        session.to_binary(tmp_path / "x", dtype="int32")
    with pytest.raises(ValueError, match="no voltages"):
        stalwick.open_session(sensor(tmp_path)).groups["Base"].to_binary(tmp_path / "x", "float32")
    assert not (tmp_path / "x").exists()
