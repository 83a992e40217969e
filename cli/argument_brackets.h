#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace stalwick {

// CLI11 takes an argument in square brackets for a list. Covered before it parses the arguments,
// and uncovered by the options that take them, a file name in brackets is a file name.

// Call it once, before the arguments are parsed.
void CoverBrackets(std::vector<std::string>& arguments);

// Call it once for an app or a subcommand, after all its options are declared.
void UncoverBrackets(CLI::App& app);

}  // namespace stalwick
