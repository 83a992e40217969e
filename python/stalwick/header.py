# SPDX-License-Identifier: BSD-3-Clause

"""The header block: lines of key, blank and value, in one order (docs/output-files.md)."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Final

from .errors import DamagedFileError
from .layout import AXES, HEADER_SIZE, MAX_AD_CHANNELS

#: Text, a whole number, or a fraction; None for the closing time of a file that was not closed.
HeaderValue = str | int | float | None
Header = dict[str, HeaderValue]

NOT_CLOSED: Final = "File was not closed properly"
TITLE: Final = "######## Veltrosyn Data File Header"

_TIME: Final = (
    r"\d{4}/(0[1-9]|1[0-2])/(0[1-9]|[12]\d|3[01]) ([01]\d|2[0-3]):[0-5]\d:([0-5]\d|60)"
)
_UUID: Final = r"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"
_NUMBER: Final = r"\d+(\.\d+)?(e[+-]\d+)?"
_CHANNEL: Final = rf"CSC[1-9]\d{{0,2}}|(Base|AFE)_({'|'.join(AXES)})|Ultrasonic"


def _common(file_type: str, version: str, record_size: int, entity: str) -> list[tuple[str, str]]:
    return [
        ("FileType", file_type),
        ("FileVersion", re.escape(version)),
        ("FileUUID", _UUID),
        ("SessionUUID", ".*"),
        ("OriginalFileName", '".*"?'),
        ("TimeCreated", _TIME),
        ("TimeClosed", f"{_TIME}|{NOT_CLOSED}"),
        ("", ""),
        ("RecordSize", str(record_size)),
        ("ApplicationName", '"Veltrosyn Stalwick" "[^"]+"'),
        ("AcquisitionSystem", "Unknown .*"),
        ("AcqEntName", entity),
    ]


#: For each kind of file the keys in their order, each with a pattern for its value.
_LINES: Final = {
    "CSC": _common("CSC", "3.4", 1044, _CHANNEL)
    + [
        ("ProbeName", "Unknown"),
        ("ReferenceChannel", '"External Hardware Reference"'),
        ("SamplingFrequency", _NUMBER),
        ("ADMaxValue", r"\d+"),
        ("ADBitVolts", r"0\.000003999999999999999819"),
        ("NumADChannels", "1"),
        ("ADChannel", r"\d{1,3}"),
        ("InputRange", "131072"),
    ],
    "Event": _common("Event", "3.2", 184, "Events"),
    "Raw": _common("Raw", "3.4", 0, "RawData")
    + [
        ("SamplingFrequency", _NUMBER),
        ("ADMaxValue", "8388608"),
        ("ADBitVolts", r"1\.562500e-08"),
        ("NumADChannels", r"\d{1,3}"),
    ],
}
_WHOLE_NUMBERS: Final = {"RecordSize", "ADMaxValue", "NumADChannels", "ADChannel", "InputRange"}
_FRACTIONS: Final = {"SamplingFrequency", "ADBitVolts"}


def parse_header(block: bytes, path: Path, file_type: str) -> Header:
    """The fields of a header block of 16,384 bytes, by their keys without the leading "-".

    file_type is CSC, Event or Raw. Every line must match the format, so that damage to a
    header is detected as far as possible; raises DamagedFileError.
    """
    lines = _split(block, path)
    fields: Header = {}
    position = len(TITLE) + 2
    expected = _LINES[file_type]
    for number, (key, pattern) in enumerate(expected):
        line = lines[number] if number < len(lines) else ""
        if key:
            match = re.fullmatch(f"-{key} ({pattern})", line, re.DOTALL)
            if match is None:
                wrong = f"header line {number + 2} is {line!r}, not the {key} of a {file_type} file"
                raise DamagedFileError(path, wrong, byte=position)
            fields[key] = _convert(key, match[1])
        elif line:
            raise DamagedFileError(path, f"header line {number + 2} is not empty", byte=position)
        position += len(line.encode()) + 2
    if len(lines) > len(expected):
        raise DamagedFileError(path, "the header has more lines than it should", byte=position)
    _check_channel(fields, path, file_type)
    return fields


def _split(block: bytes, path: Path) -> list[str]:
    """The lines after the title."""
    if len(block) < HEADER_SIZE:
        reason = f"the file ends inside its header block of {HEADER_SIZE} bytes"
        raise DamagedFileError(path, reason, byte=len(block))
    length = block.find(b"\0")
    text = block if length < 0 else block[:length]
    padding = block[len(text) :]
    if padding.strip(b"\0"):
        byte = len(text) + len(padding) - len(padding.lstrip(b"\0"))
        raise DamagedFileError(path, "the header's padding is not zero", byte=byte)
    try:
        lines = text.decode("utf-8").split("\r\n")
    except UnicodeDecodeError as error:
        raise DamagedFileError(path, "the header is not UTF-8", byte=error.start) from None
    if lines[0] != TITLE:
        reason = "it does not begin like an output of Veltrosyn Stalwick"
        raise DamagedFileError(path, reason, byte=0)
    if lines[-1]:
        raise DamagedFileError(path, "the header's last line has no end", byte=len(text))
    return lines[1:-1]


def _convert(key: str, text: str) -> HeaderValue:
    if key in _WHOLE_NUMBERS:
        return int(text)
    if key in _FRACTIONS:
        return float(text)
    if key == "TimeClosed" and text == NOT_CLOSED:
        return None
    if key == "OriginalFileName":
        return text.removeprefix('"').removesuffix('"')
    return text


def _check_channel(fields: Header, path: Path, file_type: str) -> None:
    """Checks values that occur twice in one header, or that have a limit."""
    if file_type == "Raw" and whole(fields, "NumADChannels") > MAX_AD_CHANNELS:
        raise DamagedFileError(path, "more than 256 channels in the header", byte=0)
    if file_type != "CSC":
        return
    name = text(fields, "AcqEntName")
    if name != channel_name(name, whole(fields, "ADChannel")):
        raise DamagedFileError(path, f"-ADChannel in the header is not that of {name}", byte=0)


def channel_name(name: str, index: int) -> str:
    """The name of the channel at that position in the group of the channel `name`."""
    if name.startswith("CSC"):
        return f"CSC{index + 1}" if index < MAX_AD_CHANNELS else ""
    if name == "Ultrasonic":
        return name if index == 0 else ""
    return f"{name.split('_')[0]}_{AXES[index]}" if index < len(AXES) else ""


def text(fields: Header, key: str) -> str:
    value = fields[key]
    assert isinstance(value, str)
    return value


def whole(fields: Header, key: str) -> int:
    value = fields[key]
    assert isinstance(value, int)
    return value


def number(fields: Header, key: str) -> float:
    value = fields[key]
    assert isinstance(value, float)
    return value
