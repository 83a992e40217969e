#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Writes the third-party notices of programs: the licence texts of all that is in them.

    write_notices.py BUILD PROGRAM... > FILE        PROGRAM: as cli/stalwick-convert
"""

from __future__ import annotations

import sys
from pathlib import Path

from debian_package import DebianPackage, common_licences
from linked_packages import Parts, packages_in

INTRODUCTION = """\
Third-party notices
===================

The programs have parts of the Debian packages below. Each section is what Debian's copyright
file says of all of the package, of which only some files are in the programs. The sources are in
Debian's archive, under the name and version of the source package.
"""
# By the source package, the libraries under the GNU Lesser General Public License.
LGPL_LIBRARIES = {
    "glibc": {"library": "The GNU C library", "command": "make tarball"},
    "qt6-base": {"library": "Qt", "command": "make package-windows"},
}
LGPL = """\
{library} is under the GNU Lesser General Public License and linked into the programs.
Whoever wants to link them with a changed one finds all that it takes in the source of this
program: `{command}`.
"""


def part_text(parts: Parts) -> str:
    names = sorted({Path(file).name for file in parts.linked})
    libraries = [name for name in names if name.endswith(".a")]
    sources = [name for name in names if not name.endswith((".a", ".o", ".obj"))]
    if libraries:
        return "members of " + ", ".join(libraries)
    if sources:
        return "compiled from " + ", ".join(sources)
    if names:
        return "objects that start a program"
    return "templates and inline functions of its headers"


def main() -> None:
    build = Path(sys.argv[1])
    found: dict[DebianPackage, list[str]] = {}
    for program in sys.argv[2:]:
        for package, parts in packages_in(build, program).items():
            uses = found.setdefault(package, [])
            uses.append(f"  {Path(program).name}: {part_text(parts)}")
    sections: dict[str, list[str]] = {}
    for package, uses in found.items():
        source = f"source: {package.sources}"
        head = "\n".join([f"{package.name} {package.version} ({source})", *uses])
        sections.setdefault(package.copyright_text(), []).append(head)
    print(INTRODUCTION)
    for source in sorted({package.source for package in found} & LGPL_LIBRARIES.keys()):
        print(LGPL.format(**LGPL_LIBRARIES[source]))
    for text, heads in sections.items():
        print(f"{'=' * 80}\n" + "\n".join(heads) + f"\n{'=' * 80}\n\n{text}\n")
    for name in common_licences(list(sections)):
        text = Path("/usr/share/common-licenses", name).read_text(encoding="utf-8")
        print(f"{'=' * 80}\n{name}, to which the above points\n{'=' * 80}\n\n{text}\n")


if __name__ == "__main__":
    main()
