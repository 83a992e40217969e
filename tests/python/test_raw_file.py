# SPDX-License-Identifier: BSD-3-Clause

"""Raw data files: values, times, TTL, checksums, records of other lengths."""

import struct
from pathlib import Path

import numpy as np
import pytest

import stalwick
from output_files import HEADER_SIZE, raw_file, write


def made_records(count: int, channels: int, start: int = 0) -> list[tuple[int, int, list[int]]]:
    return [
        (2**33 + 33 * i, i % 256, [(-1) ** c * (1000 * i + c) for c in range(channels)])
        for i in range(start, start + count)
    ]


def open_built(tmp_path: Path, channels: int, records: list, **options: bool) -> stalwick.RawFile:
    data = raw_file(channels, 30000, records)
    return stalwick.open_vrd(write(tmp_path / "RawData.vrd", data), **options)


@pytest.mark.parametrize("channels", [1, 32, 256])
def test_values_times_and_ttl_are_those_of_the_records(tmp_path: Path, channels: int) -> None:
    records = made_records(50, channels)
    file = open_built(tmp_path, channels, records)
    assert (file.num_samples, file.num_channels) == (50, channels)
    assert file.traces().tolist() == [values for _, _, values in records]
    assert file.times(3, 7).tolist() == [time for time, _, _ in records[3:7]]
    assert file.ttl(3, 7).tolist() == [3, 4, 5, 6]
    assert file.traces([channels - 1], 10, 12).tolist() == [[r[2][-1]] for r in records[10:12]]


def test_microvolts_are_the_headers_volts_a_step(tmp_path: Path) -> None:
    file = open_built(tmp_path, 2, [(0, 0, [64, -640]), (33, 0, [1, 0])])
    assert file.traces(units="uV").tolist() == [[1.0, -10.0], [0.015625, 0.0]]
    assert file.header["ADBitVolts"] == 1.5625e-08


def test_records_of_another_number_of_channels_than_the_headers_are_read(tmp_path: Path) -> None:
    records = made_records(20, 32)
    file = open_built(tmp_path, 16, records)
    assert file.num_channels == 32
    assert file.traces().tolist() == [values for _, _, values in records]


def test_packets_of_different_numbers_of_channels_follow_each_other(tmp_path: Path) -> None:
    records = made_records(20, 64) + made_records(10, 32, 20) + made_records(30, 64, 30)
    file = open_built(tmp_path, 64, records)
    assert (file.num_samples, file.num_channels) == (60, 32)
    expected = [values[:32] for _, _, values in records]
    assert file.traces().tolist() == expected
    assert file.traces(start=15, stop=35).tolist() == expected[15:35]
    assert file.traces([63], 31, 32).tolist() == [[records[31][2][63]]]
    with pytest.raises(IndexError, match="channels 0 to 31"):
        file.traces([63], 15, 35)


@pytest.mark.parametrize(
    "word, value, reason",
    [
        (0, 2049, "marker"),
        (1, 2, "identifier"),
        (2, 43, "size word"),
        (3, 7, "checksum"),
        (5, 1, "status"),
        (6, 300, "TTL"),
        (16, 1, "reserved"),
        (17, 12345, "checksum"),
        (49, 12345, "checksum"),
    ],
)
def test_a_wrong_word_is_named_with_its_record(
    tmp_path: Path, word: int, value: int, reason: str
) -> None:
    data = bytearray(raw_file(32, 30000, made_records(30, 32)))
    start = HEADER_SIZE + 7 * 200
    struct.pack_into("<I", data, start + 4 * word, value)
    path = write(tmp_path / "RawData.vrd", bytes(data))
    file = stalwick.open_vrd(path)
    assert len(file.traces(start=0, stop=7)) == 7
    with pytest.raises(stalwick.DamagedFileError, match=reason) as caught:
        file.check()
    assert caught.value.record == 7
    assert start <= caught.value.byte <= start + 4 * word


@pytest.mark.parametrize("record", [0, 29])
def test_damage_to_the_first_and_the_last_record_is_found(tmp_path: Path, record: int) -> None:
    data = bytearray(raw_file(32, 30000, made_records(30, 32)))
    data[HEADER_SIZE + record * 200 + 100] ^= 4
    path = write(tmp_path / "RawData.vrd", bytes(data))
    with pytest.raises(stalwick.DamagedFileError, match="checksum") as caught:
        stalwick.open_vrd(path).traces()
    assert caught.value.record == record


@pytest.mark.parametrize("cut", [1, 4, 199])
def test_a_cut_record_raises_unless_incomplete_files_are_allowed(tmp_path: Path, cut: int) -> None:
    path = write(tmp_path / "RawData.vrd", raw_file(32, 30000, made_records(30, 32))[:-cut])
    with pytest.raises(stalwick.IncompleteFileError, match="RawData.vrd"):
        stalwick.open_vrd(path)
    file = stalwick.open_vrd(path, allow_incomplete=True)
    assert file.traces().tolist() == [values for _, _, values in made_records(29, 32)]


def test_a_file_without_records_has_no_samples(tmp_path: Path) -> None:
    file = open_built(tmp_path, 32, [])
    assert (file.num_samples, file.num_channels) == (0, 32)
    assert file.traces().shape == (0, 32)


def test_reading_in_pieces_gives_the_same(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    file = open_built(tmp_path, 32, made_records(50, 32))
    whole = file.traces(start=3)
    monkeypatch.setattr("stalwick.raw_file._SCAN_WORDS", 350)
    assert np.array_equal(file.traces(start=3), whole)
