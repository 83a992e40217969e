// SPDX-License-Identifier: BSD-3-Clause
#include "cli/usage_error.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <CLI/CLI.hpp>

namespace stalwick {

namespace {

// The name that a user types: the short one, if there is one.
std::string NameOf(const CLI::Option& option) {
    if (!option.get_snames().empty()) return "-" + option.get_snames().front();
    if (!option.get_lnames().empty()) return "--" + option.get_lnames().front();
    return option.get_name();
}

// Arguments that no option and no FILE took, without their values.
std::string Unknown(const std::vector<std::string>& arguments) {
    std::string text = arguments.size() == 1 ? "unknown option " : "unknown options ";
    for (const std::string& argument : arguments) {
        if (&argument != &arguments.front()) text += ", ";
        text += argument.substr(0, argument.find('='));
    }
    return text;
}

const CLI::Option* FindRepeated(const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        const int most = option->get_items_expected_max();
        if (most > 0 && option->count() > static_cast<std::size_t>(most)) return option;
    }
    return nullptr;
}

// The option whose value is missing; the library names it only in its text.
const CLI::Option* FindWithoutValue(const CLI::App& app, const std::string& text) {
    for (const CLI::Option* option : app.get_options()) {
        const bool takesValue = option->get_items_expected_max() > 0;
        if (takesValue && text.rfind(option->get_name() + ": ", 0) == 0) return option;
    }
    return nullptr;
}

// A given option that works only with another one, which is missing.
std::string DescribeMissingCompanion(const CLI::App& app, const std::string& text) {
    for (const CLI::Option* option : app.get_options()) {
        if (option->count() == 0) continue;
        for (const CLI::Option* needed : option->get_needs()) {
            if (needed->count() != 0) continue;
            return NameOf(*option) + " needs " + NameOf(*needed) + ' ' + needed->get_type_name();
        }
    }
    return text;
}

std::string DescribeMismatch(const CLI::App& app, const std::string& text) {
    if (const CLI::Option* repeated = FindRepeated(app)) {
        return "give " + NameOf(*repeated) + " only once";
    }
    if (const CLI::Option* option = FindWithoutValue(app, text)) {
        return NameOf(*option) + " needs a value: " + NameOf(*option) + ' ' +
               option->get_type_name();
    }
    // A switch with a value; the text begins with its name.
    return "--" + text.substr(0, text.find(' ')) + " takes no value";
}

}  // namespace

std::string DescribeUsageError(const CLI::App& app, const CLI::ParseError& error) {
    // The library checks unknown arguments last, but the user typed them.
    const std::vector<std::string> unknown = app.remaining();
    if (!unknown.empty()) return Unknown(unknown);
    const std::string text = error.what();
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        // The text begins with the argument's name.
        return "no " + text.substr(0, text.find(' ')) + " was given";
    }
    if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
        return DescribeMissingCompanion(app, text);
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        return DescribeMismatch(app, text);
    }
    return text;
}

}  // namespace stalwick
