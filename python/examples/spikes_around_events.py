# SPDX-License-Identifier: BSD-3-Clause

"""Counts spikes around the rising edges of a TTL line:

spikes_around_events.py DIRECTORY CHANNEL LINE
"""

import sys

import numpy as np
from numpy.typing import NDArray

import stalwick

BEFORE, AFTER, BIN = 0.05, 0.1, 0.01  # seconds
THRESHOLD = 5.0  # standard deviations of the noise
DEAD_TIME = 0.001  # seconds in which a spike hides the next one


def find_spikes(session: stalwick.Session, channel: str) -> NDArray[np.int64]:
    """Samples at which the channel falls below its threshold, read ten seconds at a time."""
    rate = session.sampling_frequency
    step = int(10 * rate)
    first = session.traces([channel], 0, min(step, session.num_samples), "uV")[:, 0]
    # Spikes do not move the median; 0.6745 makes it a standard deviation.
    noise = np.median(np.abs(first - np.median(first))) / 0.6745
    found = []
    for start in range(0, session.num_samples, step):
        # One sample more, so that a crossing between two pieces is not missed.
        begin = max(0, start - 1)
        stop = min(start + step, session.num_samples)
        below = session.traces([channel], begin, stop, "uV")[:, 0] < -THRESHOLD * noise
        found.append(np.flatnonzero(below[1:] & ~below[:-1]) + begin + 1)
    crossings = np.concatenate(found)
    spikes: list[int] = []
    for crossing in crossings.tolist():
        if not spikes or crossing - spikes[-1] > DEAD_TIME * rate:
            spikes.append(crossing)
    return np.array(spikes, dtype=np.int64)


def count_around(
    spikes: NDArray[np.int64], events: NDArray[np.int64], rate: float
) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    """Spikes per second around events, both as samples, and the starts of the bins in seconds."""
    edges = np.arange(round((BEFORE + AFTER) / BIN) + 1) * BIN - BEFORE
    counts = np.zeros(len(edges) - 1)
    for event in events:
        counts += np.histogram((spikes - event) / rate, edges)[0]
    return counts / (max(len(events), 1) * BIN), edges[:-1]


def main(directory: str, channel: str, line: int) -> None:
    with stalwick.open_session(directory) as session:
        events = session.frames_at(session.events.rising_times(line))
        spikes = find_spikes(session, channel)
        rates, starts = count_around(spikes, events, session.sampling_frequency)
    print(f"{len(spikes)} spikes of {channel}, {len(events)} rising edges of line {line}")
    for start, rate in zip(starts, rates):
        print(f"{1000 * start:6.0f} ms  {rate:7.2f} /s")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2], int(sys.argv[3]))
