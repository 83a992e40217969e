"""What people want most often of a session or a recording: its A/D channels."""

from __future__ import annotations

import os
from abc import ABC, abstractmethod
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .binary_file import BinaryType, to_binary
from .continuous_file import Units
from .record_layout import Gap
from .trace_group import Channels, TraceGroup


class ADTraces(ABC):
    """Forwards to the group of the A/D channels."""

    @property
    @abstractmethod
    def ad(self) -> TraceGroup:
        """The A/D channels; raises StalwickError where there are none."""

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
