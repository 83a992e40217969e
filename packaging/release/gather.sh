#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Adds the other parts of a release to OUTPUT, which has the archive of the commands, and writes checksums:
#   packaging/release/gather.sh SITE DEBIAN_PACKAGES WINDOWS_PACKAGES OUTPUT
# Packages that were not made are left out, and a line names them.
set -euo pipefail
here=$(realpath "$(dirname "$0")")
version=$("$here/release-info.sh" version)
output=$(realpath "$4")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -R "$1" "$work/stalwick-$version-docs"
"$here/pack.sh" "$work/stalwick-$version-docs" "$output/stalwick-$version-docs.tar.xz"

# take WHAT COMMAND FILE...: copies the files that exist.
take() {
    local what=$1 command=$2 found=()
    shift 2
    for file in "$@"; do [ ! -e "$file" ] || found+=("$file"); done
    if [ ${#found[@]} -gt 0 ]; then
        cp "${found[@]}" "$output"
    else
        echo "gather.sh: without $what of version $version, which $command makes" >&2
    fi
}
debian=$2
commit=$(cat "$debian/COMMIT" 2> /dev/null || true)
[ "$commit" = "$(git -C "$here" rev-parse HEAD)" ] || debian=/nonexistent # they are of another commit
take "the Debian packages" "make packages" "$debian"/*"_$version"[-_]*.deb
take "the zip and the installer for Windows" "make package-windows" \
    "$3/stalwick-$version-windows-x64".{zip,spdx.json} "$3/stalwick-$version-setup.exe"

cd "$output"
rm -f SHA256SUMS
LC_ALL=C
export LC_ALL
sha256sum -- * > "$work/sums"
mv "$work/sums" SHA256SUMS
cat SHA256SUMS
