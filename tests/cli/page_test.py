#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""`stalwick-convert --page`: pages next to outputs, whose bytes they do not change.

  page_test.py CONVERT ORD_SYNTH
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

BEGINNING = '<!DOCTYPE html>\n<html lang="en" data-page-of="stalwick">'


class Bench:
    def __init__(self, convert, synth, directory):
        self.convert, self.synth, self.directory = convert, synth, pathlib.Path(directory)

    def make(self, name, *options):
        path = self.directory / name
        subprocess.run([self.synth, "-q", "-f", "-c", "32", "-s", "0.3", "-o", path, *options],
                       check=True)
        return path

    def run(self, *arguments, status=0):
        run = subprocess.run([self.convert, "-q", *arguments], capture_output=True, text=True,
                             cwd=self.directory)
        assert run.returncode == status, (arguments, run)
        return run


# Only these header lines differ between two conversions of a recording.
def data_of(directory):
    return {path.name: path.read_bytes()[16384:] for path in directory.iterdir()
            if path.suffix in (".vcs", ".vrd", ".vev")}


def test_page_beside_outputs(bench):
    path = bench.make("a.ord")
    bench.run("--all", "-o", "plain", path)
    bench.run("--all", "--page", "-o", "with", path)
    plain, with_page = bench.directory / "plain" / "a", bench.directory / "with" / "a"
    assert not list(plain.glob("*.html"))
    assert [page.name for page in with_page.glob("*.html")] == ["a.html"]
    assert (with_page / "a.html").read_text().startswith(BEGINNING)
    assert data_of(plain) == data_of(with_page)
    # The outputs of a second conversion get numbers; the recording's page is made again.
    bench.run("--page", "-o", "with", path)
    assert len(list(with_page.glob("*.html"))) == 1


def test_file_in_the_way(bench):
    path = bench.make("b.ord")
    target = bench.directory / "out" / "b"
    target.mkdir(parents=True)
    (target / "b.html").write_text("mine")
    run = bench.run("--page", "-o", "out", "--report", "run.json", path, status=1)
    assert (target / "b.html").read_text() == "mine"
    assert run.stdout == "Processing complete\n", run
    assert "no page, its outputs are not affected" in run.stderr, run
    assert "is not a page of this program" in run.stderr, run
    report = json.loads((bench.directory / "run.json").read_text())
    entry = report["recordings"][0]
    assert report["options"]["page"] and entry["result"] == "failed", report
    assert [detail["kind"] for detail in entry["details"]] == ["incomplete"], entry
    assert len(entry["outputs"]) == 33, entry
    # Its outputs are whole, so it is skipped; the page is still missing.
    run = bench.run("--page", "--skip-converted", "-o", "out", path, status=1)
    assert "skipped" in run.stderr and "is not a page of this program" in run.stderr, run
    assert not list(target.glob("*_01*"))


def test_passed_over(bench):
    path = bench.make("c.ord")
    bench.run("-o", "over", path)
    page = bench.directory / "over" / "c" / "c.html"
    bench.run("--skip-converted", "-o", "over", path)
    assert not page.exists()
    bench.run("--skip-converted", "--page", "-o", "over", path)
    first = page.stat().st_mtime_ns
    bench.run("--skip-converted", "--page", "-o", "over", path)
    assert page.stat().st_mtime_ns == first
    assert not list(page.parent.glob("*_01*"))


def test_damage_and_failure(bench):
    """A damaged recording has a page; one that cannot be converted has none, and no directory."""
    whole = bench.make("d.ord")
    middle = os.path.getsize(whole) // 2
    path = bench.make("d.ord", "--drop-bytes", f"{middle}:500")
    bench.run("--page", "-k", "-o", "bad", path, bench.directory / "missing.ord", status=1)
    assert (bench.directory / "bad" / "d" / "d.html").exists()
    assert [entry.name for entry in (bench.directory / "bad").iterdir()] == ["d"]


def test_pipe(bench):
    """A recording from a pipe no longer exists when its page would be made."""
    path = bench.make("e.ord")
    fifo = bench.directory / "fifo.ord"
    os.mkfifo(fifo)
    with subprocess.Popen(["cp", path, fifo]) as writer:
        run = bench.run("--page", "-o", "pipe", fifo, status=1)
        assert writer.wait() == 0
    assert "can be read only once" in run.stderr, run


def main():
    with tempfile.TemporaryDirectory() as directory:
        bench = Bench(sys.argv[1], sys.argv[2], os.path.realpath(directory))
        for test in (test_page_beside_outputs, test_file_in_the_way, test_passed_over,
                     test_damage_and_failure, test_pipe):
            test(bench)


if __name__ == "__main__":
    main()
