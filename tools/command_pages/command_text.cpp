// SPDX-License-Identifier: BSD-3-Clause
#include "command_pages/command_text.h"

#include <algorithm>

#include <CLI/CLI.hpp>

namespace stalwick {

namespace {

constexpr char kExitStatusLead[] = "Exit status: ";

ValueKind KindOf(const std::string& valueName) {
    if (valueName.empty()) return ValueKind::kNone;
    if (valueName == "DIR" || valueName == "DIRECTORY") return ValueKind::kDirectory;
    if (valueName == "FILE" || valueName == "FILE.ord") return ValueKind::kRecording;
    if (valueName == "FILE.ord|.vcs") return ValueKind::kTraceFile;
    if (valueName == "PICTURE") return ValueKind::kPicture;
    if (valueName == "FILE.json") return ValueKind::kJsonFile;
    return ValueKind::kText;
}

// Descriptions contain line breaks for --help.
std::string OnOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

OptionText DescribeOption(const CLI::Option& option) {
    OptionText text;
    if (!option.get_snames().empty()) text.shortName = "-" + option.get_snames().front();
    if (!option.get_lnames().empty()) text.longName = "--" + option.get_lnames().front();
    if (option.get_items_expected_max() > 0) text.valueName = option.get_type_name();
    text.valueKind = KindOf(text.valueName);
    text.text = OnOneLine(option.get_description());
    text.defaultValue = option.get_default_str();
    return text;
}

std::string ExitStatusOf(const std::string& footer) {
    if (footer.rfind(kExitStatusLead, 0) != 0) return {};
    return OnOneLine(footer.substr(sizeof(kExitStatusLead) - 1));
}

}  // namespace

CommandText DescribeCommand(const CLI::App& app) {
    CommandText command;
    command.name = app.get_name();
    command.description = OnOneLine(app.get_description());
    command.exitStatus = ExitStatusOf(app.get_footer());
    for (const CLI::Option* option : app.get_options()) {
        if (option->nonpositional()) {
            command.options.push_back(DescribeOption(*option));
        } else {
            const std::string name = option->get_name(true);
            // A type name that this program declared says more than FILE.
            const ValueKind kind = KindOf(option->get_type_name());
            command.arguments.push_back({name, kind == ValueKind::kText ? KindOf(name) : kind,
                                         OnOneLine(option->get_description())});
        }
    }
    for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
        command.subcommands.push_back(DescribeCommand(*subcommand));
    }
    return command;
}

std::string Summary(const std::string& text) {
    return text.substr(0, text.find(';'));
}

}  // namespace stalwick
