#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Pictures of `stalwick-inspect plot`, compared with the truth of ord_synth and the event file.

  plot_command_test.py INSPECT CONVERT ORD_SYNTH [--png]
"""

import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

SVG = "{http://www.w3.org/2000/svg}"
HEADER_BYTES = 16384
LEFT, COLUMNS = 78.0, 1040.0


class Bench:
    def __init__(self, arguments, directory):
        self.inspect, self.convert, self.synth = arguments[:3]
        self.png = "--png" in arguments
        self.directory = directory

    def path(self, name):
        return os.path.join(self.directory, name)

    def make(self, *options, name="rec.ord"):
        truth = self.path("truth.json")
        subprocess.run([self.synth, "-q", "-f", "-o", self.path(name), "--truth", truth, *options],
                       check=True)
        with open(truth, encoding="utf-8") as file:
            return self.path(name), json.load(file)

    def run(self, *arguments):
        return subprocess.run([self.inspect, "plot", *arguments], capture_output=True, text=True)

    def plot(self, *arguments, status=0):
        run = self.run(*arguments, "-o", self.path("picture.svg"))
        assert run.returncode == status, run
        assert run.stdout == "", run
        return Picture(self.path("picture.svg"))


class Picture:
    def __init__(self, path):
        self.root = ElementTree.parse(path).getroot()
        stretch = self.texts("stretch")[0]
        ends = re.match(r"(\S+) s to (\S+) s,", stretch)
        self.start, self.end = float(ends[1]), float(ends[2])
        self.height = float(self.root.get("height"))

    def all(self, tag, css):
        return [e for e in self.root.iter(SVG + tag) if css in (e.get("class") or "").split()]

    def texts(self, css):
        return [e.text for e in self.all("text", css)]

    def spans(self, elements):
        """Their stretches of time."""
        scale = (self.end - self.start) / COLUMNS
        return [(self.start + (float(e.get("x")) - LEFT) * scale,
                 self.start + (float(e.get("x")) + float(e.get("width")) - LEFT) * scale)
                for e in elements]

    def pixel(self):
        return (self.end - self.start) / COLUMNS

    def names(self):
        return [e.find(SVG + "title").text for e in self.all("path", "trace")]


def check_spans(picture, css, expected):
    found = picture.spans(picture.all("rect", css))
    assert len(found) == len(expected), (css, found, expected)
    for (begin, end), (true_begin, true_end) in zip(found, expected):
        assert abs(begin - true_begin) <= 1.5 * picture.pixel(), (css, begin, true_begin)
        assert abs(end - max(true_end, true_begin)) <= 2.5 * picture.pixel(), (css, end, true_end)


def true_gaps(truth):
    rate = truth["sampling_frequency"]
    return [(gap["at_seconds"], gap["at_seconds"] + gap["missing_samples"] / rate)
            for gap in truth["gaps"]]


def test_structure(bench):
    """A row for each channel, gaps to the pixel, ticks in order, nothing outside."""
    for channels in ("32", "64", "128", "256"):
        path, truth = bench.make("-c", channels, "-s", "1", "--gap", "0.2:0.05",
                                 "--gap", "0.6:0.001", "--gap", "0.8:0.01")
        picture = bench.plot(path)
        assert picture.names() == [f"CSC{n + 1}" for n in range(int(channels))]
        assert abs(picture.end - 1.0) < 1e-3 and picture.start == 0.0
        check_spans(picture, "gap", true_gaps(truth))
        assert not picture.all("rect", "damage") and len(picture.all("rect", "gap-key")) == 1
        ticks = [float(label) for label in picture.texts("time-label")]
        assert ticks == [round(n * 0.1, 1) for n in range(11)], ticks
        for text in picture.root.iter(SVG + "text"):
            assert 0 < float(text.get("x")) < float(picture.root.get("width"))
            assert 10 < float(text.get("y")) < picture.height - 3
        rows = [float(e.get("y")) for e in picture.all("text", "name")]
        assert min(b - a for a, b in zip(rows, rows[1:])) >= 11, channels
        assert picture.texts("scale-label")[0].endswith("V")
        for rect in picture.root.iter(SVG + "rect"):
            assert float(rect.get("x")) + float(rect.get("width")) <= LEFT + COLUMNS + 85


def test_scale(bench):
    """The scale bar has the labelled length, and rows are --spacing apart."""
    path, _ = bench.make("-c", "32", "-s", "0.2")
    picture = bench.plot(path, "--spacing", "400")
    bar = picture.all("line", "bar")[0]
    rows = [float(e.get("y")) for e in picture.all("text", "name")]
    value, unit = picture.texts("scale-label")[0].split(" ")
    microvolts = float(value) * (1000 if unit == "mV" else 1)
    height = float(bar.get("y2")) - float(bar.get("y1"))
    assert abs(height / (rows[1] - rows[0]) - microvolts / 400) < 0.01, (height, microvolts)
    assert "rows 400 \u00b5V apart" in picture.texts("stretch")[0]


def points(path):
    """The points of a path."""
    x = y = 0.0
    found = []
    for command, numbers in re.findall(r"([mlhv])([^mlhv]*)", path):
        values = [float(v) for v in re.findall(r"-?(?:\d+\.?\d*|\.\d+)", numbers)]
        step = 2 if command in "ml" else 1
        for i in range(0, len(values), step):
            x += values[i] if command != "v" else 0.0
            y += values[i + step - 1] if command != "h" else 0.0
            found.append((x, y))
    return found


def test_voltage(bench):
    """The range of a path in microvolts is that of `info` for the channel."""
    path, _ = bench.make("-c", "32", "-s", "0.3")
    info = json.loads(subprocess.run([bench.inspect, "info", "--json", path], capture_output=True,
                                     check=True).stdout)
    for channel in (0, 5, 31):
        picture = bench.plot(path, "--channels", str(channel + 1), "--spacing", "500")
        assert picture.names() == [f"CSC{channel + 1}"]
        heights = [y for _, y in points(picture.all("path", "trace")[0].get("d"))]
        true = info["channel_statistics"][channel]
        span = true["max_microvolts"] - true["min_microvolts"]
        found = (max(heights) - min(heights)) / 320 * 500
        assert abs(found - span) < 0.5, (found, span)
        columns = {}
        for x, _ in points(picture.all("path", "trace")[0].get("d")):
            columns[int(x)] = columns.get(int(x), 0) + 1
        assert max(columns.values()) <= 3  # the first one has a stroke for single points


def events_of(path):
    """Times in microseconds, and values."""
    with open(path, "rb") as file:
        data = file.read()[HEADER_BYTES:]
    return [(struct.unpack_from("<Q", data, at + 6)[0], struct.unpack_from("<H", data, at + 16)[0])
            for at in range(0, len(data), 184)]


def high_stretches(events, line, end):
    stretches, since = [], None
    for time, value in events:
        high = value >> line & 1
        if high and since is None:
            since = time
        elif not high and since is not None:
            stretches.append((since / 1e6, time / 1e6))
            since = None
    if since is not None:
        stretches.append((since / 1e6, end))
    return stretches


def test_ttl_and_outputs(bench):
    """TTL lines are those of the event file; channel files give the same picture."""
    first = 1_000_000_000
    path, _ = bench.make("-c", "32", "-s", "2", "--first-timestamp", str(first),
                         "--utc-offset", "0", name="ttl.ord")
    subprocess.run([bench.convert, "-q", "-o", bench.directory, path], check=True,
                   capture_output=True)
    events = [(time - first // 1000, value)
              for time, value in events_of(bench.path("ttl/Events.vev"))]
    of_recording = bench.plot(path)
    outputs = [bench.path(f"ttl/CSC{n}.vcs") for n in (10, 1, 2)] + [bench.path("ttl/Events.vev")]
    of_outputs = bench.plot(*outputs)
    assert of_outputs.names() == ["CSC1", "CSC2", "CSC10"]
    for picture in (of_recording, of_outputs):
        lines = {label: high_stretches(events, int(label[4:]), picture.end)
                 for label in picture.texts("ttl-label")}
        assert set(lines) == {f"TTL {n}" for n in range(8) if high_stretches(events, n, 2.0)}
        for label, stretches in lines.items():
            group = next(e for e in picture.root.iter(SVG + "g")
                         if e.get("class") == f"line{label[4:]}")
            found = picture.spans(group.findall(SVG + "rect"))
            assert len(found) == len(stretches), (label, found, stretches)
            for (begin, end), (true_begin, true_end) in zip(found, stretches):
                assert abs(begin - true_begin) <= 1.5 * picture.pixel(), (label, begin, true_begin)
                assert abs(end - true_end) <= 2.5 * picture.pixel(), (label, end, true_end)
    assert bench.plot(*outputs, "--channels", "2,10").names() == ["CSC2", "CSC10"]
    assert bench.run(*outputs, "--channels", "3", "-o", bench.path("x.svg")).returncode == 2
    late = bench.plot(*outputs, "--start", "1.5", "--seconds", "0.25")
    assert (late.start, late.end) == (1.5, 1.75)


def test_damage(bench):
    """Each damaged place is shaded once, in stretches that hold it, and the exit status is 3."""
    for version in ("1.0", "2.0"):
        path, truth = bench.make("-c", "64", "-s", "1", "--file-version", version)
        size = truth["undamaged_bytes"]
        at = HEADER_BYTES + (size - HEADER_BYTES) // 2
        path, _ = bench.make("-c", "64", "-s", "1", "--file-version", version,
                             "--drop-bytes", f"{at}:20000")
        picture = bench.plot(path, status=3)
        assert len(picture.all("rect", "damage")) == 1, version
        (begin, _), = picture.spans(picture.all("rect", "damage"))
        assert abs(begin - 0.5) < 0.02, begin
        assert not bench.plot(path, "--seconds", "0.25").all("rect", "damage")
        late = bench.plot(path, "--start", "0.4", "--seconds", "0.25", status=3)
        assert len(late.all("rect", "damage")) == 1


def test_stretches(bench):
    """A late stretch is the same with and without the recording before it."""
    path, truth = bench.make("-c", "64", "-s", "8", "--gap", "3:0.5", "--gap", "7.1:0.01")
    picture = bench.plot(path, "--start", "7", "--seconds", "0.5", "--channels", "9-12,64")
    assert picture.names() == ["CSC9", "CSC10", "CSC11", "CSC12", "CSC64"]
    check_spans(picture, "gap", true_gaps(truth)[1:])
    beyond = bench.plot(path, "--start", "7.5", "--seconds", "100")
    assert abs(beyond.end - 8.0) < 1e-3
    inside = bench.plot(path, "--start", "3.1", "--seconds", "0.2")
    assert len(inside.all("rect", "gap")) == 1 and not inside.names()
    assert len(inside.texts("name")) == 32


def test_usage(bench):
    """Wrong values are usage errors in one line; a file that is not a picture of this program stays."""
    path, _ = bench.make("-c", "32", "-s", "0.1")
    other = bench.path("other.svg")
    with open(other, "w", encoding="utf-8") as file:
        file.write("<svg/>")
    good = ("-o", bench.path("new.svg"))
    for arguments, status in (
            ((path,), 2), ((path, "-o", bench.path("x.pdf")), 2), ((path, "-o", other), 2),
            ((path, "-o", bench.path("no/dir/x.svg")), 2), ((path, path, *good), 2),
            ((path, "--start", "-1", *good), 2), ((path, "--start", "x", *good), 2),
            ((path, "--start", "nan", *good), 2), ((path, "--start", "5", *good), 2),
            ((path, "--seconds", "0", *good), 2), ((path, "--seconds", "1s", *good), 2),
            ((path, "--spacing", "0", *good), 2), ((path, "--spacing", "1e400", *good), 2),
            ((path, "--channels", "0", *good), 2), ((path, "--channels", "3-1", *good), 2),
            ((path, "--channels", "33", *good), 2), ((path, "--channels", "", *good), 2),
            ((bench.path("missing.ord"), *good), 1), ((bench.directory, *good), 1),
            ((bench.path("missing.vcs"), *good), 1), ((other, *good), 1)):
        run = bench.run(*arguments)
        assert run.returncode == status, (arguments, run)
        assert run.stderr.count("\n") == 1 and run.stdout == "", run
        assert not os.path.exists(good[1]), arguments
    with open(other, encoding="utf-8") as file:
        assert file.read() == "<svg/>"
    for _ in range(2):  # its own picture is replaced
        assert bench.run(path, *good).returncode == 0


def test_png(bench):
    """The same picture in pixels."""
    path, _ = bench.make("-c", "32", "-s", "0.1")
    picture = bench.path("picture.png")
    if not bench.png:
        run = bench.run(path, "-o", picture)
        assert run.returncode == 2 and "without PNG" in run.stderr, run
        return
    size = bench.plot(path)
    for _ in range(2):
        assert bench.run(path, "-o", picture).returncode == 0
        with open(picture, "rb") as file:
            data = file.read()
        assert data[:8] == b"\x89PNG\r\n\x1a\n" and data[-8:-4] == b"IEND"
        width, height = struct.unpack(">II", data[16:24])
        assert (width, height) == (int(size.root.get("width")), int(size.height)), (width, height)
        assert b"tEXtSoftware\0stalwick-inspect plot" in data[:100]
    with open(picture, "r+b") as file:  # of another program
        file.seek(41)
        file.write(b"X")
    assert bench.run(path, "-o", picture).returncode == 2


def main():
    with tempfile.TemporaryDirectory() as directory:
        bench = Bench(sys.argv[1:], directory)
        for test in (test_structure, test_scale, test_voltage, test_ttl_and_outputs, test_damage,
                     test_stretches, test_usage, test_png):
            test(bench)


if __name__ == "__main__":
    main()
