# SPDX-License-Identifier: BSD-3-Clause

"""The commands' reference: their manual pages as Markdown with the headings of the site."""

from __future__ import annotations

import re
import subprocess
from pathlib import Path

_HEADING = re.compile(r'<h([12]) class="(?:Sh|Ss)" id="[^"]*">(.*?)</h\1>', re.DOTALL)
_TAG = re.compile(r"<[^>]*>")
# The line at the top and the one at the bottom of a printed page.
_FRAME = re.compile(r'<table class="(?:head|foot)">.*?</table>', re.DOTALL)
_OTHER_PAGE = re.compile(r"<b>(stalwick[-\w]*)</b>\(1\)")
_DIVISION = re.compile(r"</?(?:section|div)\b[^>]*>")


def manual_markdown(page: Path) -> str:
    """The page that mandoc makes of a manual page, in parts between headings of Markdown."""
    run = subprocess.run(
        ["mandoc", "-Thtml", "-Ofragment", str(page)], capture_output=True, text=True, check=True
    )
    html = _DIVISION.sub("", _FRAME.sub("", run.stdout))
    html = _OTHER_PAGE.sub(r'<a href="\1.html">\1</a>(1)', html)
    text = f"# {page.stem}\n"
    parts = _HEADING.split(html)
    for level, title, body in zip(parts[1::3], parts[2::3], parts[3::3]):
        words = " ".join(_TAG.sub("", title).split())
        text += f"\n{'#' * (int(level) + 1)} {words.capitalize() if level == '1' else words}\n"
        if body.strip():
            text += f'\n<div class="manual">\n{_without_blank_lines(body)}\n</div>\n'
    return text


def _without_blank_lines(html: str) -> str:
    return "\n".join(line for line in html.splitlines() if line.strip())
