#pragma once

#include <array>
#include <cstdint>

namespace stalwick {

// Which channel files are wanted: A/D channels, base inertial unit, front-end inertial unit,
// ultrasonic. Opening compares with 1, writing takes any value but 0 for yes.
using ChannelOptions = std::array<std::uint8_t, 4>;

// A block's group of files; the value is its position in ChannelOptions.
enum class ChannelGroup : std::int32_t { kAD = 0, kBaseIMU = 1, kAfeIMU = 2, kUltrasonic = 3 };

// Three axes each of linear acceleration, angular velocity and magnetic field.
inline constexpr std::array<const wchar_t*, 9> kImuChannelNames = {
    L"LAX", L"LAY", L"LAZ", L"AVX", L"AVY", L"AVZ", L"MX", L"MY", L"MZ"};

}  // namespace stalwick
