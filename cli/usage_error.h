// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace stalwick {

// What is wrong with the arguments that ended in `error`, in words that begin with it.
[[nodiscard]] std::string DescribeUsageError(const CLI::App& app, const CLI::ParseError& error);

}  // namespace stalwick
