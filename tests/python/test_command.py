# SPDX-License-Identifier: BSD-3-Clause

"""python -m stalwick DIRECTORY."""

import os
import subprocess
import sys
from pathlib import Path

import stalwick
from output_files import channel_file, write


def run(*arguments: str) -> subprocess.CompletedProcess[str]:
    command = [sys.executable, "-m", "stalwick", *arguments]
    return subprocess.run(command, capture_output=True, text=True)


def test_it_prints_what_is_there(synth, convert) -> None:
    directory = convert(synth("--channels", "32", "--seconds", "1", "--all"), "--all")
    done = run(str(directory))
    assert done.returncode == 0, done.stderr
    lines = done.stdout.splitlines()
    assert lines[0].startswith(f"{directory}: 53 files, session ")
    assert "AD          32 channels, 30000 samples/s, 30000 samples, 1.000 s" in lines
    assert "Ultrasonic  1 channel, 210000 samples/s, 210000 samples, 1.000 s" in lines
    assert "raw data    30000 records of 32 channels" in lines


def test_it_prints_gaps(tmp_path: Path) -> None:
    records = [(0, [0] * 512), (17066 + 1_000_000, [1])]
    write(tmp_path / "CSC1.vcs", channel_file("CSC1", 30000, records))
    assert "gap of 1.000000 s between samples 0 and 512" in run(str(tmp_path)).stdout


def test_an_error_is_one_line_and_status_1(tmp_path: Path) -> None:
    write(tmp_path / "CSC1.vcs", channel_file("CSC1", 30000, [(0, [1])])[:-1])
    done = run(str(tmp_path))
    assert done.returncode == 1
    assert done.stderr.count("\n") == 1
    assert done.stderr.startswith(f"stalwick: {tmp_path / 'CSC1.vcs'}: it ends 1043 bytes after")


def test_wrong_usage_is_status_2() -> None:
    assert run().returncode == 2


def test_the_packages_version_is_the_programs() -> None:
    assert stalwick.__version__ == os.environ["STALWICK_VERSION"]
