#pragma once

#include <string>
#include <vector>

namespace stalwick {

// The command stalwick-inspect with the arguments after its name (UTF-8). Returns the exit status.
int RunInspectCommand(const std::vector<std::string>& arguments);

}  // namespace stalwick
