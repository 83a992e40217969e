// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace stalwick {

// The command stalwick-inspect with the arguments after its name (UTF-8). Returns the exit status.
[[nodiscard]] int RunInspectCommand(const std::vector<std::string>& arguments);

// Calls `visit` with the declared options, from which the manual page and the shell completions are
// generated.
void VisitInspectOptions(const std::function<void(const CLI::App&)>& visit);

}  // namespace stalwick
