#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Compares two conversions of one recording, the second of which was made once or twice.

  compare_outputs.py EXPECTED_DIRECTORY ACTUAL_DIRECTORY once|twice

Each file NAME.ext of EXPECTED must exist in ACTUAL, if made twice also as NAME_01.ext, and
be equal except for what differs from run to run: the file's UUID, its times and its own path.
"""

import pathlib
import re
import sys

HEADER_BYTES = 16384
MASKED_LINES = re.compile(rb"^(-FileUUID|-TimeCreated|-TimeClosed|-OriginalFileName)\b[^\r]*", re.M)


def masked(path):
    data = path.read_bytes()
    if len(data) < HEADER_BYTES:
        sys.exit(f"{path}: {len(data)} bytes are no header block")
    text = data[:HEADER_BYTES].rstrip(b"\0")
    return MASKED_LINES.sub(rb"\1", text), data[HEADER_BYTES:]


def main():
    expected, actual = map(pathlib.Path, sys.argv[1:3])
    twice = {"once": False, "twice": True}[sys.argv[3]]
    names = sorted(path.name for path in expected.iterdir())
    if not names:
        sys.exit(f"{expected}: empty")
    wanted = set(names)
    if twice:
        wanted |= {f"{pathlib.Path(n).stem}_01{pathlib.Path(n).suffix}" for n in names}
    found = {path.name for path in actual.iterdir()}
    if wanted != found:
        sys.exit(f"{actual}: missing {sorted(wanted - found)}, too many {sorted(found - wanted)}")
    for name in sorted(found):
        source = name.replace("_01.", ".")
        if masked(actual / name) != masked(expected / source):
            sys.exit(f"{actual / name} differs from {expected / source}")
    print(f"{len(found)} files equal those of the command")


main()
