// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>

namespace stalwick {

// Which channel files to write: A/D channels, base inertial unit, front-end inertial unit,
// ultrasonic. Opening compares with 1; writing treats any value except 0 as yes.
using ChannelOptions = std::array<std::uint8_t, 4>;

// The group of files that a block belongs to; the value is its position in ChannelOptions.
enum class ChannelGroup : std::int32_t { kAD = 0, kBaseIMU = 1, kAfeIMU = 2, kUltrasonic = 3 };

// Three axes each of linear acceleration, angular velocity and magnetic field.
inline constexpr std::array<const wchar_t*, 9> kImuChannelNames = {
    L"LAX", L"LAY", L"LAZ", L"AVX", L"AVY", L"AVZ", L"MX", L"MY", L"MZ"};

}  // namespace stalwick
