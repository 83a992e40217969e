#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Reports phrases that CONTRIBUTING.md advises against, in every text file that git tracks or would add.

    scripts/check-words.py [FILE...]      without FILE: all of these
"""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
GUIDE = "CONTRIBUTING.md"
TABLE_HEAD = "| write | instead of |"

# Pictures, data and programs' own lists: nobody reads them as English.
SKIPPED_SUFFIXES = {".dict", ".ico", ".ord", ".png", ".svg"}
SKIPPED_FILES = {"bench/baseline.json", "scripts/check-words.py"}

# Texts that the format or the contract prescribes stay exactly as they are.
PRESCRIBED = (
    "Error converting file header character format.",
    "Error creating output directory(",
    "Unable to proceed.",
    "Please make sure the output directory location exists.",
    "Error getting ORD data, a ORD file is not open.",
    "Error opening file, the file path(",
    "Error reading header from file.",
    "Error retrieving header field ",
    "Failed to process buffer. 0 bytes consumed.",
    "Failed to process input file",
    "File was not closed properly",
    "Data conversion in progress...",
    "Data processing canceled.",
)

# What may stand between two words: white space, and the marks that continue a comment or a string.
BETWEEN = r"(?:\s|//+|#:?|%|\*|\"\s*L?\"|\\n)+"


def read_phrases() -> list[str]:
    lines = (ROOT / GUIDE).read_text(encoding="utf-8").splitlines()
    first = lines.index(TABLE_HEAD) + 2
    phrases: list[str] = []
    for line in lines[first:]:
        if not line.startswith("|"):
            break
        phrases += line.strip("| ").split(" | ")[1].split(", ")
    return phrases


def alternatives(word: str) -> str:
    """The pattern of "is/are": one of these words."""
    return "(?:" + "|".join(map(re.escape, word.split("/"))) + ")"


def compile_pattern(phrases: list[str]) -> re.Pattern[str]:
    choices = (BETWEEN.join(map(alternatives, phrase.split())) for phrase in phrases)
    return re.compile(r"\b(?:" + "|".join(choices) + r")\b", re.IGNORECASE)


def listed_files() -> list[str]:
    listed = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard"], cwd=ROOT, check=True,
                            capture_output=True)
    return listed.stdout.decode().split("\0")[:-1]


def read_text(path: Path) -> str:
    """The file's text, with what is not checked blanked out; empty for data."""
    content = path.read_bytes()
    if b"\0" in content:
        return ""
    text = content.decode("utf-8", errors="replace")
    for prescribed in PRESCRIBED:
        text = text.replace(prescribed, "." * len(prescribed))
    if path == ROOT / GUIDE:
        text = re.sub(r"(?m)^\|.*$", lambda row: "." * len(row[0]), text)
    return text


def find_phrases(name: str, pattern: re.Pattern[str]) -> list[str]:
    if Path(name).suffix in SKIPPED_SUFFIXES or name in SKIPPED_FILES:
        return []
    text = read_text(ROOT / name)
    found = []
    for match in pattern.finditer(text):
        line = text.count("\n", 0, match.start()) + 1
        found.append(f"{name}:{line}: {' '.join(match[0].split())}")
    return found


def main() -> int:
    pattern = compile_pattern(read_phrases())
    found = [hit for name in sys.argv[1:] or listed_files() for hit in find_phrases(name, pattern)]
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
