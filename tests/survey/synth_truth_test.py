#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""What `stalwick-inspect info` finds in damaged recordings, compared with the truth of ord_synth.

  synth_truth_test.py INSPECT ORD_SYNTH
"""

import json
import os
import subprocess
import sys
import tempfile

HEADER_BYTES = 16384
SECONDS = "0.4"


class Bench:
    def __init__(self, command, synth, directory):
        self.command, self.synth, self.directory = command, synth, directory

    def make(self, *options):
        path = os.path.join(self.directory, "rec.ord")
        truth = os.path.join(self.directory, "truth.json")
        subprocess.run([self.synth, "-q", "-f", "-s", SECONDS, "-o", path, "--truth", truth,
                        *options], check=True)
        with open(truth, encoding="utf-8") as file:
            return path, json.load(file)

    def inspect(self, path):
        run = subprocess.run([self.command, "info", "--json", path], capture_output=True)
        document = json.loads(run.stdout)
        assert run.returncode == (3 if document["damage"] else 0), run
        return document


def check_gaps(document, truth, what):
    found = [gap["missing_samples"] for gap in document["gaps"]]
    assert found == [gap["missing_samples"] for gap in truth["gaps"]], (what, document["gaps"])
    for gap, true in zip(document["gaps"], truth["gaps"]):
        assert abs(gap["at_seconds"] - true["at_seconds"]) < 1e-4, (what, gap, true)


def test_gaps(bench):
    """Every gap to the sample, none invented."""
    for channels in ("32", "64", "128", "256"):
        for drift in ("-50", "0", "50"):
            for first in ("1", str(2**63 - 200_000_000), str(2**64 - 200_000_000)):
                what = (channels, drift, first)
                path, truth = bench.make(
                    "-c", channels, "--drift", drift, "--first-timestamp", first,
                    "--gap", "0.1:0.000333", "--gap", "0.2:0.05", "--gap", "0.3:0.001")
                document = bench.inspect(path)
                check_gaps(document, truth, what)
                assert document["packets"] == truth["packets"], what
                assert document["damage"] == [] and document["cut_end"] is None, what
                assert document["repeated_timestamps"] == 0, what
                assert document["backward_timestamps"] == [], what
                assert document["short_steps"] == 0, what
                assert abs(document["drift_ppm"] - int(drift)) < 0.1, what


def test_repeated(bench):
    """A repeated timestamp is counted; the packet after it is late by one packet's samples."""
    path, truth = bench.make("--repeat-stamp", "500", "--repeat-stamp", "900", "--gap", "0.2:0.01")
    document = bench.inspect(path)
    assert document["repeated_timestamps"] == len(truth["repeated_timestamps"]) == 2
    assert [gap["missing_samples"] for gap in document["gaps"]] == [10, 300, 10]


def test_version_one(bench):
    """Without timestamps no gaps are reported."""
    path, _ = bench.make("--file-version", "1.0", "--gap", "0.2:0.05")
    document = bench.inspect(path)
    assert document["gaps"] is None and document["missing_samples"] is None
    assert document["drift_ppm"] is None and document["unknown"]


def place(bytes_, share):
    return HEADER_BYTES + int((bytes_ - HEADER_BYTES) * share)


def test_damage(bench):
    """Each damaged place is inside a reported stretch, and nothing else is."""
    for version in ("1.0", "2.0"):
        for channels in ("32", "64", "128", "256"):
            options = ("-c", channels, "--file-version", version)
            path, truth = bench.make(*options)
            size = truth["undamaged_bytes"]
            packet = size // truth["packets"]
            whole = bench.inspect(path)
            assert whole["damage"] == [] and whole["packets"] == truth["packets"]
            drop, insert = place(size, 0.3), place(size, 0.6)
            path, truth = bench.make(*options, "--drop-bytes", f"{drop}:700",
                                     "--insert", f"{insert}:900")
            document = bench.inspect(path)
            what = (version, channels, document["damage"])
            assert len(document["damage"]) == 2, what
            # In the damaged file, everything after the dropped bytes is earlier.
            for damage, at, length in zip(document["damage"], (drop, insert - 700), (0, 900)):
                assert damage["position"] <= at <= damage["position"] + damage["bytes"], what
                assert damage["bytes"] <= length + 5 * packet, what
            lost = whole["packets"] - document["packets"]
            assert lost <= 2 * 700 // packet + 7, (lost, what)
            if version == "2.0":
                missing = sum(damage["missing_samples"] for damage in document["damage"])
                assert missing == lost * 10, (missing, lost, what)
                assert document["gaps"] == [], what


def test_flip(bench):
    """A flipped type byte costs its packet and the one before."""
    path, truth = bench.make("--file-version", "2.0")
    position = bench.inspect(path)
    path, truth = bench.make("--flip", f"{HEADER_BYTES}:0")
    document = bench.inspect(path)
    assert [damage["position"] for damage in document["damage"]] == [HEADER_BYTES]
    assert document["packets"] == position["packets"] - 1
    assert truth["damage"] == [{"kind": "flip", "position": HEADER_BYTES, "bit": 0}]


def test_cut(bench):
    """A recording that was switched off is not damaged."""
    _, truth = bench.make()
    at = place(truth["undamaged_bytes"], 0.5) + 3
    path, truth = bench.make("--cut", str(at))
    document = bench.inspect(path)
    assert os.path.getsize(path) == at
    assert document["damage"] == []
    assert document["cut_end"]["bytes"] > 0


def test_statuses(bench):
    """Exit statuses: 0 whole, 1 unreadable, 2 usage; a pipe is read like a file."""
    path, _ = bench.make()
    missing = os.path.join(bench.directory, "missing.ord")
    for arguments, status in ((("info", path), 0), (("info", "--quick", path), 0),
                              (("info", missing, path), 1), (("info", bench.directory), 1),
                              ((), 2), (("info",), 2), (("info", "--bogus", path), 2),
                              (("info", "--json=1", path), 2), (("frob", path), 2),
                              (("--version",), 0), (("--help",), 0)):
        run = subprocess.run([bench.command, *arguments], capture_output=True)
        assert run.returncode == status, (arguments, run)
        assert run.stderr.count(b"\n") == (0 if status == 0 else 1), run
    with open(path, "rb") as file:
        run = subprocess.run([bench.command, "info", "/dev/stdin"], input=file.read(),
                             capture_output=True)
    assert run.returncode == 0 and b"64 channels, size not known" in run.stdout, run


def main():
    with tempfile.TemporaryDirectory() as directory:
        bench = Bench(sys.argv[1], sys.argv[2], directory)
        for test in (test_gaps, test_repeated, test_version_one, test_damage, test_flip, test_cut,
                     test_statuses):
            test(bench)


if __name__ == "__main__":
    main()
