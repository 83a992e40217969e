# SPDX-License-Identifier: BSD-3-Clause

"""The table of recordings: tabs or commas between its columns, their names in the first line."""

from __future__ import annotations

import csv
import re
from dataclasses import dataclass
from pathlib import Path

from .settings import SettingsError

_NAME = re.compile(r"[A-Za-z0-9_][A-Za-z0-9_.+-]*")
_SHA256 = re.compile(r"[0-9a-f]{64}")
_COLUMNS = ("path", "name", "sha256")


@dataclass(frozen=True)
class Recording:
    """``name`` is the name of its results; ``sha256`` the expected checksum, if known."""

    name: str
    path: Path
    sha256: str | None = None


def load_table(file: Path) -> dict[str, Recording]:
    """The recordings by their names, in the table's order."""
    try:
        text = file.read_text(encoding="utf-8-sig")
    except (OSError, ValueError) as error:
        raise SettingsError(f"{file}: {error}; give a table with the column path") from error
    lines = text.splitlines()
    delimiter = "\t" if lines and "\t" in lines[0] else ","
    rows = csv.DictReader(lines, delimiter=delimiter)
    if "path" not in (rows.fieldnames or ()):
        raise SettingsError(f"{file}: its first line names no column path")
    recordings: dict[str, Recording] = {}
    for row in rows:
        where = f"{file}, line {rows.line_num}"
        recording = _recording_of(row, where, file.absolute().parent)
        if recording.name in recordings:
            raise SettingsError(f"{where}: {recording.name} occurs twice; "
                                "give each its own in the column name")
        recordings[recording.name] = recording
    if not recordings:
        raise SettingsError(f"{file}: it contains no recording")
    return recordings


def _recording_of(row: dict[str, str], where: str, directory: Path) -> Recording:
    path, name, sha256 = ((row.get(column) or "").strip() for column in _COLUMNS)
    if not path:
        raise SettingsError(f"{where}: no path")
    name = name or Path(path).stem
    if not _NAME.fullmatch(name):
        raise SettingsError(f"{where}: {name!r} cannot name results; give letters, digits "
                            "and _ . + - in the column name")
    if sha256 and not _SHA256.fullmatch(sha256.lower()):
        raise SettingsError(f"{where}: the sha256 is not 64 hexadecimal digits")
    return Recording(name, directory / path, sha256.lower() or None)
