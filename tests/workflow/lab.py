# SPDX-License-Identifier: BSD-3-Clause

"""A directory with recordings, their table and settings, for the tests of the workflow."""

from __future__ import annotations

import json
import os
import subprocess
import time
from collections import Counter
from collections.abc import Callable
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

SOURCE = Path(__file__).resolve().parents[2]
WORKFLOW = SOURCE / "workflow"


@dataclass(frozen=True)
class Programs:
    convert: str
    inspect: str
    synth: str

    @staticmethod
    def of_build(build: Path) -> Programs:
        return Programs(*(str(build / path) for path in (
            "cli/stalwick-convert", "cli/stalwick-inspect", "tools/ord_synth/ord_synth")))


@dataclass
class Lab:
    """``settings`` are written to settings.toml before each command."""

    programs: Programs
    directory: Path
    settings: dict[str, object] = field(default_factory=dict)

    def __post_init__(self) -> None:
        self.hold = self.directory / "hold"
        self.hold.mkdir(parents=True)
        self.settings = {"inspect": self.programs.inspect, "pages": False,
                         "options": ["--all", "--no-sync"],
                         "convert": str(Path(__file__).parent / "held_convert.sh"),
                         **self.settings}

    @property
    def results(self) -> Path:
        return self.directory / str(self.settings.get("results", "results"))

    def environment(self) -> dict[str, str]:
        return dict(os.environ, STALWICK_CONVERT=self.programs.convert,
                    STALWICK_HOLD=str(self.hold))

    def make(self, name: str, *options: str) -> Path:
        path = self.directory / f"{name}.ord"
        subprocess.run([self.programs.synth, "-q", "--force", "-o", str(path), *options],
                       check=True)
        return path

    def make_narrow(self, name: str, channels: int, *options: str) -> Path:
        """Fewer channels than a packet has room for: the others are masked."""
        path = self.make(name, "-c", "32", "--mask", f"0-{channels - 1}", *options)
        content = path.read_bytes()
        announced = b"-NumADChannels 32"
        assert content.count(announced) == 1
        fewer = f"-NumADChannels {channels}".encode().ljust(len(announced))
        path.write_bytes(content.replace(announced, fewer))
        return path

    def write_table(self, *rows: str, header: str = "path") -> None:
        (self.directory / "recordings.tsv").write_text("\n".join([header, *rows]) + "\n")

    def write_settings(self) -> Path:
        file = self.directory / "settings.toml"
        file.write_text("".join(f"{key} = {json.dumps(value)}\n"
                                for key, value in self.settings.items()))
        return file

    def command(self, *arguments: str) -> list[str]:
        return [str(WORKFLOW / "stalwick-cluster"), "--settings", str(self.write_settings()),
                *arguments]

    def start(self, *arguments: str) -> subprocess.Popen[str]:
        return subprocess.Popen(self.command(*arguments), env=self.environment(), text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run(self, *arguments: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(self.command(*arguments), env=self.environment(), check=False,
                              text=True, capture_output=True)

    def rows(self) -> dict[str, dict[str, Any]]:
        """The current report, by the recordings' names."""
        report = json.loads((self.results / "report.json").read_text())
        return {row["name"]: row for row in report["recordings"]}

    def outputs(self) -> dict[str, tuple[int, int, int]]:
        """Inode, modification time and size of every output: rewriting would change them."""
        return {str(path.relative_to(self.results)): (status.st_ino, status.st_mtime_ns,
                                                      status.st_size)
                for folder in ("converted", "salvaged")
                for path in sorted((self.results / folder).glob("*/*"))
                for status in [path.stat()]}

    def is_converting(self, name: str) -> bool:
        """An attempt has outputs by now."""
        return any(any(place.glob(f"{name}.convert-*/out/*/Events.vev"))
                   for place in (self.results / "unfinished", self.directory / "scratch"))

    def conversions(self) -> Counter[str]:
        """How often each was begun."""
        return Counter((self.hold / "log").read_text().split())


def wait_until(condition: Callable[[], bool], what: str, seconds: float = 60) -> None:
    until = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > until:
            raise TimeoutError(f"{what}: not in {seconds} s")
        time.sleep(0.05)
