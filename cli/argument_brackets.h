// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace stalwick {

// CLI11 interprets an argument in square brackets as a list. If the brackets are covered before it
// parses the arguments, and uncovered by the options that take them, a file name in brackets
// remains a file name.

// Call it once, before parsing the arguments.
void CoverBrackets(std::vector<std::string>& arguments);

// Call it once for an app or a subcommand, after declaring all its options.
void UncoverBrackets(CLI::App& app);

}  // namespace stalwick
