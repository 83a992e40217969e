# SPDX-License-Identifier: BSD-3-Clause

"""Which samples are in which record, and when they were taken."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
from numpy.typing import NDArray

from .layout import MICROSECONDS_PER_SECOND, SAMPLES_PER_RECORD

#: A packet has ten samples per channel. A record's time can lag by fewer if timestamps repeat,
#: so a step of this many sample periods more than a record's length is a gap.
_GAP_PERIODS = 9.5


@dataclass(frozen=True)
class Gap:
    """A step of time between two records that differs from the length of the first.

    Attributes
    ----------
    record : int
        The record after which the time steps, from 0.
    start_frame : int
        First sample of that record: the gap is after it.
    end_frame : int
        First sample of the next record: the gap is before it.
    time : int
        Of the record before the step, in microseconds.
    missing_samples : int
        The number of sample periods by which the step is too long; negative if time goes back.
    """

    record: int
    start_frame: int
    end_frame: int
    time: int
    missing_samples: int


class RecordLayout:
    """The times and sample counts of a channel's records, which its whole group shares.

    Attributes
    ----------
    counts : numpy.ndarray of int64
        Samples in each record, 1 to 512.
    starts : numpy.ndarray of int64
        Number of each record's first sample; at its end the number of all samples.
    times : numpy.ndarray of int64
        Microseconds of each record, signed: the format's sums are modulo 2^64.
    rate : int
        Samples per second.
    """

    def __init__(self, counts: NDArray[np.int64], times: NDArray[np.int64], rate: int) -> None:
        self.counts = counts
        self.times = times
        self.rate = rate
        self._heads: tuple[int, int, NDArray[np.uint32]] | None = None
        self.starts = np.zeros(len(counts) + 1, dtype=np.int64)
        np.cumsum(counts, out=self.starts[1:])
        #: Every record except the last is full: positions are divisions.
        self.regular = bool((counts[:-1] == SAMPLES_PER_RECORD).all())

    @property
    def num_samples(self) -> int:
        return int(self.starts[-1])

    def first(self, records: int) -> RecordLayout:
        """The layout of that many records from the beginning."""
        return RecordLayout(self.counts[:records], self.times[:records], self.rate)

    def heads(self, first: int, last: int) -> NDArray[np.uint32]:
        """The words before the samples of records first to last, with 0 for the channel.

        The last result is cached: every channel of a group requests the same.
        """
        kept = self._heads
        if kept is not None and kept[:2] == (first, last):
            return kept[2]
        heads = np.zeros((last - first, 5), dtype="<u4")
        heads[:, :2] = self.times[first:last].astype("<i8").view("<u4").reshape(-1, 2)
        heads[:, 3] = self.rate
        heads[:, 4] = self.counts[first:last]
        self._heads = (first, last, heads)
        return heads

    def record_range(self, start: int, stop: int) -> tuple[int, int]:
        """The records (first, after the last) that hold samples start to stop, start < stop."""
        if self.regular:
            return start // SAMPLES_PER_RECORD, (stop - 1) // SAMPLES_PER_RECORD + 1
        first = np.searchsorted(self.starts, start, side="right") - 1
        last = np.searchsorted(self.starts, stop - 1, side="right")
        return int(first), int(last)

    def sample_times(self, start: int, stop: int) -> NDArray[np.int64]:
        """Microseconds: the record's time and one sample period per sample, truncated."""
        if start == stop:
            return np.empty(0, dtype=np.int64)
        first, last = self.record_range(start, stop)
        counts = self.counts[first:last]
        within = np.arange(SAMPLES_PER_RECORD, dtype=np.int64) * MICROSECONDS_PER_SECOND
        within //= self.rate
        times = self.times[first:last, np.newaxis] + within
        samples = times[np.arange(SAMPLES_PER_RECORD) < counts[:, np.newaxis]]
        offset = start - int(self.starts[first])
        return samples[offset : offset + stop - start]

    def frames_at(self, times: NDArray[np.int64]) -> NDArray[np.int64]:
        """The last sample at or before each time; -1 before the first record.

        For times inside a gap, the last sample of the record before it.
        """
        steps_back = np.flatnonzero(np.diff(self.times) < 0)
        if len(steps_back):
            raise ValueError(f"the records' times go back after record {steps_back[0]}")
        records = np.searchsorted(self.times, times, side="right") - 1
        known = np.maximum(records, 0)
        longest = SAMPLES_PER_RECORD * MICROSECONDS_PER_SECOND // self.rate
        elapsed = np.minimum(times - self.times[known], longest)
        # A sample's time is truncated, so its own time must find it: round up.
        scaled = (elapsed + 1) * self.rate - 1
        within = np.minimum(scaled // MICROSECONDS_PER_SECOND, self.counts[known] - 1)
        return np.where(records < 0, -1, self.starts[known] + within)

    def gaps(self) -> list[Gap]:
        steps = np.diff(self.times) * (self.rate / MICROSECONDS_PER_SECOND) - self.counts[:-1]
        return [
            Gap(
                record=int(record),
                start_frame=int(self.starts[record]),
                end_frame=int(self.starts[record + 1]),
                time=int(self.times[record]),
                missing_samples=round(float(steps[record])),
            )
            for record in np.flatnonzero(np.abs(steps) > _GAP_PERIODS)
        ]


def check_range(start: int | None, stop: int | None, length: int) -> tuple[int, int]:
    """start and stop with their defaults; raises IndexError if the range is not complete."""
    first = 0 if start is None else int(start)
    last = length if stop is None else int(stop)
    if not 0 <= first <= last <= length:
        raise IndexError(f"samples {first} to {last} were asked for; there are 0 to {length}")
    return first, last
