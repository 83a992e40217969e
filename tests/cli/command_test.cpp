// SPDX-License-Identifier: BSD-3-Clause

// The command as its users run it: exit status, standard output, standard error, files.

#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_converter.h"

namespace stalwick::test {
namespace {

std::string Recording(std::uint64_t seed = 71, unsigned channelCount = 32) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    shape.packetCount = 60;
    return BuildOrdFile(Version2Header(channelCount), MakeRandomPackets(seed, shape));
}

// A directory with recordings in it; outputs go to out/.
struct Workplace {
    std::string Path(const std::wstring& name) const { return ToUtf8(directory.Path(name)); }
    std::string Put(const std::wstring& name, const std::string& recording) const {
        WriteFile(directory.Path(name), recording);
        return Path(name);
    }
    std::map<std::string, std::string> Outputs(const std::wstring& name = L"out/rec") const {
        return FilesIn(directory.Path(name));
    }

    TempDirectory directory;
    std::string out = Path(L"out");
};

TEST(Command, CompleteConversionIsOneLineOnEachStream) {
    const Workplace place;
    const CommandResult result = RunCommand({"-o", place.out, place.Put(L"rec.ord", Recording())});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "Processing complete\n");
    EXPECT_EQ(result.error.rfind(place.Path(L"rec.ord") + ": 0.0 s, 32 channels -> " + place.out +
                                     "/rec (33 files, ",
                                 0),
              0U)
        << result.error;
    EXPECT_EQ(LineCount(result.error), 1);
    EXPECT_EQ(place.Outputs().size(), 33U);
}

TEST(Command, EverySwitchWritesTheFilesOfTheReference) {
    const struct {
        std::vector<std::string> switches;
        ReferenceConvertOptions options;
    } cases[] = {{{}, {true, false, false, false, true, false}},
                 {{"--no-csc"}, {false, false, false, false, true, false}},
                 {{"--base-imu"}, {true, true, false, false, true, false}},
                 {{"--afe-imu"}, {true, false, true, false, true, false}},
                 {{"--ultrasonic"}, {true, false, false, true, true, false}},
                 {{"--raw"}, {true, false, false, false, true, true}},
                 {{"--all"}, {true, true, true, true, true, true}},
                 {{"--all", "--no-csc"}, {false, true, true, true, true, true}},
                 {{"--all", "--no-sync"}, {true, true, true, true, true, true}}};
    for (const auto& one : cases) {
        const Workplace place;
        std::vector<std::string> arguments = one.switches;
        const std::string recording = Recording();
        arguments.insert(arguments.end(),
                         {"--output-dir", place.out, place.Put(L"rec.ord", recording)});
        EXPECT_EQ(RunCommand(arguments).exitStatus, 0);
        ReferenceConvertInput input;
        input.recording = recording;
        input.options = one.options;
        input.fileName = "rec.ord";
        const auto expected = ReferenceConvert(input).files;
        const auto files = place.Outputs();
        ASSERT_EQ(files.size(), expected.size());
        for (const auto& [name, bytes] : expected) {
            EXPECT_TRUE(files.at(name).size() == bytes.size() &&
                        MaskOutputFile(files.at(name), place.out) == bytes)
                << name;
        }
    }
}

TEST(Command, VersionAndHelpGoToStandardOutput) {
    const CommandResult version = RunCommand({"--version"});
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_EQ(version.output, "stalwick-convert 1.2.0.1941\n");
    EXPECT_EQ(version.error, "");
    for (const char* option : {"--help", "-h"}) {
        const CommandResult help = RunCommand({option});
        EXPECT_EQ(help.exitStatus, 0);
        EXPECT_EQ(help.error, "");
        for (const char* word : {"--output-dir DIR",
                                 "--no-csc",
                                 "--base-imu",
                                 "--afe-imu",
                                 "--ultrasonic",
                                 "--raw",
                                 "--all",
                                 "--keep-going",
                                 "--skip-converted",
                                 "--quiet",
                                 "--no-sync",
                                 "--keep-partial",
                                 "--salvage",
                                 "--jobs N",
                                 "--report FILE.json",
                                 "--checksum",
                                 "--page",
                                 "--version",
                                 "--help",
                                 "130"}) {
            EXPECT_NE(help.output.find(word), std::string::npos) << word;
        }
    }
}

TEST(Command, WrongUsageIsOneLineAndStatusTwo) {
    const Workplace place;
    const std::string recording = place.Put(L"rec.ord", Recording());
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"--nonsense", recording},
        {"-x", recording},
        {recording, "-o"},
        {recording, "--raw=maybe"},
        {recording, "--output-dir", ""},
        {recording, "-o", place.out, "-o", place.out}};
    for (const auto& arguments : wrong) {
        const CommandResult result = RunCommand(arguments);
        EXPECT_EQ(result.exitStatus, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.output, "") << testing::PrintToString(arguments);
        EXPECT_EQ(LineCount(result.error), 1) << result.error;
        EXPECT_EQ(result.error.rfind("stalwick-convert: ", 0), 0U) << result.error;
    }
    EXPECT_EQ(NamesIn(place.directory.Path()), std::set<std::string>{"rec.ord"});
}

TEST(Command, ControlCharactersOfAnArgumentAreWrittenOut) {
    const CommandResult result = RunCommand({"--no\nsense\x1b[2J"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(LineCount(result.error), 1);
    EXPECT_EQ(result.error.find('\x1b'), std::string::npos);
}

TEST(Command, WithoutAnOutputDirectoryOutputsAreNextToTheirRecording) {
    const Workplace place;
    MakeDirectory(place.directory.Path(L"x"));
    CommandSetup setup;
    setup.workingDirectory = place.directory.Path();
    place.Put(L"day1.ord", Recording());
    place.Put(L"x/day1.ord", Recording());
    EXPECT_EQ(RunCommand({"day1.ord", "x/day1.ord"}, setup).exitStatus, 0);
    EXPECT_EQ(NamesIn(place.directory.Path()), (std::set<std::string>{"day1", "day1.ord", "x"}));
    for (const wchar_t* name : {L"day1", L"x/day1"}) EXPECT_EQ(place.Outputs(name).size(), 33U);
}

TEST(Command, HeadersHoldFullPaths) {
    const Workplace place;
    CommandSetup setup;
    setup.workingDirectory = place.directory.Path();
    place.Put(L"rec.ord", Recording());
    ASSERT_EQ(RunCommand({"--raw", "rec.ord"}, setup).exitStatus, 0);
    ASSERT_EQ(RunCommand({"--raw", "-o", "out", "rec.ord"}, setup).exitStatus, 0);
    for (const std::wstring name : {L"rec", L"out/rec"}) {
        for (const auto& [file, bytes] : place.Outputs(name)) {
            EXPECT_NE(bytes.find("-OriginalFileName \"" + place.Path(name) + "/" + file + "\"\r\n"),
                      std::string::npos)
                << file;
        }
    }
}

TEST(Command, TwoRecordingsForOneDirectoryAreRefusedBeforeAnythingStarts) {
    const Workplace place;
    MakeDirectory(place.directory.Path(L"x"));
    const std::string first = place.Put(L"day1.ord", Recording());
    const std::string second = place.Put(L"x/day1.ord", Recording());
    const std::string other = place.Put(L"other.ord", Recording());
    const auto before = NamesIn(place.directory.Path());
    for (const auto& arguments :
         {std::vector<std::string>{"-k", "-o", place.out, other, first, second},
          std::vector<std::string>{other, first, other}}) {
        const CommandResult result = RunCommand(arguments);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(LineCount(result.error), 1) << result.error;
        const bool twice = arguments.size() == 3;
        EXPECT_NE(result.error.find(twice ? other + " is given twice" : first + " and " + second),
                  std::string::npos)
            << result.error;
        EXPECT_EQ(NamesIn(place.directory.Path()), before);
    }
}

TEST(Command, FileWithoutADirectoryIsConvertedWhereTheCommandRuns) {
    const Workplace place;
    place.Put(L"rec.ord", Recording());
    CommandSetup setup;
    setup.workingDirectory = place.directory.Path();
    EXPECT_EQ(RunCommand({"rec.ord"}, setup).exitStatus, 0);
    EXPECT_EQ(place.Outputs(L"rec").size(), 33U);
}

TEST(Command, FilesWhoseNamesBeginWithAMinusComeAfterTwoMinuses) {
    const Workplace place;
    place.Put(L"-rec.ord", Recording());
    CommandSetup setup;
    setup.workingDirectory = place.directory.Path();
    EXPECT_EQ(RunCommand({"--", "-rec.ord"}, setup).exitStatus, 0);
    EXPECT_EQ(place.Outputs(L"-rec").size(), 33U);
}

TEST(Command, UnavailableOutputDirectoryIsStatusTwo) {
    const Workplace place;
    const std::string recording = place.Put(L"rec.ord", Recording());
    place.Put(L"file", "a file");
    for (const std::wstring name : {L"file", L"file/below", L"no/such"}) {
        const CommandResult result = RunCommand({"-o", place.Path(name), recording});
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.error.rfind("Error creating output directory(" + place.Path(name) +
                                         ").  Unable to proceed.  Please make sure the output "
                                         "directory location exists.",
                                     0),
                  0U)
            << result.error;
        EXPECT_EQ(LineCount(result.error), 1);
    }
    EXPECT_EQ(ReadFile(place.directory.Path(L"file")), "a file");
}

TEST(Command, OutputDirectoryThatTakesNothingIsAFailure) {
    // Nobody may create a directory there, not even the superuser.
    const Workplace place;
    const CommandResult result = RunCommand({"-o", "/proc", place.Put(L"rec.ord", Recording())});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed\n");
    EXPECT_NE(result.error.find("/proc/rec: "), std::string::npos) << result.error;
    EXPECT_EQ(LineCount(result.error), 1);
}

TEST(Command, FailedConversionIsStatusOneWithItsText) {
    const Workplace place;
    const CommandResult empty = RunCommand({"-o", place.out, place.Put(L"rec.ord", "")});
    EXPECT_EQ(empty.exitStatus, 1);
    EXPECT_EQ(empty.output, "Processing failed - Error retrieving header field -NumADChannels\n");
    EXPECT_EQ(LineCount(empty.error), 1);
    EXPECT_NE(empty.error.find(place.Path(L"rec.ord")), std::string::npos);
    const CommandResult missing = RunCommand({"-o", place.out, place.Path(L"none.ord")});
    EXPECT_EQ(missing.exitStatus, 1);
    EXPECT_EQ(missing.output, "Processing failed - Error opening file, the file path(" +
                                  place.Path(L"none.ord") + ") may be invalid.\n");
}

TEST(Command, FailureStopsTheFilesAfterIt) {
    const Workplace place;
    const CommandResult result =
        RunCommand({"-o", place.out, place.Put(L"a.ord", Recording()), place.Put(L"b.ord", ""),
                    place.Put(L"c.ord", Recording())});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(place.Outputs(L"out/a").size(), 33U);
    EXPECT_FALSE(Exists(place.directory.Path(L"out/c")));
}

TEST(Command, IncompleteOutputIsStatusOneEvenIfTheTextSaysComplete) {
    const Workplace place;
    CommandSetup setup;
    setup.largestFileBytes = 16384 + 5000;
    const CommandResult result = RunCommand(
        {"--no-csc", "--raw", "-o", place.out, place.Put(L"rec.ord", Recording())}, setup);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing complete\n");
    EXPECT_NE(result.error.find("RawData.vrd is incomplete: cannot write " + place.out +
                                "/rec/RawData.vrd: "),
              std::string::npos)
        << result.error;
}

TEST(Command, StatusThatCannotBePrintedIsStatusOne) {
    const Workplace place;
    CommandSetup setup;
    setup.outputPath = "/dev/full";
    const CommandResult result =
        RunCommand({"-o", place.out, place.Put(L"rec.ord", Recording())}, setup);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.error.find("Processing complete"), std::string::npos);
}

TEST(Command, HelpThatCannotBePrintedIsStatusOne) {
    CommandSetup setup;
    setup.outputPath = "/dev/full";
    EXPECT_EQ(RunCommand({"--help"}, setup).exitStatus, 1);
}

TEST(Command, NamesOfAnyBytesConvert) {
    const Workplace place;
    for (const std::string name : {"r\xC3\xA9"
                                   "c \xE6\x97\xA5",
                                   "latin \xE9", "new\nline"}) {
        const std::string path = ToUtf8(place.directory.Path()) + "/" + name + ".ord";
        const CommandResult result =
            RunCommand({"-o", place.out, place.Put(FromUtf8(name + ".ord"), Recording())});
        EXPECT_EQ(result.exitStatus, 0) << name << result.error;
        struct stat status {};
        EXPECT_EQ(::stat((place.out + "/" + name + "/CSC32.vcs").c_str(), &status), 0) << name;
    }
}

TEST(Command, TwentyRunsLeaveTwentySets) {
    const Workplace place;
    const std::string recording = place.Put(L"rec.ord", Recording(72, 1));
    for (int run = 0; run < 20; ++run) {
        // Its packets have more channels than its header announces: they are lost, and that is
        // reported.
        ASSERT_EQ(RunCommand({"--raw", "-o", place.out, recording}).exitStatus, 3);
    }
    const auto files = place.Outputs();
    EXPECT_EQ(files.size(), 60U);
    EXPECT_TRUE(files.contains("CSC1.vcs") && files.contains("CSC1_01.vcs") &&
                files.contains("CSC1_19.vcs") && !files.contains("CSC1_20.vcs"));
}

TEST(Command, TwoCommandsAtOnceDestroyNothing) {
    const Workplace place;
    const std::string recording = place.Put(L"rec.ord", Recording());
    for (int round = 0; round < 5; ++round) {
        CommandProcess first({"--raw", "-o", place.out, recording});
        CommandProcess second({"--raw", "-o", place.out, recording});
        EXPECT_EQ(first.Wait().exitStatus, 0);
        EXPECT_EQ(second.Wait().exitStatus, 0);
    }
    const auto files = place.Outputs();
    EXPECT_EQ(files.size(), 10U * 34);
    for (const auto& [name, bytes] : files) {
        if (name.rfind("RawData", 0) == 0) {
            EXPECT_EQ(bytes.substr(16384), files.at("RawData.vrd").substr(16384)) << name;
        }
        EXPECT_EQ(bytes.find("File was not closed properly") != std::string::npos,
                  name.rfind("Events", 0) == 0)
            << name;
    }
}

}  // namespace
}  // namespace stalwick::test
