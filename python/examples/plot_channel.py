# SPDX-License-Identifier: BSD-3-Clause

"""Plots a stretch of one channel:  plot_channel.py DIRECTORY CHANNEL START_SECONDS PICTURE.png"""

import sys

import matplotlib.pyplot as plt
import numpy as np

import stalwick


def plot_channel(directory: str, channel: str, start_seconds: float, picture: str) -> None:
    """One second of a channel in microvolts, with the changes of the TTL input."""
    with stalwick.open_session(directory) as session:
        rate = session.sampling_frequency
        start = int(start_seconds * rate)
        stop = min(start + int(rate), session.num_samples)
        trace = session.traces([channel], start, stop, units="uV")[:, 0]
        times = session.times(start, stop)
        events = session.events.times

    zero = times[0]
    figure, axes = plt.subplots(figsize=(10, 3), layout="constrained")
    axes.plot((times - zero) / 1e6 + start_seconds, trace, linewidth=0.5)
    for event in events[(events >= zero) & (events <= times[-1])]:
        axes.axvline((event - zero) / 1e6 + start_seconds, color="tab:orange", linewidth=0.8)
    axes.set_xlabel("s")
    axes.set_ylabel(f"{channel} (µV)")
    axes.set_ylim(np.percentile(trace, 0.01) * 1.2 - 1, np.percentile(trace, 99.99) * 1.2 + 1)
    figure.savefig(picture, dpi=150)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    plot_channel(sys.argv[1], sys.argv[2], float(sys.argv[3]), sys.argv[4])
