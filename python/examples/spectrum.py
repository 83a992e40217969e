# SPDX-License-Identifier: BSD-3-Clause

"""Writes the power spectrum of a whole session, one line per frequency:

spectrum.py DIRECTORY SPECTRUM.csv
"""

import sys

import numpy as np
from numpy.typing import NDArray

import stalwick


def spectrum(session: stalwick.Session) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    """Frequencies in Hz and power density [frequency, channel] in square microvolts per Hz.

    Pieces of one second that overlap by half: memory does not grow with the session.
    """
    rate = int(session.sampling_frequency)
    window = np.hanning(rate)
    total = np.zeros((rate // 2 + 1, len(session.channel_ids)))
    pieces = 0
    for start in range(0, session.num_samples - rate + 1, rate // 2):
        traces = session.traces(None, start, start + rate, "uV")
        traces = traces - traces.mean(axis=0)
        total += np.abs(np.fft.rfft(traces * window[:, np.newaxis], axis=0)) ** 2
        pieces += 1
    density = 2 * total / (max(pieces, 1) * rate * np.sum(window**2))
    return np.fft.rfftfreq(rate, 1 / rate), density


def main(directory: str, table: str) -> None:
    with stalwick.open_session(directory) as session:
        frequencies, density = spectrum(session)
        header = ",".join(["Hz", *session.channel_ids])
    rows = np.column_stack([frequencies, density])
    np.savetxt(table, rows, delimiter=",", header=header, comments="", fmt="%.6g")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
