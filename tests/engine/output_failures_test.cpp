// SPDX-License-Identifier: BSD-3-Clause
#include "engine/output_failures.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_error.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kRecordSize = 1044;
const OutputFailure kFull = MakeFailure(L"write", SystemErrorFor(SystemErrorKind::kNoSpace));
const std::wstring kFullReason = SystemErrorText(SystemErrorFor(SystemErrorKind::kNoSpace));

std::wstring InOut(const std::wstring& name) {
    return L"out" + std::wstring(1, kPathSeparator) + name;
}

OutputEnd Whole(const std::wstring& name, std::uint64_t records = 0) {
    return {{InOut(name), true, 2, records * kRecordSize, std::nullopt}, true, kRecordSize};
}

OutputEnd Unfinished(const std::wstring& name, std::uint64_t records = 0) {
    OutputEnd output = Whole(name, records);
    output.whole = false;
    return output;
}

OutputEnd Failed(const std::wstring& name, std::uint64_t records = 0,
                 const OutputFailure& failure = kFull) {
    OutputEnd output = Unfinished(name, records);
    output.file.failure = failure;
    return output;
}

std::vector<OutputEnd> Channels(OutputEnd (*make)(const std::wstring&, std::uint64_t),
                                unsigned first, unsigned last, std::uint64_t records) {
    std::vector<OutputEnd> outputs;
    for (unsigned n = first; n <= last; ++n) {
        outputs.push_back(make(L"CSC" + std::to_wstring(n) + L".vcs", records));
    }
    return outputs;
}

using Texts = std::vector<std::wstring>;

TEST(OutputFailures, WholeOutputsAreNeverNamed) {
    const std::vector<OutputEnd> outputs = {Whole(L"CSC1.vcs", 7), Whole(L"Events.vev")};
    EXPECT_EQ(DescribeFailedOutputs(outputs), Texts());
    EXPECT_EQ(NameUnfinishedOutputs(outputs), L"");
}

TEST(OutputFailures, NameWithoutANumberOrAnExtensionStandsAlone) {
    const std::vector<OutputEnd> outputs = {Unfinished(L"CSC"), Unfinished(L"CSC7"),
                                            Unfinished(L"CSC.vcs")};
    EXPECT_EQ(NameUnfinishedOutputs(outputs),
              L"CSC (no records), CSC7 (no records) and CSC.vcs (no records)");
}

TEST(OutputFailures, FailedOutputIsNamedWithItsReasonAndWhatItHolds) {
    const std::vector<OutputEnd> outputs = {Whole(L"CSC1.vcs", 7), Failed(L"CSC4.vcs", 5000)};
    EXPECT_EQ(DescribeFailedOutputs(outputs),
              Texts({L"cannot write " + InOut(L"CSC4.vcs") + L": " + kFullReason +
                     L"; it holds 5000 records; free some space or choose another directory"}));
    EXPECT_EQ(NameUnfinishedOutputs(outputs), L"");
}

TEST(OutputFailures, OutputThatWasNeverCreatedHoldsNothing) {
    OutputEnd output = Failed(L"CSC4.vcs", 0, {L"create", L"why", L"do that"});
    output.file.created = false;
    EXPECT_EQ(DescribeFailedOutputs({{output}}),
              Texts({L"cannot create " + InOut(L"CSC4.vcs") + L": why; do that"}));
}

TEST(OutputFailures, HundredsOfFailuresOfOneFullDiskAreOneLine) {
    std::vector<OutputEnd> outputs;
    for (unsigned n = 1; n <= 256; ++n) {
        outputs.push_back(Failed(L"CSC" + std::to_wstring(n) + L".vcs", 5000));
    }
    outputs.push_back(Failed(L"Events.vev", 12));
    EXPECT_EQ(DescribeFailedOutputs(outputs),
              Texts({L"cannot write " + InOut(L"CSC1.vcs to CSC256.vcs and Events.vev") + L": " +
                     kFullReason +
                     L"; they hold 12 to 5000 records; free some space or choose another "
                     L"directory"}));
}

TEST(OutputFailures, EachCauseHasItsOwnLineInTheOrderOfTheFiles) {
    const OutputFailure closing = {L"close", L"broken", L"check the disk"};
    const std::vector<OutputEnd> outputs = {Failed(L"CSC1.vcs", 1), Failed(L"CSC2.vcs", 1, closing),
                                            Failed(L"CSC3.vcs", 1)};
    const Texts texts = DescribeFailedOutputs(outputs);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].find(L"cannot write " + InOut(L"CSC1.vcs and CSC3.vcs: ")), 0U);
    EXPECT_EQ(texts[1], L"cannot close " + InOut(L"CSC2.vcs") +
                            L": broken; it holds 1 record; check the disk");
}

TEST(OutputFailures, RunsOfNumbersAreNamedByTheirEnds) {
    std::vector<OutputEnd> outputs = Channels(Unfinished, 1, 3, 5063);
    outputs.push_back(Failed(L"CSC4.vcs", 5000));
    for (const OutputEnd& output : Channels(Unfinished, 5, 64, 5000)) outputs.push_back(output);
    outputs.push_back(Unfinished(L"Events.vev"));
    EXPECT_EQ(NameUnfinishedOutputs(outputs),
              L"CSC1.vcs to CSC3.vcs (5063 records each), CSC5.vcs to CSC64.vcs (5000 records "
              L"each) and Events.vev (no records)");
}

TEST(OutputFailures, RunEndsAtEveryNumberThatIsWhole) {
    std::vector<OutputEnd> outputs = Channels(Unfinished, 1, 2, 9);
    outputs.push_back(Whole(L"CSC3.vcs", 9));
    for (const OutputEnd& output : Channels(Unfinished, 4, 5, 9)) outputs.push_back(output);
    EXPECT_EQ(NameUnfinishedOutputs(outputs),
              L"CSC1.vcs to CSC2.vcs (9 records each) and CSC4.vcs to CSC5.vcs (9 records each)");
}

TEST(OutputFailures, RunEndsWhereTheSuffixOfATakenNameChanges) {
    const std::vector<OutputEnd> outputs = {
        Unfinished(L"CSC1_01.vcs", 2), Unfinished(L"CSC2_01.vcs", 2), Unfinished(L"CSC3.vcs", 2),
        Unfinished(L"CSC4_01.vcs", 2)};
    EXPECT_EQ(NameUnfinishedOutputs(outputs),
              L"CSC1_01.vcs to CSC2_01.vcs (2 records each), CSC3.vcs (2 records) and CSC4_01.vcs "
              L"(2 records)");
}

// Nobody knows which axes are between two others.
TEST(OutputFailures, InertialFilesAreAllWrittenOut) {
    const std::vector<OutputEnd> outputs = {
        Unfinished(L"Base_LAX.vcs", 3), Unfinished(L"Base_LAY.vcs", 4),
        Unfinished(L"Base_LAZ.vcs", 3), Unfinished(L"AFE_LAX.vcs", 3)};
    EXPECT_EQ(NameUnfinishedOutputs(outputs),
              L"Base_LAX.vcs, Base_LAY.vcs, Base_LAZ.vcs (3 to 4 records) and AFE_LAX.vcs "
              L"(3 records)");
}

TEST(OutputFailures, RawDataAreCountedInBytes) {
    OutputEnd output = Unfinished(L"RawData.vrd");
    output.recordSize = 0;
    EXPECT_EQ(NameUnfinishedOutputs({{output}}), L"RawData.vrd (no data)");
    output.file.dataBytes = 4000;
    EXPECT_EQ(NameUnfinishedOutputs({{output}}), L"RawData.vrd (4000 bytes)");
}

}  // namespace
}  // namespace stalwick::test
