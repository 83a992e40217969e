#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/data_processor.h"

namespace CLI {
class App;
}

namespace stalwick {

// What the command was asked for.
struct CommandLine {
    std::vector<std::wstring> inputFiles;
    std::wstring outputDirectory;  // empty: the outputs of each file go beside it
    ChannelOptions channelOptions{};
    bool writeRawData = false;
    bool keepGoing = false;
    bool skipConverted = false;  // pass over recordings whose outputs are there and whole
    bool quiet = false;
    std::wstring reportPath;  // of the document about the run; empty: none is wanted
    bool checksum = false;    // it has the SHA-256 of recordings and outputs
    bool page = false;        // a page on each recording, beside its outputs
    std::uint32_t jobs = 0;   // files converted side by side; 0: as many as there are cores
    OutputSettings outputSettings;
};

// What became of reading the arguments: either a command line to carry out, or a text to print
// and an exit status to end with.
struct ParsedArguments {
    bool proceed = false;
    CommandLine commandLine;
    std::string output;  // for standard output: help or version
    std::string error;   // for standard error, one line
    int exitStatus = 0;
};

// Reads the arguments behind the program's name (UTF-8).
[[nodiscard]] ParsedArguments ParseArguments(std::vector<std::string> arguments);

// Hands out the declared options, of which the manual page and the shell completions are made.
void VisitConvertOptions(const std::function<void(const CLI::App&)>& visit);

}  // namespace stalwick
