// SPDX-License-Identifier: BSD-3-Clause
#include "cli/conversion_plan.h"

#include <gtest/gtest.h>

#include "platform/file_system.h"
#include "platform/paths.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

CommandLine LineOf(std::vector<std::wstring> files, const std::wstring& outputDirectory = {}) {
    CommandLine line;
    line.inputFiles = std::move(files);
    line.outputDirectory = outputDirectory;
    return line;
}

std::wstring Shared(std::vector<std::wstring> files, const std::wstring& outputDirectory = {}) {
    return DescribeSharedDirectory(PlanRecordings(LineOf(std::move(files), outputDirectory)));
}

const std::wstring kSlash(1, kPathSeparator);

TEST(ConversionPlan, OutputsGoNextToEachFile) {
    const TempDirectory directory;
    const auto plan =
        PlanRecordings(LineOf({directory.Path(L"x") + kSlash + L"a.ord", directory.Path(L"b")}));
    ASSERT_EQ(plan.size(), 2U);
    EXPECT_EQ(plan[0].parentDirectory, directory.Path(L"x"));
    EXPECT_EQ(plan[1].parentDirectory, directory.Path());
}

TEST(ConversionPlan, OutputsOfAllFilesGoIntoTheGivenDirectory) {
    const TempDirectory directory;
    for (const PlannedRecording& recording :
         PlanRecordings(LineOf({L"x/a.ord", L"b"}, directory.Path(L"out")))) {
        EXPECT_EQ(recording.parentDirectory, directory.Path(L"out"));
    }
}

TEST(ConversionPlan, PathsAreFullAndNamesAsTheyWereGiven) {
    const auto plan = PlanRecordings(LineOf({L"a.ord"}, L"out"));
    EXPECT_EQ(plan[0].name, L"a.ord");
    EXPECT_EQ(plan[0].path, AbsolutePath(L"a.ord"));
    EXPECT_NE(plan[0].path, L"a.ord");
    EXPECT_EQ(plan[0].parentDirectory, AbsolutePath(L"out"));
    const auto withoutDirectory = PlanRecordings(LineOf({L"a.ord"}));
    EXPECT_EQ(withoutDirectory[0].parentDirectory + kSlash + L"a.ord", AbsolutePath(L"a.ord"));
}

TEST(ConversionPlan, FileOfTheRootHasItsOutputsThere) {
    if (kPathSeparator == L'\\') GTEST_SKIP() << "there is one root for each drive";
    EXPECT_EQ(PlanRecordings(LineOf({L"/b.ord"}))[0].parentDirectory, L"/");
}

TEST(ConversionPlan, RecordingsOfOneNameShareAGivenDirectoryOnly) {
    EXPECT_NE(Shared({L"x/day1.ord", L"y/day1.ord"}, L"out"), L"");
    EXPECT_EQ(Shared({L"x/day1.ord", L"y/day1.ord"}), L"");
    EXPECT_EQ(Shared({L"x/day1.ord", L"x/day2.ord"}, L"out"), L"");
}

TEST(ConversionPlan, BothRecordingsOfASharedDirectoryAreNamed) {
    const std::wstring text = Shared({L"a.ord", L"x/day1.ord", L"b.ord", L"y/day1.raw"}, L"out");
    EXPECT_EQ(
        text.rfind(L"x/day1.ord and y/day1.raw would be converted into the same directory, ", 0),
        0U);
    EXPECT_NE(text.find(AbsolutePath(L"out") + kSlash + L"day1;"), std::wstring::npos);
}

TEST(ConversionPlan, OneFileInTwoWordingsSharesItsDirectory) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"d"));
    const std::wstring here = directory.Path() + kSlash;
    EXPECT_EQ(Shared({L"a.ord", L"a.ord"}), L"a.ord is given twice; give it once");
    EXPECT_NE(Shared({L"a.ord", L"./a.ord"}), L"");
    EXPECT_NE(Shared({here + L"a.ord", here + L"d/../a.ord"}), L"");
    EXPECT_NE(Shared({here + L"a.ord", here + L"a.raw"}), L"");
    EXPECT_EQ(Shared({here + L"a.ord", here + L"d/a.ord"}), L"");
}

// Some file systems treat them as the same, and their outputs would mix there.
TEST(ConversionPlan, NamesThatDifferInTheirCaseCountAsOne) {
    EXPECT_NE(Shared({L"rat.ord", L"Rat.ord"}), L"");
    EXPECT_NE(Shared({L"x/rat.ord", L"y/RAT.ord"}, L"out"), L"");
}

}  // namespace
}  // namespace stalwick::test
