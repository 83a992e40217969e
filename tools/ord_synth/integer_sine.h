// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace stalwick {

// Sine by a rational approximation in integers (within 0.2 % of the amplitude): the mathematics
// library's sine differs between platforms in its last bits.
constexpr std::array<std::int16_t, 4096> MakeSineTable() {
    std::array<std::int16_t, 4096> table{};
    constexpr std::int64_t kHalf = 2048;
    for (std::int64_t u = 0; u < kHalf; ++u) {
        const std::int64_t p = u * (kHalf - u);
        const std::int64_t value = 16 * p * 32767 / (5 * kHalf * kHalf - 4 * p);
        table[static_cast<std::size_t>(u)] = static_cast<std::int16_t>(value);
        table[static_cast<std::size_t>(u + kHalf)] = static_cast<std::int16_t>(-value);
    }
    return table;
}

inline constexpr std::array<std::int16_t, 4096> kSineTable = MakeSineTable();
inline constexpr std::uint32_t kQuarterTurn = 0x40000000u;

// phase: a full turn is 2^32. Result: -32767 to 32767.
inline std::int16_t Sine(std::uint32_t phase) {
    return kSineTable[phase >> 20];
}

// The phase step of a wave of frequencyMilliHz that is sampled stepsPerSecond times per second.
inline std::uint32_t PhaseStep(std::uint64_t frequencyMilliHz, std::uint64_t stepsPerSecond) {
    return static_cast<std::uint32_t>((frequencyMilliHz << 32) / (stepsPerSecond * 1000));
}

}  // namespace stalwick
