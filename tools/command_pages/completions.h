// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "command_pages/command_text.h"

namespace stalwick {

// Scripts that complete the command's arguments, one for each shell. They need only the shell
// itself.
std::string FormatBashCompletion(const CommandText& command);
std::string FormatZshCompletion(const CommandText& command);
std::string FormatFishCompletion(const CommandText& command);

}  // namespace stalwick
