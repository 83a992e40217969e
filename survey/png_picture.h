// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace stalwick {

struct PngPicture {
    std::string bytes;
    std::wstring error;  // why there are none; empty when there are
};

// Whether this build can draw PNG at all.
[[nodiscard]] bool CanRenderPng();

// Draws an <svg> element as pixels, in its light colours. `software` is written into the file,
// before its pixels, as the program that made it.
[[nodiscard]] PngPicture RenderPng(const std::string& svg, const std::string& software);

}  // namespace stalwick
