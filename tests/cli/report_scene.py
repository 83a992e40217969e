# SPDX-License-Identifier: BSD-3-Clause

"""A directory with recordings, and the reports of stalwick-convert --report on them, each checked against its schema.

The tests get CONVERT INSPECT ORD_SYNTH DOCS_DIRECTORY as arguments.
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import jsonschema

CONVERT, INSPECT, ORD_SYNTH, DOCS = map(os.path.abspath, sys.argv[1:5])


def load_validator():
    directory = pathlib.Path(DOCS).resolve()
    schema = json.loads((directory / "report.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    resolver = jsonschema.RefResolver(base_uri=directory.as_uri() + "/", referrer=schema)
    return jsonschema.Draft202012Validator(schema, resolver=resolver)


VALIDATOR = load_validator()


def sha256sum(path):
    return subprocess.run(["sha256sum", path], capture_output=True, check=True,
                          text=True).stdout.split()[0]


class ReportTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.directory = temporary.name

    def path(self, name):
        return os.path.join(self.directory, name)

    def make(self, name, *options):
        subprocess.run([ORD_SYNTH, "-q", "-s", "2", "-o", self.path(name), *options], check=True)
        return name

    def run_convert(self, *arguments, status=0, **others):
        run = subprocess.run([CONVERT, *arguments], cwd=self.directory, capture_output=True,
                             check=False, **others)
        self.assertEqual(run.returncode, status, run.stderr)
        return run

    def load(self, name="report.json"):
        with open(self.path(name), encoding="utf-8") as file:
            document = json.load(file)
        for error in VALIDATOR.iter_errors(document):
            self.fail(f"{list(error.path)}: {error.message}")
        return document

    def report(self, *arguments, status=0, **others):
        self.run_convert("--report", "report.json", *arguments, status=status, **others)
        document = self.load()
        self.assertEqual(document["exit_status"], status)
        self.assertEqual([name for name in os.listdir(self.directory) if "part" in name], [])
        return document

    def inspect(self, name, *options):
        run = subprocess.run([INSPECT, "info", "--json", self.path(name)], capture_output=True,
                             check=False)
        return json.loads(run.stdout)


def limit_size(size):
    import resource
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)


def silence(pipe):
    """Drops the data that closing a pipe without a reader would write."""
    try:
        pipe.flush()
    except BrokenPipeError:
        pass
    except ValueError:
        pass


def wait_for(condition):
    deadline = time.monotonic() + 60
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.01)


def main():
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
