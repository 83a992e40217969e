#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Checks the manual pages and shell completions with the programs that read them.

  command_pages_test.py PAGES_DIRECTORY CONVERT INSPECT
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest

PAGES, CONVERT, INSPECT = sys.argv[1:4]
COMMANDS = ("stalwick-convert", "stalwick-inspect")

BASH_COMPLETES = """
source "$1"; shift
words() { complete -p "$1" | sed -E 's/.*-F ([^ ]+) .*/\\1/'; }
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
"$(words "$1")"
for reply in "${COMPREPLY[@]}"; do printf '%s\\n' "$reply"; done
"""


def output_of(*arguments, directory=None):
    run = subprocess.run(arguments, cwd=directory, capture_output=True, text=True, check=False)
    assert run.returncode == 0 and not run.stderr, (arguments, run.returncode, run.stdout, run.stderr)
    return run.stdout


def page(name):
    return os.path.join(PAGES, name)


def options_of(program, *subcommand):
    """The names of all options in the --help text, which the parser library writes."""
    text = output_of(program, *subcommand, "--help")
    return {name for line in text.splitlines() if line.startswith("  -")
            for name in re.findall(r"(?<![\w-])--?[a-z][a-z-]*", line.split("  ")[1])}


def long_names(names):
    return {name for name in names if name.startswith("--")}


def subcommands_of(program):
    text = output_of(program, "--help").partition("Subcommands:")[2]
    return re.findall(r"^  (\w+)", text, re.MULTILINE)


def all_options():
    found = {"stalwick-convert": options_of(CONVERT)}
    found["stalwick-inspect"] = options_of(INSPECT).union(
        *(options_of(INSPECT, name) for name in subcommands_of(INSPECT)))
    return found


class CommandPages(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.directory = temporary.name
        for name in ("a.ord", "B.ORD", "with space.ord", "notes.txt"):
            open(os.path.join(self.directory, name), "w", encoding="utf-8").close()
        os.mkdir(os.path.join(self.directory, "archive"))

    def bash(self, *words):
        script = page(words[0] + ".bash")
        return set(output_of("bash", "--norc", "-c", BASH_COMPLETES, "bash", script, *words,
                             directory=self.directory).splitlines())

    def fish(self, line):
        script = f"source '{page(line.split()[0] + '.fish')}'; complete -C '{line}'"
        text = output_of("fish", "--no-config", "-c", script, directory=self.directory)
        return {found.split("\t")[0] for found in text.splitlines()}

    def test_manual_pages_are_without_a_warning(self):
        for command in COMMANDS:
            self.assertEqual(output_of("mandoc", "-Tlint", "-Wwarning", page(command + ".1")), "")

    def test_manual_page_and_completions_know_each_option_of_the_help(self):
        for command, names in all_options().items():
            self.assertGreater(len(names), 3, command)
            manual = output_of("mandoc", "-Tutf8", "-Owidth=200", page(command + ".1"))
            manual = re.sub(".\b", "", manual).replace("\u2010", "-")
            for name in names:
                self.assertRegex(manual, rf"(?m)^ +(-\w, )?{name}\b", command)
                for script in (f"{command}.bash", f"_{command}"):
                    with open(page(script), encoding="utf-8") as file:
                        self.assertRegex(file.read(), rf"(?<![\w-]){name}(?![\w-])", script)

    def test_manual_page_has_its_sections(self):
        for command in COMMANDS:
            with open(page(command + ".1"), encoding="utf-8") as file:
                sections = re.findall(r"^\.SH (.*)", file.read(), re.MULTILINE)
            for section in ("NAME", "SYNOPSIS", "OPTIONS", "EXIT STATUS", "EXAMPLES"):
                self.assertIn(section, sections)

    def test_manual_page_lists_the_exit_statuses(self):
        manual = output_of("mandoc", "-Tascii", page("stalwick-convert.1"))
        text = re.sub(".\b", "", manual).partition("EXIT STATUS")[2].partition("FILES")[0]
        for status in ("0", "1", "2", "3", "130, 143 or 129"):
            self.assertRegex(text, rf"(?m)^ +{status}(\s|$)")

    def test_bash_completes_options(self):
        self.assertEqual(self.bash("stalwick-convert", "--out"), {"--output-dir"})
        self.assertEqual(self.bash("stalwick-convert", "-"), options_of(CONVERT))
        for name in subcommands_of(INSPECT):
            self.assertEqual(self.bash("stalwick-inspect", name, "-"), options_of(INSPECT, name))

    def test_bash_completes_recordings_and_directories(self):
        expected = {"a.ord", "B.ORD", "with space.ord", "archive"}
        self.assertEqual(self.bash("stalwick-convert", ""), expected)
        self.assertEqual(self.bash("stalwick-inspect", "info", ""), expected)

    def test_bash_completes_channel_files_and_pictures_of_plot(self):
        for name in ("CSC1.vcs", "Events.vev", "old.svg", "old.png"):
            with open(os.path.join(self.directory, name), "w", encoding="utf-8"):
                pass
        self.assertEqual(self.bash("stalwick-inspect", "plot", ""),
                         {"a.ord", "B.ORD", "with space.ord", "archive", "CSC1.vcs", "Events.vev"})
        self.assertEqual(self.bash("stalwick-inspect", "plot", "-o", ""),
                         {"old.svg", "old.png", "archive"})

    def test_bash_completes_the_value_of_an_option(self):
        self.assertEqual(self.bash("stalwick-convert", "-o", ""), {"archive"})
        self.assertEqual(self.bash("stalwick-convert", "--output-dir", "=", "ar"), {"archive"})
        self.assertEqual(self.bash("stalwick-convert", "--output-dir", "="), {"archive"})
        self.assertEqual(self.bash("stalwick-convert", "-j", ""), set())

    def test_bash_completes_subcommands(self):
        self.assertLessEqual(set(subcommands_of(INSPECT)), self.bash("stalwick-inspect", ""))
        self.assertEqual(self.bash("stalwick-inspect", "inf"), {"info"})

    def test_zsh_takes_the_functions_for_the_commands(self):
        script = ("fpath=($1 $fpath); autoload -Uz compinit; compinit -u -D;"
                  "print -l $_comps[stalwick-convert] $_comps[stalwick-inspect]")
        self.assertEqual(output_of("zsh", "-f", "-c", script, "zsh", PAGES).split(),
                         ["_stalwick-convert", "_stalwick-inspect"])
        for command in COMMANDS:
            output_of("zsh", "-n", page("_" + command))

    def test_fish_completes_options_files_and_subcommands(self):
        self.assertEqual(self.fish("stalwick-convert --out"), {"--output-dir"})
        self.assertEqual(self.fish("stalwick-convert --"), long_names(options_of(CONVERT)))
        self.assertEqual(self.fish("stalwick-convert -o "), {"archive/"})
        self.assertLessEqual({"a.ord", "with space.ord", "archive/"},
                             self.fish("stalwick-convert "))
        self.assertEqual(self.fish("stalwick-inspect "), set(subcommands_of(INSPECT)))
        for name in subcommands_of(INSPECT):
            self.assertEqual(self.fish(f"stalwick-inspect {name} --"),
                             long_names(options_of(INSPECT, name)))

    def test_install_puts_each_file_where_its_reader_looks(self):
        output_of("cmake", f"-DCMAKE_INSTALL_PREFIX={self.directory}", "-P",
                  page("cmake_install.cmake"))
        for command in COMMANDS:
            for place in (f"man/man1/{command}.1", f"bash-completion/completions/{command}",
                          f"zsh/site-functions/_{command}",
                          f"fish/vendor_completions.d/{command}.fish"):
                installed = os.path.join(self.directory, "share", place)
                self.assertGreater(os.path.getsize(installed), 0, place)


if __name__ == "__main__":
    if not os.path.exists(page("stalwick-convert.1")):
        sys.exit("there are no pages; build the target command_page_files")
    unittest.main(argv=sys.argv[:1])
