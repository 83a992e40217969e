#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Writes the third-party notices of programs: the licence texts of all that is in them.

    write_notices.py BUILD PROGRAM... > FILE        PROGRAM: as cli/stalwick-convert
"""

from __future__ import annotations

import sys
from pathlib import Path

from debian_package import common_licences, look_up
from linked_packages import Parts, packages_in

INTRODUCTION = """\
Third-party notices
===================

The programs have parts of the Debian packages below. Each section is what Debian's copyright
file says of all of the package, of which only some files are in the programs. The sources are in
Debian's archive, under the name and version of the source package.

The GNU C library is under the GNU Lesser General Public License and linked into the programs.
Whoever wants to link them with a changed one finds all that it takes in the source of this
program: `make tarball`.
"""


def part_text(parts: Parts) -> str:
    libraries = sorted({Path(file).name for file in parts.linked if file.endswith(".a")})
    if libraries:
        return "members of " + ", ".join(libraries)
    if parts.linked:
        return "objects that start a program"
    return "templates and inline functions of its headers"


def main() -> None:
    build = Path(sys.argv[1])
    found: dict[str, list[str]] = {}
    for program in sys.argv[2:]:
        for name, parts in packages_in(build, program).items():
            uses = found.setdefault(name, [])
            uses.append(f"  {Path(program).name}: {part_text(parts)}")
    packages = [look_up(name) for name in found]
    sections: dict[str, list[str]] = {}
    for package in packages:
        source = f"source: {package.source} {package.source_version}"
        head = "\n".join([f"{package.name} {package.version} ({source})", *found[package.name]])
        sections.setdefault(package.copyright_text(), []).append(head)
    print(INTRODUCTION)
    for text, heads in sections.items():
        print(f"{'=' * 80}\n" + "\n".join(heads) + f"\n{'=' * 80}\n\n{text}\n")
    for name in common_licences(list(sections)):
        text = Path("/usr/share/common-licenses", name).read_text(encoding="utf-8")
        print(f"{'=' * 80}\n{name}, to which the above points\n{'=' * 80}\n\n{text}\n")


if __name__ == "__main__":
    main()
