# SPDX-License-Identifier: BSD-3-Clause

"""The command stalwick-cluster: one step of one recording, several recordings, or the report."""

from __future__ import annotations

import argparse
import json
import sys
from collections.abc import Callable
from pathlib import Path

from .commands import Commands, Interrupted
from .conversion import convert
from .records import BusyError, Record, Records, read_json
from .report import exit_status, recap, rows_of, write_report
from .resources import Request, request_for
from .settings import Settings, SettingsError, load_settings
from .steps import StepFailed, Work, is_verified, page, survey, verify
from .table import Recording, load_table
from .transfer import TransferError

_STEPS: dict[str, Callable[[Work], Record]] = {
    "survey": survey,
    "convert": lambda work: convert(work, "convert"),
    "salvage": lambda work: convert(work, "salvage"),
    "verify": verify,
    "page": page,
}


def main() -> int:
    arguments = _parser().parse_args()
    try:
        settings = load_settings(arguments.settings)
        recordings = load_table(settings.recordings)
        return int(arguments.action(settings, recordings, arguments))
    except SettingsError as error:
        print(f"stalwick-cluster: {error}", file=sys.stderr)
        return 2


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="stalwick-cluster", description=__doc__,
                                     epilog="docs/cluster.md has more.")
    parser.add_argument("--settings", type=Path, default=Path("settings.toml"), metavar="FILE")
    actions = parser.add_subparsers(required=True, metavar="ACTION")
    for step in _STEPS:
        action = actions.add_parser(step, help=f"{step} one recording")
        action.add_argument("name", metavar="NAME")
        action.set_defaults(action=_one_step, step=step)
    run = actions.add_parser("run", help="every step of one task's recordings")
    plan = actions.add_parser("plan", help="print what each task needs: MEGABYTES MINUTES")
    for action, function in ((run, _run), (plan, _plan)):
        action.add_argument("--task", type=int, default=0, help="from 0")
        action.add_argument("--of", type=int, default=1, metavar="TASKS")
        action.set_defaults(action=function)
    count = actions.add_parser("count", help="print how many recordings there are")
    count.set_defaults(action=_count)
    report = actions.add_parser("report", help="write report.tsv, report.json and index.html")
    report.set_defaults(action=_report)
    return parser


def do_step(work: Work, step: str) -> int:
    """Returns 0 if there is a result, good or bad; otherwise the step must be repeated."""
    records = work.records
    try:
        # A page does not affect the other steps, and is made while they run.
        with records.lock("page.lock" if step == "page" else "lock") as lock:
            work.lock = lock
            record = _STEPS[step](work)
        _say(f"{work.recording.name}: {step}: {record['result']}"
             + (f": {record['reason']}" if record.get("reason") else ""))
        return 0
    except Interrupted as error:
        _store_failure(work, step, "canceled", str(error))
        return error.exit_status
    except BusyError as error:
        _say(f"{work.recording.name}: {step}: {error}")
        return 1
    except (StepFailed, TransferError, OSError) as error:
        _store_failure(work, step, "failed", str(error))
        return 1


def _store_failure(work: Work, step: str, result: str, reason: str) -> None:
    _say(f"{work.recording.name}: {step}: {result}: {reason}")
    try:
        work.records.store(step, {"identity": work.identity, "result": result, "reason": reason})
    except OSError as error:  # Perhaps because of the same full disk.
        _say(f"{work.recording.name}: {step}: this could not be recorded: {error}")


def _say(line: str) -> None:
    print(line, file=sys.stderr, flush=True)


def _one_step(settings: Settings, recordings: dict[str, Recording],
              arguments: argparse.Namespace) -> int:
    if arguments.name not in recordings:
        raise SettingsError(f"{settings.recordings}: it has no recording {arguments.name}")
    commands = Commands()
    commands.take_signals()
    return do_step(Work(settings, recordings[arguments.name], commands), arguments.step)


def _of_task(recordings: dict[str, Recording], arguments: argparse.Namespace) -> list[Recording]:
    if not 0 <= arguments.task < arguments.of:
        raise SettingsError(f"task {arguments.task} is not in the range 0 to {arguments.of - 1}")
    return list(recordings.values())[arguments.task::arguments.of]


def _run(settings: Settings, recordings: dict[str, Recording],
         arguments: argparse.Namespace) -> int:
    commands = Commands()
    commands.take_signals()
    status = 0
    for recording in _of_task(recordings, arguments):
        status = max(status, _all_steps(Work(settings, recording, commands)))
        if status > 128:
            break
    return status


def _all_steps(work: Work) -> int:
    steps = ["survey", "convert", "verify", *(["page"] if work.settings.pages else [])]
    status = 0
    while steps and not status:
        step = steps.pop(0)
        if step == "verify" and is_verified(work):
            continue
        status = do_step(work, step)
        record = work.records.load(step) or {}
        if step == "convert" and record.get("result") == "with_losses":
            steps.insert(0, "salvage")
        elif step == "convert" and record.get("result") != "whole":
            break
    return status


def _plan(settings: Settings, recordings: dict[str, Recording],
          arguments: argparse.Namespace) -> int:
    """The largest requirements of all tasks, because an array requests the same for each."""
    memory_mb, minutes = 0, 0
    commands = Commands()
    needs = {name: _whole_request(settings, recording, commands)
             for name, recording in recordings.items()}
    for task in range(arguments.of):
        arguments.task = task
        of_task = [needs[recording.name] for recording in _of_task(recordings, arguments)]
        memory_mb = max([memory_mb, *(need.memory_mb for need in of_task)])
        minutes = max(minutes, 1 + sum(need.minutes - 1 for need in of_task))
    print(memory_mb, minutes)
    return 0


def _whole_request(settings: Settings, recording: Recording, commands: Commands) -> Request:
    info = quick_info(settings, recording, commands)
    left_out = {"page"} if not settings.pages else set()
    if not info.get("damage"):
        left_out.add("salvage")
    return request_for([step for step in _STEPS if step not in left_out], info, settings)


def quick_info(settings: Settings, recording: Recording, commands: Commands) -> Record:
    """From the header and both ends: instant for any length."""
    known = Records(settings, recording.name).load("survey")
    if known and known.get("info"):
        return dict(known["info"])
    run = commands.run([settings.inspect, "info", "--quick", "--json", str(recording.path)])
    lines = run.stdout.splitlines()
    return _document(lines[0]) if lines else {}


def _document(text: str) -> Record:
    value = json.loads(text)
    return value if isinstance(value, dict) else {}


def _count(_settings: Settings, recordings: dict[str, Recording], _: argparse.Namespace) -> int:
    print(len(recordings))
    return 0


def _report(settings: Settings, recordings: dict[str, Recording], _: argparse.Namespace) -> int:
    rows = rows_of(settings, recordings)
    write_report(settings, rows)
    for line in recap(rows):
        print(line)
    return exit_status(rows)


def survey_document(settings: Settings, name: str) -> Record | None:
    record = read_json(settings.of_each("records", name) / "survey.json")
    info = record.get("info") if record else None
    return info if isinstance(info, dict) else None
