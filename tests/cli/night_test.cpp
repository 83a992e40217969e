// SPDX-License-Identifier: BSD-3-Clause

// A night of forty recordings in which nearly everything goes wrong: the summary names exactly
// those that are not whole, on a terminal and without one.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/cli/endless_recording.h"
#include "tests/cli/small_recording.h"

namespace stalwick::test {
namespace {

class Night : public testing::TestWithParam<bool> {
  protected:
    Night() {
        for (int i = 1; i <= 33; ++i)
            Put("rat" + std::to_string(100 + i) + ".ord", SmallRecording(71));
        MakeDirectory(directory_.Path(L"monday"));
        MakeDirectory(directory_.Path(L"tuesday"));
        Put("monday/day1.ord", SmallRecording(72));
        Put("tuesday/day1.ord", SmallRecording(73));
        Put("damaged.ord", SmallRecording(74) + std::string(300, '\xEE'));
        const std::string cut = SmallRecording(75);
        Put("cut.ord", cut.substr(0, cut.size() - 31));
        files_.push_back("missing.ord");
        Put("large.ord", SmallRecording(76, 12000));
        files_.push_back("stopped.ord");  // a pipe, created where it is needed
    }

    void Put(const std::string& name, const std::string& recording) {
        WriteFile(directory_.Path(FromUtf8(name)), recording);
        files_.push_back(name);
    }

    CommandSetup Setup() const {
        CommandSetup setup;
        setup.workingDirectory = directory_.Path();
        setup.terminal = GetParam();
        // Room for every output but those of large.ord.
        setup.largestFileBytes = 250000;
        return setup;
    }

    // Converts all and interrupts the command when it has reached the last one.
    CommandResult ConvertUntilTheLast(std::vector<std::string> arguments) {
        EndlessRecording last(directory_.Path(L"stopped.ord"));
        arguments.insert(arguments.end(), files_.begin(), files_.end());
        CommandProcess command(arguments, Setup());
        std::atomic<bool> ended{false};
        // While waiting, reads the terminal, whose buffer is small.
        std::thread feeder([&] {
            bool asked = false;
            while (!ended) {
                last.Feed();
                if (!asked && Exists(directory_.Path(L"stopped/Events.vev"))) {
                    command.Signal(SIGTERM);
                    asked = true;
                }
                Pause();
            }
        });
        const CommandResult result = command.Wait();
        ended = true;
        feeder.join();
        return result;
    }

    TempDirectory directory_;
    std::vector<std::string> files_;  // as given to the command
};

// The complete lines, without anything that was overwritten.
std::vector<std::string> LinesOf(std::string text) {
    std::replace(text.begin(), text.end(), '\r', '\n');
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

// The lines with this beginning.
std::vector<std::string> LinesWith(const std::vector<std::string>& lines,
                                   const std::string& beginning) {
    std::vector<std::string> found;
    for (const std::string& line : lines) {
        if (line.rfind(beginning, 0) == 0) found.push_back(line);
    }
    return found;
}

// The summary, from its counts on, without the duration of the last recording.
std::vector<std::string> RecapIn(const std::vector<std::string>& lines) {
    auto begin = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.rfind("40 recordings: ", 0) == 0;
    });
    std::vector<std::string> recap(begin, lines.end());
    // How far a canceled one came depends on when the signal came.
    for (std::string& line : recap) {
        line =
            line.substr(0, std::min(line.find(" after "), line.find(" before its first packet")));
    }
    return recap;
}

const std::vector<std::string> kRecap = {
    "40 recordings: 36 converted, 1 with losses, 2 failed, 1 canceled",
    "  with losses: damaged.ord", "  failed: missing.ord", "  failed: large.ord",
    "  canceled: stopped.ord"};

TEST_P(Night, AccountNamesExactlyWhatIsNotWhole) {
    const CommandResult result = ConvertUntilTheLast({"-k", "-j1"});
    EXPECT_EQ(result.exitStatus, 143);
    EXPECT_EQ(result.output.rfind("Processing failed", 0), 0U) << result.output;
    const auto lines = LinesOf(result.error);
    EXPECT_EQ(RecapIn(lines), kRecap) << result.error;
    for (const std::string& file : files_) {
        EXPECT_GE(LinesWith(lines, file + ": ").size(), 1U) << file;
    }
    for (const char* directory : {"monday/day1", "tuesday/day1", "cut", "rat101", "rat133"}) {
        const auto whole =
            LinesWith(lines, directory + std::string(".ord: 0.0 s, 32 channels -> ") + directory +
                                 " (33 files, ");
        EXPECT_EQ(whole.size(), 1U) << directory;
        EXPECT_EQ(FilesIn(directory_.Path(FromUtf8(directory))).size(), 33U);
    }
    EXPECT_NE(LinesWith(lines, "cut.ord").at(0).find("it ends inside a packet"), std::string::npos);
    EXPECT_NE(LinesWith(lines, "damaged.ord").at(0).find("with losses: damaged at byte "),
              std::string::npos);
    EXPECT_NE(LinesWith(lines, "missing.ord").at(0).find("No such file or directory"),
              std::string::npos);
    EXPECT_EQ(LinesWith(lines, "large.ord: failed after reading ").size(), 1U);
    EXPECT_EQ(LinesWith(lines, "stopped.ord: canceled ").size(), 1U);
}

TEST_P(Night, QuietNamesTheSameAndNothingElse) {
    const CommandResult result = ConvertUntilTheLast({"-qk", "-j1"});
    EXPECT_EQ(result.exitStatus, 143);
    const auto lines = LinesOf(result.error);
    EXPECT_EQ(RecapIn(lines), kRecap) << result.error;
    for (const char* name : {"damaged.ord: ", "missing.ord: ", "large.ord: ", "stopped.ord: "}) {
        EXPECT_GE(LinesWith(lines, name).size(), 1U) << name;
    }
    for (const char* name : {"rat", "monday", "tuesday", "cut"}) {
        EXPECT_EQ(LinesWith(lines, name).size(), 0U) << name;
    }
}

TEST_P(Night, TwoRecordingsOfOneNameAreNamedBeforeAnythingStarts) {
    std::vector<std::string> arguments = {"-k", "-o", "out"};
    arguments.insert(arguments.end(), files_.begin(), files_.end());
    const CommandResult result = RunCommand(arguments, Setup());
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.output, "");
    const auto lines = LinesOf(result.error);
    ASSERT_EQ(lines.size(), 1U) << result.error;
    EXPECT_NE(
        lines[0].find("monday/day1.ord and tuesday/day1.ord would be converted into the same "),
        std::string::npos);
    EXPECT_FALSE(Exists(directory_.Path(L"out")));
}

INSTANTIATE_TEST_SUITE_P(All, Night, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "Terminal" : "Script");
});

}  // namespace
}  // namespace stalwick::test
