# SPDX-License-Identifier: BSD-3-Clause

"""Survey, verify and page of one recording, and the common part of all steps."""

from __future__ import annotations

import json
import os
from dataclasses import dataclass
from pathlib import Path

from .commands import Commands
from .records import Record, Records, identity_of
from .settings import Settings
from .table import Recording
from .transfer import findings_of, sha256_of

LOST_DATA = 3  # exit status of stalwick-convert and stalwick-inspect info


class StepFailed(Exception):
    """The machine, not the recording, is the reason: to be repeated."""


@dataclass
class Work:
    """One recording in one job."""

    settings: Settings
    recording: Recording
    commands: Commands
    lock: int | None = None

    @property
    def records(self) -> Records:
        return Records(self.settings, self.recording.name)

    @property
    def identity(self) -> Record:
        return identity_of(self.recording, self.settings)

    def done(self, step: str) -> Record | None:
        """The step's record, if it belongs to the current state of this recording."""
        record = self.records.load(step)
        return record if record and record.get("identity") == self.identity else None


def conversion_of(work: Work) -> tuple[str, Record] | None:
    """The step whose outputs are kept, and its record."""
    for step in ("convert", "salvage"):
        record = work.done(step)
        if record and record.get("directory"):
            return step, record
    return None


def survey(work: Work) -> Record:
    """Reads the whole recording. One that cannot be read is a result, not an error of the job."""
    done = work.done("survey")
    if done and done["result"] != "failed":
        return done
    path = work.recording.path
    work.records.begin("survey")
    identity = work.identity
    run = work.commands.run([work.settings.inspect, "info", "--json", str(path)], work.lock)
    record: Record = {"identity": identity, "info": None, "reason": last_line(run.stderr)}
    if run.returncode in (0, LOST_DATA):
        record["info"] = json.loads(run.stdout)
        record["result"] = "whole" if run.returncode == 0 else "damaged"
    else:
        record["result"] = "failed"
    work.records.store("survey", record)
    return record


def verify(work: Work) -> Record:
    """Compares every output with its checksum and with the recording."""
    conversion = conversion_of(work)
    if conversion is None:
        record: Record = {"identity": work.identity, "result": "nothing", "findings": [],
                          "reason": "there are no outputs to verify"}
        work.records.store("verify", record)
        return record
    step, converted = conversion
    work.records.begin("verify")
    identity = work.identity
    directory = work.settings.results / str(converted["directory"])
    findings = findings_of(converted["outputs"], directory, work.commands)
    if sha256_of(work.recording.path, work.commands) != converted["recording_sha256"]:
        findings.append(f"{work.recording.path}: its SHA-256 is not that of its conversion")
    command = [work.settings.inspect, "verify", "--against", str(work.recording.path)]
    if step == "salvage":
        command.append("--salvaged")
    run = work.commands.run([*command, str(directory)], work.lock)
    if run.returncode not in (0, 1):
        raise StepFailed(f"{work.settings.inspect} verify ended with status {run.returncode}: "
                         f"{last_line(run.stderr)}")
    if run.returncode == 1:
        findings += run.stdout.splitlines() + run.stderr.splitlines()
    record = {"identity": identity, "of": converted["ended"], "findings": findings,
              "result": "findings" if findings else "verified",
              "reason": findings[0] if findings else ""}
    work.records.store("verify", record)
    return record


def is_verified(work: Work) -> bool:
    conversion, done = conversion_of(work), work.done("verify")
    return bool(conversion and done and done["result"] == "verified"
                and done.get("of") == conversion[1]["ended"])


def page(work: Work) -> Record:
    """A page of the recording. A missing page blocks nothing else: a failure is only recorded."""
    target = work.settings.of_each("pages", f"{work.recording.name}.html")
    done = work.done("page")
    if done and done["result"] == "made" and target.is_file():
        return done
    work.records.begin("page")
    identity = work.identity
    target.parent.mkdir(parents=True, exist_ok=True)
    new = target.parent / f".{work.recording.name}.{os.getpid()}.html"
    try:
        run = work.commands.run([work.settings.inspect, "report", str(work.recording.path),
                                 "-o", str(new)], work.lock)
        made = run.returncode in (0, LOST_DATA) and new.is_file()
        if made:
            os.replace(new, target)
    finally:
        new.unlink(missing_ok=True)
    record = {"identity": identity, "result": "made" if made else "failed",
              "reason": "" if made else last_line(run.stderr)}
    work.records.store("page", record)
    return record


def last_line(text: str) -> str:
    lines = text.strip().splitlines()
    return lines[-1] if lines else ""


def relative(path: Path, settings: Settings) -> str:
    return str(path.relative_to(settings.results))
