#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause

# Fetches Highway's source, whose compiled part Debian ships for Linux only, into the user's cache,
# once per version. Prints its directory on standard output.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
version=$(dpkg-query -W -f '${source:Version}' libhwy-dev)
directory=${XDG_CACHE_HOME:-$HOME/.cache}/stalwick/highway-$version
[ -d "$directory" ] || "$here/fetch-source.sh" libhwy-dev "$directory"
echo "$directory"
