# SPDX-License-Identifier: BSD-3-Clause

"""The layouts of docs/output-files.md as NumPy types. All numbers are little-endian."""

from __future__ import annotations

from typing import Final

import numpy as np

HEADER_SIZE: Final = 16384
SAMPLES_PER_RECORD: Final = 512
MICROSECONDS_PER_SECOND: Final = 1_000_000

#: One record of a channel file, 1044 bytes.
CHANNEL_RECORD: Final = np.dtype(
    [
        ("timestamp", "<u8"),
        ("channelNumber", "<u4"),
        ("sampleFrequency", "<u4"),
        ("numValidSamples", "<u4"),
        ("samples", "<i2", (SAMPLES_PER_RECORD,)),
    ]
)

#: One record of the event file, 184 bytes.
EVENT_RECORD: Final = np.dtype(
    [
        ("reserved", "<u2", (3,)),
        ("timestamp", "<u8"),
        ("eventId", "<u2"),
        ("ttlValue", "<u2"),
        ("reserved2", "u1", (38,)),
        ("eventString", "S128"),
    ]
)
TTL_EVENT_ID: Final = 21
TTL_EVENT_TEXT: Final = b"TTL Change."

#: 32-bit words of a raw record before and after its values.
RAW_WORDS_BEFORE: Final = 17
RAW_WORDS_AROUND: Final = 18
RAW_MARKER: Final = 2048
RAW_IDENTIFIER: Final = 1

#: The size of one step of a value in a channel file and in the raw data file.
CHANNEL_MICROVOLTS: Final = 4.0
RAW_MICROVOLTS: Final = 1.5625e-2

AXES: Final = ("LAX", "LAY", "LAZ", "AVX", "AVY", "AVZ", "MX", "MY", "MZ")
MAX_AD_CHANNELS: Final = 256
#: Numbers of channels that a packet can describe.
PACKET_CHANNELS: Final = (32, 64, 128, 256)


def raw_record_type(channels: int) -> np.dtype[np.void]:
    """The layout of a raw record with that many AD values."""
    return np.dtype(
        [
            ("marker", "<u4"),
            ("identifier", "<u4"),
            ("size", "<u4"),
            ("timeHigh", "<u4"),
            ("timeLow", "<u4"),
            ("status", "<u4"),
            ("ttl", "<u4"),
            ("reserved", "<u4", (10,)),
            ("values", "<i4", (channels,)),
            ("checksum", "<u4"),
        ]
    )
