// What the command shows on a terminal.

#include <string>

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

struct Shown {
    CommandResult result;
    std::vector<std::string> drawn;  // what stands between carriage returns
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
    EXPECT_NE(shown.drawn.back().find("file 1 of 1"), std::string::npos);
    EXPECT_EQ(shown.result.error.back(), '\n');
}

TEST(CommandTerminal, NoLineIsAsWideAsTheTerminal) {
    for (const int columns : {20, 40, 80, 200}) {
        for (const std::string& line : RunOnTerminal(Recording(), {}, columns).drawn) {
            const std::size_t length = line.size() - (line.front() == '\n' ? 1 : 0);
            EXPECT_LT(length, static_cast<std::size_t>(columns)) << line;
        }
    }
}

TEST(CommandTerminal, QuietShowsNoProgress) {
    EXPECT_EQ(RunOnTerminal(Recording(), {"-q"}).result.error, "");
}

TEST(CommandTerminal, DetailsFollowBelowTheProgress) {
    const std::string shown = RunOnTerminal(Recording() + "cut").result.error;
    const auto progress = shown.find("file 1 of 1");
    const auto detail = shown.find("3 trailing bytes");
    ASSERT_NE(progress, std::string::npos);
    ASSERT_NE(detail, std::string::npos);
    EXPECT_LT(progress, detail);
    EXPECT_NE(shown.substr(progress, detail - progress).find('\n'), std::string::npos);
}

}  // namespace
}  // namespace stalwick::test
