# SPDX-License-Identifier: BSD-3-Clause

"""Reads outputs and their recording with the installed Python package; run in the root.

  read_outputs.py OUTPUTS RECORDING
"""

import sys

import numpy as np
import stalwick

session = stalwick.open_session(sys.argv[1])
recording = stalwick.open_ord(sys.argv[2])
names = session.get_channel_ids()
assert stalwick.__file__.startswith("/usr/lib/python3/dist-packages/"), stalwick.__file__
assert len(names) == 64, names
count = session.get_num_samples()
assert count == 150000, count
assert recording.get_num_samples() == count
samples = session.traces(names, 0, count)
assert np.array_equal(samples, recording.traces(names, 0, count))
assert np.array_equal(session.times(0, count), recording.times(0, count))
assert samples.std() > 0
print(f"python: {len(names)} channels of {count} samples, the same from outputs and recording")
