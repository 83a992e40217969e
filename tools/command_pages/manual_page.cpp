// SPDX-License-Identifier: BSD-3-Clause
#include "command_pages/manual_page.h"

#include <cctype>

namespace stalwick {

namespace {

std::string Replaced(std::string text, char from, const std::string& to) {
    for (std::size_t i = text.find(from); i != std::string::npos; i = text.find(from, i)) {
        text.replace(i, 1, to);
        i += to.size();
    }
    return text;
}

std::string UpperCase(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string Escaped(const std::string& text) {
    return Replaced(Replaced(text, '\\', "\\e"), '-', "\\-");
}

// A line of running text. A leading dot or quote is escaped; otherwise the line would be a request.
std::string Line(const std::string& text) {
    const bool isInstruction = text.front() == '.' || text.front() == '\'';
    return (isInstruction ? "\\&" : "") + Escaped(text) + '\n';
}

std::string Sentence(std::string text) {
    text.front() = UpperCase(text).front();
    if (text.back() != '.') text += '.';
    return text;
}

// New sentences begin new lines, so that a formatter can space them.
std::string Paragraph(const std::string& text) {
    std::string lines;
    std::size_t begin = 0;
    for (std::size_t end = text.find(". "); end != std::string::npos;
         end = text.find(". ", begin)) {
        lines += Line(text.substr(begin, end + 1 - begin));
        begin = end + 2;
    }
    return lines + Line(text.substr(begin));
}

std::string FormatOption(const OptionText& option) {
    std::string names = option.shortName;
    if (!names.empty() && !option.longName.empty()) names += ", ";
    names += option.longName;
    std::string text = ".TP\n\\fB" + Escaped(names) + "\\fR";
    if (!option.valueName.empty()) text += " \\fI" + Escaped(option.valueName) + "\\fR";
    text += '\n' + Paragraph(Sentence(option.text));
    if (!option.defaultValue.empty()) text += Line("Default: " + option.defaultValue + ".");
    return text;
}

std::string FormatOptions(const CommandText& command) {
    std::string text;
    for (const ArgumentText& argument : command.arguments) {
        text += ".TP\n\\fI" + Escaped(argument.name) + "\\fR\n";
        text += Paragraph(Sentence(argument.text));
    }
    for (const OptionText& option : command.options) text += FormatOption(option);
    return text;
}

std::string SynopsisLine(const std::string& name, const CommandText& command) {
    std::string line = "\\fB" + Escaped(name) + "\\fR [\\fIOPTION\\fR]...";
    for (const ArgumentText& argument : command.arguments) {
        line += " \\fI" + Escaped(argument.name) + "\\fR...";
    }
    return line + '\n';
}

std::string FormatSynopsis(const CommandText& command) {
    if (command.subcommands.empty()) return SynopsisLine(command.name, command);
    std::string text;
    for (const CommandText& subcommand : command.subcommands) {
        if (!text.empty()) text += ".br\n";
        text += SynopsisLine(command.name + ' ' + subcommand.name, subcommand);
    }
    return text;
}

// The position after the statuses at the beginning of "130, 143 or 129 canceled".
std::size_t MeaningBegin(const std::string& item) {
    std::size_t begin = 0;
    while (item[begin] >= '0' && item[begin] <= '9') {
        begin = item.find(' ', begin) + 1;
        if (item.compare(begin, 3, "or ") == 0) begin += 3;
    }
    return begin;
}

// "0 all whole; 1 a conversion failed" with each status as an item, then the sentences after it.
std::string FormatExitStatus(const std::string& exitStatus) {
    const std::size_t end = exitStatus.find(". ");
    const std::string items = exitStatus.substr(0, end);
    std::string text;
    for (std::size_t begin = 0; begin < items.size();) {
        std::size_t stop = items.find("; ", begin);
        if (stop == std::string::npos) stop = items.size();
        const std::string item = items.substr(begin, stop - begin);
        const std::size_t meaning = MeaningBegin(item);
        text += ".TP\n\\fB" + item.substr(0, meaning - 1) + "\\fR\n";
        text += Line(Sentence(item.substr(meaning)));
        begin = stop + 2;
    }
    if (end != std::string::npos) text += ".PP\n" + Paragraph(exitStatus.substr(end + 2));
    return text;
}

std::string FormatSubcommand(const CommandText& subcommand) {
    std::string text = ".SS " + Escaped(subcommand.name) + '\n';
    text += Paragraph(Sentence(subcommand.description)) + FormatOptions(subcommand);
    return text;
}

std::string FormatExitStatusSection(const CommandText& command) {
    std::string text = ".SH EXIT STATUS\n";
    if (!command.exitStatus.empty()) text += FormatExitStatus(command.exitStatus);
    for (const CommandText& subcommand : command.subcommands) {
        if (subcommand.exitStatus.empty()) continue;
        text += ".SS " + Escaped(subcommand.name) + '\n' + FormatExitStatus(subcommand.exitStatus);
    }
    return text;
}

// The NAME line has no capital and no full stop, as whatis(1) shows it.
std::string NameText(const std::string& description) {
    std::string text = description.substr(0, description.find(" into "));
    text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    if (text.back() == '.') text.pop_back();
    return text;
}

}  // namespace

std::string FormatManualPage(const ManualPage& page) {
    const CommandText& command = page.command;
    std::string text = ".TH " + Escaped(UpperCase(command.name)) + " 1 " + page.date +
                       " \"Stalwick " + page.version + "\" \"User Commands\"\n";
    text += ".SH NAME\n" + Escaped(command.name) + " \\- " +
            Escaped(NameText(command.description)) + '\n';
    text += ".SH SYNOPSIS\n" + FormatSynopsis(command);
    text += ".SH DESCRIPTION\n" + Paragraph(command.description);
    text += ".SH OPTIONS\n" + FormatOptions(command);
    if (!command.subcommands.empty()) {
        text += ".SH SUBCOMMANDS\n";
        for (const CommandText& subcommand : command.subcommands) {
            text += FormatSubcommand(subcommand);
        }
    }
    return text + FormatExitStatusSection(command) + page.prose;
}

}  // namespace stalwick
