// SPDX-License-Identifier: BSD-3-Clause
#include "cli/command_line.h"

#include <string>

#include <gtest/gtest.h>

#include "cli/exit_status.h"
#include "platform/text_encoding.h"

namespace stalwick {
namespace {

CommandLine Parsed(std::vector<std::string> arguments) {
    const ParsedArguments parsed = ParseArguments(std::move(arguments));
    EXPECT_TRUE(parsed.proceed) << parsed.error;
    return parsed.commandLine;
}

TEST(CommandLine, WithoutOptionsOnlyTheADChannelsAreWanted) {
    const CommandLine line = Parsed({"a.ord"});
    EXPECT_EQ(line.inputFiles, std::vector<std::wstring>{L"a.ord"});
    EXPECT_EQ(line.channelOptions, (ChannelOptions{1, 0, 0, 0}));
    EXPECT_FALSE(line.writeRawData);
    EXPECT_FALSE(line.keepGoing);
    EXPECT_FALSE(line.quiet);
    EXPECT_TRUE(line.outputSettings.syncBeforeFinalHeader);
    EXPECT_FALSE(line.outputSettings.keepPartialBlocks);
    EXPECT_EQ(line.jobs, 0U);
}

TEST(CommandLine, EverySwitchHasItsOutput) {
    EXPECT_EQ(Parsed({"--no-csc", "a"}).channelOptions, (ChannelOptions{0, 0, 0, 0}));
    EXPECT_EQ(Parsed({"--base-imu", "a"}).channelOptions, (ChannelOptions{1, 1, 0, 0}));
    EXPECT_EQ(Parsed({"--afe-imu", "a"}).channelOptions, (ChannelOptions{1, 0, 1, 0}));
    EXPECT_EQ(Parsed({"--ultrasonic", "a"}).channelOptions, (ChannelOptions{1, 0, 0, 1}));
    EXPECT_TRUE(Parsed({"--raw", "a"}).writeRawData);
}

TEST(CommandLine, SwitchesTakeNoOtherValueThanTrue) {
    for (const char* wrong : {"--raw=false", "--keep-going=7", "--no-csc=0", "--help=7"}) {
        EXPECT_EQ(ParseArguments({wrong, "a"}).exitStatus, kExitUsage) << wrong;
    }
}

TEST(CommandLine, AllMeansEveryFurtherOutput) {
    const CommandLine all = Parsed({"--all", "a"});
    EXPECT_EQ(all.channelOptions, (ChannelOptions{1, 1, 1, 1}));
    EXPECT_TRUE(all.writeRawData);
    EXPECT_EQ(Parsed({"--all", "--no-csc", "a"}).channelOptions, (ChannelOptions{0, 1, 1, 1}));
}

TEST(CommandLine, DamageIsSkippedOnlyIfSalvageIsAskedFor) {
    EXPECT_EQ(Parsed({"a"}).outputSettings.onDamage, OnDamage::kStop);
    EXPECT_EQ(Parsed({"--salvage", "a"}).outputSettings.onDamage, OnDamage::kSkip);
}

TEST(CommandLine, NoSyncTurnsTheWaitForTheDiskOff) {
    EXPECT_FALSE(Parsed({"--no-sync", "a"}).outputSettings.syncBeforeFinalHeader);
    EXPECT_TRUE(Parsed({"--all", "a"}).outputSettings.syncBeforeFinalHeader);
}

TEST(CommandLine, KeepPartialKeepsWholeRecordsBeforeDamage) {
    EXPECT_TRUE(Parsed({"--keep-partial", "a"}).outputSettings.keepPartialBlocks);
}

TEST(CommandLine, JobsAreAsManyAsThereAreCoresUnlessAskedFor) {
    EXPECT_EQ(Parsed({"a", "b"}).jobs, 0U);
    EXPECT_EQ(Parsed({"-j", "0", "a"}).jobs, 0U);
    EXPECT_EQ(Parsed({"-j", "2", "a"}).jobs, 2U);
    EXPECT_EQ(Parsed({"--jobs=64", "a"}).jobs, 64U);
    for (const char* wrong : {"-1", "65", "two", "1x", "", "4294967297"}) {
        EXPECT_EQ(ParseArguments({"--jobs", wrong, "a"}).exitStatus, kExitUsage) << wrong;
    }
}

TEST(CommandLine, FilesKeepTheirOrder) {
    EXPECT_EQ(Parsed({"b", "--raw", "a", "c"}).inputFiles,
              (std::vector<std::wstring>{L"b", L"a", L"c"}));
}

TEST(CommandLine, OutputDirectoryIsUsedAsItWasGiven) {
    EXPECT_EQ(Parsed({"-o", "x//y/", "a"}).outputDirectory, L"x//y/");
    EXPECT_EQ(Parsed({"--output-dir=x", "a"}).outputDirectory, L"x");
}

TEST(CommandLine, WithoutAnOutputDirectoryThereIsNone) {
    EXPECT_EQ(Parsed({"x/a", "y/z/b"}).outputDirectory, L"");
}

TEST(CommandLine, ShortAndLongNamesMeanTheSame) {
    EXPECT_TRUE(Parsed({"-k", "a"}).keepGoing);
    EXPECT_TRUE(Parsed({"--keep-going", "a"}).keepGoing);
    EXPECT_TRUE(Parsed({"-q", "a"}).quiet);
    EXPECT_TRUE(Parsed({"-kq", "a"}).keepGoing);
}

TEST(CommandLine, NamesAreUtf8) {
    EXPECT_EQ(Parsed({"-o", "\xC2\xB5", "\xE6\x97\xA5.ord"}).outputDirectory, L"\u00B5");
    EXPECT_EQ(Parsed({"\xE6\x97\xA5.ord"}).inputFiles[0], L"\u65E5.ord");
}

TEST(CommandLine, WrongUsageIsAnErrorOfOneLine) {
    const std::vector<std::vector<std::string>> wrong = {
        {}, {"--none", "a"}, {"a", "-o"}, {"a", "--all=perhaps"}, {"a", "-o", ""}};
    for (const auto& arguments : wrong) {
        const ParsedArguments parsed = ParseArguments(arguments);
        EXPECT_FALSE(parsed.proceed);
        EXPECT_EQ(parsed.exitStatus, kExitUsage);
        EXPECT_EQ(parsed.output, "");
        EXPECT_NE(parsed.error.find("--help"), std::string::npos);
        EXPECT_EQ(parsed.error.find('\n'), std::string::npos);
    }
}

TEST(CommandLine, UsageErrorsNameWhatIsWrongFirst) {
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {{{}, "no FILE was given"},
                 {{"--raw"}, "no FILE was given"},
                 {{"--bogus"}, "unknown option --bogus"},
                 {{"--bogus", "a"}, "unknown option --bogus"},
                 {{"--bogus=7", "a"}, "unknown option --bogus"},
                 {{"-z", "a"}, "unknown option -z"},
                 {{"-kz", "a"}, "unknown option -z"},
                 {{"--bogus", "-o"}, "unknown option --bogus"},
                 {{"--this", "a", "--that"}, "unknown options --this, --that"},
                 {{"-o", "x", "-o", "y", "a"}, "give -o only once"},
                 {{"--output-dir=x", "--output-dir=x", "a"}, "give -o only once"},
                 {{"-j1", "a", "--jobs", "2"}, "give -j only once"},
                 {{"a", "-o"}, "-o needs a value: -o DIR"},
                 {{"a", "--jobs"}, "-j needs a value: -j N"},
                 {{"--raw=7", "a"}, "--raw takes no value"},
                 {{"-o", "", "a"}, "-o: an empty directory name"},
                 {{"-j", "abc", "a"}, "--jobs: abc is not a whole number from 0 to 64"}};
    for (const auto& one : cases) {
        const ParsedArguments parsed = ParseArguments(one.arguments);
        EXPECT_EQ(parsed.error,
                  "stalwick-convert: " + one.message + "; see stalwick-convert --help");
        EXPECT_EQ(parsed.exitStatus, kExitUsage);
    }
}

TEST(CommandLine, NumbersAreDecimal) {
    EXPECT_EQ(Parsed({"-j", "08", "a"}).jobs, 8U);
    EXPECT_EQ(Parsed({"-j", "010", "a"}).jobs, 10U);
    EXPECT_EQ(Parsed({"--jobs=0000000064", "a"}).jobs, 64U);
    for (const char* wrong : {"0x8", "0b1", "1e1", "+8", " 8", "8 ", "1_0", "1'0"}) {
        EXPECT_EQ(ParseArguments({"-j", wrong, "a"}).exitStatus, kExitUsage) << wrong;
    }
}

TEST(CommandLine, FileNamesAreTakenLiterally) {
    for (const std::string name : {"[a.ord]", "[a,b].ord", "[a,b]", "[]", "{}", "[[x]]", "a,b",
                                   "\"a\"", "'a'", "*.ord", "/dev/stdin", "-", "a=b"}) {
        EXPECT_EQ(Parsed({name}).inputFiles, std::vector<std::wstring>{FromUtf8(name)}) << name;
        EXPECT_EQ(Parsed({"x", name, "y"}).inputFiles.size(), 3U) << name;
        EXPECT_EQ(Parsed({"--", name}).inputFiles, std::vector<std::wstring>{FromUtf8(name)});
        EXPECT_EQ(Parsed({"-o", name, "x"}).outputDirectory, FromUtf8(name));
    }
}

TEST(CommandLine, VersionAndHelpAreOutputAndSuccess) {
    for (const char* option : {"--version", "--help"}) {
        const ParsedArguments parsed = ParseArguments({option});
        EXPECT_FALSE(parsed.proceed);
        EXPECT_EQ(parsed.exitStatus, kExitWhole);
        EXPECT_NE(parsed.output, "");
        EXPECT_EQ(parsed.error, "");
    }
}

}  // namespace
}  // namespace stalwick
