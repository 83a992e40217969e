# SPDX-License-Identifier: BSD-3-Clause

"""python -m stalwick DIRECTORY."""

import os
import subprocess
import sys
from pathlib import Path

import stalwick
from output_files import channel_file, event_file, write


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


def test_it_prints_how_many_files_were_not_closed(tmp_path: Path) -> None:
    for name in ("CSC1", "CSC2"):
        write(tmp_path / f"{name}.vcs", channel_file(name, 30000, [(0, [1])], closed=False))
    write(tmp_path / "Events.vev", event_file([]))
    lines = run("--allow-incomplete", str(tmp_path)).stdout.splitlines()
    assert lines[1] == "not closed  files that may lack their end: 2"


def test_incomplete_sets_name_the_option_the_number_of_files_and_later_sets(tmp_path: Path) -> None:
    for name in ("CSC1", "CSC2"):
        write(tmp_path / f"{name}.vcs", channel_file(name, 30000, [(0, [1])], closed=False))
    write(tmp_path / "CSC1_01.vcs", channel_file("CSC1", 30000, [(0, [1])]))
    error = run(str(tmp_path)).stderr
    assert error.startswith(f"stalwick: {tmp_path / 'CSC1.vcs'}: its header says that it was not")
    assert "; 2 files of this set are incomplete; " in error
    assert "; this directory also has outputs with the suffix _01; " in error
    assert error.endswith("; convert the recording again, or give --allow-incomplete\n")


def test_it_names_further_conversions(tmp_path: Path) -> None:
    for name in ("CSC1", "CSC1_01", "CSC1_02"):
        write(tmp_path / f"{name}.vcs", channel_file("CSC1", 30000, [(0, [1])]))
    text = "further conversions in this directory: "
    assert run(str(tmp_path)).stdout.endswith(f"{text}_01, _02\n")
    assert run("--suffix", "_01", str(tmp_path)).stdout.endswith(f"{text}without suffix, _02\n")


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
