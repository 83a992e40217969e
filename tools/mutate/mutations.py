# SPDX-License-Identifier: BSD-3-Clause

"""Finds the places of a C++ source where one operator, constant or call can be changed."""

import dataclasses
import re

# With blanks around them, as the formatter writes them, so that template brackets do not match.
OPERATORS = {
    "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "+=": ["-="], "-=": ["+="], "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["|"],
}
OPERATOR = re.compile(r"(?<= )(<=|>=|==|!=|&&|\|\||\+=|-=|<<|>>|[<>+\-*/%&|^])(?= )")
STEP = re.compile(r"(\+\+|--)(?=[A-Za-z_])")
NUMBER = re.compile(r"(?<![\w.'])(\d[\d']*)(?=[uU]?(?:[lL]{0,2})\b)(?![\w.']*[.eExX])")
BOOL = re.compile(r"\b(true|false)\b")
CONDITION = re.compile(r"\b(?:if|while) \((.+)\)(?= \{$| return| break| continue|$)")
# What a failed step returns; its callers only test for 0.
FAILURE = re.compile(r"(?:(?<=return )|(?<=: )|(?<== ))-1(?=;)")
# In joined texts, a minus does not compile.
TEXT = re.compile(r'"|\bto_w?string\(|\bkPathSeparator\b')
# A one-line statement that is only a call: removed.
CALL = re.compile(r"^\s+(?!return\b|throw\b|delete\b|static_assert|using\b|case\b)"
                  r"[A-Za-z_][\w.:\[\]]*(?:->[\w.:\[\]]+)*\([^{}]*\);$")
SKIPPED_LINE = re.compile(r"^\s*(#|//|static_assert|using |template|namespace|friend |HWY_)")


@dataclasses.dataclass(frozen=True)
class Mutation:
    file: str
    line: int  # from 1
    column: int  # from 0
    old: str
    new: str
    code: str  # the original line

    @property
    def change(self):
        return f"{self.old.strip()} -> {self.new.strip() or '(nothing)'}"

    @property
    def name(self):
        return f"{self.file}:{self.line}:{self.column}: {self.change}"

    @property
    def key(self):
        """The same at any position of the line."""
        place = self.code[:self.column].count(self.old) + 1
        return self.file, self.code.strip(), self.change + (f" #{place}" if place > 1 else "")

    def apply(self, text):
        lines = text.split("\n")
        line = lines[self.line - 1]
        assert line[self.column:].startswith(self.old), self.name
        lines[self.line - 1] = line[:self.column] + self.new + line[self.column + len(self.old):]
        return "\n".join(lines)


def _blanked(line):
    """The line with its strings, characters and comment replaced by blanks of the same length."""
    line = re.sub(r'L?"(?:\\.|[^"\\])*"|L?\'(?:\\.|[^\'\\])\'',
                  lambda match: "_" * len(match.group()), line)
    return re.sub(r"//.*|/\*.*?\*/", lambda match: " " * len(match.group()), line).rstrip()


def _number_after(text):
    return str(int(text.replace("'", "")) + 1)


def find_mutations(file, text):
    """All mutations of the file's text, in its order."""
    found = []
    before = ""  # the previous code line
    for number, original in enumerate(text.split("\n"), 1):
        line = _blanked(original)
        if not line.strip():
            continue
        begins = not before or before[-1] in ";{}:"
        before = line
        if SKIPPED_LINE.match(line):
            continue

        def add(column, old, new):
            found.append(Mutation(file, number, column, old, new, original))

        for match in OPERATOR.finditer(line):
            if match.group() == "+" and TEXT.search(original):
                continue
            for new in OPERATORS[match.group()]:
                add(match.start(), match.group(), new)
        for match in STEP.finditer(line):
            add(match.start(), match.group(), "--" if match.group() == "++" else "++")
        for match in FAILURE.finditer(line):
            add(match.start(), "-1", "0")
        for match in NUMBER.finditer(FAILURE.sub("  ", line)):
            add(match.start(), match.group(), _number_after(match.group()))
        for match in BOOL.finditer(line):
            add(match.start(), match.group(), "false" if match.group() == "true" else "true")
        for match in CONDITION.finditer(line):
            condition = original[match.start(1):match.end(1)]
            if condition.count("(") == condition.count(")") and ";" not in condition:
                add(match.start(1), condition, f"!({condition})")
        if begins and CALL.match(line):
            start = len(line) - len(line.lstrip())
            add(start, original[start:len(line)], ";")
    return found
