#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks an SBOM: its form by SPDX 2.3, and what it says by the archive, the programs and Debian.

    sbom_test.py SBOM ARCHIVE BUILD     BUILD: of the preset static, whose programs have symbols
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
from pathlib import Path
from typing import Any

from license_expression import ExpressionError, get_spdx_licensing

SBOM, ARCHIVE, BUILD = (Path(argument).resolve() for argument in sys.argv[1:4])
Json = dict[str, Any]
# A symbol that only code of the package has, for each package that may be in a program.
SYMBOLS = {
    "libc6-dev": r" T __libc_start_main",
    "libstdc++-12-dev": r" [TW] std::__throw_out_of_range\(",
    "libssl-dev": r" T EVP_DigestInit_ex",
    "libcli11-dev": r" CLI::App::",
    "nlohmann-json3-dev": r" nlohmann::",
    "libkissfft-dev": r" kissfft<",
}
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


class Sbom(unittest.TestCase):
    def setUp(self) -> None:
        self.document: Json = json.loads(SBOM.read_text(encoding="utf-8"))
        self.packages = {entry["name"]: entry for entry in self.document["packages"]}

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
                           ("SPDXID", "SPDXRef-Package-libc6-dev"), ("downloadLocation", "")):
            broken = copy.deepcopy(self.document)
            broken["packages"][0][key] = value
            self.assertNotEqual(faults_of(broken), [], key)

    def test_it_is_of_this_archive_and_its_programs(self) -> None:
        own = self.packages["stalwick"]
        expected = hashlib.sha256(ARCHIVE.read_bytes()).hexdigest()
        self.assertEqual(own["checksums"], [{"algorithm": "SHA256", "checksumValue": expected}])
        self.assertIn(own["versionInfo"], ARCHIVE.name)
        self.assertEqual(own["licenseDeclared"], "BSD-3-Clause")
        with tarfile.open(ARCHIVE) as archive:
            programs = {member.name.partition("/")[2]: archive.extractfile(member)
                        for member in archive if "/bin/" in member.name}
            data = {f"./{name}": file.read() for name, file in programs.items() if file}
        self.assertEqual(set(data), {entry["fileName"] for entry in self.document["files"]})
        for entry in self.document["files"]:
            sums = {item["algorithm"]: item["checksumValue"] for item in entry["checksums"]}
            self.assertEqual(sums["SHA1"], hashlib.sha1(data[entry["fileName"]]).hexdigest())

    def test_a_package_is_in_it_if_its_symbols_are_in_the_program(self) -> None:
        for program in ("stalwick-convert", "stalwick-inspect"):
            run = subprocess.run(["nm", "--demangle", str(BUILD / "cli" / program)],
                                 capture_output=True, text=True, check=True)
            used = self.used_by(program)
            self.assertIn("libc6-dev", used)
            for package, symbol in SYMBOLS.items():
                found = re.search(symbol, run.stdout) is not None
                self.assertEqual(package in used, found, f"{program}: {package}")

    def test_versions_are_those_of_this_machine_and_of_the_linked_library(self) -> None:
        for name, entry in self.packages.items():
            if name != "stalwick":
                run = subprocess.run(["dpkg", "--status", name], capture_output=True, text=True,
                                     check=True)
                self.assertIn(f"\nVersion: {entry['versionInfo']}\n", run.stdout)
        program = (BUILD / "cli/stalwick-convert").read_bytes()
        version = re.search(rb"\0(3\.\d+\.\d+)\0", program)
        assert version is not None
        self.assertTrue(self.packages["libssl-dev"]["versionInfo"].startswith(version[1].decode()))

    def test_licences_are_those_of_the_copyright_files(self) -> None:
        declared = {name: entry["licenseDeclared"] for name, entry in self.packages.items()}
        for name, licence in {"nlohmann-json3-dev": "MIT", "libcli11-dev": "BSD-3-Clause",
                              "libboost1.74-dev": "BSL-1.0", "libhwy-dev": "Apache-2.0",
                              "libkissfft-dev": "BSD-3-Clause", "libssl-dev": "Apache-2.0"}.items():
            self.assertEqual(declared.get(name), licence, name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
