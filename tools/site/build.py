#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Makes the documentation site, which is read from a disk as well as from a server.

    build.py MANUAL_PAGES SITE      MANUAL_PAGES: directory with the commands' manual pages;
                                    SITE: directory that is made anew, as is SITE-source
Needs Debian's mkdocs-material and mandoc (scripts/install-deps.sh site).
"""

from __future__ import annotations

import importlib
import json
import shutil
import subprocess
import sys
from pathlib import Path

from manual import manual_markdown
from pages import Pages, without_empty_headers
from python_reference import reference_markdown

HERE = Path(__file__).resolve().parent
REPOSITORY = HERE.parents[1]
COMMANDS = ("stalwick", "stalwick-convert", "stalwick-inspect")
THEME_LICENCE = Path("/usr/share/doc/mkdocs-material/copyright")
# Of the theme the search in other languages; of mkdocs what only a server shows.
UNUSED = ("assets/javascripts/lunr", "404.html", "sitemap.xml", "sitemap.xml.gz")


def listed(nav: object) -> set[str]:
    """The pages that the navigation has."""
    if isinstance(nav, str):
        return {nav}
    entries = list(nav.values()) if isinstance(nav, dict) else nav
    assert isinstance(entries, list)
    return set().union(*(listed(entry) for entry in entries))


def write_source(manual_pages: Path, source: Path) -> Pages:
    pages = Pages(REPOSITORY, source)
    pages.copy()
    for command in COMMANDS:
        text = manual_markdown(manual_pages / f"{command}.1")
        (source / f"{command}.md").write_text(text, encoding="utf-8")
    sys.path.insert(0, str(REPOSITORY / "python"))
    sys.dont_write_bytecode = True
    reference = reference_markdown(importlib.import_module("stalwick"))
    (source / "python-reference.md").write_text(reference, encoding="utf-8")
    for directory, file in (("images", REPOSITORY / "app/resources/stalwick.svg"),
                            ("assets", HERE / "site.css"), ("assets", HERE / "site.js"),
                            ("licenses", THEME_LICENCE)):
        (source / directory).mkdir(exist_ok=True)
        name = "mkdocs-material.txt" if file == THEME_LICENCE else file.name
        shutil.copyfile(file, source / directory / name)
    return pages


def write_configuration(pages: Pages, source: Path, site: Path) -> Path:
    configuration = json.loads((HERE / "mkdocs.json").read_text(encoding="utf-8"))
    rest = sorted(set(pages.names.values()) - listed(configuration["nav"]))
    if rest:
        configuration["nav"].append({"More": rest})
    configuration |= {"docs_dir": str(source), "site_dir": str(site)}
    configuration["theme"]["custom_dir"] = str(HERE / "theme")
    path = source.with_suffix(".json")
    path.write_text(json.dumps(configuration, indent=4), encoding="utf-8")  # JSON is YAML too
    return path


def write_search(site: Path) -> None:
    """Index and worker as one script: a browser lets no page from a disk fetch either."""
    index = site / "search/search_index.json"
    (worker,) = (site / "assets/javascripts/workers").glob("search.*.min.js")
    code = worker.read_text(encoding="utf-8").partition("\n//# sourceMappingURL")[0]
    script = (f"var __search = {{index: Promise.resolve({index.read_text(encoding='utf-8')}), "
              f"worker: URL.createObjectURL(new Blob([{json.dumps(code)}], "
              "{type: 'text/javascript'}))};\n")
    (site / "assets/search.js").write_text(script, encoding="utf-8")
    shutil.rmtree(index.parent)


def remove_unused(site: Path) -> None:
    for name in UNUSED:
        path = site / name
        shutil.rmtree(path) if path.is_dir() else path.unlink()
    for path in site.glob("assets/**/*.map"):
        path.unlink()


def main() -> None:
    manual_pages, site = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    source = site.with_name(site.name + "-source")
    shutil.rmtree(source, ignore_errors=True)
    source.mkdir(parents=True)
    pages = write_source(manual_pages, source)
    configuration = write_configuration(pages, source, site)
    subprocess.run(["/usr/bin/mkdocs", "build", "--quiet", "--strict", "--clean",
                    "--config-file", str(configuration)], check=True)
    for page in site.glob("*.html"):
        html = page.read_text(encoding="utf-8")
        page.write_text(without_empty_headers(html), encoding="utf-8")
    write_search(site)
    remove_unused(site)


if __name__ == "__main__":
    main()
