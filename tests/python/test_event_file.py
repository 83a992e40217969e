# SPDX-License-Identifier: BSD-3-Clause

"""Event files: times, values, lines."""

from pathlib import Path

import pytest

import stalwick
from output_files import HEADER_SIZE, event_file, write

EVENTS = [(1000, 0b0001), (2000, 0b1000_0001), (3000, 0b1000_0000), (3500, 0)]


def open_built(tmp_path: Path, events: list[tuple[int, int]]) -> stalwick.EventFile:
    return stalwick.open_vev(write(tmp_path / "Events.vev", event_file(events)))


def test_times_and_values_are_those_of_the_records(tmp_path: Path) -> None:
    events = open_built(tmp_path, EVENTS).events
    assert len(events) == 4
    assert events.times.tolist() == [1000, 2000, 3000, 3500]
    assert events.ttl.tolist() == [1, 129, 128, 0]


def test_lines_change_from_one_event_to_the_next(tmp_path: Path) -> None:
    events = open_built(tmp_path, EVENTS).events
    assert events.previous.tolist() == [-1, 1, 129, 128]
    assert events.changed.tolist() == [0, 128, 1, 128]
    assert events.rising.tolist() == [0, 128, 0, 0]
    assert events.falling.tolist() == [0, 0, 1, 128]
    assert events.rising_times(7).tolist() == [2000]
    assert events.falling_times(7).tolist() == [3500]


def test_the_first_event_has_changes_once_the_value_before_it_is_given(tmp_path: Path) -> None:
    events = open_built(tmp_path, EVENTS).events.with_initial(0b0010)
    assert events.rising_times(0).tolist() == [1000]
    assert events.falling_times(1).tolist() == [1000]
    with pytest.raises(ValueError, match="0 to 255, not 256"):
        events.with_initial(256)


@pytest.mark.parametrize("line", [-1, 8])
def test_there_are_eight_lines(tmp_path: Path, line: int) -> None:
    with pytest.raises(ValueError, match="0 to 7"):
        open_built(tmp_path, EVENTS).events.rising_times(line)


def test_a_recording_without_changes_has_no_events(tmp_path: Path) -> None:
    events = open_built(tmp_path, []).events
    assert len(events) == 0
    assert events.rising_times(0).tolist() == []


@pytest.mark.parametrize(
    "offset, byte, reason",
    [
        (0, 1, "reserved"),
        (5, 1, "reserved"),
        (14, 22, "eventId"),
        (17, 1, "0 to 255"),
        (16, 1, "no change"),
        (18, 9, "reserved"),
        (55, 9, "reserved"),
        (56, ord("t"), "eventString"),
        (67, ord("!"), "eventString"),
        (183, 1, "eventString"),
    ],
)
def test_a_wrong_byte_is_named_with_its_record(
    tmp_path: Path, offset: int, byte: int, reason: str
) -> None:
    data = bytearray(event_file(EVENTS))
    data[HEADER_SIZE + 184 + offset] = byte
    path = write(tmp_path / "Events.vev", bytes(data))
    with pytest.raises(stalwick.DamagedFileError, match=reason) as caught:
        print(stalwick.open_vev(path).events)
    assert caught.value.record == 1
    assert 0 <= caught.value.byte - (HEADER_SIZE + 184) <= offset


def test_a_cut_record_raises_unless_incomplete_files_are_allowed(tmp_path: Path) -> None:
    path = write(tmp_path / "Events.vev", event_file(EVENTS)[:-100])
    with pytest.raises(stalwick.IncompleteFileError, match="record 3"):
        stalwick.open_vev(path)
    assert len(stalwick.open_vev(path, allow_incomplete=True).events) == 3


def test_a_time_of_the_whole_range_is_kept(tmp_path: Path) -> None:
    events = open_built(tmp_path, [(2**63 - 1, 1), (-1, 2)]).events
    assert events.times.tolist() == [2**63 - 1, -1]
