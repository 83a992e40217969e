# SPDX-License-Identifier: BSD-3-Clause

"""The records of each recording: one JSON file per step, complete or absent."""

from __future__ import annotations

import fcntl
import json
import os
import tempfile
from collections.abc import Iterator
from contextlib import contextmanager
from datetime import datetime, timezone
from pathlib import Path
from typing import Any

from .settings import Settings
from .table import Recording

Record = dict[str, Any]


class BusyError(Exception):
    """Another job works on the recording."""


def write_whole(path: Path, text: str) -> None:
    """Under a temporary name first, so that no reader and no crash sees a part of it."""
    path.parent.mkdir(parents=True, exist_ok=True)
    handle, name = tempfile.mkstemp(dir=path.parent, prefix=f".{path.name}.")
    try:
        with open(handle, "w", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            os.fsync(file.fileno())
        os.chmod(name, 0o644)
        os.rename(name, path)
    except BaseException:
        Path(name).unlink(missing_ok=True)
        raise
    sync_directory(path.parent)


def sync_directory(path: Path) -> None:
    handle = os.open(path, os.O_RDONLY | os.O_DIRECTORY)
    try:
        os.fsync(handle)
    finally:
        os.close(handle)


def read_json(path: Path) -> Record | None:
    """None if there is no such file, or it is incomplete."""
    try:
        value = json.loads(path.read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return None
    return value if isinstance(value, dict) else None


def identity_of(recording: Recording, settings: Settings) -> Record:
    """Changes when the recording or the request changes."""
    try:
        status = recording.path.stat()
        bytes_, modified = status.st_size, status.st_mtime_ns
    except OSError:
        bytes_, modified = None, None
    return {"path": str(recording.path), "bytes": bytes_, "modified_ns": modified,
            "options": list(settings.options), "sha256": recording.sha256}


def now() -> str:
    return datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


class Records:
    """Those of one recording, in ``results/records/NAME``."""

    def __init__(self, settings: Settings, name: str) -> None:
        self.directory = settings.of_each("records", name)

    def load(self, step: str) -> Record | None:
        return read_json(self.directory / f"{step}.json")

    def store(self, step: str, record: Record) -> None:
        record = {**record, "step": step, "ended": now()}
        write_whole(self.directory / f"{step}.json", json.dumps(record, indent=1) + "\n")
        (self.directory / f"{step}.begun.json").unlink(missing_ok=True)

    def begin(self, step: str) -> None:
        """Stays if the job is killed: the report then shows where and when that was."""
        job = os.environ.get("SLURM_JOB_ID")
        record = {"step": step, "begun": now(), "host": os.uname().nodename, "slurm_job": job}
        write_whole(self.directory / f"{step}.begun.json", json.dumps(record) + "\n")

    def begun(self, step: str) -> Record | None:
        return read_json(self.directory / f"{step}.begun.json")

    @contextmanager
    def lock(self, name: str = "lock") -> Iterator[int]:
        """Held by all who have the descriptor open, also a command that outlives its job."""
        self.directory.mkdir(parents=True, exist_ok=True)
        handle = os.open(self.directory / name, os.O_RDWR | os.O_CREAT, 0o644)
        try:
            try:
                fcntl.flock(handle, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError as error:
                raise BusyError("another job works on it; let that one end") from error
            except OSError:
                pass  # No locks on this file system; renames keep the results whole.
            yield handle
        finally:
            os.close(handle)
