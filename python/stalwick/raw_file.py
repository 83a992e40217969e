# SPDX-License-Identifier: BSD-3-Clause

"""Raw data files, .vrd: one record per sample instant, with all A/D channels."""

from __future__ import annotations

import os
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .errors import DamagedFileError, IncompleteFileError
from .header import number, whole
from .layout import (
    HEADER_SIZE,
    PACKET_CHANNELS,
    RAW_IDENTIFIER,
    RAW_MARKER,
    RAW_MICROVOLTS,
    RAW_WORDS_AROUND,
    raw_record_type,
)
from .mapped_file import MappedFile
from .record_layout import check_range

#: Number of words of raw records read at a time: 4 MB.
_SCAN_WORDS = 1 << 20
#: Records of one packet, which all have the same number of values.
_PER_PACKET = 10


@dataclass(frozen=True)
class _Run:
    """Records of one length: the first record and its word, their number, the values in each."""

    record: int
    word: int
    count: int
    channels: int


class RawFile(MappedFile):
    """A raw data file. ``open_vrd`` makes it.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    header : dict
        Its header fields by their keys without the leading "-".
    header_channels : int
        Channels that the recording's header announces.

    Notes
    -----
    If packets describe another number of channels than the header, their records have that
    number of values. Every record that is read is checked, including its checksum.
    """

    def __init__(self, path: str | os.PathLike[str], allow_incomplete: bool = False) -> None:
        super().__init__(path, "Raw", allow_incomplete)
        self.header_channels = whole(self.header, "NumADChannels")
        self._words = self._whole_records(np.dtype("<u4"))
        self._runs = self._find_runs()

    def close(self) -> None:
        super().close()
        self._words = np.empty(0, "<u4")
        self._runs = []

    @property
    def sampling_frequency(self) -> float:
        """Samples per second as in the header, with six digits."""
        return number(self.header, "SamplingFrequency")

    @property
    def num_samples(self) -> int:
        """Records in the file."""
        return self._runs[-1].record + self._runs[-1].count if self._runs else 0

    @property
    def num_channels(self) -> int:
        """The number of values in the shortest record."""
        return min((run.channels for run in self._runs), default=self.header_channels)

    def traces(
        self,
        channels: list[int] | None = None,
        start: int | None = None,
        stop: int | None = None,
        units: str = "int32",
    ) -> NDArray[Any]:
        """Reads samples.

        Parameters
        ----------
        channels : list of int, optional
            Positions from 0. Default: all channels that every record has.
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.
        units : {"int32", "uV"}
            "int32" gives the file's values, "uV" float32 microvolts.

        Returns
        -------
        numpy.ndarray
            The samples as [sample, channel], a copy.

        Raises
        ------
        DamagedFileError
            A record that was read violates the format, or its checksum is wrong.
        """
        if units not in ("int32", "uV"):
            raise ValueError(f'units are "int32" or "uV", not {units!r}')
        first, last = check_range(start, stop, self.num_samples)
        wanted = list(range(self.num_channels)) if channels is None else list(channels)
        out = np.empty((last - first, len(wanted)), np.int32 if units == "int32" else np.float32)
        for position, records in self._read(first, last):
            have = records["values"].shape[1]
            if wanted and not 0 <= min(wanted) <= max(wanted) < have:
                raise IndexError(f"{self.path}: there are channels 0 to {have - 1}")
            values = records["values"][:, wanted]
            gain = 1 if units == "int32" else RAW_MICROVOLTS
            out[position - first : position - first + len(records)] = values * gain
        return out

    def times(self, start: int | None = None, stop: int | None = None) -> NDArray[np.int64]:
        """Reads when samples were taken, directly from the file.

        Parameters
        ----------
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.

        Returns
        -------
        numpy.ndarray of int64
            Microseconds.
        """
        first, last = check_range(start, stop, self.num_samples)
        out = np.empty(last - first, dtype=np.int64)
        for position, records in self._read(first, last):
            time = records["timeHigh"].astype(np.uint64) << np.uint64(32) | records["timeLow"]
            out[position - first : position - first + len(records)] = time.view(np.int64)
        return out

    def ttl(self, start: int | None = None, stop: int | None = None) -> NDArray[np.uint8]:
        """Reads the values of the TTL lines.

        Parameters
        ----------
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.

        Returns
        -------
        numpy.ndarray of uint8
            The value of all lines at each sample; line 0 is its lowest bit.
        """
        first, last = check_range(start, stop, self.num_samples)
        out = np.empty(last - first, dtype=np.uint8)
        for position, records in self._read(first, last):
            out[position - first : position - first + len(records)] = records["ttl"]
        return out

    def check(self) -> None:
        """Reads and checks every record; raises DamagedFileError at the first wrong one."""
        for _ in self._read(0, self.num_samples):
            pass

    def _read(self, first: int, last: int) -> Iterator[tuple[int, NDArray[np.void]]]:
        """Checked records, those of one length at a time, with the number of the first of them."""
        self._data()
        for run in self._runs:
            begin, end = max(first, run.record), min(last, run.record + run.count)
            length = run.channels + RAW_WORDS_AROUND
            step = max(1, _SCAN_WORDS // length)
            for record in range(begin, end, step):
                stop = min(end, record + step)
                word = run.word + (record - run.record) * length
                words = self._words[word : word + (stop - record) * length].reshape(-1, length)
                self._check(words, record, word)
                yield record, words.reshape(-1).view(raw_record_type(run.channels))

    def _check(self, words: NDArray[np.uint32], record: int, word: int) -> None:
        checks = (
            (words[:, 0] != RAW_MARKER, 0, "the start marker is not 2048"),
            (words[:, 1] != RAW_IDENTIFIER, 4, "the record identifier is not 1"),
            (words[:, 2] != self.header_channels + 10, 8, "the size word is wrong"),
            (words[:, 5] != 0, 20, "the status is not 0"),
            (words[:, 6] > 255, 24, "the TTL value is not 0 to 255"),
            (words[:, 7:17].any(axis=1), 28, "reserved words are not zero"),
            (np.bitwise_xor.reduce(words, axis=1) != 0, 0, "the checksum is wrong"),
        )
        for wrong, offset, reason in checks:
            if wrong.any():
                bad = int(np.argmax(wrong))
                byte = HEADER_SIZE + 4 * (word + bad * words.shape[1]) + offset
                raise DamagedFileError(Path(self.path), reason, byte=byte, record=record + bad)

    def _find_runs(self) -> list[_Run]:
        """The lengths of all records.

        The first record's, if the file's size and its last record agree with it; otherwise those
        of every packet.
        """
        if len(self._words) == 0:
            return []
        channels = self._channels_at(0)
        if channels is None:
            self._check_first_record()
        else:
            length = channels + RAW_WORDS_AROUND
            count, left = divmod(len(self._words), length)
            if not left and self._is_record((count - 1) * length, channels):
                return [_Run(0, 0, count, channels)]
        return self._walk_packets()

    def _walk_packets(self) -> list[_Run]:
        runs: list[_Run] = []
        word = record = 0
        while word < len(self._words):
            channels = self._channels_at(word)
            if channels is None:
                self._report_end(word, record)
                break
            length = channels + RAW_WORDS_AROUND
            count = min(_PER_PACKET, (len(self._words) - word) // length)
            if runs and runs[-1].channels == channels:
                runs[-1] = _Run(runs[-1].record, runs[-1].word, runs[-1].count + count, channels)
            else:
                runs.append(_Run(record, word, count, channels))
            word += count * length
            record += count
        return runs

    def _channels_at(self, word: int) -> int | None:
        """The number of values of the record there; None if no whole record begins there."""
        for channels in dict.fromkeys((self.header_channels, *PACKET_CHANNELS)):
            if self._is_record(word, channels):
                return channels
        return None

    def _is_record(self, word: int, channels: int) -> bool:
        words = self._words[word : word + channels + RAW_WORDS_AROUND]
        whole_record = len(words) == channels + RAW_WORDS_AROUND
        return whole_record and words[0] == RAW_MARKER and not np.bitwise_xor.reduce(words)

    def _check_first_record(self) -> None:
        """Reports what is wrong with it, unless it is only truncated."""
        words = self._words[: self.header_channels + RAW_WORDS_AROUND]
        if len(words) == self.header_channels + RAW_WORDS_AROUND:
            self._check(words.reshape(1, -1), 0, 0)

    def _report_end(self, word: int, record: int) -> None:
        left = 4 * (len(self._words) - word)
        byte = HEADER_SIZE + 4 * word
        cut = left < 4 * (max(self.header_channels, *PACKET_CHANNELS) + RAW_WORDS_AROUND)
        if cut and self.allow_incomplete:
            return
        if cut:
            reason = f"record {record} (byte {byte}) is damaged, or cut after {left} bytes"
            raise IncompleteFileError(self.path, reason)
        raise DamagedFileError(self.path, "no record begins here", byte=byte, record=record)


def open_vrd(path: str | os.PathLike[str], *, allow_incomplete: bool = False) -> RawFile:
    """Opens a raw data file.

    Parameters
    ----------
    path : path-like
        The file.
    allow_incomplete : bool
        Whether to open a file whose conversion did not reach its end, with its whole records.

    Returns
    -------
    RawFile
        The file, mapped into memory.

    Raises
    ------
    IncompleteFileError
        The file's conversion did not reach its end.
    DamagedFileError
        The file violates the format.
    """
    return RawFile(path, allow_incomplete)
