#pragma once

#include <cstdint>

namespace stalwick {

// Lets this process have `count` files open at once, as far as the system permits: raises its own
// limit where it is lower, never above what an administrator set. Returns how many it may have
// then; 2^64-1 where there is no limit. Counts whatever the process has open already.
std::uint64_t RaiseOpenFileLimit(std::uint64_t count);

}  // namespace stalwick
