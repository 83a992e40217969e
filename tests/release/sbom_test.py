#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks an SBOM: its form by SPDX 2.3, and what it says by the archive, the programs and Debian.

    sbom_test.py SBOM ARCHIVE BUILD

BUILD: of the preset static for the tar, windows-app for the zip; its programs have symbols.
"""

from __future__ import annotations

import copy
import hashlib
import json
import re
import subprocess
import sys
import tarfile
import unittest
import zipfile
from pathlib import Path
from typing import Any

from license_expression import ExpressionError, get_spdx_licensing

SBOM, ARCHIVE, BUILD = (Path(argument).resolve() for argument in sys.argv[1:4])
Json = dict[str, Any]
IS_WINDOWS = ARCHIVE.suffix == ".zip"
ROOT = Path(__file__).resolve().parents[2]
# A symbol that only code of the package has, for each package that may be in a program.
HEADERS_SYMBOLS = {
    "libcli11-dev": r" CLI::App::",
    "nlohmann-json3-dev": r" nlohmann::",
    "libkissfft-dev": r" kissfft<",
}
LINUX_SYMBOLS = HEADERS_SYMBOLS | {
    "libc6-dev": r" T __libc_start_main",
    "libgcc-12-dev": r" [Tt] _Unwind_RaiseException",
    "libstdc++-12-dev": r" [TW] std::__throw_out_of_range\(",
    "libssl-dev": r" T EVP_DigestInit_ex",
}
WINDOWS_SYMBOLS = HEADERS_SYMBOLS | {
    "mingw-w64-x86-64-dev": r" T (Win)?[Mm]ainCRTStartup",
    "gcc-mingw-w64-x86-64-posix": r" [Tt] _Unwind_RaiseException",
    "g++-mingw-w64-x86-64-posix": r" [TW] std::__throw_out_of_range\(",
    "qt6-base": r" T QObject::QObject\(",
}
# The same for the copies of libraries that Qt contains.
QT_SYMBOLS = {
    "libQt6BundledFreetype.a": r" T FT_Init_FreeType\n",
    "libQt6BundledHarfbuzz.a": r" T hb_buffer_create\n",
    "libQt6BundledLibjpeg.a": r" T jpeg_read_header\n",
    "libQt6BundledLibpng.a": r" T png_create_read_struct\n",
    "libQt6BundledPcre2.a": r" T pcre2_match_16\n",
    "libQt6BundledZLIB.a": r" T z_inflate\n",
}
SYMBOLS = WINDOWS_SYMBOLS if IS_WINDOWS else LINUX_SYMBOLS
# What our sources include of packages whose code is in other functions, so that it has no symbols:
# every program has the parts of this one that do.
INCLUDED = {"libboost1.74-dev": "boost/"} | (
    {"highway": "hwy/", "mingw-w64-common": "windows.h"} if IS_WINDOWS else {"libhwy-dev": "hwy/"})
REQUIRED = {
    "document": ("spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace",
                 "creationInfo", "packages", "relationships"),
    "package": ("SPDXID", "name", "downloadLocation"),
    "file": ("SPDXID", "fileName", "checksums"),
    "relationship": ("spdxElementId", "relationshipType", "relatedSpdxElement"),
}
RELATIONSHIPS = {"DESCRIBES", "CONTAINS", "STATIC_LINK"}


def is_licence(text: str) -> bool:
    try:
        get_spdx_licensing().parse(text, validate=True)
    except ExpressionError:
        return text in ("NOASSERTION", "NONE")
    return bool(text)


def faults_of(document: Json) -> list[str]:
    """Where a document is not as SPDX 2.3 prescribes."""
    packages, files = document.get("packages", []), document.get("files", [])
    relations = document.get("relationships", [])
    faults = [f"no {key}" for key in REQUIRED["document"] if not document.get(key)]
    for kind, entries in (("package", packages), ("file", files), ("relationship", relations)):
        faults += [f"{kind} without {key}: {entry}" for entry in entries
                   for key in REQUIRED[kind] if not entry.get(key)]
    if document.get("spdxVersion") != "SPDX-2.3" or document.get("dataLicense") != "CC0-1.0":
        faults.append("not SPDX 2.3 under CC0-1.0")
    namespace = document.get("documentNamespace", "")
    if not re.fullmatch(r"[a-z][a-z0-9+.-]*:[^#\s]+", namespace):
        faults.append(f"namespace {namespace}")
    creation = document.get("creationInfo", {})
    if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", creation.get("created", "")):
        faults.append("no time of creation")
    for creator in creation.get("creators", []) or [""]:
        if not re.match(r"(Tool|Person|Organization): \S", creator):
            faults.append(f"creator {creator}")
    ids = [entry.get("SPDXID", "") for entry in [document, *packages, *files]]
    faults += [f"id {name}" for name in ids if not re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", name)]
    faults += [f"{name} stands twice" for name in set(ids) if ids.count(name) > 1]
    for relation in relations:
        ends = (relation.get("spdxElementId"), relation.get("relatedSpdxElement"))
        faults += [f"relationship with unknown {end}" for end in ends if end not in ids]
        if relation.get("relationshipType") not in RELATIONSHIPS:
            faults.append(f"relationship {relation}")
    for entry in [*packages, *files]:
        for key in ("licenseConcluded", "licenseDeclared"):
            if not is_licence(entry.get(key, "NOASSERTION")):
                faults.append(f"{entry.get('name')}: {key} {entry[key]}")
    return faults


def contents() -> dict[str, bytes]:
    """The files of the archive by their names below its only directory."""
    if IS_WINDOWS:
        with zipfile.ZipFile(ARCHIVE) as archive:
            files = {name: archive.read(name) for name in archive.namelist()}
    else:
        with tarfile.open(ARCHIVE) as tar:
            opened = {member.name: tar.extractfile(member) for member in tar if member.isfile()}
            files = {name: file.read() for name, file in opened.items() if file}
    return {name.partition("/")[2]: data for name, data in files.items()}


def output_of(*command: str) -> str:
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def built(program: str) -> Path:
    (path,) = (path for path in BUILD.glob(f"*/{program}") if path.is_file())
    return path


class Sbom(unittest.TestCase):
    def setUp(self) -> None:
        self.document: Json = json.loads(SBOM.read_text(encoding="utf-8"))
        self.packages = {entry["name"]: entry for entry in self.document["packages"]}

    def programs(self) -> set[str]:
        return {Path(entry["fileName"]).name for entry in self.document["files"]}

    def used_by(self, program: str) -> set[str]:
        names = {entry["SPDXID"]: name for name, entry in self.packages.items()}
        return {names[relation["relatedSpdxElement"]] for relation in self.document["relationships"]
                if relation["spdxElementId"] == f"SPDXRef-File-{program}"}

    def test_its_form_is_that_of_spdx(self) -> None:
        self.assertEqual(faults_of(self.document), [])

    def test_a_document_of_another_form_is_found(self) -> None:
        for key in REQUIRED["document"]:
            broken = {name: value for name, value in self.document.items() if name != key}
            self.assertNotEqual(faults_of(broken), [], key)
        for key, value in (("SPDXID", "SPDXRef-a_b"), ("licenseDeclared", "Some-Licence"),
                           ("SPDXID", "SPDXRef-Package-libcli11-dev"), ("downloadLocation", "")):
            broken = copy.deepcopy(self.document)
            broken["packages"][0][key] = value
            self.assertNotEqual(faults_of(broken), [], key)

    def test_it_is_of_this_archive_and_its_programs(self) -> None:
        own = self.packages["stalwick"]
        expected = hashlib.sha256(ARCHIVE.read_bytes()).hexdigest()
        self.assertEqual(own["checksums"], [{"algorithm": "SHA256", "checksumValue": expected}])
        self.assertIn(own["versionInfo"], ARCHIVE.name)
        self.assertEqual(own["licenseDeclared"], "BSD-3-Clause")
        data = {f"./{name}": data for name, data in contents().items()
                if name.startswith("bin/") or name.endswith(".exe")}
        self.assertEqual(set(data), {entry["fileName"] for entry in self.document["files"]})
        for entry in self.document["files"]:
            sums = {item["algorithm"]: item["checksumValue"] for item in entry["checksums"]}
            self.assertEqual(sums["SHA1"], hashlib.sha1(data[entry["fileName"]]).hexdigest())

    def test_a_package_is_in_it_if_its_symbols_are_in_the_program(self) -> None:
        for program in self.programs():
            symbols = output_of("nm", "--demangle", str(built(program)))
            used = self.used_by(program) - INCLUDED.keys()
            expected = {name for name, symbol in SYMBOLS.items() if re.search(symbol, symbols)}
            self.assertEqual(used, expected, program)

    @unittest.skipUnless(IS_WINDOWS, "the archive has no window")
    def test_it_names_the_libraries_in_qt_whose_symbols_are_in_the_window(self) -> None:
        symbols = output_of("nm", "--demangle", str(built("stalwick.exe")))
        (comment,) = (relation["comment"] for relation in self.document["relationships"]
                      if relation["relatedSpdxElement"] == "SPDXRef-Package-qt6-base")
        expected = {name for name, symbol in QT_SYMBOLS.items() if re.search(symbol, symbols)}
        self.assertEqual(set(re.findall(r"libQt6Bundled\w+\.a", comment)), expected)

    def test_a_package_without_symbols_is_in_it_if_our_sources_include_it(self) -> None:
        sources = [path for part in ("ord", "platform") for path in (ROOT / part).rglob("*.[ch]*")]
        text = "".join(path.read_text(encoding="utf-8") for path in sources)
        expected = {name for name, start in INCLUDED.items() if f"#include <{start}" in text}
        for program in self.programs():
            self.assertEqual(self.used_by(program) & INCLUDED.keys(), expected, program)

    def test_versions_are_those_of_this_machine_and_of_the_linked_library(self) -> None:
        lines = output_of("dpkg-query", "--show", "--showformat",
                          "${Package} ${Version}\n${source:Package} ${source:Version} source\n")
        installed = set(lines.splitlines())
        for name, entry in self.packages.items():
            if name != "stalwick":
                (reference,) = entry["externalRefs"]
                ending = " source" * reference["referenceLocator"].endswith("?arch=source")
                self.assertIn(f"{name} {entry['versionInfo']}{ending}", installed)
        program, form, name = (
            ("stalwick.exe", rb"Qt (6\.\d+\.\d+) \(", "qt6-base") if IS_WINDOWS
            else ("stalwick-convert", rb"\0(3\.\d+\.\d+)\0", "libssl-dev"))
        version = re.search(form, built(program).read_bytes())
        assert version is not None
        self.assertTrue(self.packages[name]["versionInfo"].startswith(version[1].decode()))

    def test_the_notices_in_the_archive_name_each_package(self) -> None:
        notices = contents()["THIRD-PARTY-NOTICES.txt"].decode()
        named = re.findall(r"(?m)^(\S+) (\S+) \(source: .*\)$", notices)
        listed = {(name, entry["versionInfo"]) for name, entry in self.packages.items()}
        self.assertEqual(set(named), {entry for entry in listed if entry[0] != "stalwick"})

    def test_licences_are_those_of_the_copyright_files(self) -> None:
        declared = {name: entry["licenseDeclared"] for name, entry in self.packages.items()}
        expected = {"nlohmann-json3-dev": "MIT", "libcli11-dev": "BSD-3-Clause",
                    "libboost1.74-dev": "BSL-1.0", "libkissfft-dev": "BSD-3-Clause"}
        expected |= ({"highway": "Apache-2.0", "mingw-w64-x86-64-dev": "ZPL-2.1",
                      "qt6-base": "LGPL-3.0-only OR GPL-2.0-only"} if IS_WINDOWS
                     else {"libhwy-dev": "Apache-2.0", "libssl-dev": "Apache-2.0"})
        for name, licence in expected.items():
            self.assertEqual(declared.get(name), licence, name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
