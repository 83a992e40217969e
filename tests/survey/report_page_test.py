#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Pages of `stalwick-inspect report`, compared with the truth of ord_synth, and their signal figures
with NumPy on the same samples.

  report_page_test.py INSPECT CONVERT ORD_SYNTH DOCS
"""

import html.parser
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import jsonschema
import numpy as np

HEADER_BYTES = 16384
MICROVOLTS_PER_STEP = 0.000000048675537109375 * 1e6
RATE = 30000
VOID = {"meta", "br", "img"}


class Page(html.parser.HTMLParser):
    """The contents of a page's document."""

    def __init__(self, path):
        super().__init__()
        self.path = path
        self.tags = []    # (name, attributes)
        self.texts = {}   # of elements with an id
        self.headings = []
        self.data = ""
        self.links = []
        self._open = []
        text = pathlib.Path(path).read_text(encoding="utf-8")
        self.size = len(text.encode())
        self.feed(text)
        self.close()
        assert self._open == [], (path, self._open)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.tags.append((tag, attributes))
        if tag in ("h1", "h2", "h3", "h4"):
            self.headings.append(int(tag[1]))
        if tag == "a":
            self.links.append(attributes["href"])
        if tag not in VOID:
            self._open.append((tag, attributes.get("id")))
            if attributes.get("id"):
                self.texts[attributes["id"]] = ""

    def handle_startendtag(self, tag, attrs):
        self.tags.append((tag, dict(attrs)))

    def handle_endtag(self, tag):
        if tag in VOID:
            return
        name, _ = self._open.pop()
        assert name == tag, (self.path, name, tag)

    def handle_data(self, data):
        if any(name == "script" for name, _ in self._open):
            self.data += data
        for _, ident in self._open:
            if ident:
                self.texts[ident] += data

    def count(self, tag, css_class):
        return sum(1 for name, attributes in self.tags
                   if name == tag and css_class in attributes.get("class", "").split())


class Bench:
    def __init__(self, arguments, directory):
        self.inspect, self.convert, self.synth, docs = arguments
        self.directory = pathlib.Path(directory)
        schema = json.loads(pathlib.Path(docs, "page.schema.json").read_text())
        resolver = jsonschema.RefResolver(base_uri=pathlib.Path(docs).as_uri() + "/",
                                          referrer=schema)
        self.validator = jsonschema.Draft202012Validator(schema, resolver=resolver)

    def make(self, name, *options):
        path = self.directory / (name + ".ord")
        truth = self.directory / (name + ".json")
        subprocess.run([self.synth, "-q", "-f", "-o", path, "--truth", truth, *options], check=True)
        return path, json.loads(truth.read_text())

    def report(self, *arguments, status=0):
        run = subprocess.run([self.inspect, "report", *arguments], capture_output=True, text=True)
        assert run.returncode == status, (arguments, run)
        assert run.stdout == "", run
        return run.stderr

    def page(self, path, status=0):
        target = path.with_suffix(".html")
        self.report(path, "-o", target, status=status)
        page = Page(target)
        document = json.loads(page.data)
        self.validator.validate(document)
        check_structure(page)
        return page, document


def check_structure(page):
    """A page is accessible to screen readers and loads nothing from elsewhere."""
    names = [name for name, _ in page.tags]
    assert page.tags[0][1]["lang"] == "en"
    for landmark in ("header", "main", "footer"):
        assert names.count(landmark) == 1, (landmark, page.path)
    assert page.headings[0] == 1 and page.headings.count(1) == 1, page.headings
    for before, after in zip(page.headings, page.headings[1:]):
        assert after <= before + 1, page.headings
    for name, attributes in page.tags:
        assert name not in ("link", "img", "iframe"), name
        assert "src" not in attributes and not any(key.startswith("on") for key in attributes)
        if name == "th":
            assert attributes["scope"] in ("row", "col")
        if name == "script":
            assert attributes["type"] == "application/json"
    idents = [attributes["id"] for _, attributes in page.tags if "id" in attributes]
    assert len(idents) == len(set(idents)), page.path
    assert page.size < 3_000_000, page.size


def samples_of(bench, path, channels):
    """The samples as recorded, in 16-bit steps, from the raw data file of a conversion."""
    out = bench.directory / "raw"
    out.mkdir(exist_ok=True)
    subprocess.run([bench.convert, "-q", "--no-csc", "--raw", "-o", out, path], check=True,
                   capture_output=True)
    raw = next((out / path.stem).glob("*.vrd"))
    words = np.fromfile(raw, dtype="<i4", offset=HEADER_BYTES).reshape(-1, channels + 18)
    return np.rint(words[:, 17:17 + channels] * (256 / 3190 / 4)).astype(np.int64) * 4


def welch(samples, stretches, segment):
    """scipy.signal.welch's density, of the segments of these stretches; microvolts squared per Hz."""
    window = 0.5 - 0.5 * np.cos(2 * np.pi * np.arange(segment) / segment)
    total, count = np.zeros(segment // 2 + 1), 0
    for stretch in stretches:
        first = stretch["first_sample"]
        values = samples[first:first + stretch["samples"]] * MICROVOLTS_PER_STEP
        for at in range(0, len(values) - segment + 1, segment // 2):
            part = values[at:at + segment]
            power = np.abs(np.fft.rfft((part - part.mean()) * window)) ** 2
            power /= RATE * (window ** 2).sum()
            power[1:-1] *= 2
            total, count = total + power, count + 1
    return total / count, count


def error(value, expected):
    return abs(value - expected) / max(abs(expected), 1e-30)


def test_figures(bench):
    """Noise, drift and spectra of every channel shown, compared with NumPy."""
    channels = 32
    path, _ = bench.make("figures", "-c", str(channels), "-s", "6.5", "--flat", "3",
                         "--noisy", "7", "--clipped", "30")
    _, document = bench.page(path)
    samples = samples_of(bench, path, channels)
    signal = document["signal"]
    assert [one["channel"] for one in signal["channels"]] == list(range(channels))
    for one in signal["channels"]:
        values = samples[:, one["channel"]] * MICROVOLTS_PER_STEP
        noise = values.std()
        assert error(one["noise_microvolts"], noise) < 1e-6 or noise < 1e-9, (one, noise)
        seconds = values[:len(values) // RATE * RATE].reshape(-1, RATE).mean(axis=1)
        drift = np.polyfit(np.arange(len(seconds)), seconds, 1)[0] * 60
        assert error(one["drift_microvolts_per_minute"], drift) < 1e-6 or abs(drift) < 1e-9, \
            (one, drift)
        steps = samples[:, one["channel"]]
        ends = np.count_nonzero((steps == -32768) | (steps == 32764))
        assert error(one["clipped_share"], ends / len(steps)) < 1e-9 or ends == 0, one
    spectra = signal["spectra"]
    assert len(spectra["channels"]) == 6 and len(spectra["stretches"]) >= 10, spectra["stretches"]
    for one in spectra["channels"]:
        expected, count = welch(samples[:, one["channel"]], spectra["stretches"],
                                spectra["segment_samples"])
        assert one["segments"] == count
        found = np.array(one["microvolts_squared_per_hertz"])
        assert all(value == float(f"{value:.5e}") for value in found), "more than six digits"
        assert found.shape == expected.shape
        # The density at 0 Hz is the rest of a removed mean: nothing, except for rounding.
        worst = np.max(np.abs(found[1:] - expected[1:]) / np.maximum(expected[1:], 1e-12))
        assert worst < 1e-3, (one["channel"], worst)


def names(page, rule):
    text = page.texts["named-" + rule].replace(" and ", ", ")
    return [] if text == "none" else [int(name[3:]) - 1 for name in text.split(", ")]


def test_named(bench):
    """Faulty channels are named by their rules; in a healthy recording none is."""
    for count in ("32", "64", "128", "256"):
        faults = (("--flat", "2,9"), ("--clipped", "11"), ("--noisy", "17-19"))
        for options in ((), sum(faults, ())):
            for seed in ("1", "7"):
                path, truth = bench.make("named", "-c", count, "-s", "0.5", "--seed", seed,
                                         *options)
                page, document = bench.page(path)
                for rule in ("flat", "clipped", "noisy"):
                    assert names(page, rule) == truth[rule], (count, rule, page.texts)
                    assert document["signal"][rule] == truth[rule], (count, rule)
                named = sum(len(truth[rule]) for rule in ("flat", "clipped", "noisy"))
                assert page.count("li", "named") == named
                assert page.count("tr", "named") == named
                assert page.count("li", "good") == (1 if named == 0 else 0), page.texts["findings"]
                assert page.texts["channel-map"].count("CSC") == int(count)


def test_structure(bench):
    """Gaps, lines, sensors and traces, counted in the page's own document."""
    path, truth = bench.make("structure", "--all", "-c", "64", "-s", "6", "--gap", "1:0.1",
                             "--gap", "3:0.05", "--gap", "5:0.3")
    page, document = bench.page(path)
    assert page.count("rect", "gap") == len(truth["gaps"]) == 3
    assert page.count("rect", "damage") == 0
    assert [gap["missing_samples"] for gap in document["recording"]["gaps"]] == \
        [gap["missing_samples"] for gap in truth["gaps"]]
    figures = [attributes["id"] for name, attributes in page.tags if name == "figure"]
    assert figures == ["time-line", "spectra", "traces-1", "traces-2", "traces-3", "events"] + \
        [unit + "-imu-" + what for unit in ("base", "afe")
         for what in ("acceleration", "rotation", "field")] + ["ultrasonic"], figures
    lines = sum(1 for changes in document["recording"]["ttl_changes"] if changes)
    assert page.texts["time-line"].count("TTL ") >= lines > 3
    assert sum(document["ttl_events"]["counts"]) == document["recording"]["ttl_events"] > 0
    assert page.count("path", "trace") == 3 * 12
    for number in (1, 2, 3):
        assert page.texts[f"traces-{number}"].count("CSC") >= 12
    # Labels on both axes of every chart.
    frames = page.count("div", "ylabels")
    assert frames == page.count("div", "xlabels") == len(figures)


def test_damage(bench):
    """A damaged recording has a page, and exit status 3."""
    path, truth = bench.make("damage", "-c", "32", "-s", "2")
    middle = HEADER_BYTES + (truth["undamaged_bytes"] - HEADER_BYTES) // 2
    path, truth = bench.make("damage", "-c", "32", "-s", "2", "--drop-bytes", f"{middle}:700")
    page, document = bench.page(path, status=3)
    assert page.count("rect", "damage") == len(document["recording"]["damage"]) == 1
    assert page.count("li", "bad") == 1


def test_small(bench):
    """Recordings with next to nothing in them, without timestamps, and from a pipe."""
    for seconds in ("0.0004", "0.05", "1"):
        for version in ("1.0", "2.0"):
            path, _ = bench.make("small", "-c", "32", "-s", seconds, "--file-version", version)
            _, document = bench.page(path)
            assert (document["recording"]["gaps"] is None) == (version == "1.0")
    target = bench.directory / "pipe.html"
    with open(path, "rb") as file:
        run = subprocess.run([bench.inspect, "report", "/dev/stdin", "-o", target],
                             input=file.read(), capture_output=True)
    assert run.returncode == 0, run
    Page(target)


def test_hostile_texts(bench):
    """Texts of a recording and its name are text in the page, whatever they contain."""
    path, _ = bench.make("plain", "-c", "32", "-s", "0.1")
    bytes_ = path.read_bytes()
    old = b'"Wireless Headstage" Synth32'
    new = b'"W" </script><b>x</b><!--'.ljust(len(old))
    assert old in bytes_
    hostile = bench.directory / '<img src=x onerror=alert(1)>&"\'.ord'
    hostile.write_bytes(bytes_.replace(old, new))
    page, document = bench.page(hostile)
    assert document["recording"]["path"] == str(hostile)
    assert not any(name in ("img", "b") for name, _ in page.tags)
    # In a list too, whose links lead to files in the same directory.
    second, _ = bench.make("javascript:x", "-c", "32", "-s", "0.1")
    index = bench.directory / "list.html"
    bench.report(hostile, second, "-o", index)
    lines = Page(index)
    assert not any(name == "img" for name, _ in lines.tags)
    assert len(lines.links) == 2 and all(":" not in link and "<" not in link
                                         for link in lines.links), lines.links


def test_list(bench):
    """For several recordings, a list links to pages next to it; it includes unreadable ones."""
    first, _ = bench.make("first", "-c", "32", "-s", "0.3")
    sub = bench.directory / "sub"
    sub.mkdir()
    second = sub / "first.ord"
    second.write_bytes(first.read_bytes())
    missing = bench.directory / "missing.ord"
    index = bench.directory / "night.html"
    said = bench.report(first, second, missing, "-o", index, status=1)
    assert said.count("\n") == 1 and "missing.ord: not read" in said, said
    page = Page(index)
    check_structure(page)
    assert page.links == ["night-first.html", "night-first-2.html"], page.links
    for link in page.links:
        one = Page(bench.directory / link)
        assert one.links == ["night.html"]
    assert sum(name == "svg" for name, _ in page.tags) == 2


def test_existing(bench):
    """A page replaces a page, and nothing else."""
    path, _ = bench.make("existing", "-c", "32", "-s", "0.1")
    target = bench.directory / "existing.html"
    bench.report(path, "-o", target)
    bench.report(path, "-o", target)
    target.write_text("<!DOCTYPE html>\n<html lang=\"en\">mine")
    said = bench.report(path, "-o", target, status=2)
    assert "is not a page of this program" in said and said.count("\n") == 1, said
    assert target.read_text().endswith("mine")
    assert bench.report(path, "-o", bench.directory / "no" / "page.html", status=2).count("\n") == 1
    for arguments in (("-o", target), (path,), (path, "-o", ""), (path, "-o")):
        assert bench.report(*arguments, status=2).count("\n") == 1


def main():
    with tempfile.TemporaryDirectory() as directory:
        bench = Bench(sys.argv[1:5], os.path.realpath(directory))
        for test in (test_figures, test_named, test_structure, test_damage, test_small,
                     test_hostile_texts, test_list, test_existing):
            test(bench)


if __name__ == "__main__":
    main()
