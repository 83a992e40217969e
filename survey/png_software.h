// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace stalwick {

// Bytes of a PNG file before its second chunk: the signature and the chunk with its size.
inline constexpr std::size_t kPngHeadSize = 8 + 25;

// The second chunk, which names the program that made the file.
[[nodiscard]] std::string PngSoftwareChunk(std::string_view software);

}  // namespace stalwick
