# SPDX-License-Identifier: BSD-3-Clause

"""The flat binary file for spike sorters: all channels of one sample after another."""

from __future__ import annotations

import json
import sys
import time
from collections import deque
from collections.abc import Iterator
from concurrent.futures import Future, ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path
from typing import TYPE_CHECKING, Any, BinaryIO, Literal

import numpy as np
from numpy.typing import NDArray

from .continuous_file import sample_type
from .decoder import compiled
from .errors import StalwickError
from .layout import SAMPLES_PER_RECORD

if TYPE_CHECKING:
    from .trace_group import TraceGroup

BinaryType = Literal["int16", "float32"]

#: Most bytes of samples to transpose at a time, and fewest records per channel.
#: Small pieces stay in the cache. NumPy alone needs large ones, to spend its time copying.
_CHUNK_BYTES = 16 << 20 if compiled is None else 4 << 20
_CHUNK_RECORDS = 16
_MAKERS = 3


@dataclass(frozen=True)
class BinaryExport:
    """The contents and the path of the file: channels and samples of one group."""

    group: TraceGroup
    channels: list[str]
    start: int
    stop: int
    dtype: BinaryType
    path: Path

    def __post_init__(self) -> None:
        if self.dtype not in ("int16", "float32"):
            raise ValueError(f'dtype is "int16" or "float32", not {self.dtype!r}')
        sample_type("int16" if self.dtype == "int16" else "uV", self.group.name)

    @property
    def size(self) -> int:
        """Bytes of the binary file."""
        itemsize = np.dtype(self.dtype).itemsize
        return (self.stop - self.start) * len(self.channels) * itemsize

    @property
    def chunk_samples(self) -> int:
        """Samples of each channel that are read, transposed and written at a time."""
        record = SAMPLES_PER_RECORD * max(1, len(self.channels)) * 2
        return SAMPLES_PER_RECORD * max(_CHUNK_RECORDS, _CHUNK_BYTES // record)

    @property
    def sidecar(self) -> Path:
        return self.path.with_name(self.path.name + ".json")

    def description(self) -> dict[str, Any]:
        """The sidecar: everything needed to read the binary file."""
        group = self.group
        gain = group.microvolts_per_step if self.dtype == "int16" else 1.0
        has_samples = self.stop > self.start
        start_time = int(group.times(self.start, self.start + 1)[0]) if has_samples else None
        return {
            "file": self.path.name,
            "dtype": self.dtype,
            "byte_order": "little",
            "order": "sample by sample, in each the channels as listed",
            "sampling_frequency": group.sampling_frequency,
            "num_samples": self.stop - self.start,
            "num_channels": len(self.channels),
            "channel_names": self.channels,
            "gain_to_uv": gain,
            "offset_to_uv": 0.0,
            "start_frame": self.start,
            "start_time_microseconds": start_time,
            "gaps": [
                {
                    "after_sample": gap.start_frame - self.start,
                    "before_sample": gap.end_frame - self.start,
                    "missing_samples": gap.missing_samples,
                }
                for gap in group.gaps
                if self.start < gap.end_frame < self.stop
            ],
        }

    def write(self, progress: bool | None, overwrite: bool) -> Path:
        """Writes file and sidecar, or neither; see Traces.to_binary."""
        targets = [self.path, self.sidecar]
        _refuse_existing(targets, overwrite)
        parts = [target.with_name(target.name + ".part") for target in targets]
        made: list[Path] = []
        try:
            with open(parts[0], "xb", buffering=0) as file:
                made.append(parts[0])
                _write_samples(self, file, _Bar(self.size, progress))
            with open(parts[1], "x", encoding="utf-8") as text:
                made.append(parts[1])
                json.dump(self.description(), text, indent=1)
                text.write("\n")
            _refuse_existing(targets, overwrite)
            for part, target in zip(parts, targets):
                part.replace(target)
        except FileExistsError as error:
            # Not ours: another export may be writing it.
            _remove(made)
            reason = "it exists; remove it if nothing writes it"
            raise StalwickError(f"{error.filename}: {reason}") from None
        except BaseException:
            _remove(made)
            raise
        return self.path


def _remove(paths: list[Path]) -> None:
    for path in paths:
        path.unlink(missing_ok=True)


def _refuse_existing(targets: list[Path], overwrite: bool) -> None:
    for target in targets:
        if target.exists() and not overwrite:
            raise StalwickError(f"{target}: it exists; choose another name or pass overwrite=True")


def _write_samples(export: BinaryExport, file: BinaryIO, bar: _Bar) -> None:
    """Two threads make the next chunks while this one writes the chunk before them."""
    makers = [_ChunkMaker(export) for _ in range(_MAKERS)]
    waiting: deque[Future[NDArray[Any]]] = deque()
    with ThreadPoolExecutor(_MAKERS - 1) as helpers:
        for number, (start, stop) in enumerate(_chunks(export)):
            # The memory of a maker can be reused once its last chunk is written.
            if len(waiting) == _MAKERS - 1:
                bar.add(_write(file, waiting.popleft().result()))
            waiting.append(helpers.submit(makers[number % _MAKERS].make, start, stop))
        while waiting:
            bar.add(_write(file, waiting.popleft().result()))
    bar.end()


def _chunks(export: BinaryExport) -> Iterator[tuple[int, int]]:
    """Ranges of samples; all except the first begin where a record does, to copy whole records."""
    step = export.chunk_samples
    border = export.start - export.start % SAMPLES_PER_RECORD
    for start in range(border, export.stop, step):
        yield max(start, export.start), min(start + step, export.stop)


class _ChunkMaker:
    """Makes chunks [sample, channel] in its own memory, valid until the next one."""

    def __init__(self, export: BinaryExport) -> None:
        shape = (min(export.chunk_samples, export.stop - export.start), len(export.channels))
        self._group = export.group
        self._names = export.channels
        self._frames = np.empty(shape, dtype=np.int16)
        self._scaled = np.empty(shape if export.dtype == "float32" else (0, 0), dtype=np.float32)

    def make(self, start: int, stop: int) -> NDArray[Any]:
        frames = self._frames[: stop - start]
        self._group.read_frames(self._names, frames, start)
        if not len(self._scaled):
            return frames
        scaled = self._scaled[: stop - start]
        gain = np.float32(self._group.microvolts_per_step)
        return np.multiply(frames, gain, out=scaled, dtype=np.float32)


def _write(file: BinaryIO, chunk: NDArray[Any]) -> int:
    little_endian = chunk.astype(chunk.dtype.newbyteorder("<"), copy=False)
    data = little_endian.reshape(-1).view(np.uint8).data
    written = 0
    while written < len(data):
        written += file.write(data[written:])
    return written


class _Bar:
    """A progress bar on standard error; by default only if that is a terminal."""

    def __init__(self, total: int, shown: bool | None) -> None:
        self._total = total
        self._done = 0
        self._start = time.monotonic()
        self._shown = sys.stderr.isatty() if shown is None else shown

    def add(self, amount: int) -> None:
        self._done += amount
        if not self._shown:
            return
        seconds = max(time.monotonic() - self._start, 1e-6)
        part = self._done / self._total
        print(
            f"\r[{'#' * int(30 * part):30}] {100 * part:3.0f} %  "
            f"{self._done / seconds / 1e6:.0f} MB/s  {seconds * (1 / part - 1):.0f} s left ",
            end="",
            file=sys.stderr,
            flush=True,
        )

    def end(self) -> None:
        if self._shown:
            print(file=sys.stderr)
