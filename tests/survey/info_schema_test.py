#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks every kind of document of `stalwick-inspect info --json` against docs/info.schema.json.

  info_schema_test.py INSPECT ORD_SYNTH SCHEMA
"""

import json
import os
import subprocess
import sys
import tempfile

import jsonschema


def make(synth, directory, name, *options):
    path = os.path.join(directory, name)
    subprocess.run([synth, "-q", "-s", "2", "-o", path, *options], check=True)
    return path


def change(path, name, edit):
    with open(path, "rb") as file:
        data = bytearray(file.read())
    changed = os.path.join(os.path.dirname(path), name)
    with open(changed, "wb") as file:
        file.write(edit(data))
    return changed


def set_byte(data, position, value):
    data[position] = value
    return data


def inspect(command, path, *options, status=0):
    run = subprocess.run([command, "info", "--json", *options, path], capture_output=True)
    assert run.returncode == status, (path, run.returncode, run.stderr)
    lines = run.stdout.decode("utf-8").splitlines()
    assert len(lines) == 1, lines
    return json.loads(lines[0])


def main():
    command, synth, schema_path = sys.argv[1:4]
    with open(schema_path, encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    with tempfile.TemporaryDirectory() as directory:
        whole = make(synth, directory, "whole.ord", "--all", "--gap", "1:0.25")
        first = make(synth, directory, "first.ord", "--file-version", "1.0", "--mask", "0-2,9")
        damaged = change(whole, "damaged.ord", lambda data: set_byte(data, 16384, 7))
        cut = change(whole, "cut.ord", lambda data: data[:-5])
        empty = change(whole, "empty.ord", lambda data: data[:16384])
        odd_name = change(first, os.fsdecode(b"n\xff \n.ord"), lambda data: data)
        documents = {
            "whole": inspect(command, whole),
            "first": inspect(command, first),
            "damaged": inspect(command, damaged, status=3),
            "cut": inspect(command, cut),
            "empty": inspect(command, empty),
            "name": inspect(command, odd_name),
            "quick": inspect(command, whole, "--quick"),
            "quick first": inspect(command, first, "--quick"),
        }
    for name, document in documents.items():
        for error in validator.iter_errors(document):
            raise SystemExit(f"{name}: {list(error.path)}: {error.message}")

    # A schema that accepts everything would prove nothing.
    for key in documents["whole"]:
        broken = {k: v for k, v in documents["whole"].items() if k != key}
        assert not validator.is_valid(broken), key
    assert not validator.is_valid({**documents["whole"], "packets": "many"})
    assert not validator.is_valid({**documents["whole"], "surplus": 1})

    gaps = documents["whole"]["gaps"]
    assert [gap["missing_samples"] for gap in gaps] == [7500], gaps
    assert abs(gaps[0]["at_seconds"] - 1) < 1e-6, gaps
    assert documents["whole"]["packets"] == 5250
    assert abs(documents["whole"]["duration_seconds"] - 2) < 1e-6
    assert documents["first"]["gaps"] is None and documents["first"]["unknown"]
    assert [c["channel"] for c in documents["first"]["channel_statistics"]] == [0, 1, 2, 9]
    assert documents["damaged"]["damage"][0]["position"] == 16384
    assert documents["cut"]["cut_end"]["bytes"] > 0 and documents["cut"]["packets"] == 5249
    assert documents["empty"]["packets"] == 0
    assert documents["quick"]["packets"] is None
    assert abs(documents["quick"]["duration_seconds"] - 2) < 1e-6
    assert abs(documents["quick first"]["duration_seconds"] - 2) < 0.2


if __name__ == "__main__":
    main()
