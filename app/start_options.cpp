// SPDX-License-Identifier: BSD-3-Clause
#include "app/start_options.h"

#include "platform/program_version.h"

namespace stalwick {

namespace {

constexpr char kHelp[] =
    "Usage: stalwick [RECORDING.ord...]\n"
    "Opens the window that converts recordings (.ord), with those given in its list.\n"
    "\n"
    "  --help     print this help and exit\n"
    "  --version  print the version and exit\n"
    "\n"
    "Scripts use stalwick-convert, which needs no display.\n";

}  // namespace

std::optional<std::string> AnswerOnStandardOutput(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--") break;
        if (argument == "--help") return kHelp;
        if (argument == "--version") return std::string("stalwick ") + kVersion + '\n';
    }
    return std::nullopt;
}

}  // namespace stalwick
