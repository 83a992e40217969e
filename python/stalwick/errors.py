# SPDX-License-Identifier: BSD-3-Clause

"""Errors, as one line: which file, where, why, and what to do."""

from __future__ import annotations

from pathlib import Path


class StalwickError(Exception):
    """Anything this package reports about files and sets of files."""


class DamagedFileError(StalwickError):
    """A file that violates the format.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    record : int or None
        The record's position in the file, from 0; None in the header block.
    byte : int
        The position in the file at which the wrong bytes begin.
    """

    def __init__(self, path: Path, reason: str, *, byte: int, record: int | None = None) -> None:
        self.path = path
        self.byte = byte
        self.record = record
        place = f"byte {byte}" if record is None else f"record {record} (byte {byte})"
        super().__init__(f"{path}: {place}: {reason}; convert the recording again")


class IncompleteFileError(StalwickError):
    """A file whose conversion did not reach its end.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    reason : str
        What is missing, without advice.
    """

    def __init__(self, path: Path, reason: str) -> None:
        self.path = path
        self.reason = reason
        super().__init__(
            f"{path}: {reason}; convert the recording again, "
            "or pass allow_incomplete=True to read the whole records that are there"
        )


class InconsistentSetError(StalwickError):
    """Files of one directory that do not belong together."""


class StalwickWarning(UserWarning):
    """Something that is missing from a set but not needed to read it."""
