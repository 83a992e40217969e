# SPDX-License-Identifier: BSD-3-Clause

"""Event files, .vev: changes of the TTL input."""

from __future__ import annotations

import os
from dataclasses import dataclass
from functools import cached_property
from pathlib import Path

import numpy as np
from numpy.typing import NDArray

from .errors import DamagedFileError
from .layout import EVENT_RECORD, HEADER_SIZE, TTL_EVENT_ID, TTL_EVENT_TEXT
from .mapped_file import MappedFile

LINES = 8


@dataclass(frozen=True)
class Events:
    """The changes of the eight TTL lines, one element per event.

    Attributes
    ----------
    times : numpy.ndarray of int64
        Microseconds.
    ttl : numpy.ndarray of uint8
        The new value of all lines; line 0 is its lowest bit.
    previous : numpy.ndarray of int16
        The value before; -1 for the first event if it is unknown: only the raw data file
        contains it.
    """

    times: NDArray[np.int64]
    ttl: NDArray[np.uint8]
    previous: NDArray[np.int16]

    def __len__(self) -> int:
        return len(self.times)

    @property
    def changed(self) -> NDArray[np.uint8]:
        """The lines that changed, one bit per line; 0 if the value before is unknown."""
        return self._known(self.ttl ^ self.previous)

    @property
    def rising(self) -> NDArray[np.uint8]:
        """The lines that went high; 0 if the value before is unknown."""
        return self._known(self.ttl & ~self.previous)

    @property
    def falling(self) -> NDArray[np.uint8]:
        """The lines that went low; 0 if the value before is unknown."""
        return self._known(self.previous & ~self.ttl.astype(np.int16))

    def rising_times(self, line: int) -> NDArray[np.int64]:
        """Finds when a line went high.

        Parameters
        ----------
        line : int
            0 to 7.

        Returns
        -------
        numpy.ndarray of int64
            Microseconds.
        """
        chosen: NDArray[np.int64] = self.times[self.rising & _bit(line) != 0]
        return chosen

    def falling_times(self, line: int) -> NDArray[np.int64]:
        """Finds when a line went low.

        Parameters
        ----------
        line : int
            0 to 7.

        Returns
        -------
        numpy.ndarray of int64
            Microseconds.
        """
        chosen: NDArray[np.int64] = self.times[self.falling & _bit(line) != 0]
        return chosen

    def with_initial(self, ttl: int) -> Events:
        """Supplies the value of the lines before the first event.

        Parameters
        ----------
        ttl : int
            The value of all lines, 0 to 255.

        Returns
        -------
        Events
            The same events, the first of them with its line changes.
        """
        if not 0 <= ttl < 1 << LINES:
            raise ValueError(f"a TTL value is 0 to 255, not {ttl}")
        previous = self.previous.copy()
        previous[:1] = ttl
        return Events(self.times, self.ttl, previous)

    def _known(self, lines: NDArray[np.int16]) -> NDArray[np.uint8]:
        return np.where(self.previous < 0, 0, lines).astype(np.uint8)


def _bit(line: int) -> int:
    if not 0 <= line < LINES:
        raise ValueError(f"TTL lines are 0 to 7, not {line}")
    return 1 << line


class EventFile(MappedFile):
    """An event file. ``open_vev`` makes it.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    header : dict
        Its header fields by their keys without the leading "-".
    records : numpy.ndarray
        The file's raw records, unchecked: a read-only view of the mapped bytes.
    """

    def __init__(self, path: str | os.PathLike[str], allow_incomplete: bool = False) -> None:
        super().__init__(path, "Event", allow_incomplete)
        self.records: NDArray[np.void] = self._whole_records(EVENT_RECORD)

    def close(self) -> None:
        super().close()
        self.records = np.empty(0, EVENT_RECORD)

    @cached_property
    def events(self) -> Events:
        """Every event; all records are checked the first time."""
        self._data()
        self._check_records()
        ttl = self.records["ttlValue"].astype(np.uint8)
        previous = np.full(len(ttl), -1, dtype=np.int16)
        previous[1:] = ttl[:-1]
        return Events(self.records["timestamp"].astype(np.uint64).view(np.int64), ttl, previous)

    def _check_records(self) -> None:
        records = self.records
        ttl = records["ttlValue"]
        expected = np.zeros(1, dtype="S128")
        expected[0] = TTL_EVENT_TEXT
        text = expected.view(np.uint8)
        texts = np.ascontiguousarray(records["eventString"]).view(np.uint8).reshape(-1, 128)
        repeated = np.zeros(len(records), dtype=bool)
        repeated[1:] = ttl[1:] == ttl[:-1]
        checks = (
            ((records["reserved"] != 0).any(axis=1), 0, "reserved bytes are not zero"),
            (records["eventId"] != TTL_EVENT_ID, 14, "eventId is not 21, a TTL change"),
            (ttl > 255, 16, "ttlValue is not 0 to 255"),
            (repeated, 16, "ttlValue is that of the event before, which is no change"),
            ((records["reserved2"] != 0).any(axis=1), 18, "reserved bytes are not zero"),
            ((texts != text).any(axis=1), 56, "eventString is not that of a TTL change"),
        )
        for wrong, offset, reason in checks:
            if wrong.any():
                record = int(np.argmax(wrong))
                byte = HEADER_SIZE + record * EVENT_RECORD.itemsize + offset
                raise DamagedFileError(Path(self.path), reason, byte=byte, record=record)


def open_vev(path: str | os.PathLike[str], *, allow_incomplete: bool = False) -> EventFile:
    """Opens an event file.

    Parameters
    ----------
    path : path-like
        The file. Its header never says whether it was closed: missing events at its end cannot
        be detected.
    allow_incomplete : bool
        Whether to open a file that ends inside a record, without that record.

    Returns
    -------
    EventFile
        The file, mapped into memory.

    Raises
    ------
    IncompleteFileError
        The file ends inside a record.
    DamagedFileError
        The header violates the format. Records are checked when `events` is first used.
    """
    return EventFile(path, allow_incomplete)
