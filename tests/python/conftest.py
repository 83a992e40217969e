# SPDX-License-Identifier: BSD-3-Clause

"""Fixtures that run the programs under build; CTest names them in the environment."""

from __future__ import annotations

import os
import subprocess
from collections.abc import Callable
from pathlib import Path

import pytest

Convert = Callable[..., Path]


@pytest.fixture(scope="session")
def synth(tmp_path_factory: pytest.TempPathFactory) -> Callable[..., Path]:
    """synth("--channels", "32", ...): a recording made by ord_synth."""
    made: dict[tuple[str, ...], Path] = {}

    def make(*arguments: str) -> Path:
        if arguments not in made:
            path = tmp_path_factory.mktemp("recording") / "rat.ord"
            command = [os.environ["ORD_SYNTH"], "--quiet", *arguments, "--output", str(path)]
            subprocess.run(command, check=True)
            made[arguments] = path
        return made[arguments]

    return make


@pytest.fixture(scope="session")
def convert(tmp_path_factory: pytest.TempPathFactory) -> Convert:
    """convert(recording, "--all", ...): the directory of its outputs."""

    def run(recording: Path, *arguments: str, statuses: tuple[int, ...] = (0,)) -> Path:
        out = tmp_path_factory.mktemp("outputs")
        command = [os.environ["STALWICK_CONVERT"], "--quiet", "--no-sync", *arguments]
        command += ["--output-dir", str(out), str(recording)]
        done = subprocess.run(command, capture_output=True, text=True)
        assert done.returncode in statuses, done.stderr
        return out / recording.stem

    return run
