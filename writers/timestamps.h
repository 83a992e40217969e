// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace stalwick {

// The double as an unsigned 64-bit count, without its fraction. Outside that range (hostile headers
// and timestamps can reach it) returns the nearest end and sets `saturated`.
[[nodiscard]] inline std::uint64_t TruncateToCount(double value, bool& saturated) {
    constexpr double kEnd = 18446744073709551616.0;  // 2^64
    if (value >= 0.0 && value < kEnd) return static_cast<std::uint64_t>(value);
    saturated = true;
    return value >= kEnd ? std::numeric_limits<std::uint64_t>::max() : 0;
}

inline constexpr double kMicrosecondsPerSecond = 1000000.0;
inline constexpr double kNanosecondsPerSecond = 1000000000.0;
inline constexpr double kNanosecondsPerMicrosecond = 1000.0;

}  // namespace stalwick
