// SPDX-License-Identifier: BSD-3-Clause
#include "cli/argument_brackets.h"

#include <CLI/CLI.hpp>

namespace stalwick {

namespace {

// No option begins with it.
constexpr char kBracketCover = '\x1f';

}  // namespace

void CoverBrackets(std::vector<std::string>& arguments) {
    for (std::string& argument : arguments) {
        if (!argument.empty() && (argument.front() == '[' || argument.front() == kBracketCover)) {
            argument.insert(argument.begin(), kBracketCover);
        }
    }
}

void UncoverBrackets(CLI::App& app) {
    for (CLI::Option* const option : app.get_options()) {
        // Before the option's own checks.
        option->transform(CLI::Validator(
            [](std::string& value) {
                if (!value.empty() && value.front() == kBracketCover) value.erase(0, 1);
                return std::string();
            },
            ""));
    }
}

}  // namespace stalwick
