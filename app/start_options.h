// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stalwick {

// What the program prints instead of opening its window: for --version or --help among its
// arguments, up to "--". Needs no display.
std::optional<std::string> AnswerOnStandardOutput(const std::vector<std::string>& arguments);

}  // namespace stalwick
