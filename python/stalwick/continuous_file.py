# SPDX-License-Identifier: BSD-3-Clause

"""Channel files, .vcs: the samples of one channel."""

from __future__ import annotations

import os
from functools import cached_property
from pathlib import Path
from typing import Any, Final, Literal

import numpy as np
from numpy.typing import NDArray

from .decoder import compiled
from .errors import DamagedFileError
from .header import number, text, whole
from .layout import (
    CHANNEL_MICROVOLTS,
    CHANNEL_RECORD,
    HEADER_SIZE,
    SAMPLES_PER_RECORD,
)
from .mapped_file import MappedFile
from .record_layout import Gap, RecordLayout, check_range

#: "int16" are the file's values; "uV" are float32 microvolts.
Units = Literal["int16", "uV"]

_RECORD: Final = CHANNEL_RECORD.itemsize
_WORDS: Final = _RECORD // 4
#: The 32-bit words before a record's samples, and those that are the same in every record.
_HEAD_WORDS: Final = 5
_CHANNEL_WORD: Final = 2
_RATE_WORD: Final = 3
_COUNT_WORD: Final = 4
#: Number of records whose heads are read at a time, to save memory.
_SCAN: Final = 1 << 16


def sample_type(units: Units, name: str) -> np.dtype[Any]:
    """The type in which samples of a channel or group of that name are read."""
    if units not in ("int16", "uV"):
        raise ValueError(f'units are "int16" or "uV", not {units!r}')
    if units == "uV" and not name.startswith(("AD", "CSC")):
        raise ValueError(f"{name}: a sensor's values are no voltages; read them as int16")
    return np.dtype(np.int16 if units == "int16" else np.float32)


class ContinuousFile(MappedFile):
    """One channel. ``open_vcs`` makes it.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    header : dict
        Its header fields by their keys without the leading "-".
    name : str
        The channel: CSC1, Base_LAX, ...
    index : int
        Its place in its group, from 0.
    rate : int
        Samples per second.
    records : numpy.ndarray
        The file's raw records, unchecked: a read-only view of the mapped bytes.
    """

    def __init__(self, path: str | os.PathLike[str], allow_incomplete: bool = False) -> None:
        super().__init__(path, "CSC", allow_incomplete)
        self.name = text(self.header, "AcqEntName")
        self.index = whole(self.header, "ADChannel")
        self.records: NDArray[np.void] = self._whole_records(CHANNEL_RECORD)
        self._words = self._bytes_of_records().view("<u4").reshape(-1, _WORDS)
        self.rate = self._read_rate()

    def close(self) -> None:
        super().close()
        self.records = np.empty(0, CHANNEL_RECORD)
        self._words = np.empty((0, _WORDS), "<u4")

    @property
    def sampling_frequency(self) -> float:
        """Samples per second."""
        return float(self.rate)

    @property
    def num_samples(self) -> int:
        """Samples in the file."""
        return self.layout.num_samples

    @property
    def gaps(self) -> list[Gap]:
        """Places where the records' times step."""
        return self.layout.gaps()

    @cached_property
    def layout(self) -> RecordLayout:
        """The positions of samples. Reads the head of every record the first time."""
        counts = np.empty(len(self.records), dtype=np.int64)
        times = np.empty(len(self.records), dtype=np.int64)
        for first in range(0, len(self.records), _SCAN):
            heads = self._words[first : first + _SCAN, :_HEAD_WORDS].copy()
            self._check_heads(heads, first)
            counts[first : first + _SCAN] = heads[:, _COUNT_WORD]
            times[first : first + _SCAN] = heads[:, :2].copy().view("<i8")[:, 0]
        self._check_unused_slots(counts, 0)
        return RecordLayout(counts, times, self.rate)

    def traces(
        self, start: int | None = None, stop: int | None = None, units: Units = "int16"
    ) -> NDArray[Any]:
        """Reads samples.

        Parameters
        ----------
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.
        units : {"int16", "uV"}
            "int16" gives the file's values, "uV" float32 microvolts.

        Returns
        -------
        numpy.ndarray
            The samples, a copy.

        Raises
        ------
        DamagedFileError
            A record that was read violates the format.
        """
        first, last = check_range(start, stop, self.num_samples)
        out = np.empty(last - first, dtype=sample_type(units, self.name))
        self.read_into(out, first, self.layout)
        return out

    def times(self, start: int | None = None, stop: int | None = None) -> NDArray[np.int64]:
        """Calculates when samples were taken.

        Parameters
        ----------
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.

        Returns
        -------
        numpy.ndarray of int64
            Microseconds; docs/output-files.md explains from when they count.
        """
        return self.layout.sample_times(*check_range(start, stop, self.num_samples))

    def read_into(self, out: NDArray[Any], start: int, layout: RecordLayout) -> None:
        """Fills an array with samples; `traces` is easier to use.

        Parameters
        ----------
        out : numpy.ndarray of int16 or float32
            The array to fill; floats are filled with microvolts.
        start : int
            The first sample.
        layout : RecordLayout
            The file's own, or that of another channel of its group: a record whose time or
            number of samples is not the layout's raises DamagedFileError.
        """
        self._data()
        if len(out) == 0:
            return
        first, last = layout.record_range(start, start + len(out))
        self._check_against(layout, first, last)
        self._check_unused_slots(layout.counts[first:last], first)
        samples = self.records["samples"][first:last]
        counts = layout.counts[first:last]
        offset = start - int(layout.starts[first])
        if out.dtype == np.int16:
            _copy(out, samples, counts, offset)
        else:
            values = np.empty(len(out), dtype=np.int16)
            _copy(values, samples, counts, offset)
            np.multiply(values, out.dtype.type(CHANNEL_MICROVOLTS), out=out)

    def head(self, record: int) -> tuple[int, int]:
        """Reads the head of a record.

        Parameters
        ----------
        record : int
            Its position in the file, from 0.

        Returns
        -------
        tuple of int
            Its time in microseconds, and the number of its samples.
        """
        words = self._words[record, :_HEAD_WORDS]
        return int(words[:2].copy().view("<i8")[0]), int(words[_COUNT_WORD])

    def _bytes_of_records(self) -> NDArray[np.uint8]:
        return self._data()[: len(self.records) * _RECORD]

    def _read_rate(self) -> int:
        """The rate in the records, a whole number; the header prints six digits of it."""
        printed = number(self.header, "SamplingFrequency")
        if len(self.records) == 0:
            return round(printed)
        rate = int(self._words[0, _RATE_WORD])
        if rate == 0 or float(f"{rate:g}") != printed:
            self._damaged(0, 12, f"{rate} samples a second, in the header {printed:g}")
        return rate

    def _check_heads(self, heads: NDArray[np.uint32], first: int) -> None:
        counts = heads[:, _COUNT_WORD]
        checks = (
            (heads[:, _CHANNEL_WORD] != self.index, 8, "channelNumber is not the header's"),
            (heads[:, _RATE_WORD] != self.rate, 12, "sampleFrequency is not the header's"),
            ((counts == 0) | (counts > SAMPLES_PER_RECORD), 16, "numValidSamples is not 1 to 512"),
        )
        for wrong, offset, reason in checks:
            if wrong.any():
                self._damaged(first + int(np.argmax(wrong)), offset, reason)

    def _check_unused_slots(self, counts: NDArray[np.int64], first: int) -> None:
        for partial in np.flatnonzero(counts < SAMPLES_PER_RECORD):
            count, record = int(counts[partial]), first + int(partial)
            used = np.flatnonzero(self.records["samples"][record, count:])
            if len(used):
                offset = 20 + 2 * (count + int(used[0]))
                self._damaged(record, offset, "there are values after the last valid sample")

    def _check_against(self, layout: RecordLayout, first: int, last: int) -> None:
        heads = self._words[first:last, :_HEAD_WORDS]
        expected = layout.heads(first, last)
        if len(heads) == len(expected):
            difference = heads ^ expected
            difference[:, _CHANNEL_WORD] ^= np.uint32(self.index)
            if not difference.any():
                return
        expected = expected.copy()
        expected[:, _CHANNEL_WORD] = self.index
        self._report_difference(heads, expected, first)

    def _report_difference(
        self, heads: NDArray[np.uint32], expected: NDArray[np.uint32], first: int
    ) -> None:
        if len(heads) < len(expected):
            self._damaged(first + len(heads), 0, "the file ends before the others of its group")
        self._check_heads(heads, first)
        record, word = (int(i) for i in np.argwhere(heads != expected)[0])
        what = "timestamp" if word < _CHANNEL_WORD else "numValidSamples"
        offset = 0 if word < _CHANNEL_WORD else 16
        self._damaged(first + record, offset, f"{what} is not that of the other channels")

    def _damaged(self, record: int, offset: int, reason: str) -> None:
        byte = HEADER_SIZE + record * _RECORD + offset
        raise DamagedFileError(Path(self.path), reason, byte=byte, record=record)


def _copy(
    out: NDArray[np.int16], samples: NDArray[np.int16], counts: NDArray[np.int64], offset: int
) -> None:
    """Fills `out` with the valid samples of samples[record, slot], except the first `offset`.

    The first counts[record] slots of a record are valid.
    """
    if not (counts[:-1] == SAMPLES_PER_RECORD).all():
        valid = np.arange(SAMPLES_PER_RECORD) < counts[:, np.newaxis]
        out[:] = samples[valid][offset : offset + len(out)]
        return
    head = min(len(out), (SAMPLES_PER_RECORD - offset) % SAMPLES_PER_RECORD)
    begun = 1 if head else 0
    full = (len(out) - head) // SAMPLES_PER_RECORD
    middle = head + full * SAMPLES_PER_RECORD
    if head:
        out[:head] = samples[0, offset : offset + head]
    if full:
        out[head:middle].reshape(full, SAMPLES_PER_RECORD)[:] = samples[begun : begun + full]
    if middle < len(out):
        out[middle:] = samples[begun + full, : len(out) - middle]


def interleave_files(
    files: list[ContinuousFile], layout: RecordLayout, frames: NDArray[np.int16], start: int
) -> bool:
    """Fills frames[sample, channel] from mapped records.

    False if read_into has to do it: without the compiled module, if a record is not full, and to
    report what is wrong with a record.
    """
    if compiled is None or not files or not len(frames):
        return False
    first, last = layout.record_range(start, start + len(frames))
    if not (layout.counts[first:last] == SAMPLES_PER_RECORD).all():
        return False
    if any(len(file.records) < last for file in files):
        return False
    records = [file._bytes_of_records() for file in files]
    indices = np.array([file.index for file in files], dtype=np.uint32)
    skipped = start - int(layout.starts[first])
    heads = layout.heads(first, last)
    wrong: int = compiled.interleave_files(records, indices, first, heads, skipped, frames)
    return wrong < 0


def open_vcs(path: str | os.PathLike[str], *, allow_incomplete: bool = False) -> ContinuousFile:
    """Opens a channel file.

    Parameters
    ----------
    path : path-like
        The file.
    allow_incomplete : bool
        Whether to open a file whose conversion did not reach its end, with its whole records.

    Returns
    -------
    ContinuousFile
        The file, mapped into memory.

    Raises
    ------
    IncompleteFileError
        The file's conversion did not reach its end.
    DamagedFileError
        The file violates the format.
    """
    return ContinuousFile(path, allow_incomplete)
