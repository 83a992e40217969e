#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Makes the pages that the zip and the installer contain, readable without a network.

    make_pages.py MANUAL_PAGES OUTPUT      MANUAL_PAGES: directory with the commands' manual pages

Pictures are inside the pages. A link to a page that is not made becomes plain text.
Needs Debian's cmark-gfm and mandoc (scripts/install-deps.sh windows-app).
"""

from __future__ import annotations

import base64
import html
import mimetypes
import re
import shutil
import subprocess
import sys
from pathlib import Path

DOCS = Path(__file__).resolve().parents[2] / "docs"
PAGES = ("user-guide", "errors", "output-files")
COMMANDS = ("stalwick-convert", "stalwick-inspect")

_STYLE = """
body { max-width: 48em; margin: 2em auto; padding: 0 1em; font: 16px/1.5 sans-serif }
img { max-width: 100% } code, pre { font: 14px monospace } pre { overflow-x: auto }
table { border-collapse: collapse } td, th { border: 1px solid #999; padding: .2em .5em }
"""
_MANUAL_STYLE = """
body { max-width: 48em; margin: 2em auto; padding: 0 1em; font: 16px/1.5 sans-serif }
h1 { font-size: 1.3em } h2 { font-size: 1.1em } dd { margin-bottom: .5em }
a.permalink { color: inherit; text-decoration: none }
"""
_TAG = re.compile(r"<[^>]*>")
_HEADING = re.compile(r"<h([1-6])>(.*?)</h\1>")
_LINK = re.compile(r'<a href="([^"#]*)(#[^"]*)?">(.*?)</a>', re.DOTALL)
_PICTURE = re.compile(r'(<img\b[^>]*?\bsrc=")([^"]+)"')
_OTHER_COMMAND = re.compile(r"<b>(stalwick-[a-z]*)</b>\(1\)")


def output_of(*command: str) -> str:
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def text_of(fragment: str) -> str:
    return html.unescape(_TAG.sub("", fragment))


def with_anchor(heading: re.Match[str]) -> str:
    """The anchor that links in Markdown expect: lower case, blanks as hyphens, no punctuation."""
    name = re.sub(r"[^\w\- ]", "", text_of(heading[2]).lower()).replace(" ", "-")
    return f'<h{heading[1]} id="{name}">{heading[2]}</h{heading[1]}>'


def with_picture(picture: re.Match[str]) -> str:
    path = DOCS / picture[2]
    data = base64.b64encode(path.read_bytes()).decode()
    return f'{picture[1]}data:{mimetypes.guess_type(path)[0]};base64,{data}"'


def with_target(link: re.Match[str], output: Path) -> str:
    """The link as it is among the pages. A schema is copied next to them."""
    path, anchor, text = Path(link[1]), link[2] or "", link[3]
    if not link[1]:
        return link[0]
    if path.suffix == ".md" and path.with_suffix("").as_posix() in PAGES:
        return f'<a href="{path.with_suffix(".html")}{anchor}">{text}</a>'
    if path.suffix == ".json":
        shutil.copyfile(DOCS / path, output / path)
        return link[0]
    return text


def make_page(name: str, output: Path) -> None:
    body = output_of("cmark-gfm", "--unsafe", "--validate-utf8", "-e", "table",
                     str(DOCS / f"{name}.md"))
    first = _HEADING.search(body)
    title = html.escape(text_of(first[2]) if first else name)
    body = _HEADING.sub(with_anchor, body)
    body = _PICTURE.sub(with_picture, body)
    body = _LINK.sub(lambda link: with_target(link, output), body)
    page = (f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n'
            f"<title>{title} - Veltrosyn Stalwick</title>\n<style>{_STYLE}</style>\n"
            f"</head>\n<body>\n{body}</body>\n</html>\n")
    (output / f"{name}.html").write_text(page, encoding="utf-8")


def make_manual_page(command: str, manual_pages: Path, output: Path) -> None:
    page = output_of("mandoc", "-Thtml", str(manual_pages / f"{command}.1"))
    page = _OTHER_COMMAND.sub(r'<a href="\1.html">\1</a>(1)', page)
    page = page.replace("</style>", f"{_MANUAL_STYLE}</style>")
    (output / f"{command}.html").write_text(page, encoding="utf-8")


def main() -> None:
    manual_pages, output = Path(sys.argv[1]), Path(sys.argv[2])
    output.mkdir(parents=True, exist_ok=True)
    for name in PAGES:
        make_page(name, output)
    for command in COMMANDS:
        make_manual_page(command, manual_pages, output)


if __name__ == "__main__":
    main()
