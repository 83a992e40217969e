"""What every group of channels can do, wherever its samples come from."""

from __future__ import annotations

from abc import ABC, abstractmethod
from collections.abc import Sequence
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .continuous_file import Units, sample_type
from .layout import CHANNEL_MICROVOLTS
from .record_layout import Gap, RecordLayout, check_range

#: Channels by their names, or by their positions in channel_ids, or None for all.
Channels = Sequence[str] | Sequence[int] | None


class TraceGroup(ABC):
    """Channels that were sampled together, read as one array.

    name         "AD", "Base", "AFE" or "Ultrasonic"
    channel_ids  names of the channels that can be read together, in order
    """

    name: str
    channel_ids: list[str]

    @property
    @abstractmethod
    def layout(self) -> RecordLayout:
        """Which samples there are, and when."""

    @abstractmethod
    def read_rows(self, names: list[str], rows: NDArray[Any], start: int) -> None:
        """Fills rows[channel, sample] with samples from start on, in microvolts where rows are
        floats."""

    @property
    def sampling_frequency(self) -> float:
        """Samples a second."""
        return float(self.layout.rate)

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
        names = self.names(channels)
        first, last = check_range(start, stop, self.num_samples)
        out = np.empty((len(names), last - first), dtype=sample_type(units))
        self.read_rows(names, out, first)
        return out.T

    def times(self, start: int | None = None, stop: int | None = None) -> NDArray[np.int64]:
        """Microseconds of samples start to stop (docs/output-files.md says from which zero)."""
        return self.layout.sample_times(*check_range(start, stop, self.num_samples))

    def frames_at(self, times: NDArray[np.int64]) -> NDArray[np.int64]:
        """The last sample at or before each time in microseconds; -1 before the first."""
        return self.layout.frames_at(np.asarray(times, dtype=np.int64))

    def names(self, channels: Channels) -> list[str]:
        """Names of channels; an unknown one raises KeyError or IndexError."""
        if channels is None:
            return list(self.channel_ids)
        if isinstance(channels, (str, int)):
            raise TypeError("channels are a list of names or positions")
        return [self._name(channel) for channel in channels]

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

    def _name(self, channel: str | int) -> str:
        if not isinstance(channel, str):
            if not 0 <= channel < len(self.channel_ids):
                raise IndexError(f"channel {channel}: there are 0 to {len(self.channel_ids) - 1}")
            return self.channel_ids[channel]
        if channel not in self.channel_ids:
            raise KeyError(f"there is no channel {channel}; channel_ids has the names")
        return channel
