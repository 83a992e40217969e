#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Packs a directory so that the same files give the same archive, byte for byte:
#   packaging/release/pack.sh DIRECTORY ARCHIVE.tar.xz
# Names are sorted, the owner is 0, and all times are the release's.
set -euo pipefail
directory=$(realpath "$1")
epoch=$("$(dirname "$0")/release-info.sh" epoch)

mkdir -p "$(dirname "$2")"
LC_ALL=C tar --create --directory "$(dirname "$directory")" --sort=name --format=ustar \
    --owner=0 --group=0 --numeric-owner --mode=u=rwX,go=rX --mtime="@$epoch" "$(basename "$directory")" |
    xz -9e --threads=1 > "$2.part"
mv "$2.part" "$2"
