#pragma once

#include <string>

#include "command_pages/command_text.h"

namespace stalwick {

// Scripts that complete the command's arguments, for one shell each. They need nothing but the
// shell itself.
std::string FormatBashCompletion(const CommandText& command);
std::string FormatZshCompletion(const CommandText& command);
std::string FormatFishCompletion(const CommandText& command);

}  // namespace stalwick
