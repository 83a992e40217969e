# SPDX-License-Identifier: BSD-3-Clause

"""A file's header block, and its records mapped into memory."""

from __future__ import annotations

import mmap
import os
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .closing import Closing
from .errors import IncompleteFileError, StalwickError
from .header import Header, parse_header
from .layout import HEADER_SIZE


class MappedFile(Closing):
    """Base of the three kinds of files.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    header : dict
        Its header fields by their keys without the leading "-": ``header["SamplingFrequency"]``.
    size : int
        Bytes in the file when it was opened.
    allow_incomplete : bool
        Whether to read a file whose conversion did not reach its end.

    Notes
    -----
    The bytes are mapped, not read. Do not truncate a file while it is open: the system ends a
    program that reads mapped bytes that no longer exist.
    """

    def __init__(
        self, path: str | os.PathLike[str], file_type: str, allow_incomplete: bool
    ) -> None:
        self.path = Path(path)
        self.allow_incomplete = allow_incomplete
        self._bytes: NDArray[np.uint8] | None = None
        try:
            with open(self.path, "rb", buffering=0) as file:
                block = _read_block(file.fileno())
                self.header: Header = parse_header(block, self.path, file_type)
                self._check_closed(file_type)
                self.size = os.fstat(file.fileno()).st_size
                if self.size > HEADER_SIZE:
                    mapping = mmap.mmap(file.fileno(), self.size, access=mmap.ACCESS_READ)
                    self._bytes = np.frombuffer(mapping, dtype=np.uint8)[HEADER_SIZE:]
                else:
                    self._bytes = np.empty(0, dtype=np.uint8)
        except OSError as error:
            raise StalwickError(f"{self.path}: cannot open it: {error.strerror}") from error

    @property
    def closed_by_conversion(self) -> bool:
        """Whether the conversion reached its end. Event files never show it."""
        return self.header["TimeClosed"] is not None

    def close(self) -> None:
        """Closes the file. Arrays that are views of it keep it open."""
        self._bytes = None

    def __repr__(self) -> str:
        return f"{type(self).__name__}({str(self.path)!r})"

    def _check_closed(self, file_type: str) -> None:
        if file_type != "Event" and not self.closed_by_conversion and not self.allow_incomplete:
            reason = (
                "its header says that it was not closed, so it may lack its end, "
                "or a conversion is still writing it"
            )
            raise IncompleteFileError(self.path, reason)

    def _data(self) -> NDArray[np.uint8]:
        """Everything after the header block."""
        if self._bytes is None:
            raise StalwickError(f"{self.path}: it was closed by this program; open it again")
        return self._bytes

    def _whole_records(self, layout: np.dtype[Any]) -> NDArray[Any]:
        """The records; left-over bytes raise, or are left out on request."""
        data = self._data()
        count, left = divmod(len(data), layout.itemsize)
        if left and not self.allow_incomplete:
            start = HEADER_SIZE + count * layout.itemsize
            reason = f"it ends {left} bytes after the beginning of record {count} (byte {start})"
            raise IncompleteFileError(self.path, reason)
        return data[: count * layout.itemsize].view(layout)


def _read_block(descriptor: int) -> bytes:
    pieces = b""
    while len(pieces) < HEADER_SIZE:
        piece = os.read(descriptor, HEADER_SIZE - len(pieces))
        if not piece:
            break
        pieces += piece
    return pieces
