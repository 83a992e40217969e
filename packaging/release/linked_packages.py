# SPDX-License-Identifier: BSD-3-Clause

"""Which Debian packages have parts in a program that CMake and Ninja built on Debian."""

from __future__ import annotations

import os
import re
import subprocess
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

from debian_package import DebianPackage, look_up, source_of

# What the map lists: members of libraries, some with the object that needs them; objects.
_MEMBER = re.compile(r"^(\S+)/lib([^/\s]+)\.a\((\S+)\)(?=\s|$)")
_OBJECT = re.compile(r"^LOAD (\S+\.(?:o|obj))$")
_SOURCE_ENDINGS = (".c", ".cc", ".cpp")
# Of the kernel's headers only numbers and declarations are used.
_DECLARATIONS_ONLY = {"linux-libc-dev"}
# CMake's variables with directories that packaging/windows made from Debian's sources, and an
# installed package of each source, in whose version the directory's name ends.
_FROM_SOURCE = {"STALWICK_HWY_SOURCE": "libhwy-dev", "STALWICK_QT_PREFIX": "qt6-base-dev"}


@dataclass
class Parts:
    """Of a package: libraries and objects that were linked or sources of objects; headers."""

    linked: set[str] = field(default_factory=set)
    headers: set[str] = field(default_factory=set)


def packages_in(build: Path, program: str) -> dict[DebianPackage, Parts]:
    """The packages by name; `program` is as `cli/stalwick-convert`, below the build directory."""
    lines = _map_lines(build, program)
    members = [match.groups() for match in map(_MEMBER.match, lines) if match]
    objects = {match[1] for match in map(_OBJECT.match, lines) if match}
    files = objects | {f"{place}/lib{name}.a" for place, name, _ in members}
    linked = {os.path.normpath(file) for file in files if file.startswith("/")}
    objects |= {_object_of(*member) for member in members}
    sources = _sources(build)
    headers = _headers(build, program, objects, ("/usr/", *sources))
    compiled = {file for file in headers if file.endswith(_SOURCE_ENDINGS)}
    linked, headers = linked | compiled, headers - compiled
    found: dict[DebianPackage, Parts] = {}
    for directory, package in sources.items():
        parts = Parts(_below(directory, linked), _below(directory, headers))
        if parts.linked or parts.headers:
            found[package] = parts
        linked -= parts.linked
        headers -= parts.headers
    owners = _owners(linked | headers)
    packages = {name: look_up(name) for name in set(owners.values()) - _DECLARATIONS_ONLY}
    for file, name in owners.items():
        if name in packages:
            parts = found.setdefault(packages[name], Parts())
            (parts.linked if file in linked else parts.headers).add(file)
    return {package: found[package] for package in sorted(found, key=lambda package: package.name)}


def _sources(build: Path) -> dict[str, DebianPackage]:
    """The directories with what was made from Debian's sources, and the package of each."""
    cache = Path(build, "CMakeCache.txt").read_text(encoding="utf-8")
    found = {}
    for variable, name in _FROM_SOURCE.items():
        match = re.search(rf"(?m)^{variable}:[A-Z]+=(.+)$", cache)
        if match:
            package = source_of(name)
            if not match[1].endswith(f"-{package.version}"):
                raise ValueError(f"{variable}: {match[1]} is not of version {package.version}")
            found[os.path.normpath(match[1]) + "/"] = package
    return found


def _below(directory: str, files: set[str]) -> set[str]:
    return {file for file in files if file.startswith(directory)}


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
        changed = re.sub(r"(--out-implib,)\S+", rf"\1{directory}/library", changed)
        if changed == command:
            raise ValueError(f"{program}: its link command names no such output: {command}")
        subprocess.run(changed, shell=True, cwd=build, check=True, capture_output=True)
        return Path(directory, "map").read_text(encoding="utf-8").splitlines()


def _object_of(place: str, library: str, member: str) -> str:
    """The object that became a member of a library, without directories below the library's own."""
    return f"{place}/CMakeFiles/{library}.dir/{member}"


def _headers(build: Path, program: str, linked: set[str], places: tuple[str, ...]) -> set[str]:
    """The headers and sources in these places that the program's objects were compiled from."""
    names = _ninja(build, "--quiet", "-t", "inputs", program).splitlines()
    inputs = [name for name in names if name.endswith((".o", ".obj"))]
    flat = {re.sub(r"(\.dir/).*/", r"\1", name): name for name in inputs}
    objects = [flat[name] for name in linked & flat.keys()]
    if not objects:
        raise ValueError(f"{program}: nothing was compiled for it")
    lines = _ninja(build, "--quiet", "-t", "deps", *objects).splitlines()
    files = {os.path.normpath(line.strip()) for line in lines if line.startswith("    /")}
    return {file for file in files if file.startswith(places)}


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
