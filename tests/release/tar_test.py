#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause

"""Runs the archive's commands where nothing else is, and compares them with those of a build.

    tar_test.py ARCHIVE BUILD       ARCHIVE: stalwick-*-linux-*.tar.xz; BUILD: as build/release

As root by chroot, else by unshare, in a directory without /proc, /dev, /etc or any library.
"""

from __future__ import annotations

import hashlib
import json
import os
import re
import subprocess
import sys
import tarfile
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "windows"))
from compare_with_linux import HEADER_SIZE, masked_header  # noqa: E402

ARCHIVE, BUILD = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
COMMANDS = ("stalwick-convert", "stalwick-inspect")
RECORDINGS = {
    "whole.ord": ["-c", "64", "-s", "2", "--all"],
    "Запись 🧠.ord": ["-c", "32", "-s", "1", "--gap", "0.3:0.1", "--file-version", "1.0"],
    "damaged.ord": ["-c", "32", "-s", "2", "--drop-bytes", "300000:900"],
}
# Settings of the system that a program without a loader could not follow.
OPENSSL_SETTINGS = """\
config_diagnostics = 1
openssl_conf = settings
[settings]
providers = providers
[providers]
absent = absent
[absent]
module = /absent.so
activate = 1
"""


class Tar(unittest.TestCase):
    """The archive's commands see `root` alone; `own` has the same recordings for the build's."""

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name, "root")
        self.own = Path(temporary.name, "own")
        with tarfile.open(ARCHIVE) as archive:
            archive.extractall(self.root)
        (unpacked,) = self.root.iterdir()
        self.inside = f"/{unpacked.name}"
        for place in (self.root / "data", self.own / "data"):
            place.mkdir(parents=True)
            (place / "openssl.cnf").write_text(OPENSSL_SETTINGS, encoding="utf-8")
            for name, options in RECORDINGS.items():
                synth = BUILD / "tools/ord_synth/ord_synth"
                subprocess.run([synth, "-q", "-o", place / name, *options], check=True)

    def both(self, command: str, *arguments: str) -> subprocess.CompletedProcess[bytes]:
        """Runs the command of each in its data directory; status and output must be the same."""
        environment = {"TZ": "UTC", "PATH": os.environ["PATH"],
                       "OPENSSL_CONF": "/data/openssl.cnf"}
        enter = ["chroot"] if os.getuid() == 0 else ["unshare", "--map-root-user", "chroot"]
        # chroot begins in the new root; the program's own option -o takes full paths.
        mine = subprocess.run([*enter, str(self.root), f"{self.inside}/bin/{command}", *arguments],
                              capture_output=True, env=environment, check=False)
        moved = [argument.replace("/data", f"{self.own}/data") for argument in arguments]
        environment["OPENSSL_CONF"] = f"{self.own}/data/openssl.cnf"
        built = subprocess.run([BUILD / "cli" / command, *moved], capture_output=True,
                               env=environment, check=False)
        own = str(self.own).encode()
        self.assertEqual(mine.returncode, built.returncode, mine.stderr)
        for one, other in ((mine.stdout, built.stdout), (mine.stderr, built.stderr)):
            self.assertEqual(one, other.replace(own, b""))
        return mine

    def assert_same_outputs(self, directory: str) -> int:
        mine, built = self.root / directory, self.own / directory
        names = sorted(path.relative_to(mine) for path in mine.rglob("*") if path.is_file())
        others = sorted(path.relative_to(built) for path in built.rglob("*") if path.is_file())
        self.assertEqual(names, others)
        for name in names:
            one, other = (mine / name).read_bytes(), (built / name).read_bytes()
            self.assertEqual(masked_header(one, Path("/", directory, name)),
                             masked_header(other, built / name))
            self.assertEqual(one[HEADER_SIZE:], other[HEADER_SIZE:], name)
        return len(names)

    def test_conversions_are_the_same_byte_for_byte(self) -> None:
        for name in RECORDINGS:
            self.both("stalwick-convert", "--all", "--salvage", "-o", "/data/out", f"/data/{name}")
        self.assertGreater(self.assert_same_outputs("data/out"), 100)

    def test_a_report_has_checksums_whatever_the_settings_of_openssl(self) -> None:
        self.both("stalwick-convert", "--report", "/data/run.json", "--checksum", "/data/whole.ord")
        report = json.loads((self.root / "data/run.json").read_text(encoding="utf-8"))
        recording = (self.root / "data/whole.ord").read_bytes()
        sums = [entry["sha256"] for entry in report["recordings"]]
        self.assertEqual(sums, [hashlib.sha256(recording).hexdigest()])

    def test_every_subcommand_of_inspect_says_and_draws_the_same(self) -> None:
        self.both("stalwick-convert", "--all", "-o", "/data/out", "/data/whole.ord")
        for name in RECORDINGS:
            self.both("stalwick-inspect", "info", f"/data/{name}")
            self.both("stalwick-inspect", "info", "--json", f"/data/{name}")
        self.both("stalwick-inspect", "verify", "--against", "/data/whole.ord", "/data/out/whole")
        for name, arguments in {"a.html": ["report", "/data/damaged.ord"],
                                "a.svg": ["plot", "/data/whole.ord"]}.items():
            self.both("stalwick-inspect", *arguments, "-o", f"/data/{name}")
            one, other = self.root / "data" / name, self.own / "data" / name
            built = other.read_text(encoding="utf-8").replace(str(self.own), "")
            self.assertEqual(one.read_text(encoding="utf-8"), built)
            self.assertGreater(one.stat().st_size, 10000)

    def test_png_is_refused_and_svg_named_instead(self) -> None:
        run = subprocess.run([self.root / self.inside[1:] / "bin/stalwick-inspect", "plot",
                              self.own / "data/whole.ord", "-o", self.own / "a.png"],
                             capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 2)
        self.assertRegex(run.stderr, "without PNG; choose a name that ends in .svg")
        self.assertFalse((self.own / "a.png").exists())

    def test_what_fails_says_the_same(self) -> None:
        self.assertEqual(self.both("stalwick-convert", "/data/missing.ord").returncode, 1)
        self.assertEqual(self.both("stalwick-inspect", "info", "/data").returncode, 1)

    def test_it_has_every_file_and_the_owner_is_nobody_of_this_machine(self) -> None:
        with tarfile.open(ARCHIVE) as archive:
            members = archive.getmembers()
        names = [member.name for member in members]
        self.assertEqual(names, sorted(names))
        owners = {(member.uid, member.gid, member.uname) for member in members}
        self.assertEqual(owners, {(0, 0, "")})
        self.assertEqual(len({member.mtime for member in members}), 1)
        for command in COMMANDS:
            for place in (f"bin/{command}", f"share/man/man1/{command}.1",
                          f"share/bash-completion/completions/{command}",
                          f"share/zsh/site-functions/_{command}",
                          f"share/fish/vendor_completions.d/{command}.fish"):
                self.assertIn(f"{self.inside[1:]}/{place}", names)
        for name in ("LICENSE", "README.txt", "CHANGELOG.md", "THIRD-PARTY-NOTICES.txt"):
            self.assertIn(f"{self.inside[1:]}/{name}", names)
        modes = {oct(member.mode) for member in members}
        self.assertEqual(modes, {"0o755", "0o644"})

    def test_no_path_of_the_builder_is_in_the_programs(self) -> None:
        for command in COMMANDS:
            program = (self.root / self.inside[1:] / "bin" / command).read_bytes()
            for path in (Path("/home"), Path.home(), BUILD.parent.parent):
                found = re.findall(re.escape(os.fsencode(path)) + rb"/[^\0]*", program)
                self.assertEqual(found, [])

    def test_notices_have_the_licences_of_what_is_linked(self) -> None:
        path = self.root / self.inside[1:] / "THIRD-PARTY-NOTICES.txt"
        text = path.read_text(encoding="utf-8")
        for words in ("GNU LESSER GENERAL PUBLIC LICENSE", "Apache License", "libcrypto.a",
                      "Boost Software License", "GCC RUNTIME LIBRARY EXCEPTION", "libstdc++.a"):
            self.assertIn(words, text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
