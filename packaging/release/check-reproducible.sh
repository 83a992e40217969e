#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes the archive of the commands, the SBOM and the archive of the site twice from the last commit, in clones of
# other names, time zones and umasks, the second time without a compiler cache, and compares them byte for byte:
#   packaging/release/check-reproducible.sh DIRECTORY       (is made, and kept for a look)
set -euo pipefail
root=$(realpath "$(dirname "$0")/../..")
mkdir "$1"
directory=$(realpath "$1")

build() { # CLONE
    git clone --quiet "$root" "$directory/$1"
    make --no-print-directory -C "$directory/$1" artefacts > "$directory/$1.log"
}
(umask 022; TZ=UTC build one)
(umask 077; export CCACHE_DISABLE=1; TZ=Asia/Kathmandu LANG=C build another-one)

cd "$directory"
sha256sum -- */build/release-artefacts/*
for file in one/build/release-artefacts/*; do
    other=another-one/${file#one/}
    cmp "$file" "$other" || { diffoscope "$file" "$other" || true; exit 1; }
done
echo "$(find one/build/release-artefacts -type f | wc -l) files, the same byte for byte"
