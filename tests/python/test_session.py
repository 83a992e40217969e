# SPDX-License-Identifier: BSD-3-Clause

"""Sets of files: files that belong together, and files that are read together."""

import shutil
import warnings
from pathlib import Path

import numpy as np
import pytest

import stalwick
from output_files import AXES, HEADER_SIZE, channel_file, event_file, raw_file, write

RATE = 30000
COUNT = 1000


def value(channel: int, sample: int) -> int:
    return (channel * 1000 + sample * 7) % 4000 - 2000


def records(channel: int, count: int = COUNT, rate: int = RATE) -> list[tuple[int, list[int]]]:
    samples = [value(channel, i) for i in range(count)]
    return [
        (5_000_000 + start * 1_000_000 // rate, samples[start : start + 512])
        for start in range(0, count, 512)
    ]


@pytest.fixture
def directory(tmp_path: Path) -> Path:
    """A set with 12 A/D channels, the base unit, events and raw data."""
    for channel in range(12):
        name = f"CSC{channel + 1}"
        write(tmp_path / f"{name}.vcs", channel_file(name, RATE, records(channel)))
    for channel, axis in enumerate(AXES):
        name = f"Base_{axis}"
        data = channel_file(name, 3000, records(channel, COUNT // 10, 3000))
        write(tmp_path / f"{name}.vcs", data)
    write(tmp_path / "Events.vev", event_file([(5_010_000, 5), (5_020_000, 4)]))
    raw = [
        (5_000_000 + i * 100 // 3, 5 if 300 <= i < 600 else 4, [value(c, i) for c in range(12)])
        for i in range(COUNT)
    ]
    write(tmp_path / "RawData.vrd", raw_file(12, RATE, raw))
    return tmp_path


def expected(channels: list[int], start: int, stop: int) -> list[list[int]]:
    return [[value(c, i) for c in channels] for i in range(start, stop)]


def test_channels_stand_in_the_order_of_their_numbers(directory: Path) -> None:
    session = stalwick.open_session(directory)
    assert session.channel_ids == [f"CSC{n}" for n in range(1, 13)]
    assert session.imu["Base"].channel_ids == [f"Base_{axis}" for axis in AXES]
    assert list(session.imu) == ["Base"]


def test_traces_are_samples_by_channels(directory: Path) -> None:
    session = stalwick.open_session(directory)
    assert session.traces(start=500, stop=520).tolist() == expected(list(range(12)), 500, 520)
    assert session.traces(["CSC10", "CSC2"], 3, 5).tolist() == expected([9, 1], 3, 5)
    assert session.traces([9, 1], 3, 5).tolist() == expected([9, 1], 3, 5)
    assert session.traces([0], 3, 4, units="uV").tolist() == [[4.0 * value(0, 3)]]


def test_the_fields_names_give_the_same(directory: Path) -> None:
    session = stalwick.open_session(directory)
    assert session.sampling_frequency == session.get_sampling_frequency() == 30000.0
    assert session.get_num_channels() == 12
    assert session.get_num_frames() == session.get_num_samples() == session.num_samples == COUNT
    assert session.get_channel_ids() == session.channel_ids
    assert session.get_dtype() == np.int16
    gains, offsets = session.get_channel_gains(), session.get_channel_offsets()
    assert (gains.tolist(), offsets.tolist()) == ([4.0] * 12, [0.0] * 12)
    traces = session.get_traces(start_frame=510, end_frame=515, channel_ids=["CSC3"])
    assert traces.tolist() == expected([2], 510, 515)
    scaled = session.get_traces(510, 515, ["CSC3"], return_in_uV=True)
    assert np.array_equal(scaled, traces * gains[0] + offsets[0])


def test_inertial_values_are_read_like_channels(directory: Path) -> None:
    base = stalwick.open_session(directory).imu["Base"]
    assert base.sampling_frequency == 3000.0
    assert base.traces(["Base_MZ"], 98, 100).tolist() == expected([8], 98, 100)
    assert base.times(1, 3).tolist() == [5_000_333, 5_000_666]
    assert base.get_channel_gains().tolist() == [1.0] * 9
    with pytest.raises(ValueError, match="no voltages"):
        base.traces(units="uV")


@pytest.mark.parametrize("channels", [["CSC13"], ["csc1"], [12], [-1]])
def test_an_unknown_channel_is_refused(directory: Path, channels: list) -> None:
    with pytest.raises((KeyError, IndexError), match="channel"):
        stalwick.open_session(directory).traces(channels)


def test_one_name_is_no_list_of_channels(directory: Path) -> None:
    with pytest.raises(TypeError, match="list"):
        stalwick.open_session(directory).traces("CSC1")


def test_events_know_their_first_change_from_the_raw_data(directory: Path) -> None:
    events = stalwick.open_session(directory).events
    assert events.times.tolist() == [5_010_000, 5_020_000]
    assert events.previous.tolist() == [4, 5]
    assert events.rising_times(0).tolist() == [5_010_000]
    (directory / "RawData.vrd").unlink()
    assert stalwick.open_session(directory).events.previous.tolist() == [-1, 5]


def test_event_times_lead_to_frames(directory: Path) -> None:
    session = stalwick.open_session(directory)
    assert session.frames_at(session.events.times).tolist() == [300, 600]


def test_groups_that_are_not_there_say_so(directory: Path) -> None:
    session = stalwick.open_session(directory)
    with pytest.raises(stalwick.StalwickError, match="no Ultrasonic channels"):
        print(session.ultrasonic)
    for path in directory.glob("CSC*.vcs"):
        path.unlink()
    (directory / "Events.vev").unlink()
    session = stalwick.open_session(directory)
    with pytest.raises(stalwick.StalwickError, match="no AD channels"):
        session.traces()
    with pytest.raises(stalwick.StalwickError, match="no event file"):
        print(session.events)
    assert session.imu["Base"].num_samples == 100


def test_headers_are_there_by_entity(directory: Path) -> None:
    headers = stalwick.open_session(directory).headers
    assert len(headers) == 12 + 9 + 2
    assert headers["RawData"]["NumADChannels"] == 12
    assert headers["CSC7"]["ADChannel"] == 6


def test_files_of_further_conversions_are_sessions_of_their_own(directory: Path) -> None:
    other = channel_file("CSC1", RATE, records(5, 40))
    write(directory / "CSC1_01.vcs", other)
    session = stalwick.open_session(directory)
    assert session.other_runs == ["_01"]
    assert session.num_samples == COUNT
    second = stalwick.open_session(directory, suffix="_01")
    assert second.channel_ids == ["CSC1"]
    assert second.traces().tolist() == expected([5], 0, 40)
    with pytest.raises(stalwick.StalwickError, match="no outputs with _02"):
        stalwick.open_session(directory, suffix="_02")


def test_a_list_of_files_is_a_session(directory: Path) -> None:
    session = stalwick.open_session([directory / "CSC2.vcs", directory / "CSC5.vcs"])
    assert session.traces(stop=2).tolist() == expected([1, 4], 0, 2)
    with pytest.raises(stalwick.InconsistentSetError, match="CSC2 too"):
        stalwick.open_session([directory / "CSC2.vcs"] * 2)


def test_an_empty_and_a_missing_directory_are_named(tmp_path: Path) -> None:
    with pytest.raises(stalwick.StalwickError, match="no outputs"):
        stalwick.open_session(tmp_path)
    with pytest.raises(stalwick.StalwickError, match="gone: cannot list it"):
        stalwick.open_session(tmp_path / "gone")


def test_two_swapped_files_are_found(directory: Path) -> None:
    first, second = directory / "CSC1.vcs", directory / "CSC2.vcs"
    first.rename(directory / "x")
    second.rename(first)
    (directory / "x").rename(second)
    with pytest.raises(stalwick.InconsistentSetError, match="CSC1.vcs: its header says .* CSC2"):
        stalwick.open_session(directory)


def test_a_file_of_another_recording_is_found(directory: Path) -> None:
    path = directory / "CSC4.vcs"
    data = path.read_bytes()
    write(path, data.replace(b"-SessionUUID 0f", b"-SessionUUID 1f"))
    with pytest.raises(stalwick.InconsistentSetError, match="not made from one recording"):
        stalwick.open_session(directory)


def test_a_file_with_another_range_of_values_is_named(directory: Path) -> None:
    path = directory / "Base_MX.vcs"
    data = path.read_bytes()
    write(path, data.replace(b"-ADMaxValue 32767", b"-ADMaxValue 32766"))
    with pytest.raises(stalwick.InconsistentSetError, match="Base_MX.vcs: its -ADMaxValue"):
        stalwick.open_session(directory)


@pytest.mark.parametrize("name", ["CSC1", "CSC7", "CSC12", "Base_MZ"])
def test_a_channel_that_lost_whole_records_is_found(directory: Path, name: str) -> None:
    path = directory / f"{name}.vcs"
    write(path, path.read_bytes()[: HEADER_SIZE + (1044 if name[0] == "C" else 0)])
    with pytest.raises(stalwick.InconsistentSetError, match="records"):
        stalwick.open_session(directory)


def test_raw_data_that_lost_whole_records_are_found(directory: Path) -> None:
    path = directory / "RawData.vrd"
    write(path, path.read_bytes()[: -4 * 30])
    with pytest.raises(stalwick.InconsistentSetError, match="999 records; .* 1000 samples"):
        stalwick.open_session(directory)


@pytest.mark.parametrize("offset, what", [(0, "timestamp"), (16, "numValid")])
def test_a_record_head_unlike_the_other_channels_is_found(
    tmp_path: Path, offset: int, what: str
) -> None:
    for channel in range(3):
        name = f"CSC{channel + 1}"
        write(tmp_path / f"{name}.vcs", channel_file(name, RATE, records(0, 2000)))
    path = tmp_path / "CSC2.vcs"
    data = bytearray(path.read_bytes())
    data[HEADER_SIZE + 1044 + offset] ^= 1
    write(path, bytes(data))
    session = stalwick.open_session(tmp_path)
    assert len(session.traces(stop=512)) == 512
    with pytest.raises(stalwick.DamagedFileError, match=what) as caught:
        session.traces()
    assert (caught.value.path, caught.value.record) == (path, 1)


def test_channels_that_packets_do_not_carry_are_left_out_with_a_warning(tmp_path: Path) -> None:
    for channel in range(40):
        name = f"CSC{channel + 1}"
        count = 600 if channel < 32 else 0
        write(tmp_path / f"{name}.vcs", channel_file(name, RATE, records(channel, count)))
    with pytest.warns(stalwick.StalwickWarning, match="CSC33 to CSC40 have fewer samples"):
        session = stalwick.open_session(tmp_path)
    assert session.channel_ids == [f"CSC{n}" for n in range(1, 33)]
    assert list(session.ad.short_files) == [f"CSC{n}" for n in range(33, 41)]
    incomplete = stalwick.open_session(tmp_path, allow_incomplete=True)
    assert incomplete.num_samples == 600
    assert incomplete.channel_ids == session.channel_ids
    with pytest.raises(KeyError, match="CSC40 has fewer samples"):
        session.traces(["CSC40"])


def test_an_incomplete_set_is_read_as_far_as_all_channels_go(tmp_path: Path) -> None:
    for channel, kept in enumerate([3, 2, 3]):
        name = f"CSC{channel + 1}"
        data = channel_file(name, RATE, records(channel, 1600)[:kept], closed=False)
        write(tmp_path / f"{name}.vcs", data + bytes(100 * channel))
    with pytest.raises(stalwick.IncompleteFileError, match="allow_incomplete"):
        stalwick.open_session(tmp_path)
    session = stalwick.open_session(tmp_path, allow_incomplete=True)
    assert session.traces().tolist() == expected([0, 1, 2], 0, 1024)


def test_a_set_is_silent_when_all_is_well(directory: Path) -> None:
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with stalwick.open_session(directory) as session:
            session.traces()


def test_a_moved_directory_opens(directory: Path, tmp_path_factory: pytest.TempPathFactory) -> None:
    moved = tmp_path_factory.mktemp("moved") / "a name with ü and blanks"
    shutil.move(directory, moved)
    assert stalwick.open_session(moved).num_samples == COUNT
