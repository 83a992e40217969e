#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Runs Debian's type checker and linter on the Python package, the cluster's scripts and their tests.
set -euo pipefail
cd "$(dirname "$0")/../python"

/usr/bin/mypy --no-incremental
(cd ../workflow && /usr/bin/mypy --cache-dir /dev/null --strict stalwick_cluster profiles/slurm/slurm-status.py)
(cd ../tests/workflow && MYPYPATH=../../workflow /usr/bin/mypy --cache-dir /dev/null --strict .)
(cd ../tools/site && MYPYPATH=../../python /usr/bin/mypy --cache-dir /dev/null --strict --python-version 3.11 .)
(cd ../packaging/windows && MYPYPATH=../../tools/site /usr/bin/mypy --cache-dir /dev/null --strict --python-version 3.11 .)
for directory in ../packaging/release ../tests/release; do
    (cd "$directory" && /usr/bin/mypy --cache-dir /dev/null --strict --ignore-missing-imports .)
done
/usr/bin/flake8 . ../tests/python ../bench/python.py \
    ../workflow ../tests/workflow ../bench/cluster.py ../tools/site ../packaging/release ../tests/release \
    ../packaging/linux ../packaging/windows ../tests/packaging
