#!/usr/bin/env bash
# Debian's type checker and linter over the Python package and its tests.
set -euo pipefail
cd "$(dirname "$0")/../python"

/usr/bin/mypy --no-incremental
/usr/bin/flake8 . ../tests/python ../bench/python.py
