# SPDX-License-Identifier: BSD-3-Clause

"""Which Debian packages have parts in a program that CMake and Ninja built on Debian."""

from __future__ import annotations

import os
import re
import subprocess
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

_MEMBER = re.compile(r"^(\S+)/lib([^/\s]+)\.a\((\S+)\)$")
_OBJECT = re.compile(r"^LOAD (\S+\.o)$")
# Of the kernel's headers only numbers and declarations are used.
_DECLARATIONS_ONLY = {"linux-libc-dev"}


@dataclass
class Parts:
    """Of a package: libraries and objects that were linked, headers that were compiled."""

    linked: set[str] = field(default_factory=set)
    headers: set[str] = field(default_factory=set)


def packages_in(build: Path, program: str) -> dict[str, Parts]:
    """The packages by name; `program` is as `cli/stalwick-convert`, below the build directory."""
    found: dict[str, Parts] = {}
    lines = _map_lines(build, program)
    members = [match.groups() for match in map(_MEMBER.match, lines) if match]
    objects = {match[1] for match in map(_OBJECT.match, lines) if match}
    files = objects | {f"{place}/lib{name}.a" for place, name, _ in members}
    linked = {os.path.normpath(file) for file in files if file.startswith("/")}
    objects |= {_object_of(*member) for member in members}
    headers = _headers(build, program, objects)
    owners = _owners(linked | headers)
    for file in linked:
        found.setdefault(owners[file], Parts()).linked.add(file)
    for file in headers:
        found.setdefault(owners[file], Parts()).headers.add(file)
    return {name: found[name] for name in sorted(found) if name not in _DECLARATIONS_ONLY}


def _ninja(build: Path, *arguments: str) -> str:
    run = subprocess.run(["ninja", "-C", str(build), *arguments], capture_output=True, text=True,
                         check=True)
    return run.stdout


def _map_lines(build: Path, program: str) -> list[str]:
    """The map of the linker, which is run once more for it."""
    command = _ninja(build, "--quiet", "-t", "commands", "-s", program)
    with tempfile.TemporaryDirectory() as directory:
        output = f"-o {directory}/program -Wl,-Map={directory}/map"
        changed = re.sub(rf"-o {re.escape(program)}(?=\s)", output, command, count=1)
        if changed == command:
            raise ValueError(f"{program}: its link command names no such output: {command}")
        subprocess.run(changed, shell=True, cwd=build, check=True, capture_output=True)
        return Path(directory, "map").read_text(encoding="utf-8").splitlines()


def _object_of(place: str, library: str, member: str) -> str:
    """The object that became a member of a library, without directories below the library's own."""
    return f"{place}/CMakeFiles/{library}.dir/{member}"


def _headers(build: Path, program: str, linked: set[str]) -> set[str]:
    """The system's headers that the objects in the program were compiled from."""
    inputs = _ninja(build, "--quiet", "-t", "inputs", program).splitlines()
    flat = {re.sub(r"(\.dir/).*/", r"\1", name): name for name in inputs if name.endswith(".o")}
    objects = [flat[name] for name in linked & flat.keys()]
    if not objects:
        raise ValueError(f"{program}: nothing was compiled for it")
    lines = _ninja(build, "--quiet", "-t", "deps", *objects).splitlines()
    return {os.path.normpath(line.strip()) for line in lines if line.startswith("    /usr/")}


def _owners(files: set[str]) -> dict[str, str]:
    """The package of each file. What was merged into /usr may be known under its old name."""
    names = {name: file for file in files for name in (file, file.removeprefix("/usr"))}
    run = subprocess.run(["dpkg-query", "--search", *sorted(names)], capture_output=True, text=True,
                         check=False)
    owners: dict[str, str] = {}
    for line in run.stdout.splitlines():
        packages, _, name = line.partition(": ")
        owners[names[name]] = packages.split(",")[0].split(":")[0]
    missing = files - owners.keys()
    if missing:
        raise ValueError(f"of no Debian package: {', '.join(sorted(missing))}")
    return owners
