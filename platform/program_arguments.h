// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

namespace stalwick {

// The arguments after the program's name, narrow (UTF-8; other bytes unchanged).
[[nodiscard]] std::vector<std::string> ProgramArguments(int argc, char** argv);

}  // namespace stalwick
