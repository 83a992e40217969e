#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes a goal of the Makefile twice from the last commit, in clones of other names, time zones and umasks, the second
# time without a compiler cache, and compares what it made byte for byte:
#   packaging/release/check-reproducible.sh GOAL OUTPUT DIRECTORY
# OUTPUT       the goal's directory below the root of the sources
# DIRECTORY    gets the clones and their logs; it is made, and kept for a look
set -euo pipefail
root=$(realpath "$(dirname "$0")/../..")
goal=$1
output=$2
mkdir -p "$(dirname "$3")"
mkdir "$3"
directory=$(realpath "$3")

build() { # CLONE
    git clone --quiet "$root" "$directory/$1"
    make --no-print-directory -C "$directory/$1" "$goal" > "$directory/$1.log"
}
(umask 022; TZ=UTC build one)
(umask 077; export CCACHE_DISABLE=1; TZ=Asia/Kathmandu LANG=C build another-one)

cd "$directory"
sha256sum -- */"$output"/*
for file in "one/$output"/*; do
    other=another-one/${file#one/}
    cmp "$file" "$other" || { diffoscope "$file" "$other" || true; exit 1; }
done
echo "$(find "one/$output" -type f | wc -l) files, the same byte for byte"
