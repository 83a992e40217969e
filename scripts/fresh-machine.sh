#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Runs the README's two commands on a machine where nothing was installed by hand: in a bare Debian root, on a
# clone of the last commit. For root only; needs the network, 10 GB, and half an hour or more for each account.
#   scripts/fresh-machine.sh user|root
# user   as a user without rights and without sudo, after the packages of install-deps.sh were installed
# root   as root, with only git and make
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1-}" in
    user) account=tester ;;
    root) account=root ;;
    *) sed -n '4,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2 ;;
esac
scripts/install-deps.sh packages
scripts/debian-root.sh available || { echo "fresh-machine.sh: no root can be made here" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
root=$work/root
echo "== a bare root with git and make  (after $SECONDS s)"
scripts/debian-root.sh make "$root" git make ca-certificates

if [ "$account" = tester ]; then
    chroot "$root" useradd --create-home --user-group tester
    echo "== the packages of install-deps.sh  (after $SECONDS s)"
    mkdir "$root/opt/scripts"
    git show HEAD:scripts/install-deps.sh > "$root/opt/scripts/install-deps.sh"
    scripts/debian-root.sh run "$root" bash /opt/scripts/install-deps.sh
    rm -r "$root/opt/scripts"
fi
home=$root$(sed -n "s/^$account:\([^:]*:\)\{4\}\([^:]*\):.*/\2/p" "$root/etc/passwd")
git clone --quiet --no-hardlinks . "$home/stalwick"
chroot "$root" chown -R "$account:$account" "${home#"$root"}/stalwick"

for goal in demo test; do
    echo "== make $goal as $account  (after $SECONDS s)"
    begin=$SECONDS
    scripts/debian-root.sh run --user "$account" "$root" make --directory=stalwick "$goal"
    echo "== make $goal as $account: passed in $((SECONDS - begin)) s"
done
