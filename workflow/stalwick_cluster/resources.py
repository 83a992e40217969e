# SPDX-License-Identifier: BSD-3-Clause

"""What to request from the cluster for a recording: memory and minutes, from its survey."""

from __future__ import annotations

import math
from collections.abc import Sequence
from dataclasses import dataclass

from .records import Record
from .settings import Settings

# Largest resident sizes were 28 MB and the step's own 25 MB (docs/performance.md); the rest is
# for Snakemake, which runs in each of its jobs.
_BASE_MEMORY_MB = 200
_MEMORY_MB_FOR_256_CHANNELS = 30
_START_MINUTES = 1
_RAW_HEADER_WORDS = 18
# A packet of ten samples has nine values of each inertial unit and 70 of the ultrasonic block.
_VALUES_A_SAMPLE = {"--base-imu": 0.9, "--afe-imu": 0.9, "--ultrasonic": 7.0, "--all": 8.8}
_VCS_RECORD_BYTES, _VCS_RECORD_SAMPLES = 1044, 512


@dataclass(frozen=True)
class Request:
    memory_mb: int
    minutes: int


def request_for(steps: Sequence[str], survey: Record | None, settings: Settings,
                attempt: int = 1) -> Request:
    """``survey`` is a document of ``info --json``. Each further attempt gets as much again."""
    info = survey or {}
    channels = int(info.get("channels") or 256)
    memory = _BASE_MEMORY_MB + _MEMORY_MB_FOR_256_CHANNELS * channels / 256
    megabytes = sum(megabytes_moved(step, info, settings) for step in steps)
    seconds = megabytes / settings.megabytes_per_second
    minutes = _START_MINUTES + math.ceil(seconds / 60)
    return Request(math.ceil(memory) * attempt, minutes * attempt)


def megabytes_moved(step: str, info: Record, settings: Settings) -> float:
    """What a step reads and writes on the shared file system."""
    recording = float(info.get("bytes") or 0)
    outputs = output_bytes(info, settings)
    if step in ("survey", "page"):
        return recording / 1e6
    if step == "verify":  # checksums, then every value against the recording
        return (2 * recording + 2 * outputs) / 1e6
    # Written and read for the checksum; with scratch, each once more.
    return (2 * recording + (4 if settings.scratch else 2) * outputs) / 1e6


def output_bytes(info: Record, settings: Settings) -> float:
    """From the header and the length, so that a survey of both ends is enough."""
    header = info.get("header") or {}
    channels = float(info.get("channels") or 0)
    samples = float(info.get("duration_seconds") or 0) * float(
        header.get("sampling_frequency") or 0)
    each = 0.0
    if "--no-csc" not in settings.options:
        each += channels * _VCS_RECORD_BYTES / _VCS_RECORD_SAMPLES
    if {"--raw", "--all"} & set(settings.options):
        each += 4 * (channels + _RAW_HEADER_WORDS)
    values = sum(_VALUES_A_SAMPLE[option] for option in settings.options
                 if option in _VALUES_A_SAMPLE)
    each += values * _VCS_RECORD_BYTES / _VCS_RECORD_SAMPLES
    return samples * each + (channels + 30) * 16384
