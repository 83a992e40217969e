# SPDX-License-Identifier: BSD-3-Clause

"""Transposes channel by channel to sample by sample."""

from __future__ import annotations

import numpy as np
from numpy.typing import NDArray

from .decoder import compiled

#: Samples that are transposed while they fit into a processor's nearest caches.
_TILE = 512
#: Samples of 16 bits that move together as one number of 128 bits.
_PACK = 8


def turn_round(rows: NDArray[np.int16], out: NDArray[np.int16]) -> None:
    """Copies rows[channel, sample] to out[sample, channel]."""
    if compiled is None:
        turn_round_in_numpy(rows, out)
    else:
        compiled.interleave(rows, out)


def turn_round_in_numpy(rows: NDArray[np.int16], out: NDArray[np.int16]) -> None:
    """The same without the compiled module, several times as fast as a plain assignment:
    it moves eight samples of a channel as one number, and then, within the cache, one by one."""
    channels, samples = rows.shape
    packed = np.empty((_TILE // _PACK, channels), dtype=np.complex128)
    for start in range(0, samples, _TILE):
        stop = min(start + _TILE, samples)
        if stop - start < _TILE:
            out[start:stop] = rows[:, start:stop].T
            break
        tile = rows[:, start:stop]
        np.copyto(packed, tile.view(np.complex128).T)
        groups = packed.view(np.int16).reshape(-1, channels, _PACK)
        np.copyto(out[start:stop].reshape(-1, _PACK, channels), groups.transpose(0, 2, 1))
