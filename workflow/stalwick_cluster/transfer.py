# SPDX-License-Identifier: BSD-3-Clause

"""Moves outputs from where they were made to where they stay, with their checksums."""

from __future__ import annotations

import hashlib
import os
import shutil
from pathlib import Path
from typing import Any

from .commands import Commands
from .records import sync_directory, write_whole

_PIECE_BYTES = 1 << 20


class TransferError(Exception):
    """A copy differs from its source; names the file."""


def sha256_of(path: Path, commands: Commands) -> str:
    checksum = hashlib.sha256()
    with open(path, "rb") as file:
        while piece := file.read(_PIECE_BYTES):
            commands.check()
            checksum.update(piece)
    return checksum.hexdigest()


def are_there(outputs: list[dict[str, Any]], directory: Path) -> bool:
    """Checks that each output of a report has the size in the report."""
    try:
        return bool(outputs) and all(
            (directory / output["name"]).stat().st_size == output["bytes"] for output in outputs)
    except OSError:
        return False


def copy_checked(outputs: list[dict[str, Any]], source: Path, target: Path,
                 commands: Commands) -> None:
    """Copies into a new directory and reads every copy again, if possible from the disk."""
    target.mkdir()
    for output in outputs:
        copy = target / output["name"]
        with open(source / output["name"], "rb") as read, open(copy, "xb") as written:
            while piece := read.read(_PIECE_BYTES):
                commands.check()
                written.write(piece)
            written.flush()
            os.fsync(written.fileno())
            # Otherwise the copy would be compared in this machine's memory.
            os.posix_fadvise(written.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)
        shutil.copystat(source / output["name"], copy)
    for output in outputs:
        if sha256_of(target / output["name"], commands) != output["sha256"]:
            raise TransferError(f"{target / output['name']}: the copy's SHA-256 is not that of "
                                f"{source / output['name']}; check the network and the disks")
    sync_directory(target)


def findings_of(outputs: list[dict[str, Any]], directory: Path, commands: Commands) -> list[str]:
    """Files that have changed since they were made, one line each."""
    findings = []
    for output in outputs:
        path = directory / output["name"]
        try:
            if sha256_of(path, commands) != output["sha256"]:
                findings.append(f"{path}: its SHA-256 is not that of its conversion; "
                                "it was altered since")
        except OSError as error:
            findings.append(f"{path}: {error.strerror}")
    surplus = set(os.listdir(directory)) if directory.is_dir() else set()
    for name in sorted(surplus - {output["name"] for output in outputs}):
        findings.append(f"{directory / name}: no conversion made it")
    return findings


def write_manifest(outputs: list[dict[str, Any]], folder: str, file: Path) -> None:
    """For ``sha256sum -c`` in the directory of the results."""
    write_whole(file, "".join(f"{output['sha256']}  {folder}/{output['name']}\n"
                              for output in outputs))
