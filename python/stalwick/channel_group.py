# SPDX-License-Identifier: BSD-3-Clause

"""Channels that were sampled together: A/D channels, an inertial unit, the ultrasonic channel."""

from __future__ import annotations

import warnings
from functools import cached_property
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .continuous_file import ContinuousFile, interleave_files
from .errors import DamagedFileError, InconsistentSetError, StalwickWarning
from .layout import PACKET_CHANNELS
from .record_layout import RecordLayout
from .trace_group import TraceGroup


class ChannelGroup(TraceGroup):
    """Channel files with the same times, read as one array.

    Attributes
    ----------
    name : str
        "AD", "Base", "AFE" or "Ultrasonic".
    ids : list of str
        Names of the channels that can be read together, in order.
    files : dict of str to ContinuousFile
        Their files by name.
    short_files : dict of str to ContinuousFile
        A/D channels that packets describing fewer channels left shorter or empty; read them one
        at a time.
    """

    def __init__(self, name: str, files: list[ContinuousFile]) -> None:
        self.name = name
        self.short_files: dict[str, ContinuousFile] = {}
        given = files = sorted(files, key=lambda file: file.index)
        incomplete = files[0].allow_incomplete
        files = _carried(files) if incomplete else self._split_short(files)
        self.short_files |= {file.name: file for file in given if file not in files}
        self.files = {file.name: file for file in files}
        self.ids = list(self.files)
        self._records = min(len(file.records) for file in files)
        self._check_alike(files)

    @property
    def layout(self) -> RecordLayout:
        """For the records that all channels have."""
        return self._layout

    @cached_property
    def _layout(self) -> RecordLayout:
        first = next(iter(self.files.values()))
        layout = first.layout
        return layout if len(layout.counts) == self._records else layout.first(self._records)

    def read_rows(self, names: list[str], rows: NDArray[Any], start: int) -> None:
        for row, name in zip(rows, names):
            self.files[name].read_into(row, start, self.layout)

    def read_frames(self, names: list[str], frames: NDArray[np.int16], start: int) -> None:
        files = [self.files[name] for name in names]
        if not interleave_files(files, self.layout, frames, start):
            super().read_frames(names, frames, start)

    def close(self) -> None:
        """Closes the channels' files."""
        for file in [*self.files.values(), *self.short_files.values()]:
            file.close()

    def _name(self, channel: str | int) -> str:
        if isinstance(channel, str) and channel in self.short_files:
            path = self.short_files[channel].path
            raise KeyError(f"{channel} has fewer samples than CSC1; read {path} with open_vcs")
        return super()._name(channel)

    def _split_short(self, files: list[ContinuousFile]) -> list[ContinuousFile]:
        """Packets that describe 32, 64 or 128 channels leave those after them without samples."""
        if self.name != "AD":
            return files
        longest = [file for file in files if len(file.records) == len(files[0].records)]
        for before, file in zip(files, files[1:]):
            reason = ""
            if len(file.records) > len(before.records):
                reason = f"{file.name} has more records than {before.name}"
            elif len(file.records) < len(before.records) and file.index not in PACKET_CHANNELS:
                reason = f"{file.name} has fewer records than {before.name}"
            if reason:
                raise InconsistentSetError(
                    f"{file.path}: {reason}; one is cut or not of this set; convert again"
                )
        self.short_files = {file.name: file for file in files[len(longest) :]}
        if self.short_files:
            names = list(self.short_files)
            warnings.warn(
                f"{names[0]} to {names[-1]} have fewer samples than the other channels: packets "
                "did not carry them; read each with open_vcs",
                StalwickWarning,
                stacklevel=5,
            )
        return longest

    def _check_alike(self, files: list[ContinuousFile]) -> None:
        """Checks for equal rates and equal numbers of records with the same beginning and end."""
        first = files[0]
        for file in files[1:]:
            if file.rate != first.rate:
                raise InconsistentSetError(
                    f"{file.path}: {file.rate} samples a second; {first.name} has {first.rate}"
                )
            if not first.allow_incomplete and len(file.records) != len(first.records):
                raise InconsistentSetError(
                    f"{file.path}: {len(file.records)} records; {first.name} has "
                    f"{len(first.records)}; one is cut or not of this set; convert again"
                )
            for record in {0, self._records - 1} if self._records else set():
                if file.head(record) != first.head(record):
                    reason = f"time or number of samples is not that of {first.name}"
                    byte = 16384 + record * 1044
                    raise DamagedFileError(file.path, reason, byte=byte, record=record)


def _carried(files: list[ContinuousFile]) -> list[ContinuousFile]:
    """For an incomplete set, without the A/D channels that no packet carried."""
    for border in PACKET_CHANNELS:
        rest = files[border:]
        if rest and len(files[0].records) and not any(len(file.records) for file in rest):
            return files[:border]
    return files
