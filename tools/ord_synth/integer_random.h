// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick {

// A 64-bit counter passed through a mixing function: the same numbers on every platform, which the
// standard library's distributions do not guarantee.
class IntegerRandom {
  public:
    explicit IntegerRandom(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    // A number from low to high, inclusive.
    std::uint32_t Between(std::uint32_t low, std::uint32_t high) {
        return low + static_cast<std::uint32_t>(Next() % (std::uint64_t{high} - low + 1));
    }

  private:
    std::uint64_t state_;
};

// Each source of numbers draws from a separate stream, so that switching one off does not change
// the others.
enum class RandomStream : std::uint64_t {
    kSignal = 1,
    kSpikes,
    kTtl,
    kBaseImu,
    kAfeImu,
    kUltrasonic,
    kSession,
    kDamage,
    kNoisyChannels
};

inline IntegerRandom MakeRandom(std::uint64_t seed, RandomStream stream) {
    IntegerRandom mixer(seed ^ (static_cast<std::uint64_t>(stream) << 56));
    return IntegerRandom(mixer.Next());
}

}  // namespace stalwick
