// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace stalwick {

// The kind of a value; a shell completes it accordingly.
enum class ValueKind { kNone, kText, kDirectory, kRecording, kTraceFile, kPicture, kJsonFile };

struct OptionText {
    std::string shortName;  // "-o", or empty
    std::string longName;   // "--output-dir", or empty
    std::string valueName;  // "DIR"; empty: a switch
    ValueKind valueKind = ValueKind::kNone;
    std::string text;
    std::string defaultValue;  // empty: none, or it is in the text
};

// An argument without a name, such as FILE.
struct ArgumentText {
    std::string name;
    ValueKind kind = ValueKind::kNone;
    std::string text;
};

// Everything declared about a command or one of its subcommands.
struct CommandText {
    std::string name;
    std::string description;
    std::string exitStatus;  // "0 all whole; 1 a conversion failed; ..."; empty if not declared
    std::vector<OptionText> options;
    std::vector<ArgumentText> arguments;
    std::vector<CommandText> subcommands;
};

CommandText DescribeCommand(const CLI::App& app);

// The text up to its first semicolon: a completion menu has no room for more.
std::string Summary(const std::string& text);

}  // namespace stalwick
