# SPDX-License-Identifier: BSD-3-Clause

# Debian's Python, which has the packages that scripts/install-deps.sh installs. Another Python
# earlier in PATH may lack them.
find_program(STALWICK_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
