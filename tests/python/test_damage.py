# SPDX-License-Identifier: BSD-3-Clause

"""A thousand random changes of bytes and lengths: a damaged set raises, or the result is exactly
the changed bytes, and then the change is one that the format cannot detect."""

from __future__ import annotations

import random
import shutil
import warnings
from pathlib import Path

import pytest

import stalwick
from output_files import (
    HEADER_SIZE,
    channel_file,
    event_file,
    raw_file,
    read_channel,
    read_events,
    read_raw,
    write,
)

CHANGES = 1000
CHANNELS = ["CSC1", "CSC2", "CSC3", "Base_LAX", "Base_LAY", "Ultrasonic"]
RATES = {"CSC": 30000, "Base": 3000, "Ultrasonic": 210000}
SAMPLES = {"CSC": 1100, "Base": 700, "Ultrasonic": 600}
RECORD_SIZES = {".vcs": 1044, ".vev": 184, ".vrd": 4 * (3 + 18)}
#: Header values that nothing else in the set repeats.
FREE_LINES = [b"-FileUUID ", b"-OriginalFileName ", b"-TimeCreated ", b"-TimeClosed "]


def kind(entity: str) -> str:
    return "CSC" if entity.startswith("CSC") else entity.split("_")[0]


def make_set(directory: Path, numbers: random.Random) -> None:
    for entity in CHANNELS:
        rate, count = RATES[kind(entity)], SAMPLES[kind(entity)]
        samples = [numbers.choice([-1, 1]) * numbers.randint(1, 2000) for _ in range(count)]
        records = [
            (7_000_000 + start * 1_000_000 // rate, samples[start : start + 512])
            for start in range(0, count, 512)
        ]
        write(directory / f"{entity}.vcs", channel_file(entity, rate, records))
    events = [(7_000_000 + 3000 * i, (i + 1) % 3) for i in range(12)]
    write(directory / "Events.vev", event_file(events))
    raw = [
        (7_000_000 + 33 * i, 0, [numbers.randint(-400000, 400000) for _ in range(3)])
        for i in range(SAMPLES["CSC"])
    ]
    write(directory / "RawData.vrd", raw_file(3, 30000, raw))


def choose_position(data: bytes, numbers: random.Random) -> int:
    part = numbers.random()
    text = len(data[:HEADER_SIZE].rstrip(b"\0"))
    if part < 0.2:
        return numbers.randrange(text)
    if part < 0.25:
        return numbers.randrange(text, HEADER_SIZE)
    return numbers.randrange(HEADER_SIZE, len(data))


def change_bytes(data: bytearray, numbers: random.Random) -> list[int]:
    """Changes one byte or several; returns their positions."""
    count = numbers.choice([1, 1, 1, 2, 8])
    start = choose_position(bytes(data), numbers)
    places = list(range(start, min(start + count, len(data))))
    for place in places:
        data[place] ^= numbers.choice([1 << numbers.randrange(8), numbers.randrange(1, 256)])
    return places


def change_length(data: bytearray, record: int, numbers: random.Random) -> None:
    """Cuts, extends, removes or inserts; half the time by whole records."""
    amount = record * numbers.randint(1, 2) if numbers.random() < 0.5 else numbers.randint(1, 3000)
    amount = min(amount, len(data))
    start = choose_position(bytes(data), numbers)
    what = numbers.randrange(5)
    if what == 0:
        del data[len(data) - amount :]
    elif what == 1:
        data += bytes(amount)
    elif what == 2:
        data += data[-amount:]
    elif what == 3:
        del data[start : start + amount]
    else:
        data[start:start] = numbers.randbytes(amount)


def is_in_free_value(data: bytes, place: int) -> bool:
    """Whether the byte belongs to a header value that the format does not restrict."""
    start = data.rfind(b"\n", 0, place) + 1
    line = data[start : data.find(b"\r\n", start)]
    return any(
        line.startswith(key) and start + len(key) <= place < start + len(line) for key in FREE_LINES
    )


def cannot_be_seen(name: str, original: bytes, place: int) -> bool:
    """Whether docs/output-files.md allows another byte in that place."""
    if place < HEADER_SIZE:
        return is_in_free_value(original, place)
    record, offset = divmod(place - HEADER_SIZE, RECORD_SIZES[name[-4:]])
    if name.endswith(".vev"):
        return 6 <= offset < 14 or offset == 16
    if name.endswith(".vrd"):
        return False
    start = HEADER_SIZE + record * 1044
    valid = int.from_bytes(original[start + 16 : start + 20], "little")
    if name == "Ultrasonic.vcs" and (offset < 8 or 16 <= offset < 20):
        return True
    return 20 <= offset < 20 + 2 * valid


def read_all(directory: Path) -> dict[str, object]:
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with stalwick.open_session(directory) as session:
            found: dict[str, object] = {}
            for group in session.groups.values():
                traces, times = group.traces(), group.times().tolist()
                for i, channel in enumerate(group.channel_ids):
                    found[channel] = (traces[:, i].tolist(), times)
            events = session.events
            found["Events"] = list(zip(events.times.tolist(), events.ttl.tolist()))
            raw = session.raw
            assert raw is not None
            found["RawData"] = list(
                zip(raw.times().tolist(), raw.ttl().tolist(), raw.traces().tolist())
            )
            return found


def expect_all(directory: Path) -> dict[str, object]:
    found: dict[str, object] = {}
    for path in directory.iterdir():
        data = path.read_bytes()
        if path.suffix == ".vcs":
            found[path.stem] = read_channel(data)
        elif path.suffix == ".vev":
            found[path.stem] = read_events(data)
        else:
            found[path.stem] = read_raw(data, 3)
    return found


def damage_one_file(directory: Path, numbers: random.Random) -> tuple[str, bool]:
    """Damages a file of the set. Returns what was done, and whether it may stay undetected."""
    path = numbers.choice(sorted(directory.iterdir()))
    original = path.read_bytes()
    data = bytearray(original)
    if numbers.random() < 0.7:
        places = change_bytes(data, numbers)
        unseen = all(cannot_be_seen(path.name, original, place) for place in places)
        what = f"bytes {places[0]} to {places[-1]}"
    else:
        change_length(data, RECORD_SIZES[path.suffix], numbers)
        # Nothing shows how many events or ultrasonic values there are.
        alone = path.suffix == ".vev" or path.stem == "Ultrasonic"
        unseen = alone and data[:HEADER_SIZE] == original[:HEADER_SIZE]
        what = f"length {len(original)} to {len(data)}"
    if data == original:
        return f"{path.name}: nothing", True
    path.write_bytes(data)
    return f"{path.name}: {what}", unseen


@pytest.mark.parametrize("seed", range(0, CHANGES, 100))
def test_a_damaged_set_raises_or_is_read_as_its_bytes_are(tmp_path: Path, seed: int) -> None:
    whole = tmp_path / "whole"
    whole.mkdir()
    make_set(whole, random.Random(seed))
    assert read_all(whole) == expect_all(whole)
    raised = 0
    for number in range(seed, seed + 100):
        damaged = tmp_path / "damaged"
        shutil.copytree(whole, damaged)
        what, may_stay_unseen = damage_one_file(damaged, random.Random(number))
        try:
            found = read_all(damaged)
        except stalwick.StalwickError as error:
            raised += 1
            assert str(damaged) in str(error), f"{number}: {what}: {error} names no file"
        else:
            assert may_stay_unseen, f"{number}: {what}: nothing was raised"
            assert found == expect_all(damaged), f"{number}: {what}: other values"
        shutil.rmtree(damaged)
    assert 30 < raised < 100, "the changes are not of both kinds"
