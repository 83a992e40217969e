#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks that the pages in a directory need nothing else: they may be read without a network.

    check_pages.py DIRECTORY

Each link of each page must lead to a file in the directory, and to an anchor that is there.
"""

from __future__ import annotations

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools/site"))
sys.dont_write_bytecode = True

from check import link_faults, read_pages, report  # noqa: E402


def main() -> None:
    directory = Path(sys.argv[1]).resolve()
    pages = read_pages(directory)
    report(pages, link_faults(directory, pages, may_link_elsewhere=False))


if __name__ == "__main__":
    main()
