// SPDX-License-Identifier: BSD-3-Clause

// Writes the manual pages and the shell completions of the commands, from the options that the
// commands declare to their parsers:
//   command_pages PROSE_DIRECTORY OUTPUT_DIRECTORY RELEASE_DATE
// PROSE_DIRECTORY has <command>.man for each command, with the sections that no declaration
// contains.

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "cli/command_line.h"
#include "cli/inspect_command.h"
#include "command_pages/command_text.h"
#include "command_pages/completions.h"
#include "command_pages/manual_page.h"
#include "platform/program_version.h"

namespace {

using namespace stalwick;

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file || text.empty()) throw std::runtime_error("cannot read " + path);
    return text;
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
}

struct Request {
    std::string proseDirectory;
    std::string outputDirectory;
    std::string date;
};

void WritePages(const Request& request, const CLI::App& app) {
    ManualPage page;
    page.command = DescribeCommand(app);
    page.date = request.date;
    page.version = kVersion;
    const std::string& name = page.command.name;
    page.prose = ReadText(request.proseDirectory + '/' + name + ".man");
    const std::string path = request.outputDirectory + '/';
    WriteText(path + name + ".1", FormatManualPage(page));
    WriteText(path + name + ".bash", FormatBashCompletion(page.command));
    WriteText(path + '_' + name, FormatZshCompletion(page.command));
    WriteText(path + name + ".fish", FormatFishCompletion(page.command));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: command_pages PROSE_DIRECTORY OUTPUT_DIRECTORY RELEASE_DATE\n", stderr);
        return 2;
    }
    try {
        const Request request{argv[1], argv[2], argv[3]};
        VisitConvertOptions([&](const CLI::App& app) { WritePages(request, app); });
        VisitInspectOptions([&](const CLI::App& app) { WritePages(request, app); });
    } catch (const std::exception& error) {
        std::fprintf(stderr, "command_pages: %s\n", error.what());
        return 1;
    }
    return 0;
}
