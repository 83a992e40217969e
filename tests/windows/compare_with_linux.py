#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Converts the same recordings with the Linux command and, under wine, with the Windows command.

Every output must be the same, byte for byte, except for its path, its times and its UUID, which
must be well formed; so must the final status text and the exit status.
"""
import argparse
import itertools
import re
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HEADER_SIZE = 16384
RECORD_SIZE = 1044
UUID = re.compile(rb"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")
TIME = re.compile(rb"\d{4}/\d\d/\d\d \d\d:\d\d:\d\d")
NOT_CLOSED = b"File was not closed properly"
SWITCHES = ["--no-csc", "--base-imu", "--afe-imu", "--ultrasonic", "--raw"]
NAMES = ["plain", "two words", "Запись-Ёж", "録音データ", "brain 🧠", "µV ±5 é", "a.b.c"]


class Commands:
    def __init__(self, options):
        root = Path(__file__).resolve().parents[2]
        self.linux = [str(options.linux / "cli/stalwick-convert")]
        self.synth = [str(options.linux / "tools/ord_synth/ord_synth")]
        wine = str(root / "scripts/run-under-wine.sh")
        self.windows = [wine, str(options.windows / "cli/stalwick-convert.exe")]
        self.windows_synth = [wine, str(options.windows / "tools/ord_synth/ord_synth.exe")]


def run(command, cwd=None):
    return subprocess.run(command, capture_output=True, cwd=cwd, timeout=300)


def windows_path(path, drive="Z:", root=Path("/")):
    """The path for wine; without a drive, as a path with forward slashes."""
    if not drive:
        return str(path)
    return drive + "\\" + "\\".join(Path(path).relative_to(root).parts)


def masked_header(data, own_path):
    """The header, checked and with variable parts masked."""
    lines = data[:HEADER_SIZE].rstrip(b"\0").split(b"\r\n")
    for at, line in enumerate(lines):
        key, _, value = line.partition(b" ")
        if key == b"-FileUUID":
            assert UUID.fullmatch(value), f"malformed UUID {value}"
        elif key in (b"-TimeCreated", b"-TimeClosed") and value != NOT_CLOSED:
            assert TIME.fullmatch(value), f"malformed time {value}"
        elif key == b"-OriginalFileName":
            assert value.decode() == f'"{own_path}"', f"path {value.decode()}, not {own_path}"
        else:
            continue
        lines[at] = key
    return lines


def compare_trees(linux, windows, windows_text):
    """Compares all files below two directories; `windows_text` is the path of the second one for wine."""
    names = {p.relative_to(linux) for p in linux.rglob("*")}
    others = {p.relative_to(windows) for p in windows.rglob("*")}
    assert names == others, f"files differ: {sorted(map(str, names ^ others))[:4]}"
    count = 0
    for name in sorted(names):
        if (linux / name).is_dir():
            continue
        one, two = (linux / name).read_bytes(), (windows / name).read_bytes()
        header = masked_header(one, linux / name)
        other = masked_header(two, windows_text + "\\" + "\\".join(name.parts))
        for a, b in itertools.zip_longest(header, other):
            assert a == b, f"{name}: header line {a} on Linux, {b} under wine"
        assert one[HEADER_SIZE:] == two[HEADER_SIZE:], f"{name}: records differ"
        count += 1
    return count


class Comparison:
    """One recording list with one set of switches, converted both ways."""

    def __init__(self, title, work, inputs, switches=(), runs=1, drive="Z:", root=Path("/"),
                 out_name="out put", expect_status=0):
        self.title, self.work, self.inputs = title, work, inputs
        self.switches, self.runs = list(switches), runs
        self.drive, self.root, self.out_name = drive, root, out_name
        self.expect_status = expect_status

    def check(self, commands):
        linux_out = self.work / "linux" / self.out_name
        windows_out = self.work / "windows" / self.out_name
        (self.work / "linux").mkdir()
        (self.work / "windows").mkdir()
        windows_text = windows_path(windows_out, self.drive, self.root)
        windows_inputs = [windows_path(p, self.drive, self.root) for p in self.inputs]
        for _ in range(self.runs):
            one = run([*commands.linux, *self.switches, "-o", str(linux_out),
                       *map(str, self.inputs)])
            two = run([*commands.windows, *self.switches, "-o", windows_text, *windows_inputs])
            said = f"{one.stdout} {one.stderr} | {two.stdout} {two.stderr}"
            assert one.returncode == self.expect_status, f"exit {one.returncode}: {said}"
            assert two.returncode == one.returncode, f"exit {two.returncode} under wine: {said}"
            status = one.stdout.decode()
            for path, text in zip(self.inputs, windows_inputs):
                status = status.replace(str(path), text)
            assert status == two.stdout.decode(), f"status texts differ: {said}"
        if not linux_out.exists():
            return 0
        # Headers contain absolute paths, however the directory was given.
        full_text = windows_path(windows_out, self.drive or "Z:", self.root)
        return compare_trees(linux_out, windows_out, full_text)


def make_recordings(commands, directory):
    """One recording for each file version, channel count and set of sensors, with odd names."""
    directory.mkdir()
    recordings = []
    extras = {"": [], " all": ["--all"], " mask": ["--mask", "0-2,17"],
              " states": ["--per-sample-states", "--gap", "0.03:0.01"]}
    kinds = itertools.product(["1.0", "2.0"], [32, 64, 128, 256], extras.items())
    for (version, channels, (extra, options)), name in zip(kinds, itertools.cycle(NAMES)):
        path = directory / f"{name} {version} {channels}{extra}.ord"
        made = run([*commands.synth, "-q", "--file-version", version, "-c", str(channels),
                    "-s", "0.1", *options, "-o", str(path)])
        assert made.returncode == 0, made.stderr.decode()
        recordings.append(path)
    return recordings


def long_directory(base):
    """A directory whose path as Windows sees it has 300 characters."""
    path = base / ("д" * 100)
    path = path / ("x" * (300 - len(windows_path(path)) - 1))
    path.mkdir(parents=True)
    assert len(windows_path(path)) == 300
    return path


def comparisons(commands, scratch):
    recordings = make_recordings(commands, scratch / "recordings of today")
    numbers = itertools.count()

    def work():
        path = scratch / f"case {next(numbers)}"
        path.mkdir()
        return path

    for recording in recordings:
        yield Comparison(recording.name, work(), [recording], ["--all"])
    sample = next(p for p in recordings if p.name.endswith("2.0 32 all.ord"))
    for length in range(len(SWITCHES) + 1):
        for switches in itertools.combinations(SWITCHES, length):
            yield Comparison("switches " + " ".join(switches), work(), [sample], switches)
    yield Comparison("three files at once", work(), recordings[:3], ["--all"])
    yield Comparison("three runs into one directory", work(), [sample], ["--all"], runs=3)

    far = long_directory(scratch)
    copy = far / "запись 🧠.ord"
    copy.write_bytes(sample.read_bytes())
    yield Comparison("path of 300 characters", far, [copy], ["--all"])
    mapped = mapped_directory(scratch)
    copy = mapped / sample.name
    copy.write_bytes(sample.read_bytes())
    yield Comparison("drive letter R:", mapped, [copy], ["--all"], drive="R:", root=mapped)
    yield Comparison("forward slashes and no drive", work(), [sample], ["--all"], drive="")
    yield from bad_input(scratch, sample, work)


def bad_input(scratch, sample, work):
    missing = scratch / "nicht da ß.ord"
    yield Comparison("missing file", work(), [missing], expect_status=1)
    empty = scratch / "empty.ord"
    empty.write_bytes(b"")
    yield Comparison("empty file", work(), [empty], expect_status=1)
    directory = scratch / "directory.ord"
    directory.mkdir()
    yield Comparison("directory instead of a file", work(), [directory], expect_status=1)
    cut = scratch / "cut.ord"
    cut.write_bytes(sample.read_bytes()[:-5])
    yield Comparison("stream cut inside a packet", work(), [cut], ["--all"])
    nothing = scratch / "no data.ord"
    nothing.write_bytes(sample.read_bytes()[:HEADER_SIZE])
    yield Comparison("no data after the header", work(), [nothing], ["--all"])
    yield Comparison("output directory two levels down", work(), [sample],
                     out_name="missing/child", expect_status=2)


def check_synth(commands, scratch):
    """The Windows build of the generator makes the same recording and the same exit statuses."""
    for arguments, status in ((["--help"], 0), ([], 2), (["--channels", "33"], 2)):
        for command in (commands.synth, commands.windows_synth):
            assert run([*command, *arguments]).returncode == status, f"ord_synth {arguments}"
    one, two = scratch / "synth linux.ord", scratch / "synth windows.ord"
    arguments = ["-q", "-c", "64", "-s", "0.1", "--all", "-o"]
    made = run([*commands.synth, *arguments, str(one)])
    assert made.returncode == 0, made.stderr
    made = run([*commands.windows_synth, *arguments, windows_path(two)])
    assert made.returncode == 0, made.stderr
    assert one.read_bytes() == two.read_bytes(), "ord_synth.exe made another recording"


def check_interruption(commands, scratch):
    """Ctrl-C under wine ends the current file in order: headers closed, whole records, status 130."""
    recording, out = scratch / "long.ord", scratch / "canceled"
    made = run([*commands.synth, "-q", "-c", "256", "-s", "15", "-o", str(recording)])
    assert made.returncode == 0, made.stderr
    command = subprocess.Popen([*commands.windows, "-o", windows_path(out),
                                windows_path(recording)], stdout=subprocess.PIPE)
    first = out / "long/CSC1.vcs"
    while command.poll() is None and not first.exists():
        time.sleep(0.01)
    command.send_signal(signal.SIGINT)
    said = command.communicate(timeout=300)[0]
    assert (command.returncode, said) == (130, b"Data processing canceled.\n"), \
        f"exit {command.returncode}: {said}"
    files = list(first.parent.glob("CSC*.vcs"))
    assert len(files) == 256, f"{len(files)} channel files after a cancel"
    for path in files:
        data = path.read_bytes()
        assert NOT_CLOSED not in data[:HEADER_SIZE], f"{path.name} was not closed"
        assert (len(data) - HEADER_SIZE) % RECORD_SIZE == 0, f"{path.name} ends inside a record"


def mapped_directory(scratch):
    """The directory of drive R:. Only one case uses it: wine names a file by its closest drive."""
    return scratch / "mapped"


def map_drive(scratch):
    """Maps the drive letter R: of the wine prefix."""
    mapped_directory(scratch).mkdir()
    prefix = run([str(Path(__file__).resolve().parents[2] / "scripts/run-under-wine.sh"),
                  "--prefix"]).stdout.decode().strip()
    letter = Path(prefix) / "dosdevices/r:"
    letter.unlink(missing_ok=True)
    letter.symlink_to(mapped_directory(scratch))
    return letter


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--linux", type=Path, required=True, help="build directory for Linux")
    parser.add_argument("--windows", type=Path, required=True, help="build directory for Windows")
    options = parser.parse_args()
    commands = Commands(options)
    failed = compared = 0
    with tempfile.TemporaryDirectory(prefix="stalwick windows ") as name:
        scratch = Path(name)
        letter = map_drive(scratch)
        check_synth(commands, scratch)
        check_interruption(commands, scratch)
        cases = list(comparisons(commands, scratch))
        with ThreadPoolExecutor(2) as pool:
            for case, result in zip(cases, [pool.submit(c.check, commands) for c in cases]):
                try:
                    compared += result.result()
                except (AssertionError, subprocess.TimeoutExpired) as error:
                    failed += 1
                    print(f"FAILED {case.title}: {error}")
        letter.unlink()
    print(f"{len(cases) - failed} of {len(cases)} conversions equal, {compared} files compared")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
