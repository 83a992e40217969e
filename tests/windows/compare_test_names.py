#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Compares the names of the test cases built for Windows with those for Linux.

Every case of the engine and the command that Linux runs must exist on Windows too, except
those listed here with the reason why they cannot.
"""
import argparse
import subprocess
import sys
from pathlib import Path

# "Suite.Case" or "Suite.*": why Windows has no such test.
ONLY_ON_LINUX = {
    "OrdSynthCommandTest.*": "runs the program by a POSIX shell; compare_with_linux.py runs it",
    "Command.*": "starts the command by fork and pipes; compare_with_linux.py runs it",
    "CommandAccount.*": "starts the command by fork",
    "CommandBeforeConversion.*": "starts the command by fork",
    "CommandPipe.*": "makes POSIX named pipes",
    "CommandSignal.*": "sends POSIX signals; WindowsConsoleTest and compare_with_linux.py instead",
    "CommandTerminal.*": "opens a POSIX pseudo-terminal",
    "ClosedStreams.*": "closes POSIX descriptors",
    "ConsoleSignalDeathTest.*": "sends POSIX signals",
    "DiskSync.*": "stands before fdatasync",
    "FileSizeLimit.*": "sets a POSIX limit",
    "HostileNumbers.*": "is written with RapidCheck, which Debian compiles for Linux only",
    "InputAndOutputDirectory.*": "starts the command by fork",
    "KeepPartial.*": "starts the command by fork",
    "KillInSmallBlocks.*": "sends POSIX signals",
    "KillTest.*": "sends POSIX signals",
    "MemoryLimit.*": "sets a POSIX limit",
    "Night.*": "starts the command by fork",
    "OpenFileLimit.*": "sets a POSIX limit",
    "PathNames.*": "starts the command by fork",
    "ReadOnlyDirectory.*": "sets POSIX permissions",
    "RecordingCheck.PipeIsNotOpened": "makes a POSIX named pipe",
    "SymbolicLink.*": "makes POSIX links",
    "ThreadFault.*": "stands before pthread_create of a shared library; here it is linked in",
    "VanishedDirectory.*": "removes files that are open for writing; Windows refuses that",
    "WideOutputDeathTest.*": "needs streams with an orientation; Windows has none",
}


def case_names(command):
    listing = subprocess.run([*command, "--gtest_list_tests"], capture_output=True, text=True,
                             check=True).stdout
    suite = ""
    for line in listing.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            yield suite + name.strip()
        elif name.endswith("."):
            suite = name


def programs(build, suffix):
    """The GoogleTest programs by name; the window's tests are different programs."""
    found = {}
    for path in sorted((build / "tests").rglob("*_test*" + suffix)):
        if path.parent.name == "app" or path.suffix != suffix:
            continue
        if path.is_file() and path.stat().st_mode & 0o111:
            found[path.name.removesuffix(suffix)] = path
    return found


def reason(name):
    case = name.split(": ")[1]
    suite = case.split(".")[0].split("/")[-1]
    return ONLY_ON_LINUX.get(case) or ONLY_ON_LINUX.get(suite + ".*")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--linux", type=Path, required=True, help="build directory for Linux")
    parser.add_argument("--windows", type=Path, required=True, help="build directory for Windows")
    options = parser.parse_args()
    wine = str(Path(__file__).resolve().parents[2] / "scripts/run-under-wine.sh")

    linux, windows = set(), set()
    windows_programs = programs(options.windows, ".exe")
    for name, path in programs(options.linux, "").items():
        cases = set(case_names([str(path)]))
        linux |= {f"{name}: {case}" for case in cases}
        if name in windows_programs:
            there = set(case_names([wine, str(windows_programs[name])]))
            windows |= {f"{name}: {case}" for case in there}

    excused = {case for case in linux - windows if reason(case)}
    for case in sorted(excused):
        print(f"only on Linux   {case}   ({reason(case)})")
    missing = linux - windows - excused
    for case in sorted(missing):
        print(f"MISSING on Windows   {case}")
    print(f"{len(linux & windows)} test cases on both systems, {len(excused)} only on Linux, "
          f"{len(windows - linux)} only on Windows")
    return 1 if missing or not linux else 0


if __name__ == "__main__":
    sys.exit(main())
