#pragma once

#include <cstdint>

namespace stalwick {

using RandomSeedSource = std::uint32_t (*)();

// One value from the machine's non-deterministic random source, unless a test has put another
// source in its place.
[[nodiscard]] std::uint32_t RandomSeed();

// For tests: puts `source` (null: the machine's) in place and returns what was there.
RandomSeedSource SetRandomSeedSource(RandomSeedSource source);

}  // namespace stalwick
