// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>

#include "command_pages/completions.h"

namespace stalwick {

namespace {

std::string FunctionName(const CommandText& command) {
    std::string name = "_" + command.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

// The command that completes the word "$current". Directories come with the files, so that you can
// enter them.
std::string Completer(ValueKind kind) {
    switch (kind) {
        case ValueKind::kDirectory:
            return "compgen -d -- \"$current\"";
        case ValueKind::kRecording:
            return "compgen -f -X '!*.[oO][rR][dD]' -- \"$current\"; compgen -d -- \"$current\"";
        case ValueKind::kTraceFile:
            return "compgen -f -X '!*.[oO][rR][dD]' -- \"$current\"; "
                   "compgen -f -X '!*.v[ce][sv]' -- \"$current\"; compgen -d -- \"$current\"";
        case ValueKind::kPicture:
            return "compgen -f -X '!*.[sp][vn]g' -- \"$current\"; compgen -d -- \"$current\"";
        case ValueKind::kJsonFile:
            return "compgen -f -X '!*.json' -- \"$current\"; compgen -d -- \"$current\"";
        default:
            return ":";
    }
}

bool IsPath(ValueKind kind) {
    return kind != ValueKind::kNone && kind != ValueKind::kText;
}

std::string Reply(const std::string& indent, ValueKind kind) {
    std::string text;
    // Escapes spaces in names with backslashes, and appends a slash to directories.
    if (IsPath(kind)) text += indent + "compopt -o filenames 2> /dev/null\n";
    return text + indent + "mapfile -t COMPREPLY < <(" + Completer(kind) + ")\n";
}

std::string ValueCase(const OptionText& option) {
    std::string names = option.shortName;
    if (!names.empty() && !option.longName.empty()) names += " | ";
    names += option.longName;
    return "            " + names + ")\n" + Reply("                ", option.valueKind) +
           "                return ;;\n";
}

// The completion of the arguments of one command or subcommand.
std::string FormatArguments(const CommandText& command) {
    std::string names;
    std::string values;
    for (const OptionText& option : command.options) {
        for (const std::string& name : {option.shortName, option.longName}) {
            if (!name.empty()) names += (names.empty() ? "" : " ") + name;
        }
        if (!option.valueName.empty()) values += ValueCase(option);
    }
    std::string text;
    if (!values.empty()) {
        text += "        case \"$previous\" in\n" + values + "        esac\n";
    }
    text +=
        "        if [[ $current == -* ]]; then\n"
        "            mapfile -t COMPREPLY < <(compgen -W '" +
        names +
        "' -- \"$current\")\n"
        "            return\n"
        "        fi\n";
    for (const ArgumentText& argument : command.arguments) text += Reply("        ", argument.kind);
    return text;
}

// Without a subcommand, words complete to the names of subcommands.
std::string FormatTop(const CommandText& command) {
    if (command.subcommands.empty()) return FormatArguments(command);
    std::string words;
    for (const CommandText& subcommand : command.subcommands) words += subcommand.name + ' ';
    for (const OptionText& option : command.options) {
        words += (option.shortName.empty() ? "" : option.shortName + ' ') + option.longName + ' ';
    }
    words.pop_back();
    return "        mapfile -t COMPREPLY < <(compgen -W '" + words + "' -- \"$current\")\n";
}

}  // namespace

std::string FormatBashCompletion(const CommandText& command) {
    const std::string function = FunctionName(command);
    std::string text = "# bash completion for " + command.name + "\n\n" + function + "() {\n" +
                       "    local current=${COMP_WORDS[COMP_CWORD]} previous=\n"
                       "    ((COMP_CWORD > 0)) && previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
                       "    # bash takes the equals sign of --name=value as a separate word.\n"
                       "    if [[ $current == '=' ]]; then\n"
                       "        current=\n"
                       "    elif [[ $previous == '=' ]]; then\n"
                       "        previous=${COMP_WORDS[COMP_CWORD - 2]}\n"
                       "    fi\n"
                       "    COMPREPLY=()\n";
    text += "    local subcommand=\n";
    if (!command.subcommands.empty()) {
        text += "    ((COMP_CWORD > 1)) && subcommand=${COMP_WORDS[1]}\n";
    }
    text += "    case \"$subcommand\" in\n";
    for (const CommandText& subcommand : command.subcommands) {
        text += "    " + subcommand.name + ")\n" + FormatArguments(subcommand) + "        ;;\n";
    }
    text += "    *)\n" + FormatTop(command) + "        ;;\n    esac\n}\n\n";
    return text + "complete -F " + function + ' ' + command.name + '\n';
}

}  // namespace stalwick
