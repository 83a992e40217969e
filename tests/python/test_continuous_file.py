# SPDX-License-Identifier: BSD-3-Clause

"""Channel files: samples, times, gaps, and the detection of damage."""

import struct
from pathlib import Path

import numpy as np
import pytest

import stalwick
from output_files import HEADER_SIZE, channel_file, channel_header, header_block, write

RATE = 30000
#: Times of consecutive full records, truncated as the converter does.
TIMES = [1_700_000_000_000_000 + record * 512 * 1_000_000 // RATE for record in range(8)]


def ramp(start: int, count: int) -> list[int]:
    return [(start + i) % 65536 - 32768 for i in range(count)]


def full_records(count: int, last: int = 512) -> list[tuple[int, list[int]]]:
    sizes = [512] * (count - 1) + [last]
    return [(TIMES[i], ramp(512 * i, size)) for i, size in enumerate(sizes)]


def open_built(tmp_path: Path, records: list[tuple[int, list[int]]], **options: bool):
    path = write(tmp_path / "CSC3.vcs", channel_file("CSC3", RATE, records))
    return stalwick.open_vcs(path, **options)


@pytest.mark.parametrize("last", [1, 100, 511, 512])
def test_every_slice_near_a_record_border_is_the_samples_there(tmp_path: Path, last: int) -> None:
    file = open_built(tmp_path, full_records(4, last))
    expected = np.array(ramp(0, 3 * 512 + last), dtype=np.int16)
    assert file.num_samples == len(expected)
    borders = [0, 1, 511, 512, 513, 1023, 1024, 1025, 1536, len(expected)]
    for start in borders:
        for stop in borders:
            if start <= stop:
                assert np.array_equal(file.traces(start, stop), expected[start:stop])


def test_microvolts_are_four_times_the_value(tmp_path: Path) -> None:
    file = open_built(tmp_path, [(TIMES[0], [-32768, -1, 0, 1, 32767])])
    assert file.traces(units="uV").tolist() == [-131072.0, -4.0, 0.0, 4.0, 131068.0]
    assert file.traces(units="uV").dtype == np.float32


def test_unknown_units_are_refused(tmp_path: Path) -> None:
    with pytest.raises(ValueError, match="millivolts"):
        open_built(tmp_path, full_records(1)).traces(units="millivolts")  # type: ignore[arg-type]


@pytest.mark.parametrize("start, stop", [(-1, 5), (3, 2), (0, 513), (600, 601)])
def test_a_range_that_is_not_all_there_is_refused(tmp_path: Path, start: int, stop: int) -> None:
    file = open_built(tmp_path, full_records(1))
    with pytest.raises(IndexError, match="there are 0 to 512"):
        file.traces(start, stop)
    with pytest.raises(IndexError):
        file.times(start, stop)


def test_a_record_that_ends_early_moves_those_after_it(tmp_path: Path) -> None:
    records = [(0, ramp(0, 512)), (20000, ramp(512, 70)), (90000, ramp(582, 512)), (107066, [7])]
    file = open_built(tmp_path, records)
    expected = np.array(ramp(0, 1094) + [7], dtype=np.int16)
    assert file.num_samples == 1095
    for start, stop in [(0, 1095), (500, 600), (512, 582), (581, 583), (582, 1094), (1094, 1095)]:
        assert np.array_equal(file.traces(start, stop), expected[start:stop])
    assert file.times(511, 514).tolist() == [511 * 100 // 3, 20000, 20033]
    assert file.times(581, 583).tolist() == [20000 + 69 * 100 // 3, 90000]


def test_a_samples_time_is_its_records_and_whole_microseconds(tmp_path: Path) -> None:
    file = open_built(tmp_path, [(TIMES[0], ramp(0, 512)), (TIMES[1], ramp(0, 4))])
    assert file.times(0, 4).tolist() == [TIMES[0], TIMES[0] + 33, TIMES[0] + 66, TIMES[0] + 100]
    assert file.times(512, 513).tolist() == [TIMES[1]]
    assert file.times(5, 5).tolist() == []


def test_a_time_before_the_clocks_zero_is_negative(tmp_path: Path) -> None:
    file = open_built(tmp_path, [(-5_000_000, [1, 2])])
    assert file.times().tolist() == [-5_000_000, -4_999_967]


def test_gaps_are_steps_of_a_packet_or_more(tmp_path: Path) -> None:
    records = full_records(4)
    lost_packet = records[:2] + [(time + 334, samples) for time, samples in records[2:]]
    lag_of_nine = records[:2] + [(time - 300, samples) for time, samples in records[2:]]
    assert open_built(tmp_path, records).gaps == []
    assert open_built(tmp_path, lag_of_nine).gaps == []
    (gap,) = open_built(tmp_path, lost_packet).gaps
    assert (gap.record, gap.start_frame, gap.end_frame, gap.missing_samples) == (1, 512, 1024, 10)
    assert gap.time == TIMES[1]


def test_frames_at_is_the_last_sample_at_or_before_a_time(tmp_path: Path) -> None:
    layout = open_built(tmp_path, [(1000, ramp(0, 512)), (1_000_000, [1, 2])]).layout
    times = np.array([999, 1000, 1032, 1033, 1034, 1066, 18033, 500_000, 1_000_000, 9_000_000])
    assert layout.frames_at(times).tolist() == [-1, 0, 0, 1, 1, 2, 511, 511, 512, 513]
    own = layout.sample_times(0, 514)
    assert layout.frames_at(own).tolist() == list(range(514))


def test_frames_at_refuses_times_that_go_back(tmp_path: Path) -> None:
    layout = open_built(tmp_path, [(1000, ramp(0, 512)), (900, [1])]).layout
    with pytest.raises(ValueError, match="after record 0"):
        layout.frames_at(np.array([950]))


def test_a_file_without_records_has_no_samples(tmp_path: Path) -> None:
    file = open_built(tmp_path, [])
    assert file.num_samples == 0
    assert file.sampling_frequency == RATE
    assert len(file.traces()) == len(file.times()) == len(file.gaps) == 0


def test_the_header_is_a_dictionary(tmp_path: Path) -> None:
    header = open_built(tmp_path, []).header
    assert header["FileType"] == "CSC"
    assert header["SamplingFrequency"] == 30000.0
    assert header["ADChannel"] == 2
    assert header["OriginalFileName"] == "/data/out/recording/CSC3"
    assert header["TimeClosed"] == "2026/11/21 09:07:12"
    assert header["AcquisitionSystem"] == "Unknown Unit7"


def test_the_rate_is_the_records_where_the_header_rounds_it(tmp_path: Path) -> None:
    data = channel_file("CSC1", 1234567, [(0, [1, 2, 3])])
    assert b"-SamplingFrequency 1.23457e+06\r\n" in data
    file = stalwick.open_vcs(write(tmp_path / "CSC1.vcs", data))
    assert file.sampling_frequency == 1234567.0


@pytest.mark.parametrize(
    "offset, value, reason",
    [
        (8, 3, "channelNumber"),
        (12, 30001, "sampleFrequency"),
        (16, 0, "numValidSamples is not 1 to 512"),
        (16, 513, "numValidSamples is not 1 to 512"),
        (16, 500, "after the last valid sample"),
    ],
)
def test_a_wrong_field_is_named_with_file_record_and_byte(
    tmp_path: Path, offset: int, value: int, reason: str
) -> None:
    data = bytearray(channel_file("CSC3", RATE, full_records(3)))
    record = HEADER_SIZE + 1044
    struct.pack_into("<I", data, record + offset, value)
    path = write(tmp_path / "CSC3.vcs", bytes(data))
    with pytest.raises(stalwick.DamagedFileError, match=reason) as caught:
        stalwick.open_vcs(path).traces()
    byte = record + (20 + 2 * 500 if value == 500 else offset)
    assert (caught.value.path, caught.value.record, caught.value.byte) == (path, 1, byte)
    assert f"{path}: record 1 (byte {byte}): " in str(caught.value)


def test_a_cut_record_raises_unless_incomplete_files_are_allowed(tmp_path: Path) -> None:
    data = channel_file("CSC3", RATE, full_records(3))
    path = write(tmp_path / "CSC3.vcs", data[:-1])
    with pytest.raises(stalwick.IncompleteFileError, match=r"CSC3\.vcs: .*record 2 \(byte 18472\)"):
        stalwick.open_vcs(path)
    file = stalwick.open_vcs(path, allow_incomplete=True)
    assert file.traces().tolist() == ramp(0, 1024)


def test_a_file_that_was_not_closed_raises_unless_allowed(tmp_path: Path) -> None:
    data = channel_file("CSC3", RATE, full_records(2), closed=False)
    path = write(tmp_path / "CSC3.vcs", data)
    with pytest.raises(stalwick.IncompleteFileError, match="was not closed"):
        stalwick.open_vcs(path)
    file = stalwick.open_vcs(path, allow_incomplete=True)
    assert not file.closed_by_conversion
    assert file.header["TimeClosed"] is None
    assert file.num_samples == 1024


@pytest.mark.parametrize("size", [0, 1, 16383])
def test_a_file_shorter_than_its_header_raises(tmp_path: Path, size: int) -> None:
    path = write(tmp_path / "CSC3.vcs", channel_file("CSC3", RATE, full_records(1))[:size])
    with pytest.raises(stalwick.DamagedFileError, match="ends inside its header") as caught:
        stalwick.open_vcs(path, allow_incomplete=True)
    assert caught.value.byte == size


def test_every_header_line_must_be_there_in_its_place(tmp_path: Path) -> None:
    lines = channel_header("CSC3", RATE)
    for missing in range(len(lines)):
        block = header_block(lines[:missing] + lines[missing + 1 :])
        with pytest.raises(stalwick.DamagedFileError):
            stalwick.open_vcs(write(tmp_path / "CSC3.vcs", block))


@pytest.mark.parametrize(
    "line, instead",
    [
        (1, "-FileType Event"),
        (2, "-FileVersion 3.5"),
        (3, "-FileUUID 7d444840-9dc0-11d1-b245-5ffdce74fad2"),
        (6, "-TimeCreated 2026/13/21 09:05:07"),
        (9, "-RecordSize 1045"),
        (12, "-AcqEntName CSC4"),
        (15, "-SamplingFrequency 30001"),
        (17, "-ADBitVolts 0.000003999999999999999818"),
        (20, "-InputRange 131073"),
    ],
)
def test_a_header_value_that_the_format_fixes_is_checked(
    tmp_path: Path, line: int, instead: str
) -> None:
    lines = channel_header("CSC3", RATE)
    lines[line] = instead
    body = channel_file("CSC3", RATE, full_records(1))[HEADER_SIZE:]
    path = write(tmp_path / "CSC3.vcs", header_block(lines) + body)
    with pytest.raises(stalwick.DamagedFileError, match="CSC3.vcs"):
        stalwick.open_vcs(path)


def test_padding_of_the_header_must_be_zero(tmp_path: Path) -> None:
    data = bytearray(channel_file("CSC3", RATE, []))
    data[16000] = 1
    with pytest.raises(stalwick.DamagedFileError, match="padding") as caught:
        stalwick.open_vcs(write(tmp_path / "CSC3.vcs", bytes(data)))
    assert caught.value.byte == 16000


def test_a_missing_file_is_named(tmp_path: Path) -> None:
    with pytest.raises(stalwick.StalwickError, match="gone.vcs: cannot open it: No such file"):
        stalwick.open_vcs(tmp_path / "gone.vcs")


def test_a_closed_file_says_so(tmp_path: Path) -> None:
    with open_built(tmp_path, full_records(1)) as file:
        file.traces()
    with pytest.raises(stalwick.StalwickError, match="closed by this program"):
        file.traces()


def test_records_are_views_of_the_mapped_file(tmp_path: Path) -> None:
    file = open_built(tmp_path, full_records(2))
    assert not file.records.flags.writeable
    assert not file.records.flags.owndata
    assert file.records["samples"][1, :3].tolist() == ramp(512, 3)
