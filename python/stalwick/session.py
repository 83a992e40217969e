"""One directory of outputs: everything that was converted from one recording."""

from __future__ import annotations

import os
import re
from collections.abc import Iterable
from pathlib import Path
from types import TracebackType
from typing import Any, Self

import numpy as np
from numpy.typing import NDArray

from .binary_file import BinaryType, to_binary
from .channel_group import ChannelGroup, Channels
from .continuous_file import ContinuousFile, Units
from .errors import InconsistentSetError, StalwickError
from .event_file import EventFile, Events
from .header import Header
from .mapped_file import MappedFile
from .raw_file import RawFile
from .record_layout import Gap

_FILE_NAME = re.compile(r"(?P<entity>.+?)(?P<suffix>_\d{2,})?(?P<kind>\.vcs|\.vev|\.vrd)")


class Session:
    """A set of outputs. ``open_session`` makes it.

    files       every file by its entity: CSC1, Base_LAX, Ultrasonic, Events, RawData
    groups      the channels by group: "AD", "Base", "AFE", "Ultrasonic"
    raw         the raw data file, or None
    other_runs  suffixes of further outputs in the directory ("_01", ...), each a session of its own
    """

    def __init__(
        self, files: dict[str, MappedFile], directory: Path, other_runs: list[str]
    ) -> None:
        self.directory = directory
        self.files = files
        self.other_runs = other_runs
        _check_one_session(files)
        self.groups = _group(files)
        raw = files.get("RawData")
        self.raw = raw if isinstance(raw, RawFile) else None
        self._event_file = files.get("Events")
        self._check_raw_length()

    @property
    def headers(self) -> dict[str, Header]:
        """The header fields of every file, by its entity."""
        return {entity: file.header for entity, file in self.files.items()}

    @property
    def events(self) -> Events:
        """The changes of the TTL input; raises StalwickError where there is no event file.

        The value before the first event comes from the raw data file, where there is one.
        """
        if not isinstance(self._event_file, EventFile):
            raise StalwickError(f"{self.directory}: there is no event file")
        events = self._event_file.events
        if self.raw is None or not self.raw.num_samples or not len(events):
            return events
        # The first packets may have had TTL values and no A/D block: no record is before the event.
        initial = int(self.raw.ttl(0, 1)[0])
        is_before = self.raw.times(0, 1)[0] < events.times[0] and initial != events.ttl[0]
        return events.with_initial(initial) if is_before else events

    @property
    def imu(self) -> dict[str, ChannelGroup]:
        """The inertial units that are there, "Base" and "AFE": LAX to MZ, 3000 samples a second."""
        return {name: self.groups[name] for name in ("Base", "AFE") if name in self.groups}

    @property
    def ultrasonic(self) -> ChannelGroup:
        """The ultrasonic channel; raises StalwickError where there is none."""
        return self._group("Ultrasonic")

    @property
    def ad(self) -> ChannelGroup:
        """The A/D channels; raises StalwickError where there are none."""
        return self._group("AD")

    # What people want most often is that of the A/D channels.

    @property
    def channel_ids(self) -> list[str]:
        return self.ad.channel_ids

    @property
    def sampling_frequency(self) -> float:
        """Samples a second of the A/D channels."""
        return self.ad.sampling_frequency

    @property
    def num_samples(self) -> int:
        """Samples of each A/D channel."""
        return self.ad.num_samples

    @property
    def duration(self) -> float:
        """Seconds of A/D samples, without gaps."""
        return self.ad.duration

    @property
    def gaps(self) -> list[Gap]:
        """Where the times of the A/D records step."""
        return self.ad.gaps

    def traces(
        self,
        channels: Channels = None,
        start: int | None = None,
        stop: int | None = None,
        units: Units = "int16",
    ) -> NDArray[Any]:
        """A/D samples start to stop as [sample, channel]; see ChannelGroup.traces."""
        return self.ad.traces(channels, start, stop, units)

    def times(self, start: int | None = None, stop: int | None = None) -> NDArray[np.int64]:
        """Microseconds of A/D samples start to stop."""
        return self.ad.times(start, stop)

    def to_binary(
        self,
        path: str | os.PathLike[str],
        dtype: BinaryType = "int16",
        channels: Channels = None,
        *,
        start: int | None = None,
        stop: int | None = None,
        progress: bool | None = None,
        overwrite: bool = False,
    ) -> Path:
        """Writes A/D samples start to stop as a flat file, all channels of one sample after the
        other, and what is needed to read it to path.json: rate, gain, channel names, gaps.

        dtype      "int16", the files' values, or "float32", microvolts
        progress   a bar on standard error; default: where that is a terminal
        overwrite  whether files of these names may be replaced

        Both files are whole or not there. Returns path.
        """
        return to_binary(
            self.ad,
            path,
            dtype=dtype,
            channels=channels,
            start=start,
            stop=stop,
            progress=progress,
            overwrite=overwrite,
        )

    def frames_at(self, times: NDArray[np.int64]) -> NDArray[np.int64]:
        """The last A/D sample at or before each time in microseconds; -1 before the first."""
        return self.ad.frames_at(times)

    def get_traces(
        self,
        start_frame: int | None = None,
        end_frame: int | None = None,
        channel_ids: Channels = None,
        return_in_uV: bool = False,
    ) -> NDArray[Any]:
        return self.ad.get_traces(start_frame, end_frame, channel_ids, return_in_uV)

    def get_num_frames(self) -> int:
        return self.num_samples

    def get_num_samples(self) -> int:
        return self.num_samples

    def get_num_channels(self) -> int:
        return self.ad.get_num_channels()

    def get_channel_ids(self) -> list[str]:
        return self.ad.get_channel_ids()

    def get_sampling_frequency(self) -> float:
        return self.sampling_frequency

    def get_dtype(self) -> np.dtype[Any]:
        return self.ad.get_dtype()

    def get_channel_gains(self) -> NDArray[np.float64]:
        return self.ad.get_channel_gains()

    def get_channel_offsets(self) -> NDArray[np.float64]:
        return self.ad.get_channel_offsets()

    def close(self) -> None:
        """Gives every file back."""
        for file in self.files.values():
            file.close()

    def __enter__(self) -> Self:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"Session({str(self.directory)!r}, {len(self.files)} files)"

    def _group(self, name: str) -> ChannelGroup:
        if name not in self.groups:
            raise StalwickError(f"{self.directory}: there are no {name} channels")
        return self.groups[name]

    def _check_raw_length(self) -> None:
        """One raw record for each A/D sample, unless a conversion stopped between them."""
        if self.raw is None or "AD" not in self.groups or self.raw.allow_incomplete:
            return
        samples = self.ad.num_samples
        if self.raw.num_samples != samples:
            raise InconsistentSetError(
                f"{self.raw.path}: {self.raw.num_samples} records; the channel files have "
                f"{samples} samples; one is cut or not of this set; convert again"
            )


def open_session(
    source: str | os.PathLike[str] | Iterable[str | os.PathLike[str]],
    *,
    suffix: str = "",
    allow_incomplete: bool = False,
) -> Session:
    """Opens the outputs of one recording: a directory, or a list of files.

    suffix            "_01", "_02", ...: outputs of a further conversion into the same directory
    allow_incomplete  also files whose conversion did not reach its end: their whole records, and
                      of the channels those that all have

    Files that are damaged, of different recordings or not each other's equals raise a
    StalwickError.
    """
    if isinstance(source, (str, os.PathLike)):
        directory = Path(source)
        paths, other_runs = _list_directory(directory, suffix)
    else:
        paths, other_runs = [Path(path) for path in source], []
        directory = paths[0].parent if paths else Path()
    files: dict[str, MappedFile] = {}
    try:
        for path in paths:
            file = _open(path, allow_incomplete)
            entity = str(file.header["AcqEntName"])
            files.setdefault(entity, file)
            if files[entity] is not file:
                raise InconsistentSetError(f"{path}: {files[entity].path} is {entity} too")
            _check_name(path, entity)
        return Session(files, directory, other_runs)
    except StalwickError:
        for file in files.values():
            file.close()
        raise


def _list_directory(directory: Path, suffix: str) -> tuple[list[Path], list[str]]:
    try:
        names = sorted(os.listdir(directory))
    except OSError as error:
        raise StalwickError(f"{directory}: cannot list it: {error.strerror}") from error
    matches = [match for match in map(_FILE_NAME.fullmatch, names) if match]
    suffixes = {match["suffix"] or "" for match in matches}
    paths = [directory / match[0] for match in matches if (match["suffix"] or "") == suffix]
    if not paths:
        what = f"outputs with {suffix} in their names" if suffix else "outputs"
        raise StalwickError(f"{directory}: there are no {what} (.vcs, .vev, .vrd) in it")
    return paths, sorted(suffixes - {suffix})


def _open(path: Path, allow_incomplete: bool) -> MappedFile:
    kinds = {".vcs": ContinuousFile, ".vev": EventFile, ".vrd": RawFile}
    if path.suffix not in kinds:
        raise StalwickError(f"{path}: outputs are .vcs, .vev and .vrd files")
    return kinds[path.suffix](path, allow_incomplete)


def _check_name(path: Path, entity: str) -> None:
    match = _FILE_NAME.fullmatch(path.name)
    if match is None or match["entity"] != entity:
        raise InconsistentSetError(f"{path}: its header says that it is {entity}; rename it")


def _check_one_session(files: dict[str, MappedFile]) -> None:
    """Fields that come from the recording are the same in all files."""
    first = next(iter(files.values()))
    for file in files.values():
        for key in ("SessionUUID", "AcquisitionSystem", "ApplicationName"):
            if file.header[key] != first.header[key]:
                raise InconsistentSetError(
                    f"{file.path}: its -{key} is not that of {first.path}; "
                    "they were not made from one recording"
                )


def _group(files: dict[str, MappedFile]) -> dict[str, ChannelGroup]:
    members: dict[str, list[ContinuousFile]] = {}
    for entity, file in files.items():
        if isinstance(file, ContinuousFile):
            name = "AD" if entity.startswith("CSC") else entity.split("_")[0]
            members.setdefault(name, []).append(file)
    order = [name for name in ("AD", "Base", "AFE", "Ultrasonic") if name in members]
    groups = {name: ChannelGroup(name, members[name]) for name in order}
    values = {file.header["ADMaxValue"] for group in members.values() for file in group}
    if len(values) > 1:
        raise InconsistentSetError("the files' -ADMaxValue differ; not made from one recording")
    return groups
