# SPDX-License-Identifier: BSD-3-Clause

"""Builds and reads output files byte by byte, from docs/output-files.md and with struct alone:
it shares nothing with the package under test."""

from __future__ import annotations

import struct
from pathlib import Path

HEADER_SIZE = 16384
AXES = ["LAX", "LAY", "LAZ", "AVX", "AVY", "AVZ", "MX", "MY", "MZ"]
SESSION = "0f8fad5b-d9cb-469f-a165-70867728950e"
UUID = "7d444840-9dc0-41d1-b245-5ffdce74fad2"


def common_lines(kind: str, version: str, record_size: int, entity: str, closed: bool) -> list[str]:
    return [
        "######## Veltrosyn Data File Header",
        f"-FileType {kind}",
        f"-FileVersion {version}",
        f"-FileUUID {UUID}",
        f"-SessionUUID {SESSION}",
        f'-OriginalFileName "/data/out/recording/{entity}"',
        "-TimeCreated 2026/11/21 09:05:07",
        "-TimeClosed " + ("2026/11/21 09:07:12" if closed else "File was not closed properly"),
        "",
        f"-RecordSize {record_size}",
        '-ApplicationName "Veltrosyn Stalwick" "1.2.0.1941"',
        "-AcquisitionSystem Unknown Unit7",
        f"-AcqEntName {entity}",
    ]


def header_block(lines: list[str]) -> bytes:
    return "".join(line + "\r\n" for line in lines).encode().ljust(HEADER_SIZE, b"\0")


def channel_index(entity: str) -> int:
    if entity.startswith("CSC"):
        return int(entity[3:]) - 1
    return 0 if entity == "Ultrasonic" else AXES.index(entity.split("_")[1])


def channel_header(entity: str, rate: int, closed: bool = True) -> list[str]:
    return common_lines("CSC", "3.4", 1044, entity, closed) + [
        "-ProbeName Unknown",
        '-ReferenceChannel "External Hardware Reference"',
        f"-SamplingFrequency {rate:g}",
        "-ADMaxValue 32767",
        "-ADBitVolts 0.000003999999999999999819",
        "-NumADChannels 1",
        f"-ADChannel {channel_index(entity)}",
        "-InputRange 131072",
    ]


def channel_record(entity: str, rate: int, time: int, samples: list[int]) -> bytes:
    unused = [0] * (512 - len(samples))
    head = struct.pack("<QIII", time % 2**64, channel_index(entity), rate, len(samples))
    return head + struct.pack("<512h", *samples, *unused)


def channel_file(
    entity: str, rate: int, records: list[tuple[int, list[int]]], closed: bool = True
) -> bytes:
    """records: (time in microseconds, samples) of each."""
    body = b"".join(channel_record(entity, rate, time, samples) for time, samples in records)
    return header_block(channel_header(entity, rate, closed)) + body


def event_record(time: int, ttl: int) -> bytes:
    reserved = struct.pack("<3H", 0, 0, 0)
    text = b"TTL Change.".ljust(128, b"\0")
    return reserved + struct.pack("<QHH", time % 2**64, 21, ttl) + bytes(38) + text


def event_file(events: list[tuple[int, int]]) -> bytes:
    """events: (time in microseconds, new TTL value) of each."""
    lines = common_lines("Event", "3.2", 184, "Events", closed=False)
    return header_block(lines) + b"".join(event_record(*event) for event in events)


def raw_record(channels_in_header: int, time: int, ttl: int, values: list[int]) -> bytes:
    words = [2048, 1, channels_in_header + 10, time >> 32, time & 0xFFFFFFFF, 0, ttl]
    words += [0] * 10 + [value & 0xFFFFFFFF for value in values]
    checksum = 0
    for word in words:
        checksum ^= word
    return struct.pack(f"<{len(words) + 1}I", *words, checksum)


def raw_file(
    channels: int, rate: int, records: list[tuple[int, int, list[int]]], closed: bool = True
) -> bytes:
    """records: (time in microseconds, TTL value, AD values) of each."""
    lines = common_lines("Raw", "3.4", 0, "RawData", closed) + [
        f"-SamplingFrequency {rate:g}",
        "-ADMaxValue 8388608",
        "-ADBitVolts 1.562500e-08",
        f"-NumADChannels {channels}",
    ]
    return header_block(lines) + b"".join(raw_record(channels, *record) for record in records)


def signed64(value: int) -> int:
    return value - 2**64 if value >= 2**63 else value


def read_channel(data: bytes) -> tuple[list[int], list[int]]:
    """Samples and their times in microseconds, as the documentation defines them."""
    samples: list[int] = []
    times: list[int] = []
    for start in range(HEADER_SIZE, len(data) - 1043, 1044):
        time, _, rate, count = struct.unpack_from("<QIII", data, start)
        samples += struct.unpack_from(f"<{count}h", data, start + 20)
        times += [signed64(time) + i * 1_000_000 // rate for i in range(count)]
    return samples, times


def read_events(data: bytes) -> list[tuple[int, int]]:
    """(time, TTL value) of each event."""
    return [
        (signed64(time), ttl)
        for time, ttl in (
            struct.unpack_from("<QxxH", data, start + 6)
            for start in range(HEADER_SIZE, len(data) - 183, 184)
        )
    ]


def read_raw(data: bytes, channels: int) -> list[tuple[int, int, list[int]]]:
    """(time, TTL value, AD values) of each record, if all have that many values."""
    records = []
    for start in range(HEADER_SIZE, len(data), 4 * (channels + 18)):
        high, low, _, ttl = struct.unpack_from("<4I", data, start + 12)
        values = struct.unpack_from(f"<{channels}i", data, start + 68)
        records.append((signed64(high << 32 | low), ttl, list(values)))
    return records


def write(path: Path, data: bytes) -> Path:
    path.write_bytes(data)
    return path
