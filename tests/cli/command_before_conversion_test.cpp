// SPDX-License-Identifier: BSD-3-Clause

// What the command checks before it converts: files that are not recordings, and recordings
// converted already.

#include <filesystem>
#include <string>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/cli/small_recording.h"

namespace stalwick::test {
namespace {

class CommandBeforeConversion : public testing::Test {
  protected:
    std::string Path(const std::wstring& name) const { return ToUtf8(directory_.Path(name)); }
    std::string Put(const std::wstring& name, const std::string& bytes) const {
        WriteFile(directory_.Path(name), bytes);
        return Path(name);
    }
    CommandResult Convert(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"-o", Path(L"out")});
        return RunCommand(arguments);
    }
    std::set<std::string> Names(const std::wstring& name) const {
        return NamesIn(directory_.Path(name));
    }

    TempDirectory directory_;
};

TEST_F(CommandBeforeConversion, PatternThatMatchesNothingLeavesNoDirectory) {
    const CommandResult result = RunCommand({Path(L"*.ord")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed - Error opening file, the file path(" +
                                 Path(L"*.ord") + ") may be invalid.\n");
    EXPECT_EQ(result.error, Path(L"*.ord") +
                                ": not converted: No such file or directory; choose a recording "
                                "that can be read\n");
    EXPECT_TRUE(NamesIn(directory_.Path()).empty());
}

TEST_F(CommandBeforeConversion, FileThatIsNoRecordingIsReportedAndLeavesNoDirectory) {
    const std::string path = Put(L"x.ord", "no recording\n");
    const CommandResult result = Convert({path});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed - Error retrieving header field -NumADChannels\n");
    EXPECT_EQ(result.error, path +
                                ": not an .ord recording (no -NumADChannels in its header; empty, "
                                "cut short, or another kind of file)\n");
    EXPECT_EQ(NamesIn(directory_.Path()), std::set<std::string>{"x.ord"});
}

TEST_F(CommandBeforeConversion, RecordingsAreReportedInTheirTurn) {
    const std::string first = Put(L"a.ord", SmallRecording());
    const std::string bad = Put(L"b.ord", "");
    const std::string last = Put(L"c.ord", SmallRecording());
    EXPECT_EQ(Convert({first, bad, last}).exitStatus, 1);
    EXPECT_EQ(Names(L"out"), std::set<std::string>{"a"});
    EXPECT_EQ(Convert({"-k", first, bad, last}).exitStatus, 1);
    EXPECT_EQ(Names(L"out"), (std::set<std::string>{"a", "c"}));
}

TEST_F(CommandBeforeConversion, FileWithoutExtensionReportsWhyItCannotBeConvertedThere) {
    const std::string path = Put(L"rec", SmallRecording());
    const CommandResult result = RunCommand({path});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed\n");
    EXPECT_EQ(result.error,
              path +
                  ": not converted: it has no extension, so the directory of its outputs would "
                  "have the same name; choose another output directory, or name it rec.ord\n");
    EXPECT_EQ(Convert({path}).exitStatus, 0);
}

TEST_F(CommandBeforeConversion, PipeIsConvertedByReadingItOnce) {
    const std::string pipe = Path(L"pipe.ord");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    CommandProcess command({"-o", Path(L"out"), pipe});
    WriteFile(directory_.Path(L"pipe.ord"), SmallRecording());
    EXPECT_EQ(command.Wait().exitStatus, 0);
    Put(L"rec.ord", SmallRecording());
    EXPECT_EQ(Names(L"out/pipe").size(), 33U);
    ASSERT_EQ(Convert({Path(L"rec.ord")}).exitStatus, 0);
    const std::string expected = ReadFile(directory_.Path(L"out/rec/CSC5.vcs"));
    EXPECT_EQ(ReadFile(directory_.Path(L"out/pipe/CSC5.vcs")).substr(16384),
              expected.substr(16384));
}

TEST_F(CommandBeforeConversion, ConvertedRecordingIsSkipped) {
    const std::string path = Put(L"rec.ord", SmallRecording());
    ASSERT_EQ(Convert({path}).exitStatus, 0);
    const auto before = FilesIn(directory_.Path(L"out/rec"));
    const CommandResult result = Convert({"--skip-converted", path});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "Processing complete\n");
    EXPECT_EQ(
        result.error.rfind(
            path + ": skipped, its outputs are whole -> " + Path(L"out") + "/rec (33 files, ", 0),
        0U)
        << result.error;
    EXPECT_EQ(FilesIn(directory_.Path(L"out/rec")), before);
    EXPECT_EQ(Convert({"-q", "--skip-converted", path}).error, "");
}

TEST_F(CommandBeforeConversion, RecordingOfWhichAnOutputIsMissingIsConvertedAgain) {
    const std::string path = Put(L"rec.ord", SmallRecording());
    ASSERT_EQ(Convert({path}).exitStatus, 0);
    const CommandResult result = Convert({"--skip-converted", "--raw", path});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(Names(L"out/rec").size(), 33U + 34U);
    EXPECT_EQ(Convert({"--skip-converted", "--raw", path}).exitStatus, 0);
    EXPECT_EQ(Names(L"out/rec").size(), 33U + 34U);
}

TEST_F(CommandBeforeConversion, RecordingThatLostDataIsNeverSkipped) {
    const std::string path = Put(L"rec.ord", SmallRecording() + std::string(40, '\x7F'));
    ASSERT_EQ(Convert({path}).exitStatus, 3);
    EXPECT_EQ(Convert({"--skip-converted", path}).exitStatus, 3);
}

TEST_F(CommandBeforeConversion, LackOfRoomIsReportedBeforeItStarts) {
    const std::string path = Put(L"rec.ord", SmallRecording());
    std::error_code failed;
    // Holes take no space: the recording seems to have 8 TB.
    std::filesystem::resize_file(path, std::uintmax_t{1} << 43U, failed);
    if (failed) GTEST_SKIP() << "no such large files here";
    const CommandResult result = Convert({path});
    EXPECT_EQ(result.error.rfind("stalwick-convert: the outputs need about ", 0), 0U)
        << result.error;
    EXPECT_EQ(Convert({"-q", path}).error.rfind(path, 0), 0U);
}

TEST_F(CommandBeforeConversion, RecapCountsWhatWasSkipped) {
    const std::string first = Put(L"a.ord", SmallRecording());
    const std::string second = Put(L"b.ord", SmallRecording());
    ASSERT_EQ(Convert({first}).exitStatus, 0);
    const CommandResult result = Convert({"--skip-converted", first, second});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.error.find("2 recordings: 1 converted, 1 skipped, 0 with losses"),
              std::string::npos)
        << result.error;
}

}  // namespace
}  // namespace stalwick::test
