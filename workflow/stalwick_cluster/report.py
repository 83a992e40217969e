# SPDX-License-Identifier: BSD-3-Clause

"""The report of a run: what became of each recording, as TSV, JSON and a page."""

from __future__ import annotations

import csv
import html
import io
import json
import urllib.parse
from dataclasses import asdict, dataclass

from .commands import Commands
from .records import Record, now, write_whole
from .settings import Settings
from .steps import Work, conversion_of
from .table import Recording

# In the order of the summary.
RESULTS = {
    "verified": "converted and verified",
    "kept_apart": "kept apart: the recording lost data",
    "converted": "converted, not verified yet",
    "altered": "altered after the conversion",
    "failed": "failed",
    "canceled": "canceled, to be repeated",
    "unfinished": "begun, without an end",
    "not_begun": "not begun",
}

_FINDINGS_SHOWN = 3


@dataclass(frozen=True)
class Row:
    name: str
    path: str
    result: str
    reason: str
    channels: int | None
    seconds: float | None
    files: int
    output_bytes: int
    directory: str
    page: str


def rows_of(settings: Settings, recordings: dict[str, Recording]) -> list[Row]:
    return [_row(Work(settings, recording, Commands())) for recording in recordings.values()]


def exit_status(rows: list[Row]) -> int:
    """Like those of stalwick-convert: 0 all whole, 3 a recording lost data, 1 one is missing."""
    results = {row.result for row in rows}
    if results - {"verified", "kept_apart"}:
        return 1
    return 3 if "kept_apart" in results else 0


def write_report(settings: Settings, rows: list[Row]) -> None:
    table = io.StringIO()
    writer = csv.DictWriter(table, [*Row.__dataclass_fields__], delimiter="\t",
                            lineterminator="\n")
    writer.writeheader()
    writer.writerows({key: "" if value is None else value for key, value in asdict(row).items()}
                     for row in rows)
    write_whole(settings.results / "report.tsv", table.getvalue())
    document = {"format_version": 1, "written": now(), "counts": counts(rows),
                "recordings": [asdict(row) for row in rows]}
    write_whole(settings.results / "report.json", json.dumps(document, indent=1) + "\n")
    write_whole(settings.results / "index.html", _index(rows))


def counts(rows: list[Row]) -> dict[str, int]:
    return {result: number for result in RESULTS
            if (number := sum(row.result == result for row in rows))}


def recap(rows: list[Row]) -> list[str]:
    parts = [f"{number} {RESULTS[result]}" for result, number in counts(rows).items()]
    noun = "recording" if len(rows) == 1 else "recordings"
    lines = [f"{len(rows)} {noun}: {', '.join(parts)}"]
    return lines + [f"  {row.result}: {row.name}: {row.reason}"
                    for row in rows if row.result != "verified" or row.reason]


def _row(work: Work) -> Row:
    result, reason = _outcome(work)
    survey = work.done("survey") or {}
    info = survey.get("info") or {}
    found = conversion_of(work)
    kept = found[1] if found else {}
    outputs = kept.get("outputs", [])
    page = f"pages/{work.recording.name}.html"
    return Row(work.recording.name, str(work.recording.path), result, reason,
               info.get("channels"), info.get("duration_seconds"), len(outputs),
               sum(output["bytes"] for output in outputs), str(kept.get("directory") or ""),
               page if (work.settings.results / page).is_file() else "")


def _outcome(work: Work) -> tuple[str, str]:
    converted = work.done("convert")
    begun = work.records.begun("convert")
    if begun:
        return "unfinished", _without_end(begun)
    if converted is None:
        if work.records.load("convert"):
            return "not_begun", "the recording or the options have changed since it was converted"
        return "not_begun", ""
    if converted["result"] == "with_losses":
        return "kept_apart", _apart(work, str(converted["reason"]))
    if converted["result"] != "whole":
        return str(converted["result"]), str(converted["reason"])
    verified = work.done("verify")
    if verified is None or verified.get("of") != converted["ended"]:
        return "converted", _without_end(work.records.begun("verify")) or "not verified yet"
    if verified["result"] in ("failed", "canceled"):
        return "converted", f"its verification {verified['result']}: {verified['reason']}"
    if verified["result"] == "findings":
        return "altered", _shortened(verified["findings"])
    return "verified", _cut_end(work)


def _apart(work: Work, reason: str) -> str:
    salvaged = work.done("salvage")
    if salvaged is None:
        return f"{reason}; not salvaged yet"
    if not salvaged.get("directory"):
        return f"{reason}; its salvage {salvaged['result']}: {salvaged['reason']}"
    verified = work.done("verify") or {}
    if verified.get("result") == "findings":
        return f"{salvaged['reason']}; {_shortened(verified['findings'])}"
    return f"{salvaged['reason'] or reason}; what remains is in {salvaged['directory']}"


def _shortened(findings: list[str]) -> str:
    shown = "; ".join(findings[:_FINDINGS_SHOWN])
    more = len(findings) - _FINDINGS_SHOWN
    return f"{shown}; {more} more, all are in records/" if more > 0 else shown


def _cut_end(work: Work) -> str:
    """The end left by a recorder that was switched off, or by an incomplete copy."""
    cut = ((work.done("survey") or {}).get("info") or {}).get("cut_end")
    return str(cut["reason"]) if cut else ""


def _without_end(begun: Record | None) -> str:
    if begun is None:
        return ""
    job = f", job {begun['slurm_job']}" if begun.get("slurm_job") else ""
    return (f"begun on {begun['host']} at {begun['begun']}{job}, and no end is recorded: it runs, "
            "or was killed, had too little memory, or lost its node")


def _index(rows: list[Row]) -> str:
    lines = []
    for row in rows:
        name = html.escape(row.name)
        if row.page:
            name = f'<a href="{html.escape(urllib.parse.quote(row.page))}">{name}</a>'
        length = "" if row.seconds is None else f"{row.seconds:.1f}"
        cells = [name, html.escape(RESULTS[row.result]), html.escape(row.reason),
                 "" if row.channels is None else str(row.channels), length,
                 f"{row.output_bytes / 1e6:.1f}"]
        lines.append(f'<tr class="{row.result}"><td>' + "</td><td>".join(cells) + "</td></tr>")
    summary = html.escape(recap(rows)[0])
    return _PAGE.format(summary=summary, rows="\n".join(lines))


_PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Recordings</title>
<style>
body {{ font-family: sans-serif; margin: 2em; }}
table {{ border-collapse: collapse; }}
th, td {{ text-align: left; vertical-align: top; padding: 0.2em 0.8em; }}
td {{ border-top: 1px solid #ccc; }}
tr:not(.verified) {{ background: #fff3d6; }}
</style>
</head>
<body>
<h1>Recordings</h1>
<p>{summary}</p>
<table>
<tr><th>Recording</th><th>Result</th><th>Reason</th><th>Channels</th><th>Seconds</th><th>MB</th></tr>
{rows}
</table>
</body>
</html>
"""
