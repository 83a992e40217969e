#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks that the pages in a directory need nothing else: they may be read without a network.

    check_pages.py DIRECTORY

Each link of each page must lead to a file in the directory, and to an anchor that is there.
"""

from __future__ import annotations

import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools/site"))
sys.dont_write_bytecode = True

from check import Page, target_fault  # noqa: E402

_ELSEWHERE = re.compile(r"[A-Za-z][A-Za-z0-9+.-]*:|//")


def faults_of(directory: Path, pages: dict[Path, Page], path: Path) -> list[str]:
    page = pages[path]
    faults = [f"two things are #{name}" for name, count in page.ids.items() if count > 1]
    for link in [*page.links, *page.resources]:
        if link in page.resources and link.startswith("data:"):
            continue
        if _ELSEWHERE.match(link):
            faults.append(f"{link} is elsewhere")
        elif fault := target_fault(directory, pages, path, link):
            faults.append(fault)
    return faults


def main() -> None:
    directory = Path(sys.argv[1]).resolve()
    pages = {path: Page(path.read_text(encoding="utf-8")) for path in directory.rglob("*.html")}
    faults = [f"{path.name}: {fault}" for path in sorted(pages)
              for fault in faults_of(directory, pages, path)]
    for fault in faults:
        print(fault, file=sys.stderr)
    links = sum(len(page.links) + len(page.resources) for page in pages.values())
    print(f"{len(pages)} pages, {links} links and resources, {len(faults)} faults")
    sys.exit(1 if faults or not pages else 0)


if __name__ == "__main__":
    main()
