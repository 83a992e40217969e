#!/usr/bin/env bash
# The long runs of the tests that try faults at random: other numbers each time, many more of them.
#   scripts/soak.sh BUILD
set -euo pipefail
tests=$(cd "$1" && pwd)/tests/trust

STALWICK_KILLS=2000 STALWICK_KILL_SEED=${STALWICK_KILL_SEED:-$SRANDOM} "$tests/trust_tests" --gtest_filter='KillTest*'
RC_PARAMS="max_success=5000" "$tests/hostile_numbers_tests" --gtest_filter='HostileNumbers.Any*'
