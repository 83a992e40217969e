#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Installs the Debian packages in a Debian root without a network, uses them as a user without rights, and
# compares what they write with what the build directory's programs write. Then removes and purges them, and
# checks that no file is left or changed. For root only.
#   packages_test.sh PACKAGES BUILD_DIRECTORY
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
debian_root=$here/../../scripts/debian-root.sh
packages=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
root=$work/root
debs=("$packages"/*.deb)

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

step() {
    echo "== $*  (after $SECONDS s)"
}

# The packages that these depend on, of each group of alternatives the first.
dependencies() {
    local deb
    for deb in "${debs[@]}"; do
        dpkg-deb --field "$deb" Depends
    done | tr ',' '\n' | sed 's/[|(].*//; s/ //g; /^$/d' | grep -v stalwick | sort -u
}

# Every file of the root with its type, rights, owner, target and content. Left out is what the package
# manager and the manual pages' index keep for themselves, and the places for temporary files.
listing() {
    (cd "$root" && find . -xdev \( -path ./dev -o -path ./proc -o -path ./sys -o -path ./tmp -o -path ./run \
        -o -path ./var/lib/dpkg -o -path ./var/log -o -path ./var/cache/man \
        -o -path ./var/cache/ldconfig \) -prune -o -printf '%p %y %m %U:%G %l\n' | sort
     find . -xdev -type f -not -path './tmp/*' -not -path './var/lib/dpkg/*' -not -path './var/log/*' \
        -not -path './var/cache/man/*' -not -path './var/cache/ldconfig/*' -print0 | sort -z | xargs -0 sha256sum)
}

in_root() {
    "$debian_root" run --offline "$@"
}

step "a root with what the packages depend on, and the readers of what they install"
mapfile -t needed < <(dependencies)
"$debian_root" make "$root" "${needed[@]}" bash-completion desktop-file-utils fish hicolor-icon-theme man-db \
    mandoc shared-mime-info zsh
chroot "$root" useradd --create-home --user-group tester
mkdir "$root/tmp/packages" "$root/tmp/recording"
cp "${debs[@]}" "$root/tmp/packages"
cp "$here/use_packages.sh" "$here/read_outputs.py" "$root/tmp"
"$build/tools/ord_synth/ord_synth" --channels 64 --seconds 5 --all --output "$root/tmp/recording/night.ord"
chmod -R a+rX "$root/tmp"
in_root "$root" true
listing > "$work/before"

step "install"
in_root "$root" sh -c 'exec dpkg --install /tmp/packages/*.deb' > "$work/install.log" 2>&1 ||
    { cat "$work/install.log" >&2; fail "dpkg --install"; }

step "use"
in_root --user tester "$root" bash /tmp/use_packages.sh /tmp/recording/night.ord

step "compare with the build directory's programs"
[ "$(in_root "$root" stalwick-convert --version)" = "$("$build/cli/stalwick-convert" --version)" ] ||
    fail "the packages have another version"
"$build/cli/stalwick-convert" --all -o "$work/outputs" "$root/tmp/recording/night.ord" > /dev/null 2>&1
/usr/bin/python3 "$here/same_outputs.py" "$work/outputs/night" "$root/home/tester/outputs/night" \
    /home/tester/outputs/night

step "remove and purge"
mapfile -t names < <(for deb in "${debs[@]}"; do dpkg-deb --field "$deb" Package; done)
in_root "$root" dpkg --remove "${names[@]}" > "$work/remove.log" 2>&1 || { cat "$work/remove.log" >&2; fail remove; }
in_root "$root" dpkg --purge "${names[@]}" > "$work/purge.log" 2>&1 || { cat "$work/purge.log" >&2; fail purge; }
! chroot "$root" dpkg-query --show "${names[@]}" 2> /dev/null | grep . || fail "dpkg still knows them"

step "nothing is left"
rm -rf "$root/home/tester/outputs" "$root/home/tester/.cache"
listing > "$work/after"
diff "$work/before" "$work/after" || fail "the root is not what it was before"
echo "packages: good, $(wc -l < "$work/after") lines of listing are the same  (after $SECONDS s)"
