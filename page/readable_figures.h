// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

namespace stalwick {

// "3.2 s", "10 min 0.0 s", "2 h 5 min 0.0 s".
[[nodiscard]] std::wstring ReadableDuration(double seconds);

// "512 bytes", "16.4 kB", "2.3 GB": thousands, with one decimal.
[[nodiscard]] std::wstring ReadableBytes(std::uint64_t bytes);

// "1 file", "67 files", "0 files".
[[nodiscard]] std::wstring Counted(std::uint64_t count, const std::wstring& singular);

}  // namespace stalwick
