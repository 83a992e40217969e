// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace stalwick {

using Uuid = std::array<std::uint8_t, 16>;

// A random UUID (version 4, variant 1) from one random seed.
[[nodiscard]] Uuid MakeUuid();

// The local time as "YYYY/MM/DD HH:MM:SS".
[[nodiscard]] std::wstring FormatLocalTime();

// The decimal digits of a non-negative number, padded with zeros to `width`.
[[nodiscard]] std::wstring PadWithZeros(std::int32_t number, std::size_t width);

}  // namespace stalwick
