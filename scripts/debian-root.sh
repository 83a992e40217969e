#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Debian 12 roots to build in and to test in, apart from this machine's own packages. For root only.
#   scripts/debian-root.sh make DIRECTORY [PACKAGE...]
#       makes a bare root with the packages. An archive of it is kept in build/debian-roots for a week, so
#       that the next root with the same packages takes seconds.
#   scripts/debian-root.sh run [--offline] [--user NAME] DIRECTORY COMMAND [ARGUMENT...]
#       runs a command in the root, in the user's home directory, with separate processes and mounts;
#       --offline: without a network
#   scripts/debian-root.sh available
#       succeeds if roots can be made on this machine
set -euo pipefail

kept=$(cd "$(dirname "$0")/.." && pwd)/build/debian-roots
mirror=http://deb.debian.org

# This machine's settings of how old a package list may be.
apt_options() {
    apt-config dump | sed -n 's/^\(Acquire::Check-.*\)$/--aptopt=\1/p'
}

# The package manager waits for the disk after each file, which takes no time in memory.
temporary_directory() {
    local kilobytes
    kilobytes=$(sed -n 's/^MemAvailable: *\([0-9]*\) kB/\1/p' /proc/meminfo)
    if [ "$kilobytes" -gt 8000000 ] && [ -w /dev/shm ]; then echo /dev/shm; else echo "${TMPDIR:-/tmp}"; fi
}

make_archive() {
    local archive=$1 list=$2 options=()
    mapfile -t options < <(apt_options)
    mkdir -p "$kept"
    TMPDIR=$(temporary_directory) mmdebstrap --quiet --mode=root --variant=minbase ${list:+"--include=$list"} "${options[@]}" \
        bookworm "$archive.new.tar" \
        "deb $mirror/debian bookworm main" \
        "deb $mirror/debian bookworm-updates main" \
        "deb $mirror/debian-security bookworm-security main"
    mv "$archive.new.tar" "$archive"
}

make_root() {
    local directory=$1 list archive
    shift
    list=$(printf '%s\n' "$@" | sort -u | paste -sd,)
    archive=$kept/$(sha256sum <<< "$list" | cut -c1-16).tar
    if [ -z "$(find "$archive" -mtime -7 2> /dev/null)" ]; then
        make_archive "$archive" "$list"
    fi
    mkdir -p "$directory"
    tar -C "$directory" --numeric-owner -xpf "$archive"
}

# In separate namespaces: what is mounted here disappears with them.
run_inside() {
    local user=$1 root=$2 home
    shift 2
    mount -t proc proc "$root/proc"
    mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts "$root/dev/pts"
    mount --bind "$root/dev/pts/ptmx" "$root/dev/ptmx"
    home=$(sed -n "s/^$user:\([^:]*:\)\{4\}\([^:]*\):.*/\2/p" "$root/etc/passwd")
    exec chroot --userspec="$user" "$root" /usr/bin/env -i "HOME=$home" "USER=$user" LANG=C.UTF-8 \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive \
        /bin/sh -c 'cd && exec "$@"' sh "$@"
}

run_in_root() {
    local options=() user=root
    while :; do
        case "$1" in
            --offline) options+=(--net) ;;
            --user) user=$2; shift ;;
            *) break ;;
        esac
        shift
    done
    exec unshare --mount --pid --fork --kill-child "${options[@]}" \
        "$0" inside "$user" "$(readlink -f "$1")" "${@:2}"
}

available() {
    [ "$(id -u)" -eq 0 ] && command -v mmdebstrap > /dev/null &&
        unshare --mount --pid --fork mount -t tmpfs none /mnt 2> /dev/null
}

case "${1-}" in
    make) make_root "${@:2}" ;;
    run) run_in_root "${@:2}" ;;
    inside) run_inside "${@:2}" ;;
    available) available ;;
    *) sed -n '4,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2 ;;
esac
