// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick {

// Allows this process to have `count` files open at the same time, as far as the system permits:
// raises its own limit if it is lower, never above an administrator's. Returns the resulting limit;
// 2^64-1 if there is none. Counts everything that the process has open already.
std::uint64_t RaiseOpenFileLimit(std::uint64_t count);

}  // namespace stalwick
