# SPDX-License-Identifier: BSD-3-Clause

"""python -m stalwick DIRECTORY: prints the contents of a directory of outputs."""

from __future__ import annotations

import argparse
import sys
from datetime import UTC, datetime, timedelta

from .channel_group import ChannelGroup
from .errors import IncompleteFileError, StalwickError
from .session import Session, open_session


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="python -m stalwick", description="Prints the contents of a directory of outputs."
    )
    parser.add_argument("directory", help="the directory that the recording was converted into")
    parser.add_argument("--suffix", default="", help='"_01": a further conversion into it')
    parser.add_argument(
        "--allow-incomplete", action="store_true", help="also files that were not closed"
    )
    options = parser.parse_args(arguments)
    try:
        with open_session(
            options.directory, suffix=options.suffix, allow_incomplete=options.allow_incomplete
        ) as session:
            print("\n".join(describe(session)))
    except IncompleteFileError as error:
        advice = "convert the recording again, or give --allow-incomplete"
        print(f"stalwick: {error.path}: {error.reason}; {advice}", file=sys.stderr)
        return 1
    except StalwickError as error:
        print(f"stalwick: {error}", file=sys.stderr)
        return 1
    return 0


def describe(session: Session) -> list[str]:
    """Lines for people to read."""
    first = next(iter(session.headers.values()))
    lines = [f"{session.directory}: {len(session.files)} files, session {first['SessionUUID']}"]
    unclosed = [name for name in session.files if not _was_closed(session, name)]
    if unclosed:
        lines.append(f"not closed  files that may lack their end: {len(unclosed)}")
    for group in session.groups.values():
        lines += _describe_group(group)
    if "Events" in session.files:
        events = session.events
        lines.append(f"events      {len(events)} changes of the TTL input")
    if session.raw is not None:
        raw = session.raw
        lines.append(f"raw data    {raw.num_samples} records of {raw.num_channels} channels")
    if session.other_runs:
        runs = ", ".join(run or "without suffix" for run in session.other_runs)
        lines.append(f"further conversions in this directory: {runs}")
    return lines


def _was_closed(session: Session, name: str) -> bool:
    """Event files never show it."""
    return name == "Events" or session.files[name].closed_by_conversion


def _describe_group(group: ChannelGroup) -> list[str]:
    channels = "channel" if len(group.channel_ids) == 1 else "channels"
    lines = [
        f"{group.name:11} {len(group.channel_ids)} {channels}, {group.sampling_frequency:g} "
        f"samples/s, {group.num_samples} samples, {group.duration:.3f} s"
    ]
    if group.num_samples:
        start, end = (int(group.times(at, at + 1)[0]) for at in (0, group.num_samples - 1))
        lines.append(f"            from {start} to {end} microseconds ({_date(start)})")
    if group.short_files:
        names = ", ".join(group.short_files)
        lines.append(f"            with fewer samples: {names}")
    for gap in group.gaps if group.name == "AD" else []:
        seconds = gap.missing_samples / group.sampling_frequency
        lines.append(
            f"            gap of {seconds:.6f} s between samples {gap.start_frame} "
            f"and {gap.end_frame}"
        )
    return lines


def _date(microseconds: int) -> str:
    """Recordings with an offset to UTC count from 1970, others from their beginning."""
    try:
        date = datetime(1970, 1, 1, tzinfo=UTC) + timedelta(microseconds=microseconds)
    except OverflowError:
        return "no date"
    return f"{date:%Y-%m-%d %H:%M:%S} UTC, if the recording's clock was set"


if __name__ == "__main__":
    sys.exit(main())
