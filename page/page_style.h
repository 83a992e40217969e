// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string_view>

namespace stalwick {

// The style of all pages: light and dark, narrow and wide, on paper.
extern const std::string_view kPageStyle;

}  // namespace stalwick
