# SPDX-License-Identifier: BSD-3-Clause

"""Convert and salvage: into a directory for the attempt, then into place by one rename.

So everything in ``converted`` is whole, and no attempt, killed or repeated, writes there twice.

    attempt/identity.json   of what is converted
    attempt/out/STEM/...    the outputs
    attempt/report.json     of --report; whole or absent"""

from __future__ import annotations

import json
import os
import shutil
import tempfile
from pathlib import Path
from typing import Any

from .records import Record, read_json, sync_directory
from .steps import LOST_DATA, StepFailed, Work, last_line, relative
from .transfer import are_there, copy_checked, write_manifest

FOLDERS = {"convert": "converted", "salvage": "salvaged"}


def convert(work: Work, step: str) -> Record:
    """``step`` is convert or salvage. Raises StepFailed; other failures are in the record."""
    done = work.done(step)
    if done and _is_settled(work, done):
        return done
    target = work.settings.of_each(FOLDERS[step], work.recording.name)
    record = _take_up(work, step, target)
    if record is None:
        if target.exists():
            raise StepFailed(f"{target} exists and was not made from the current recording; "
                             "move it away")
        work.records.begin(step)
        record = _attempt(work, step, target)
    work.records.store(step, record)
    _remove_attempts(work, step)
    return work.records.load(step) or record


def _is_settled(work: Work, record: Record) -> bool:
    if record["result"] in ("failed", "canceled"):
        return False
    directory = record.get("directory")
    return directory is None or are_there(record["outputs"], work.settings.results / directory)


def _prefix(work: Work, step: str) -> str:
    return f"{work.recording.name}.{step}-"


def _attempts(work: Work, step: str) -> list[Path]:
    places = [work.settings.results / "unfinished", work.settings.scratch]
    return [path for place in places if place is not None and place.is_dir()
            for path in place.iterdir() if path.name.startswith(_prefix(work, step))]


def _remove_attempts(work: Work, step: str) -> None:
    for path in _attempts(work, step):
        shutil.rmtree(path, ignore_errors=True)


def _new_attempt(work: Work, step: str, place: Path) -> Path:
    place.mkdir(parents=True, exist_ok=True)
    attempt = Path(tempfile.mkdtemp(prefix=_prefix(work, step), dir=place))
    (attempt / "out").mkdir()
    (attempt / "identity.json").write_text(json.dumps(work.identity), encoding="utf-8")
    return attempt


def _take_up(work: Work, step: str, target: Path) -> Record | None:
    """The work that a killed job had finished, according to its report."""
    for attempt in _attempts(work, step):
        entry = _entry_of(attempt)
        if entry is None or read_json(attempt / "identity.json") != work.identity:
            continue
        made = attempt / "out" / Path(str(entry["directory"])).name
        if not are_there(entry["outputs"], target):
            if target.exists() or not are_there(entry["outputs"], made):
                continue
            if work.settings.scratch in attempt.parents:
                continue
        if _has_result(step, entry):
            return _put_in_place(work, step, attempt, target)
    _remove_attempts(work, step)
    return None


def _entry_of(attempt: Path) -> dict[str, Any] | None:
    report = read_json(attempt / "report.json")
    recordings = report.get("recordings") if report else None
    return recordings[0] if isinstance(recordings, list) and recordings else None


def _has_result(step: str, entry: dict[str, Any]) -> bool:
    """Whether the entry has outputs that are kept."""
    return entry["result"] == "whole" or (step == "salvage" and entry["result"] == "with_losses")


def _attempt(work: Work, step: str, target: Path) -> Record:
    place = work.settings.scratch or work.settings.results / "unfinished"
    attempt = _new_attempt(work, step, place)
    try:
        return _convert_into(work, step, attempt, target)
    except BaseException:
        shutil.rmtree(attempt, ignore_errors=True)
        raise


def _convert_into(work: Work, step: str, attempt: Path, target: Path) -> Record:
    identity = work.identity
    command = [work.settings.convert, *work.settings.options, "--quiet",
               "--report", str(attempt / "report.json"), "--checksum",
               "--output-dir", str(attempt / "out")]
    if step == "salvage":
        command.append("--salvage")
    run = work.commands.run([*command, str(work.recording.path)], work.lock)
    entry = _entry_of(attempt)
    if entry is None:
        raise StepFailed(f"{work.settings.convert} ended with status {run.returncode}: "
                         f"{last_line(run.stderr) or 'without a report'}")
    record = _record_of(entry, identity)
    if entry["sha256"] and work.recording.sha256 not in (None, entry["sha256"]):
        raise StepFailed(f"its SHA-256 is {entry['sha256']}, not that of the table: "
                         "it was altered in transit; copy it again")
    if run.returncode not in (0, LOST_DATA):
        return _after_failure(work, record)
    if not _has_result(step, entry):
        return record
    if work.settings.scratch:
        attempt = _bring_back(work, step, attempt, entry)
    return _put_in_place(work, step, attempt, target)


def _after_failure(work: Work, record: Record) -> Record:
    """The survey shows whether the recording is the reason: damage can end a conversion."""
    found = (work.done("survey") or {}).get("result")
    if found == "damaged":
        return {**record, "result": "with_losses"}
    if found == "failed":
        return record
    raise StepFailed(record["reason"])


def _record_of(entry: dict[str, Any], identity: Record) -> Record:
    details = sorted(entry["details"], key=lambda detail: str(detail["kind"]))  # incomplete, note
    lines = [*entry["losses"], *(detail["text"] for detail in details)]
    lines = [line.removeprefix(f"{entry['path']}: ") for line in lines]
    reason = "" if entry["result"] == "whole" else (lines or [str(entry["status"])])[0]
    keys = ("result", "status", "packets", "duration_seconds", "gap_seconds", "missing_samples")
    return {**{key: entry[key] for key in keys}, "identity": identity, "reason": reason,
            "notes": lines, "recording_sha256": entry["sha256"], "directory": None, "outputs": []}


def _bring_back(work: Work, step: str, attempt: Path, entry: dict[str, Any]) -> Path:
    """Copies an attempt from the scratch disk next to the results; the report comes last and
    confirms the rest."""
    made = Path(entry["directory"])
    back = _new_attempt(work, step, work.settings.results / "unfinished")
    try:
        copy_checked(entry["outputs"], made, back / "out" / made.name, work.commands)
        shutil.copyfile(attempt / "identity.json", back / "identity.json")
        shutil.copyfile(attempt / "report.json", back / "report.json")
    except BaseException:
        shutil.rmtree(back, ignore_errors=True)
        raise
    return back


def _put_in_place(work: Work, step: str, attempt: Path, target: Path) -> Record:
    entry = _entry_of(attempt)
    identity = read_json(attempt / "identity.json")
    assert entry is not None and identity is not None
    folder = relative(target, work.settings)
    write_manifest(entry["outputs"], folder,
                   work.settings.of_each("manifests", f"{target.parent.name}-{target.name}.sha256"))
    if not target.exists():
        target.parent.mkdir(parents=True, exist_ok=True)
        os.rename(attempt / "out" / Path(entry["directory"]).name, target)
        sync_directory(target.parent)
    return {**_record_of(entry, identity), "directory": folder, "outputs": entry["outputs"]}
