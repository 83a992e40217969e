// SPDX-License-Identifier: BSD-3-Clause

// What the command shows on a terminal.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

struct Shown {
    CommandResult result;
    std::vector<std::string> drawn;  // the text between carriage returns
};

Shown RunOnTerminal(const std::string& recording, std::vector<std::string> options = {},
                    int columns = 80) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), recording);
    options.insert(options.end(),
                   {"-o", ToUtf8(directory.Path(L"out")), ToUtf8(directory.Path(L"rec.ord"))});
    CommandSetup setup;
    setup.terminal = true;
    setup.terminalColumns = columns;
    Shown shown;
    shown.result = RunCommand(options, setup);
    std::string line;
    for (const char byte : shown.result.error) {
        if (byte == '\r') {
            if (!line.empty()) shown.drawn.push_back(line);
            line.clear();
        } else {
            line += byte;
        }
    }
    return shown;
}

std::string Recording() {
    return BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(20000));
}

TEST(CommandTerminal, ProgressIsShownAndItsLastLineStays) {
    const Shown shown = RunOnTerminal(Recording());
    EXPECT_EQ(shown.result.exitStatus, 0);
    EXPECT_EQ(shown.result.output, "Processing complete\n");
    ASSERT_FALSE(shown.drawn.empty());
    EXPECT_NE(shown.drawn.back().find("100 %"), std::string::npos);
    EXPECT_NE(shown.drawn.back().find("MB/s"), std::string::npos);
    EXPECT_NE(shown.drawn.back().find("file 1 of 1  rec.ord"), std::string::npos);
    EXPECT_EQ(shown.result.error.back(), '\n');
}

TEST(CommandTerminal, NoLineIsAsWideAsTheTerminal) {
    for (const int columns : {20, 40, 80, 200}) {
        for (const std::string& line : RunOnTerminal(Recording(), {}, columns).drawn) {
            if (line.find("rec.ord: ") != std::string::npos) continue;  // not the progress
            const std::size_t length = line.size() - (line.front() == '\n' ? 1 : 0);
            EXPECT_LT(length, static_cast<std::size_t>(columns)) << line;
        }
    }
}

TEST(CommandTerminal, QuietShowsNoProgress) {
    EXPECT_EQ(RunOnTerminal(Recording(), {"-q"}).result.error, "");
}

TEST(CommandTerminal, LineOfARecordingIsAboveTheProgress) {
    const Shown shown = RunOnTerminal(Recording());
    const auto line = std::find_if(shown.drawn.begin(), shown.drawn.end(), [](const auto& drawn) {
        return drawn.find("/rec.ord: 6.7 s, 1 channel -> ") != std::string::npos;
    });
    ASSERT_NE(line, shown.drawn.end()) << shown.result.error;
    // No progress is left before it.
    EXPECT_EQ(line->find_first_not_of("\n"), line->find('/'));
    EXPECT_NE(shown.drawn.back().find("100 %"), std::string::npos);
}

// A terminal gets the line when it is printed, so nothing is left that could fail at the end.
TEST(CommandTerminal, StatusThatATerminalRefusesIsStatusOne) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), Recording());
    CommandSetup setup;
    setup.prepare = [] {
        int closed = -1;
        int output = -1;
        ::openpty(&closed, &output, nullptr, nullptr, nullptr);
        ::close(closed);
        ::dup2(output, STDOUT_FILENO);
    };
    const CommandResult result = RunCommand({ToUtf8(directory.Path(L"rec.ord"))}, setup);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.error.find("cannot write to standard output: Processing complete"),
              std::string::npos)
        << result.error;
}

}  // namespace
}  // namespace stalwick::test
