# SPDX-License-Identifier: BSD-3-Clause

"""The pages of the site that are files of the repository, and how their Markdown is adapted."""

from __future__ import annotations

import os
import re
import shutil
from pathlib import Path

# Besides docs/*.md, which keep their names.
RENAMED = {
    "README.md": "index.md",
    "python/README.md": "python.md",
    "matlab/README.md": "matlab.md",
    "CONTRIBUTING.md": "contributing.md",
    "SECURITY.md": "security.md",
    "CHANGELOG.md": "changelog.md",
}
_LINK = re.compile(r"(\]\()([^)\s#]*)(#[^)\s]*)?(\))")
_FENCE = re.compile(r"\s*```")
_EMPTY_HEAD = re.compile(r"<thead>\s*<tr>\s*(?:<th[^>]*></th>\s*)+</tr>\s*</thead>")
_EMPTY_CELL = re.compile(r"<th([^>]*)></th>")
_NUMBERED = re.compile(r"\d+\. ")


class Pages:
    """Copies pages of the repository, and the files that they link, into the site's source."""

    def __init__(self, repository: Path, source: Path) -> None:
        self._repository = repository
        self._source = source
        self.names = dict(RENAMED)
        for path in sorted((repository / "docs").glob("*.md")):
            self.names[f"docs/{path.name}"] = path.name

    def copy(self) -> None:
        """Every page, with its links changed to where the pages are in the site."""
        for name, place in self.names.items():
            text = (self._repository / name).read_text(encoding="utf-8")
            (self._source / place).write_text(self._adapt(text, name), encoding="utf-8")

    def _adapt(self, text: str, name: str) -> str:
        lines = []
        in_fence = False
        for line in indent_lists(text.splitlines()):
            if _FENCE.match(line):
                in_fence = not in_fence
            elif not in_fence:
                line = _LINK.sub(lambda link: self._moved(link, name), line)
            lines.append(line)
        return "\n".join(lines) + "\n"

    def _moved(self, link: re.Match[str], name: str) -> str:
        target = link[2]
        if not target or ":" in target:
            return link[0]
        file = os.path.normpath(os.path.join(os.path.dirname(name), target))
        place = self.names.get(file) or self._copy_file(file)
        return f"{link[1]}{place}{link[3] or ''}{link[4]}"

    def _copy_file(self, file: str) -> str:
        """A picture, a schema or another file that a page links; mkdocs reports what is missing."""
        place = file.removeprefix("docs/")
        path = self._repository / file
        if file.startswith("..") or not path.is_file():
            return place
        (self._source / place).parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(path, self._source / place)
        return place


def without_empty_headers(html: str) -> str:
    """Tables without a first row that has no words; a corner without a word is a plain cell."""
    return _EMPTY_CELL.sub(r"<td\1></td>", _EMPTY_HEAD.sub("", html))


def indent_lists(lines: list[str]) -> list[str]:
    """Lists as Python's Markdown wants them: four columns, and an empty line after a paragraph."""
    indented: list[str] = []
    own = 0  # columns of the list's marker
    is_paragraph = False  # of an item, after an empty line
    in_fence = False
    for line in lines:
        if _FENCE.match(line):
            in_fence = not in_fence
        is_item = not in_fence and bool(_NUMBERED.match(line) or line.startswith("- "))
        if is_item:
            if own and is_paragraph:
                indented.append("")
            own = 3 if line[0].isdigit() else 2
            is_paragraph = False
        elif not line:
            is_paragraph = bool(own)
        elif line and not line.startswith(" "):
            own = 0
        elif own and line.startswith(" " * own):
            line = " " * (4 - own) + line
        indented.append(line)
    return indented
