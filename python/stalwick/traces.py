# SPDX-License-Identifier: BSD-3-Clause

"""Reading samples: the common methods of groups of channels, sessions and recordings."""

from __future__ import annotations

import os
from abc import ABC, abstractmethod
from pathlib import Path
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from .binary_file import BinaryExport, BinaryType
from .continuous_file import Units, sample_type
from .record_layout import Gap, check_range

if TYPE_CHECKING:
    from .trace_group import Channels, TraceGroup


class Traces(ABC):
    """Samples of channels that were sampled together.

    For a group, its own channels; for a session or a recording, the A/D channels.
    """

    @abstractmethod
    def _read_group(self) -> TraceGroup:
        """The group whose samples are read; raises StalwickError if there is none."""

    @property
    def channel_ids(self) -> list[str]:
        """Names of the channels that can be read together, in order."""
        return self._read_group().ids

    @property
    def sampling_frequency(self) -> float:
        """Samples per second."""
        return float(self._read_group().layout.rate)

    @property
    def num_samples(self) -> int:
        """Samples of each channel."""
        return self._read_group().layout.num_samples

    @property
    def duration(self) -> float:
        """Seconds of samples, without gaps."""
        return self.num_samples / self.sampling_frequency

    @property
    def gaps(self) -> list[Gap]:
        """Steps of the records' times. A gap is somewhere in the record before its step."""
        return self._read_group().layout.gaps()

    def traces(
        self,
        channels: Channels = None,
        start: int | None = None,
        stop: int | None = None,
        units: Units = "int16",
    ) -> NDArray[Any]:
        """Reads samples of channels.

        Parameters
        ----------
        channels : list of str or list of int, optional
            Names, or positions in `channel_ids`. Default: all channels.
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.
        units : {"int16", "uV"}
            "int16" gives the files' values, "uV" float32 microvolts, only for A/D channels.

        Returns
        -------
        numpy.ndarray
            The samples as [sample, channel], a copy. Each channel's samples are adjacent in
            memory.

        Raises
        ------
        KeyError, IndexError
            There is no such channel, or no such sample.
        DamagedFileError
            A record that was read violates the format.
        """
        group = self._read_group()
        names = group.names(channels)
        first, last = check_range(start, stop, group.num_samples)
        out = np.empty((len(names), last - first), dtype=sample_type(units, group.name))
        group.read_rows(names, out, first)
        return out.T

    def times(self, start: int | None = None, stop: int | None = None) -> NDArray[np.int64]:
        """Calculates when samples were taken.

        Parameters
        ----------
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.

        Returns
        -------
        numpy.ndarray of int64
            Microseconds; docs/output-files.md explains from which zero.
        """
        layout = self._read_group().layout
        return layout.sample_times(*check_range(start, stop, layout.num_samples))

    def frames_at(self, times: NDArray[np.int64]) -> NDArray[np.int64]:
        """Finds the samples at given times.

        Parameters
        ----------
        times : array_like of int
            Microseconds, in any order.

        Returns
        -------
        numpy.ndarray of int64
            For each time the last sample at or before it; -1 before the first sample.

        Raises
        ------
        ValueError
            The records' times go back, so the result is not unique.
        """
        return self._read_group().layout.frames_at(np.asarray(times, dtype=np.int64))

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
        """Writes samples as a flat file, all channels of one sample after another.

        Everything needed to read it is in `path` + ".json": rate, gain, channel names, gaps.
        Both files are either complete or absent.

        Parameters
        ----------
        path : path-like
            The file to write.
        dtype : {"int16", "float32"}
            "int16" writes the files' values, "float32" microvolts, only for A/D channels.
        channels : list of str or list of int, optional
            As in `traces`.
        start, stop : int, optional
            First sample, and the one after the last. Default: all samples.
        progress : bool, optional
            Whether to show a bar on standard error. Default: if that is a terminal.
        overwrite : bool
            Whether existing files of these names may be replaced.

        Returns
        -------
        pathlib.Path
            `path`.

        Raises
        ------
        StalwickError
            A file of that name exists, or a file that is read is damaged.
        """
        group = self._read_group()
        names = group.names(channels)
        first, last = check_range(start, stop, group.num_samples)
        export = BinaryExport(group, names, first, last, dtype, Path(path))
        return export.write(progress, overwrite)

    # The names of common frameworks.

    def get_traces(
        self,
        start_frame: int | None = None,
        end_frame: int | None = None,
        channel_ids: Channels = None,
        return_in_uV: bool = False,
    ) -> NDArray[Any]:
        """Reads samples of channels; `traces` with the names of common frameworks.

        Parameters
        ----------
        start_frame, end_frame : int, optional
            First sample, and the one after the last. Default: all samples.
        channel_ids : list of str or list of int, optional
            As in `traces`.
        return_in_uV : bool
            Whether the result is in microvolts, float32, instead of int16 values.

        Returns
        -------
        numpy.ndarray
            The samples as [sample, channel].
        """
        return self.traces(channel_ids, start_frame, end_frame, "uV" if return_in_uV else "int16")

    def get_num_frames(self) -> int:
        """Samples of each channel."""
        return self.num_samples

    def get_num_samples(self) -> int:
        """Samples of each channel."""
        return self.num_samples

    def get_num_channels(self) -> int:
        """The number of channels that can be read together."""
        return len(self.channel_ids)

    def get_channel_ids(self) -> list[str]:
        """Names of the channels that can be read together, in order, as a new list."""
        return list(self.channel_ids)

    def get_sampling_frequency(self) -> float:
        """Samples per second."""
        return self.sampling_frequency

    def get_dtype(self) -> np.dtype[Any]:
        """The type of the files' values, int16."""
        return np.dtype(np.int16)

    def get_channel_gains(self) -> NDArray[np.float64]:
        """Microvolts per step for each channel; 1 for sensors, whose values are not voltages."""
        return np.full(len(self.channel_ids), self._read_group().microvolts_per_step)

    def get_channel_offsets(self) -> NDArray[np.float64]:
        """Microvolts at the value 0, for each channel: 0."""
        return np.zeros(len(self.channel_ids))
