#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks links and anchors of a site, that all comes from it, and that no part is lost.

    check.py SITE

Needs Debian's cmark-gfm, a second reader of Markdown (scripts/install-deps.sh site).
"""

from __future__ import annotations

import re
import subprocess
import sys
from collections import Counter
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

from pages import Pages, without_empty_headers

REPOSITORY = Path(__file__).resolve().parents[2]
COUNTED = set("h1 h2 h3 h4 table tr td th pre code ol ul li img a strong em".split())

_ELSEWHERE = re.compile(r"[A-Za-z][A-Za-z0-9+.-]*:|//")
_IN_STYLE = re.compile(r"(?:url\(|@import)\s*[\"']?((?:https?:)?//[^)\"']+)")


class Page(HTMLParser):
    """Ids, links and resources of a page, and how often it has each element."""

    def __init__(self, html: str) -> None:
        super().__init__()
        self.ids: Counter[str] = Counter()
        self.links: list[str] = []
        self.resources: list[str] = []
        self.elements: Counter[str] = Counter()
        self._in_pre = False
        self.feed(html)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        values = dict(attrs)
        if values.get("id"):
            self.ids[str(values["id"])] += 1
        if tag == "a" and values.get("href"):
            self.links.append(str(values["href"]))
        elif tag == "link" and values.get("href"):
            self.resources.append(str(values["href"]))
        if values.get("src"):
            self.resources.append(str(values["src"]))
        is_own = values.get("class") != "headerlink" and not (self._in_pre and tag in ("code", "a"))
        if tag in COUNTED and is_own:
            self.elements[tag] += 1
        self._in_pre = self._in_pre or tag == "pre"

    def handle_endtag(self, tag: str) -> None:
        self._in_pre = self._in_pre and tag != "pre"


def target_fault(site: Path, pages: dict[Path, Page], page: Path, link: str) -> str | None:
    """Why a link from a page leads nowhere."""
    parts = urlsplit(link)
    path = (page.parent / unquote(parts.path)).resolve() if parts.path else page
    if not path.is_relative_to(site) or not path.is_file():
        return f"{link} does not exist"
    if parts.fragment and path in pages and unquote(parts.fragment) not in pages[path].ids:
        return f"{link} has no such anchor"
    return None


def read_pages(site: Path) -> dict[Path, Page]:
    return {path: Page(path.read_text(encoding="utf-8")) for path in sorted(site.rglob("*.html"))}


def link_faults(site: Path, pages: dict[Path, Page], *, may_link_elsewhere: bool) -> list[str]:
    """What leads nowhere, or comes from elsewhere. A picture inside the page (data:) does not."""
    faults = []
    for path, page in pages.items():
        twice = [name for name, count in page.ids.items() if count > 1]
        faults += [f"{path.name}: two things are #{name}" for name in twice]
        for link in [*page.links, *page.resources]:
            is_resource = link in page.resources
            if is_resource and link.startswith("data:"):
                continue
            if _ELSEWHERE.match(link):
                if is_resource or not may_link_elsewhere:
                    faults.append(f"{path.name}: {link} is elsewhere")
            elif fault := target_fault(site, pages, path, link):
                faults.append(f"{path.name}: {fault}")
    for style in site.glob("assets/**/*.css"):
        for place in _IN_STYLE.findall(style.read_text(encoding="utf-8")):
            faults.append(f"{style.name}: {place} comes from elsewhere")
    return faults


def lost_parts(site: Path) -> list[str]:
    """Elements that another reader of Markdown finds in a file and the page does not have."""
    faults = []
    for name, place in Pages(REPOSITORY, site).names.items():
        run = subprocess.run(["cmark-gfm", "--unsafe", "-e", "table", str(REPOSITORY / name)],
                             capture_output=True, text=True, check=True)
        html = (site / place).with_suffix(".html").read_text(encoding="utf-8")
        article = html.partition("<article")[2].partition("</article>")[0]
        expected = Page(without_empty_headers(run.stdout)).elements
        found = Page(article).elements
        for tag in sorted(COUNTED):
            if expected[tag] != found[tag]:
                faults.append(f"{place}: {found[tag]} times <{tag}>, {name} has {expected[tag]}")
    return faults


def report(pages: dict[Path, Page], faults: list[str]) -> None:
    """Prints the faults and ends the program: with status 1 if there is one, or no page."""
    for fault in faults:
        print(fault, file=sys.stderr)
    links = sum(len(page.links) + len(page.resources) for page in pages.values())
    print(f"{len(pages)} pages, {links} links and resources, {len(faults)} faults")
    sys.exit(1 if faults or not pages else 0)


def main() -> None:
    site = Path(sys.argv[1]).resolve()
    pages = read_pages(site)
    report(pages, link_faults(site, pages, may_link_elsewhere=True) + lost_parts(site))


if __name__ == "__main__":
    main()
