# SPDX-License-Identifier: BSD-3-Clause

"""One directory of outputs: everything that was converted from one recording."""

from __future__ import annotations

import os
import re
from collections.abc import Iterable
from pathlib import Path

from .channel_group import ChannelGroup
from .continuous_file import ContinuousFile
from .errors import IncompleteFileError, InconsistentSetError, StalwickError
from .event_file import EventFile, Events
from .header import Header
from .mapped_file import MappedFile
from .raw_file import RawFile
from .sample_source import SampleSource

_FILE_NAME = re.compile(r"(?P<entity>.+?)(?P<suffix>_\d{2,})?(?P<kind>\.vcs|\.vev|\.vrd)")


class Session(SampleSource[ChannelGroup]):
    """A set of outputs. ``open_session`` makes it.

    Attributes
    ----------
    directory : pathlib.Path
        Where the files are.
    files : dict of str to MappedFile
        Every file by its entity: CSC1, Base_LAX, Ultrasonic, Events, RawData.
    groups : dict of str to ChannelGroup
        The channels by group: "AD", "Base", "AFE", "Ultrasonic".
    raw : RawFile or None
        The raw data file.
    other_runs : list of str
        Suffixes of further outputs in the directory ("_01", ...), each a separate session.

    Examples
    --------
    >>> session = open_session("recording")
    >>> microvolts = session.traces(["CSC1", "CSC2"], 0, 30000, units="uV")
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
    def place(self) -> Path:
        """The directory."""
        return self.directory

    @property
    def headers(self) -> dict[str, Header]:
        """The header fields of every file, by its entity."""
        return {entity: file.header for entity, file in self.files.items()}

    @property
    def events(self) -> Events:
        """The changes of the TTL input; raises StalwickError if there is no event file.

        The lines' value before the first event comes from the raw data file, if there is one.
        """
        if not isinstance(self._event_file, EventFile):
            raise StalwickError(f"{self.directory}: there is no event file")
        events = self._event_file.events
        if self.raw is None or not self.raw.num_samples or not len(events):
            return events
        # If the first packets had no A/D block, there may be no record before the event.
        initial = int(self.raw.ttl(0, 1)[0])
        is_before = self.raw.times(0, 1)[0] < events.times[0] and initial != events.ttl[0]
        return events.with_initial(initial) if is_before else events

    def close(self) -> None:
        """Closes every file."""
        for file in self.files.values():
            file.close()

    def __repr__(self) -> str:
        return f"Session({str(self.directory)!r}, {len(self.files)} files)"

    def _check_raw_length(self) -> None:
        """Checks for one raw record per A/D sample, unless a conversion stopped in between."""
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
    """Opens the outputs of one recording.

    Parameters
    ----------
    source : path-like or iterable of path-like
        The directory of the outputs, or a list of files.
    suffix : str
        "_01", "_02", ...: outputs of a further conversion into the same directory.
    allow_incomplete : bool
        Whether to open files whose conversion did not reach its end, with their whole records;
        for channels, the records that all of them have.

    Returns
    -------
    Session
        The files, mapped into memory.

    Raises
    ------
    IncompleteFileError
        A file's conversion did not reach its end, or is still running.
    StalwickError
        Files are damaged, belong to different recordings or do not match, or there are none.
    """
    if isinstance(source, (str, os.PathLike)):
        directory = Path(source)
        paths, other_runs = _list_directory(directory, suffix)
    else:
        paths, other_runs = [Path(path) for path in source], []
        directory = paths[0].parent if paths else Path()
    files: dict[str, MappedFile] = {}
    incomplete: list[IncompleteFileError] = []
    try:
        for path in paths:
            try:
                file = _open(path, allow_incomplete)
            except IncompleteFileError as error:
                incomplete.append(error)
                continue
            entity = str(file.header["AcqEntName"])
            files.setdefault(entity, file)
            if files[entity] is not file:
                raise InconsistentSetError(f"{path}: {files[entity].path} is {entity} too")
            _check_name(path, entity)
        if incomplete:
            raise _summarize(incomplete, other_runs)
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


def _summarize(
    incomplete: list[IncompleteFileError], other_runs: list[str]
) -> IncompleteFileError:
    """One error for all incomplete files of a set."""
    reason = incomplete[0].reason
    if len(incomplete) > 1:
        reason += f"; {len(incomplete)} files of this set are incomplete"
    suffixes = ", ".join(run for run in other_runs if run)
    if suffixes:
        reason += f"; this directory also has outputs with the suffix {suffixes}"
    return IncompleteFileError(incomplete[0].path, reason)


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
    """Fields that come from the recording must be the same in all files."""
    first = next(iter(files.values()))
    for file in files.values():
        for key in ("SessionUUID", "AcquisitionSystem", "ApplicationName"):
            if file.header[key] != first.header[key]:
                raise _other_recording(file, key, first)


def _group(files: dict[str, MappedFile]) -> dict[str, ChannelGroup]:
    members: dict[str, list[ContinuousFile]] = {}
    for entity, file in files.items():
        if isinstance(file, ContinuousFile):
            name = "AD" if entity.startswith("CSC") else entity.split("_")[0]
            members.setdefault(name, []).append(file)
    order = [name for name in ("AD", "Base", "AFE", "Ultrasonic") if name in members]
    groups = {name: ChannelGroup(name, members[name]) for name in order}
    channels = [file for group in members.values() for file in group]
    for file in channels:
        if file.header["ADMaxValue"] != channels[0].header["ADMaxValue"]:
            raise _other_recording(file, "ADMaxValue", channels[0])
    return groups


def _other_recording(file: MappedFile, key: str, first: MappedFile) -> InconsistentSetError:
    reason = f"its -{key} is not that of {first.path}; they were not made from one recording"
    return InconsistentSetError(f"{file.path}: {reason}")
