// SPDX-License-Identifier: BSD-3-Clause
#include <string>

#include "command_pages/completions.h"

namespace stalwick {

namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '\'';
}

// Options that define how a value or an argument is completed; -x: only by that.
std::string Action(ValueKind kind) {
    switch (kind) {
        case ValueKind::kDirectory:
            return " -x -a '(__fish_complete_directories)'";
        case ValueKind::kRecording:
            return " -x -k -a '(__fish_complete_suffix .ord)'";
        case ValueKind::kTraceFile:
            return " -x -k -a '(__fish_complete_suffix .ord; __fish_complete_suffix .vcs)'";
        case ValueKind::kPicture:
            return " -x -k -a '(__fish_complete_suffix .svg; __fish_complete_suffix .png)'";
        case ValueKind::kJsonFile:
            return " -x -k -a '(__fish_complete_suffix .json)'";
        case ValueKind::kText:
            return " -x";
        default:
            return "";
    }
}

// `lead`: the command and, for a subcommand, the condition that it was given.
std::string FormatArguments(const std::string& lead, const CommandText& command) {
    std::string text;
    for (const OptionText& option : command.options) {
        text += lead;
        if (!option.shortName.empty()) text += " -s " + option.shortName.substr(1);
        if (!option.longName.empty()) text += " -l " + option.longName.substr(2);
        text += Action(option.valueKind) + " -d " + Quoted(Summary(option.text)) + '\n';
    }
    for (const ArgumentText& argument : command.arguments) {
        text += lead + Action(argument.kind) + '\n';
    }
    return text;
}

}  // namespace

std::string FormatFishCompletion(const CommandText& command) {
    const std::string lead = "complete -c " + command.name;
    std::string text = "# fish completion for " + command.name + "\n\n";
    if (command.subcommands.empty()) return text + FormatArguments(lead, command);
    const std::string atFirst = lead + " -n __fish_use_subcommand";
    text += FormatArguments(atFirst, command);
    for (const CommandText& subcommand : command.subcommands) {
        text += atFirst + " -x -a " + subcommand.name + " -d " +
                Quoted(Summary(subcommand.description)) + '\n';
    }
    for (const CommandText& subcommand : command.subcommands) {
        const std::string given = " -n '__fish_seen_subcommand_from " + subcommand.name + '\'';
        text += FormatArguments(lead + given, subcommand);
    }
    return text;
}

}  // namespace stalwick
