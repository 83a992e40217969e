# SPDX-License-Identifier: BSD-3-Clause

"""Recordings, .ord, without converting them: samples are decoded on demand."""

from __future__ import annotations

import os
import warnings
import zipfile
from pathlib import Path
from typing import Any, Final

import numpy as np
from numpy.typing import NDArray

from .decoder import compiled
from .errors import StalwickError, StalwickWarning
from .event_file import Events
from .header import Header
from .layout import AXES, CHANNEL_MICROVOLTS, SAMPLES_PER_RECORD
from .record_layout import RecordLayout
from .sample_source import SampleSource
from .trace_group import TraceGroup

#: The groups in the decoder's order, with their rates; the A/D channels' is the recording's.
_GROUPS: Final = {"AD": 0, "Base": 3000, "AFE": 3000, "Ultrasonic": 210000}
_INDEX_VERSION: Final = 1


class OrdGroup(TraceGroup):
    """A group of a recording's channels, with the values that the channel files have.

    Attributes
    ----------
    name : str
        "AD", "Base", "AFE" or "Ultrasonic".
    ids : list of str
        Names of the channels, in order.
    """

    def __init__(
        self, decoder: Any, name: str, channel_ids: list[str], layout: RecordLayout
    ) -> None:
        self.name = name
        self.ids = channel_ids
        self._positions = {name: position for position, name in enumerate(channel_ids)}
        self._decoder = decoder
        self._layout = layout

    @property
    def layout(self) -> RecordLayout:
        """The layout that the group's channel files have."""
        return self._layout

    def read_rows(self, names: list[str], rows: NDArray[Any], start: int) -> None:
        values = rows if rows.dtype == np.int16 else np.empty(rows.shape, dtype=np.int16)
        group = list(_GROUPS).index(self.name)
        channels = [self._positions[name] for name in names]
        try:
            self._decoder.read(group, channels, start, values)
        except RuntimeError as error:
            raise StalwickError(str(error)) from None
        if values is not rows:
            np.multiply(values, rows.dtype.type(CHANNEL_MICROVOLTS), out=rows)


class OrdRecording(SampleSource[OrdGroup]):
    """A recording. ``open_ord`` makes it.

    Attributes
    ----------
    path : pathlib.Path
        The file.
    header : dict
        The recording's header fields by their keys without the leading "-";
        docs/ord-format.md lists them.
    groups : dict of str to OrdGroup
        The channels by group: "AD", "Base", "AFE", "Ultrasonic".
    ends_in_damage : bool
        Whether bytes that are not a packet follow the last packet that was read.
    """

    def __init__(self, path: Path, decoder: Any, index: dict[str, Any]) -> None:
        self.path = path
        self.header: Header = decoder.header()
        self.ends_in_damage = bool(index["ends_in_damage"])
        self._index = index
        self.groups = {
            name: group
            for number, name in enumerate(_GROUPS)
            if (group := self._make_group(decoder, number, name)) is not None
        }

    @property
    def place(self) -> Path:
        """The file."""
        return self.path

    @property
    def events(self) -> Events:
        """The changes of the TTL input."""
        times = np.asarray(self._index["event_times"]).view(np.int64)
        ttl = np.asarray(self._index["event_values"])
        previous = np.empty(len(ttl), dtype=np.int16)
        previous[:1] = int(self._index["first_ttl"])
        previous[1:] = ttl[:-1]
        return Events(times, ttl, previous)

    def close(self) -> None:
        """Closes the file."""
        self.groups = {}

    def __repr__(self) -> str:
        return f"OrdRecording({str(self.path)!r})"

    def _make_group(self, decoder: Any, number: int, name: str) -> OrdGroup | None:
        names = self._channel_names(name)
        if not names:
            return None
        samples = int(self._index["samples"][number])
        times = np.asarray(self._index[f"record_times{number}"]).view(np.int64)
        counts = np.full(len(times), SAMPLES_PER_RECORD, dtype=np.int64)
        if len(counts):
            counts[-1] = samples - SAMPLES_PER_RECORD * (len(counts) - 1)
        rate = _GROUPS[name] or int(str(self.header["SamplingFrequency"]))
        return OrdGroup(decoder, name, names, RecordLayout(counts, times, rate))

    def _channel_names(self, group: str) -> list[str]:
        """The channels for which the converter writes files."""
        if group == "AD":
            announced = int(str(self.header["NumADChannels"]))
            carried = int(self._index["carried_channels"])
            if carried < announced:
                warnings.warn(
                    f"{self.path}: packets carry no more than {carried} of the {announced} "
                    "channels that its header announces; the others are left out",
                    StalwickWarning,
                    stacklevel=5,
                )
            return [f"CSC{number + 1}" for number in range(carried)]
        if group == "Ultrasonic":
            return [group] if self.header["UltrasonicAvailable"] else []
        is_there = self.header[f"{group.title()}IMUAvailable"]
        return [f"{group}_{axis}" for axis in AXES] if is_there else []


def open_ord(
    path: str | os.PathLike[str], *, keep_index: bool = False, allow_incomplete: bool = False
) -> OrdRecording:
    """Opens a recording without converting it.

    The whole recording is decoded once, to locate every sample.

    Parameters
    ----------
    path : path-like
        The recording, a .ord file.
    keep_index : bool
        Whether to store the positions of the samples in `path` + ".index.npz", and to read them
        from there while the recording has the same size and modification time.
    allow_incomplete : bool
        Whether to open a damaged recording, up to the damage.

    Returns
    -------
    OrdRecording
        The recording; samples are decoded on demand.

    Raises
    ------
    StalwickError
        The recording is damaged or cannot be read, or this package was made without the decoder.
    """
    if compiled is None:
        raise StalwickError(
            "this package has no decoder: build it by cmake with -DSTALWICK_BUILD_PYTHON=ON, "
            "or convert the recording and use open_session"
        )
    path = Path(path)
    try:
        decoder = compiled.Recording(os.fspath(path))
        index = _load_index(path) if keep_index else None
        if index is None:
            index = decoder.build_index()
            if keep_index:
                _keep_index(path, index)
        else:
            decoder.use_index(index)
    except (RuntimeError, ValueError) as error:
        raise StalwickError(str(error)) from None
    if index["ends_in_damage"] and not allow_incomplete:
        raise StalwickError(
            f"{path}: byte {int(index['end'])}: no packet begins here; look for a whole copy, or "
            "pass allow_incomplete=True to read what is before"
        )
    return OrdRecording(path, decoder, index)


def _index_path(path: Path) -> Path:
    return path.with_name(path.name + ".index.npz")


def _identity(path: Path) -> list[int]:
    """What an index belongs to: a changed recording needs a new one."""
    status = path.stat()
    return [_INDEX_VERSION, status.st_size, status.st_mtime_ns]


def _load_index(path: Path) -> dict[str, Any] | None:
    """The stored index; None if no matching one exists."""
    try:
        with np.load(_index_path(path), allow_pickle=False) as file:
            index = {name: file[name] for name in file.files}
    except (OSError, ValueError, EOFError, zipfile.BadZipFile):
        return None
    identity = index.pop("identity", None)
    if identity is None or identity.tolist() != _identity(path):
        return None
    return index


def _keep_index(path: Path, index: dict[str, Any]) -> None:
    target = _index_path(path)
    part = target.with_name(target.name + ".part")
    try:
        with open(part, "wb") as file:
            np.savez(file, identity=np.array(_identity(path), dtype=np.int64), **index)
        part.replace(target)
    except OSError as error:
        part.unlink(missing_ok=True)
        raise StalwickError(f"{target}: cannot keep the index: {error.strerror}") from error
