#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Compares two directories of outputs: all but paths, times and UUIDs must be the same bytes.

  same_outputs.py ONE OTHER OTHER_PATH       OTHER_PATH: as the program saw OTHER
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "windows"))
from compare_with_linux import HEADER_SIZE, masked_header  # noqa: E402


def main() -> None:
    one, other, seen = (Path(argument) for argument in sys.argv[1:4])
    names = sorted(path.name for path in one.iterdir())
    assert names == sorted(path.name for path in other.iterdir()), "other files"
    assert len(names) > 64, names
    total = 0
    for name in names:
        first, second = (one / name).read_bytes(), (other / name).read_bytes()
        assert first[HEADER_SIZE:] == second[HEADER_SIZE:], f"{name}: records differ"
        headers = masked_header(first, one / name), masked_header(second, seen / name)
        assert headers[0] == headers[1], f"{name}: headers differ"
        total += len(first)
    print(f"outputs: {len(names)} files, {total} bytes, the same but for paths, times and UUIDs")


main()
