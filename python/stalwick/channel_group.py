"""Channels that were sampled together: the A/D channels, an inertial unit, the ultrasonic one."""

from __future__ import annotations

import warnings
from collections.abc import Sequence
from functools import cached_property
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .continuous_file import ContinuousFile, Units, sample_type
from .errors import DamagedFileError, InconsistentSetError, StalwickWarning
from .layout import CHANNEL_MICROVOLTS, PACKET_CHANNELS
from .record_layout import Gap, RecordLayout, check_range

#: Channels by their names, or by their positions in channel_ids, or None for all.
Channels = Sequence[str] | Sequence[int] | None


class ChannelGroup:
    """Channel files with the same times, read as one array.

    name         "AD", "Base", "AFE" or "Ultrasonic"
    channel_ids  names of the channels that can be read together, in order
    files        their files by name
    short_files  A/D channels that packets describing fewer channels left shorter or empty; read
                 them one at a time
    """

    def __init__(self, name: str, files: list[ContinuousFile]) -> None:
        self.name = name
        self.short_files: dict[str, ContinuousFile] = {}
        files = sorted(files, key=lambda file: file.index)
        incomplete = files[0].allow_incomplete
        if not incomplete:
            files = self._split_short(files)
        self.files = {file.name: file for file in files}
        self.channel_ids = list(self.files)
        self._records = min(len(file.records) for file in files)
        self._check_alike(files)

    @cached_property
    def layout(self) -> RecordLayout:
        """Of the records that all channels have."""
        first = next(iter(self.files.values()))
        layout = first.layout
        return layout if len(layout.counts) == self._records else layout.first(self._records)

    @property
    def sampling_frequency(self) -> float:
        """Samples a second."""
        return next(iter(self.files.values())).sampling_frequency

    @property
    def num_samples(self) -> int:
        """Samples of each channel."""
        return self.layout.num_samples

    @property
    def duration(self) -> float:
        """Seconds of samples, without gaps."""
        return self.num_samples / self.sampling_frequency

    @property
    def gaps(self) -> list[Gap]:
        """Where the records' times step. A gap stands somewhere in the record before its step."""
        return self.layout.gaps()

    def traces(
        self,
        channels: Channels = None,
        start: int | None = None,
        stop: int | None = None,
        units: Units = "int16",
    ) -> NDArray[Any]:
        """Samples start to stop of channels as [sample, channel]: int16 values or, with "uV",
        float32 microvolts. Each channel's samples lie next to each other in memory."""
        files = self.select(channels)
        first, last = check_range(start, stop, self.num_samples)
        out = np.empty((len(files), last - first), dtype=sample_type(units))
        for row, file in zip(out, files):
            file.read_into(row, first, self.layout)
        return out.T

    def times(self, start: int | None = None, stop: int | None = None) -> NDArray[np.int64]:
        """Microseconds of samples start to stop (docs/output-files.md says from which zero)."""
        return self.layout.sample_times(*check_range(start, stop, self.num_samples))

    def frames_at(self, times: NDArray[np.int64]) -> NDArray[np.int64]:
        """The last sample at or before each time in microseconds; -1 before the first."""
        return self.layout.frames_at(np.asarray(times, dtype=np.int64))

    def select(self, channels: Channels) -> list[ContinuousFile]:
        """The files of channels; an unknown one raises KeyError or IndexError."""
        if channels is None:
            return list(self.files.values())
        if isinstance(channels, (str, int)):
            raise TypeError("channels are a list of names or positions")
        return [self._file(channel) for channel in channels]

    # The names that the field's frameworks use.

    def get_traces(
        self,
        start_frame: int | None = None,
        end_frame: int | None = None,
        channel_ids: Channels = None,
        return_in_uV: bool = False,
    ) -> NDArray[Any]:
        return self.traces(channel_ids, start_frame, end_frame, "uV" if return_in_uV else "int16")

    def get_num_frames(self) -> int:
        return self.num_samples

    def get_num_samples(self) -> int:
        return self.num_samples

    def get_num_channels(self) -> int:
        return len(self.channel_ids)

    def get_channel_ids(self) -> list[str]:
        return list(self.channel_ids)

    def get_sampling_frequency(self) -> float:
        return self.sampling_frequency

    def get_dtype(self) -> np.dtype[Any]:
        return np.dtype(np.int16)

    def get_channel_gains(self) -> NDArray[np.float64]:
        """Microvolts a step; of sensor channels, whose values are no voltages, 1."""
        gain = CHANNEL_MICROVOLTS if self.name == "AD" else 1.0
        return np.full(len(self.channel_ids), gain)

    def get_channel_offsets(self) -> NDArray[np.float64]:
        return np.zeros(len(self.channel_ids))

    def close(self) -> None:
        for file in [*self.files.values(), *self.short_files.values()]:
            file.close()

    def _file(self, channel: str | int) -> ContinuousFile:
        if not isinstance(channel, str):
            if not 0 <= channel < len(self.channel_ids):
                raise IndexError(f"channel {channel}: there are 0 to {len(self.channel_ids) - 1}")
            channel = self.channel_ids[channel]
        if channel in self.short_files:
            path = self.short_files[channel].path
            raise KeyError(f"{channel} has fewer samples than CSC1; read {path} with open_vcs")
        if channel not in self.files:
            raise KeyError(f"there is no channel {channel}; channel_ids has the names")
        return self.files[channel]

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
        """The same rate, and the same number of records that begin and end alike."""
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
