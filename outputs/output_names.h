// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

namespace stalwick {

// The suffix before the extension of an output whose name was taken: _01 to _99, _100 ...
[[nodiscard]] std::wstring NumberSuffix(std::int32_t number);

}  // namespace stalwick
