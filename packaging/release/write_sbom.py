#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Writes an SPDX 2.3 document of what is linked into programs, from Debian's package data.

    write_sbom.py --version VERSION --archive ARCHIVE BUILD PROGRAM... > FILE.spdx.json

PROGRAM: a path in BUILD, such as cli/stalwick-convert. A tar has the programs in bin/, a zip in its
only directory.
SOURCE_DATE_EPOCH is the time of the document, so that the same programs give the same document.
"""

from __future__ import annotations

import argparse
import hashlib
import json
import os
import tarfile
import uuid
import zipfile
from datetime import datetime, timezone
from pathlib import Path
from typing import Any
from urllib.parse import quote

from debian_package import DebianPackage
from linked_packages import Parts, packages_in

Json = dict[str, Any]


def package_id(name: str) -> str:
    return "SPDXRef-Package-" + name.replace("+", "-plus").replace("_", "-")


def checksum(algorithm: str, data: bytes) -> Json:
    value = hashlib.new(algorithm.lower(), data).hexdigest()
    return {"algorithm": algorithm, "checksumValue": value}


def debian_entry(package: DebianPackage) -> Json:
    expression, comment = package.licence()
    place = f"{quote(package.name)}@{quote(package.version)}"
    how = " for this program; see docs/building-windows.md" * (package.architecture == "source")
    entry = {
        "SPDXID": package_id(package.name),
        "name": package.name,
        "versionInfo": package.version,
        "supplier": "Organization: Debian",
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "homepage": package.homepage,
        "sourceInfo": f"built from the Debian source {package.sources}{how}",
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": expression,
        "licenseComments": comment,
        "copyrightText": "NOASSERTION",
        "primaryPackagePurpose": "LIBRARY",
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator":
                              f"pkg:deb/debian/{place}?arch={package.architecture}"}],
    }
    return {key: value for key, value in entry.items() if value != ""}


def own_entry(version: str, archive: Path) -> Json:
    return {
        "SPDXID": package_id("stalwick"),
        "name": "stalwick",
        "versionInfo": version,
        "packageFileName": archive.name,
        "supplier": "Organization: The Stalwick developers",
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "BSD-3-Clause",
        "copyrightText": "NOASSERTION",
        "primaryPackagePurpose": "APPLICATION",
        "checksums": [checksum("SHA256", archive.read_bytes())],
    }


def read_program(archive: Path, program: str) -> tuple[str, bytes]:
    """A program in the archive: its name below the archive's only directory, its content."""
    if archive.suffix == ".zip":
        name = Path(program).name
        with zipfile.ZipFile(archive) as file:
            (member,) = (member for member in file.namelist() if member.partition("/")[2] == name)
            return name, file.read(member)
    name = f"bin/{Path(program).name}"
    with tarfile.open(archive) as tar:
        (entry,) = (entry for entry in tar if entry.name.endswith("/" + name))
        content = tar.extractfile(entry)
        assert content is not None
        return name, content.read()


def file_entry(archive: Path, program: str) -> Json:
    name, data = read_program(archive, program)
    return {
        "SPDXID": f"SPDXRef-File-{Path(program).name}",
        "fileName": f"./{name}",
        "fileTypes": ["BINARY"],
        "checksums": [checksum("SHA1", data), checksum("SHA256", data)],
        "licenseConcluded": "NOASSERTION",
        "licenseInfoInFiles": ["NOASSERTION"],
        "copyrightText": "NOASSERTION",
    }


def relationship(one: str, kind: str, other: str, comment: str = "") -> Json:
    entry = {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
    return entry | ({"comment": comment} if comment else {})


def uses(file: str, package: DebianPackage, parts: Parts) -> Json:
    if parts.linked:
        libraries = ", ".join(sorted({Path(part).name for part in parts.linked}))
        return relationship(file, "STATIC_LINK", package_id(package.name), f"of {libraries}")
    comment = "templates and inline functions of its headers"
    return relationship(file, "CONTAINS", package_id(package.name), comment)


def document(version: str, archive: Path, build: Path, programs: list[str]) -> Json:
    created = datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), timezone.utc)
    own = own_entry(version, archive)
    packages: set[DebianPackage] = set()
    relations = [relationship("SPDXRef-DOCUMENT", "DESCRIBES", own["SPDXID"])]
    files = [file_entry(archive, program) for program in programs]
    for program, file in zip(programs, files):
        relations.append(relationship(own["SPDXID"], "CONTAINS", file["SPDXID"]))
        found = packages_in(build, program)
        relations += [uses(file["SPDXID"], package, parts) for package, parts in found.items()]
        packages |= found.keys()
    by_name = sorted(packages, key=lambda package: package.name)
    content = {"packages": [own, *map(debian_entry, by_name)],
               "files": files, "relationships": relations}
    identity = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(content, sort_keys=True))
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": archive.name,
        "documentNamespace": f"urn:uuid:{identity}",
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": [f"Tool: stalwick-write_sbom-{version}",
                                      "Organization: The Stalwick developers"]},
    } | content


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--version", required=True)
    parser.add_argument("--archive", type=Path, required=True)
    parser.add_argument("build", type=Path)
    parser.add_argument("programs", nargs="+")
    options = parser.parse_args()
    result = document(options.version, options.archive, options.build, options.programs)
    print(json.dumps(result, indent=2, ensure_ascii=False))


if __name__ == "__main__":
    main()
