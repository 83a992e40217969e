// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

namespace stalwick {

// The command stalwick-convert with the arguments after its name (UTF-8): converts, prints the
// status (or the help) to standard output and everything else to standard error. Returns the exit
// status (docs/errors.md). Throws exceptions that no conversion could handle, such as
// std::bad_alloc. It watches the process's signals: call it once.
[[nodiscard]] int RunConvertCommand(const std::vector<std::string>& arguments);

}  // namespace stalwick
