// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/data_processor.h"

namespace CLI {
class App;
}

namespace stalwick {

// What the user asked for.
struct CommandLine {
    std::vector<std::wstring> inputFiles;
    std::wstring outputDirectory;  // as given; empty: the outputs of each file go next to it
    ChannelOptions channelOptions{};
    bool writeRawData = false;
    bool keepGoing = false;
    bool skipConverted = false;  // skip recordings whose outputs exist and are whole
    bool quiet = false;
    std::wstring reportPath;  // of the document about the run; empty if not requested
    bool checksum = false;    // the document has the SHA-256 of recordings and outputs
    bool page = false;        // a page on each recording, next to its outputs
    std::uint32_t jobs = 0;   // files converted in parallel; 0: one for each core
    OutputSettings outputSettings;
};

// The result of reading the arguments: either a command line to execute, or a text to print and an
// exit status.
struct ParsedArguments {
    bool proceed = false;
    CommandLine commandLine;
    std::string output;  // for standard output: help or version
    std::string error;   // for standard error, one line
    int exitStatus = 0;
};

// Reads the arguments after the program's name (UTF-8).
[[nodiscard]] ParsedArguments ParseArguments(std::vector<std::string> arguments);

// Calls `visit` with the declared options, from which the manual page and the shell completions are
// generated.
void VisitConvertOptions(const std::function<void(const CLI::App&)>& visit);

}  // namespace stalwick
