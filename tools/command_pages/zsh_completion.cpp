// SPDX-License-Identifier: BSD-3-Clause
#include <string>

#include "command_pages/completions.h"

namespace stalwick {

namespace {

constexpr char kSpace[] = " \\\n        ";

// For use inside single quotes, as a part of an _arguments specification.
std::string Quoted(const std::string& text) {
    std::string quoted;
    for (char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else if (c == '[' || c == ']' || c == ':' || c == '\\') {
            quoted += std::string("\\") + c;
        } else {
            quoted += c;
        }
    }
    return quoted;
}

std::string Action(ValueKind kind) {
    switch (kind) {
        case ValueKind::kDirectory:
            return "_files -/";
        case ValueKind::kRecording:
            return "_files -g \"*.(ord|ORD)(-.)\"";
        case ValueKind::kTraceFile:
            return "_files -g \"*.(ord|ORD|vcs|vev)(-.)\"";
        case ValueKind::kPicture:
            return "_files -g \"*.(svg|png)(-.)\"";
        case ValueKind::kJsonFile:
            return "_files -g \"*.json(-.)\"";
        default:
            return " ";
    }
}

std::string FormatOption(const OptionText& option) {
    const bool takesValue = !option.valueName.empty();
    std::string value;
    if (takesValue) value = ':' + Quoted(option.valueName) + ':' + Action(option.valueKind);
    const std::string rest = "'[" + Quoted(Summary(option.text)) + ']' + value + '\'';
    const std::string longName = option.longName + (takesValue ? "=" : "");
    if (option.shortName.empty()) return kSpace + longName + rest;
    const std::string shortName = option.shortName + (takesValue ? "+" : "");
    // Either name excludes both.
    return kSpace + ("'(" + option.shortName + ' ' + option.longName + ")'{" + shortName + ',') +
           longName + '}' + rest;
}

std::string FormatOptions(const CommandText& command) {
    std::string text;
    for (const OptionText& option : command.options) text += FormatOption(option);
    return text;
}

std::string FormatArguments(const CommandText& command) {
    std::string text = "    _arguments -s -S" + FormatOptions(command);
    for (const ArgumentText& argument : command.arguments) {
        text += kSpace + ("'*:" + Quoted(argument.name) + ':') + Action(argument.kind) + '\'';
    }
    return text + '\n';
}

std::string FormatSubcommands(const CommandText& command) {
    std::string text = "    local state line\n    _arguments -C -S" + FormatOptions(command);
    text += kSpace + std::string("'1:subcommand:((");
    for (const CommandText& subcommand : command.subcommands) {
        text += subcommand.name + "\\:\"" + Quoted(Summary(subcommand.description)) + "\" ";
    }
    text.pop_back();
    text += "))'" + (kSpace + std::string("'*::argument:->arguments'")) + '\n';
    text += "    [[ $state == arguments ]] || return\n    case $line[1] in\n";
    for (const CommandText& subcommand : command.subcommands) {
        text += "    " + subcommand.name + ")\n" + FormatArguments(subcommand) + "    ;;\n";
    }
    return text + "    esac\n";
}

}  // namespace

std::string FormatZshCompletion(const CommandText& command) {
    const std::string function = "_" + command.name;
    return "#compdef " + command.name + "\n\n" + function + "() {\n" +
           (command.subcommands.empty() ? FormatArguments(command) : FormatSubcommands(command)) +
           "}\n\n" + function + " \"$@\"\n";
}

}  // namespace stalwick
