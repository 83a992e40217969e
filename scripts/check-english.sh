#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Spelling, by Debian's codespell, and the word list of CONTRIBUTING.md, over every text file that git tracks or
# would add.
set -euo pipefail
cd "$(dirname "$0")/.."

# Names in the code and the headers that codespell mistakes for misspelled words.
names=afe,atends,canbe,inout,nd,upto
git ls-files -coz --exclude-standard | grep -zvE '\.(dict|ico|ord|png|svg)$' |
    xargs -0 codespell --ignore-words-list "$names"
scripts/check-words.py
