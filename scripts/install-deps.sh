#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Installs the Debian 12 packages that the project needs if they are missing, as root or with sudo.
#   scripts/install-deps.sh [GROUP...]     GROUP: build test check fuzz bench coverage screenshots pages
#                                              site release cluster packages windows windows-app all
# Without a group: build and test. Does nothing, and needs no rights, if nothing is missing.
set -euo pipefail

packages_of() {
    case "$1" in
        build) echo g++ cmake ninja-build make git \
                    libboost-dev libcli11-dev libhwy-dev libkissfft-dev nlohmann-json3-dev libssl-dev python3-dev pybind11-dev \
                    pkg-config librsvg2-dev fonts-dejavu-core \
                    qt6-base-dev libgl-dev ;;
        test) echo libgtest-dev libgmock-dev librapidcheck-dev python3 python3-jsonschema xvfb xauth xdotool openbox \
                   x11-utils desktop-file-utils appstream shared-mime-info libsm-dev libice-dev \
                   python3-numpy python3-pytest python3-matplotlib python3-build \
                   python3-setuptools python3-wheel python3-venv octave \
                   mandoc zsh fish ;;
        check) echo clang clang-format clang-tidy libclang-rt-14-dev codespell mypy flake8 python3-numpy ;;
        fuzz) echo clang libclang-rt-14-dev ;;
        bench) echo libbenchmark-dev zstd flac python3 python3-numpy ;;
        coverage) echo gcovr ;;
        screenshots) echo xvfb openbox xdotool imagemagick librsvg2-bin fonts-dejavu-core ;;
        pages) echo chromium nodejs npm fonts-dejavu-core ;;
        cluster) echo snakemake slurm-wlm munge python3 ;;
        packages) echo debhelper dh-python pybuild-plugin-pyproject python3-setuptools python3-wheel dpkg-dev \
                       mkdocs mkdocs-material mandoc python3-numpy lintian mmdebstrap diffoscope-minimal ;;
        windows) echo g++-mingw-w64-x86-64-posix wine wine64 googletest dpkg-dev python3 ;;
        windows-app) echo qt6-base-dev qt6-base-dev-tools dpkg-dev nsis cmark-gfm mandoc python3 xvfb xauth openbox \
                          xdotool imagemagick icoutils fonts-liberation zip ;;
        site) echo mkdocs mkdocs-material mandoc cmark-gfm python3 python3-numpy ;;
        release) echo binutils ninja-build python3 python3-debian python3-license-expression xz-utils \
                      diffoscope-minimal ;;
        all) for group in build test check fuzz bench coverage screenshots pages site release cluster packages windows \
                 windows-app; do
                 packages_of "$group"
             done ;;
        *) echo "install-deps.sh: no such group: $1" >&2; exit 2 ;;
    esac
}

# If Node.js comes from elsewhere, Debian's packages of it cannot be installed.
is_installed() {
    case "$1" in
        nodejs) command -v node > /dev/null && return ;;
        npm) command -v npm > /dev/null && return ;;
    esac
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

[ $# -gt 0 ] || set -- build test
missing=()
for group in "$@"; do
    names=$(packages_of "$group")
    for package in $names; do
        is_installed "$package" || missing+=("$package")
    done
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo > /dev/null || {
        echo "install-deps.sh: run it as root or install sudo; missing: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" > /dev/null
