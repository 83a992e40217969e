# Debian's Python: the packages that scripts/install-deps.sh installs are its packages. Another one that
# comes first in PATH need not have them.
find_program(STALWICK_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
