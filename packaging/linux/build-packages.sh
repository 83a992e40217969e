#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Makes the Debian packages of the last commit and checks them with lintian.
#   packaging/linux/build-packages.sh [--here] [--directory PATH] OUTPUT
# OUTPUT       gets the packages, their .changes and .buildinfo, and the file COMMIT
# --here       builds with this machine's packages. Without it, the build runs in a Debian root that has only
#              what debian/control names. A root needs root's privileges; if none can be made, as with --here
# --directory  where the sources are built in the Debian root
set -euo pipefail
cd "$(dirname "$0")/../.."

fail() {
    echo "build-packages.sh: $*" >&2
    exit 1
}

place=in_root
directory=/build/stalwick
while [ $# -gt 1 ]; do
    case "$1" in
        --here) place=here; shift ;;
        --directory) directory=$2; shift 2 ;;
        *) fail "no such option: $1" ;;
    esac
done
[ $# -eq 1 ] || fail "which directory?"
mkdir -p "$1"
output=$(cd "$1" && pwd)
scripts/debian-root.sh available || place=here

commit=$(git rev-parse HEAD)
[ -z "$(git status --porcelain)" ] || echo "Not in the packages: what is not committed"
epoch=$(git log -1 --format=%ct "$commit")
work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT

export_sources() {
    local sources=$1
    mkdir -p "$sources"
    git archive "$commit" | tar -xC "$sources"
    mv "$sources/packaging/debian" "$sources/debian"
    packaging/linux/debian_changelog.py "$sources" "$epoch" > "$sources/debian/changelog"
}

# Prints the names of the packages that the sources need; the list has no alternatives.
build_dependencies() {
    awk '/^[^ ]/ { wanted = /^Build-Depends:/; next } wanted { sub(/,$/, "", $1); print $1 }' \
        "$1/debian/control"
}

# The .buildinfo names this one build, its time and what was installed; .changes does not list it, so that
# two builds are the same in every byte.
build=(env "TZ=${TZ:-UTC}" "SOURCE_DATE_EPOCH=$epoch" dpkg-buildpackage --build=binary --no-sign "--jobs=$(nproc)"
       "--hook-changes=sed -i '/\\.buildinfo /d' debian/files")

build_in_root() {
    local root=$work/root sources=$work/root$directory needed
    mapfile -t needed < <(build_dependencies "$work/sources")
    scripts/debian-root.sh make "$root" build-essential "${needed[@]}"
    chroot "$root" useradd --create-home --user-group builder
    mkdir -p "$(dirname "$sources")"
    mv "$work/sources" "$sources"
    chroot "$root" chown -R builder:builder "$(dirname "$directory")"
    scripts/debian-root.sh run --offline --user builder "$root" \
        sh -c "cd '$directory' && exec \"\$@\"" sh "${build[@]}"
    made=$(dirname "$sources")
}

build_here() {
    scripts/install-deps.sh build packages
    mkdir "$work/home"
    (cd "$work/sources" && dpkg-checkbuilddeps &&
        env -i "HOME=$work/home" LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "${build[@]}")
    made=$work
}

export_sources "$work/sources"
log=$output/build.log
echo "Building ${place/_/ a Debian }; the log is $log"
trap '[ $? -eq 0 ] || tail -n 40 "$log" >&2; rm -rf --one-file-system "$work"' EXIT
"build_$place" > "$log" 2>&1
rm -f "$output"/*.deb "$output"/*.changes "$output"/*.buildinfo
cp --no-preserve=ownership "$made"/*.deb "$made"/*.changes "$made"/*.buildinfo "$output"
echo "$commit" > "$output/COMMIT"

trap 'rm -rf --one-file-system "$work"' EXIT
lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$output"/*.changes
(cd "$output" && ls -l -- *.deb)
