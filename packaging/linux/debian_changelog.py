#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Prints debian/changelog for the sources in a directory, from the newest section of CHANGELOG.md.

  debian_changelog.py DIRECTORY SECONDS       SECONDS: the commit's time, since 1970

The version is that of the CMake project; a CHANGELOG.md that begins with another one is an error.
"""

import re
import sys
import textwrap
from email.utils import formatdate
from pathlib import Path


def field(text: str, pattern: str, name: str) -> str:
    found = re.search(pattern, text, re.MULTILINE)
    if not found:
        sys.exit(f"{name} was not found")
    return found.group(1)


def main() -> None:
    source = Path(sys.argv[1])
    project = (source / "CMakeLists.txt").read_text()
    version = field(project, r"^project\(stalwick VERSION ([\d.]+)", "the project's version")
    control = (source / "debian/control").read_text()
    maintainer = field(control, r"^Maintainer: (.*)$", "the maintainer")
    changes = (source / "CHANGELOG.md").read_text()
    newest, text = re.split(r"^## (.*)$", changes, flags=re.MULTILINE)[1:3]
    if newest != version:
        sys.exit(f"CHANGELOG.md begins with {newest}, the CMake project is {version}")

    print(f"stalwick ({version}) bookworm; urgency=medium\n")
    for item in re.split(r"^- ", text, flags=re.MULTILINE)[1:]:
        print(textwrap.fill(" ".join(item.split()), 78, break_on_hyphens=False,
                            initial_indent="  * ", subsequent_indent="    "))
    date = formatdate(int(sys.argv[2])).replace("-0000", "+0000")
    print(f"\n -- {maintainer}  {date}")


main()
