# SPDX-License-Identifier: BSD-3-Clause

"""The methods of every group of channels, whatever the source of its samples."""

from __future__ import annotations

from abc import abstractmethod
from collections.abc import Sequence
from typing import Any, Self

import numpy as np
from numpy.typing import NDArray

from .frames import turn_round
from .layout import CHANNEL_MICROVOLTS
from .record_layout import RecordLayout
from .traces import Traces

#: Channels by their names, or by their positions in channel_ids, or None for all.
Channels = Sequence[str] | Sequence[int] | None


class TraceGroup(Traces):
    """Channels that were sampled together, read as one array.

    Attributes
    ----------
    name : str
        "AD", "Base", "AFE" or "Ultrasonic".
    ids : list of str
        Names of the channels that can be read together, in order.
    """

    name: str
    ids: list[str]

    @property
    @abstractmethod
    def layout(self) -> RecordLayout:
        """The samples and their times."""

    @abstractmethod
    def read_rows(self, names: list[str], rows: NDArray[Any], start: int) -> None:
        """Fills an array with samples; `traces` is easier to use.

        Parameters
        ----------
        names : list of str
            The channels.
        rows : numpy.ndarray of int16 or float32
            [channel, sample], each channel's samples next to each other. Floats are filled with
            microvolts.
        start : int
            The first sample; as many follow as the rows are long.
        """

    def read_frames(self, names: list[str], frames: NDArray[np.int16], start: int) -> None:
        """Fills an array with samples, all channels of one sample after another.

        Parameters
        ----------
        names : list of str
            The channels.
        frames : numpy.ndarray of int16
            [sample, channel], each sample's channels next to each other.
        start : int
            The first sample; as many follow as there are frames.
        """
        rows = np.empty(frames.shape[::-1], dtype=np.int16)
        self.read_rows(names, rows, start)
        turn_round(rows, frames)

    @property
    def microvolts_per_step(self) -> float:
        """The size of one step of a value; 1 for sensors, whose values are not voltages."""
        return CHANNEL_MICROVOLTS if self.name == "AD" else 1.0

    def names(self, channels: Channels) -> list[str]:
        """Names of chosen channels.

        Parameters
        ----------
        channels : list of str, list of int or None
            Names or positions in `channel_ids`; None for all.

        Returns
        -------
        list of str
            The names in the order of `channels`.

        Raises
        ------
        KeyError, IndexError
            There is no such channel.
        """
        if channels is None:
            return list(self.ids)
        if isinstance(channels, (str, int)):
            raise TypeError("channels are a list of names or positions")
        return [self._name(channel) for channel in channels]

    def _read_group(self) -> Self:
        return self

    def _name(self, channel: str | int) -> str:
        if not isinstance(channel, str):
            if not 0 <= channel < len(self.ids):
                raise IndexError(f"channel {channel}: there are 0 to {len(self.ids) - 1}")
            return self.ids[channel]
        if channel not in self.ids:
            raise KeyError(f"there is no channel {channel}; channel_ids has the names")
        return channel
