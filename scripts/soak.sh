#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Long runs of the tests with random faults: other random numbers each time, many more of them.
#   scripts/soak.sh BUILD
set -euo pipefail
build=$(cd "$1" && pwd)
tests=$build/tests/trust

STALWICK_KILLS=2000 STALWICK_KILL_SEED=${STALWICK_KILL_SEED:-$SRANDOM} "$tests/trust_tests" --gtest_filter='KillTest*'
RC_PARAMS="max_success=5000" "$tests/hostile_numbers_tests" --gtest_filter='HostileNumbers.Any*'
STALWICK_DAMAGED_RECORDINGS=2000 STALWICK_DAMAGE_SEED=${STALWICK_DAMAGE_SEED:-$SRANDOM} "$build/tests/ord/ord_tests" --gtest_filter='*PacketStreamDamage*'
