// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick {

using RandomSeedSource = std::uint32_t (*)();

// One value from the machine's non-deterministic random source, unless a test has replaced the
// source.
[[nodiscard]] std::uint32_t RandomSeed();

// For tests: installs `source` (null: the machine's) and returns the previous one.
RandomSeedSource SetRandomSeedSource(RandomSeedSource source);

}  // namespace stalwick
