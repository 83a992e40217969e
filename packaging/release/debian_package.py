# SPDX-License-Identifier: BSD-3-Clause

"""What Debian records about a package: its version, its source, its licences."""

from __future__ import annotations

import re
import subprocess
from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any

from debian.copyright import Copyright, NotMachineReadableError
from license_expression import ExpressionError, get_spdx_licensing

_COMMON = re.compile(r"/usr/share/common-licenses/([A-Za-z]+(?:-\d(?:\.\d)?)?)")
# Licences that have other names in SPDX than in Debian.
_SPDX_NAMES = {"Expat": "MIT", "expat": "MIT", "Boost": "BSL-1.0", "Apache-2": "Apache-2.0",
               "BSD-3-clause": "BSD-3-Clause", "BSD-2-clause": "BSD-2-Clause"}
# Boost's copyright file covers all its libraries and tools, 2 MB; what is used has one licence.
_ONLY = {"libboost": "BSL-1.0"}


@dataclass(frozen=True)
class DebianPackage:
    name: str
    version: str
    source: str
    source_version: str
    architecture: str
    homepage: str
    # Other sources that have parts in it, as Debian lists them: those of a cross compiler.
    built_using: str
    # The installed package that has the copyright file.
    installed: str

    @property
    def copyright_file(self) -> Path:
        return Path("/usr/share/doc", self.installed, "copyright").resolve(strict=True)

    @property
    def sources(self) -> str:
        also = f" with {self.built_using}" if self.built_using else ""
        return f"{self.source} {self.source_version}{also}"

    def copyright_text(self) -> str:
        """Debian's copyright file, or only the part that applies here."""
        text = self.copyright_file.read_text(encoding="utf-8", errors="replace")
        wanted = self._only()
        if not wanted:
            return text
        parts = re.findall(rf"(?m)^License: {re.escape(wanted)}\n((?: .*\n)+)", text)
        if not parts:
            raise ValueError(f"{self.copyright_file}: no text of {wanted}")
        return str(max(parts, key=len)).replace("\n .\n", "\n\n")

    def licence(self) -> tuple[str, str]:
        """The SPDX expression for most of its files, or NOASSERTION; and a comment."""
        if self._only():
            return self._only(), "of the headers that are used"
        try:
            with open(self.copyright_file, encoding="utf-8") as file:
                copyrights: Any = Copyright(file, strict=False)
        except NotMachineReadableError:
            return "NOASSERTION", "its copyright file is not machine-readable; see the notices"
        names = {paragraph.files: paragraph.license.synopsis
                 for paragraph in copyrights.all_files_paragraphs() if paragraph.license}
        most = names.get(("*",), "")
        others = ", ".join(sorted(set(names.values()) - {most}))
        expression = spdx_expression(most)
        comment = f"Debian says of most files: {most or 'nothing'}"
        return expression, comment + (f"; of others: {others}" if others else "")

    def _only(self) -> str:
        return next((name for start, name in _ONLY.items() if self.name.startswith(start)), "")


def look_up(name: str) -> DebianPackage:
    fields = ("Version", "source:Package", "source:Version", "Architecture", "Homepage",
              "Built-Using")
    form = "\\n".join(f"${{{field}}}" for field in fields)
    run = subprocess.run(["dpkg-query", "--show", f"--showformat={form}\\n\\n", name],
                         capture_output=True, text=True, check=True)
    version, source, source_version, architecture, homepage, using = run.stdout.split("\n")[:6]
    using = re.sub(r"\(= ([^)]*)\)", r"\1", using)
    return DebianPackage(name, version, source, source_version, architecture, homepage, using, name)


def source_of(name: str) -> DebianPackage:
    """The source package of an installed package, for what was compiled from it here."""
    package = look_up(name)
    return replace(package, name=package.source, version=package.source_version,
                   architecture="source")


def spdx_expression(text: str) -> str:
    """Debian's short form of a licence as SPDX's; NOASSERTION if SPDX has no equivalent."""
    words = []
    for word in text.split():
        is_gnu = re.fullmatch(r"(A?L?GPL)-(\d)(\.\d)?(\+?)", word)
        if is_gnu:
            ending = "-or-later" if is_gnu[4] else "-only"
            word = f"{is_gnu[1]}-{is_gnu[2]}{is_gnu[3] or '.0'}{ending}"
        words.append(_SPDX_NAMES.get(word, word))
    licensing = get_spdx_licensing()
    try:
        return str(licensing.parse(" ".join(words), validate=True)) if words else "NOASSERTION"
    except ExpressionError:
        return "NOASSERTION"


def common_licences(texts: list[str]) -> list[str]:
    """Names of the licences that the texts only point to, at a path of Debian's."""
    names = {name for text in texts for name in _COMMON.findall(text)}
    return sorted(name for name in names if Path("/usr/share/common-licenses", name).is_file())
