// SPDX-License-Identifier: BSD-3-Clause

// Inputs that no sane recorder writes: a text reports what is wrong, and there is no output file.

#include <string>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

std::wstring StatusOf(const std::string& recording) {
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, AllOutputs());
    if (run.statusText != L"Processing complete") {
        EXPECT_TRUE(run.files.empty());
        EXPECT_EQ(run.details.size(), 1U);
        for (const ConversionDetail& detail : run.details) {
            EXPECT_EQ(detail.kind, ConversionDetail::Kind::kIncomplete);
            EXPECT_NE(detail.text.find(directory.Path(L"in")), std::wstring::npos);
        }
    }
    return run.statusText;
}

TEST(BadInput, EmptyFileLacksTheFirstField) {
    EXPECT_EQ(StatusOf(""), L"Processing failed - Error retrieving header field -NumADChannels");
}

TEST(BadInput, MissingFileIsNamed) {
    const TempDirectory directory;
    DataProcessor processor(QuickSettings());
    std::wstring status;
    const std::wstring path = directory.Path(L"none.ord");
    RunConversionJob(MakeJob(directory, {path}, AllOutputs(), processor, status));
    EXPECT_EQ(status, L"Processing failed - Error opening file, the file path(" + path +
                          L") may be invalid.");
    EXPECT_TRUE(NamesIn(directory.Path(L"out") + kPathSeparator + L"none").empty());
    ASSERT_EQ(processor.Details().size(), 1U);
    EXPECT_NE(processor.Details()[0].text.find(path), std::wstring::npos);
}

TEST(BadInput, DirectoryCannotBeOpened) {
    const TempDirectory directory;
    DataProcessor processor(QuickSettings());
    std::wstring status;
    const std::wstring path = directory.Path(L"dir.ord");
    MakeDirectory(path);
    RunConversionJob(MakeJob(directory, {path}, AllOutputs(), processor, status));
    EXPECT_EQ(status, L"Processing failed - Error opening file, the file path(" + path +
                          L") may be invalid.");
    EXPECT_TRUE(NamesIn(directory.Path(L"out") + kPathSeparator + L"dir").empty());
}

TEST(BadInput, EveryMissingRequiredFieldIsNamed) {
    for (const std::string key :
         {"-NumADChannels", "-SamplingFrequency", "-ADMaxValue", "-ADBitVolts", "-InputRange",
          "-FileVersion", "-UTCOffsetMicroseconds"}) {
        EXPECT_EQ(StatusOf(OrdHeaderText().Remove(key).Block()),
                  L"Processing failed - Error retrieving header field " +
                      std::wstring(key.begin(), key.end()));
    }
}

TEST(BadInput, MoreThan256ChannelsAreRefused) {
    const std::wstring refused = L"Processing failed - Invalid header field -NumADChannels";
    const auto statusFor = [](const std::string& count) {
        return StatusOf(OrdHeaderText().Set("-NumADChannels", count).Block());
    };
    EXPECT_EQ(statusFor("4294967295"), refused);
    EXPECT_EQ(statusFor("4294967296"), refused);
    EXPECT_EQ(statusFor("-1"), refused);
    EXPECT_EQ(statusFor("257"), refused);
    EXPECT_EQ(statusFor("256"), L"Processing complete");
}

TEST(BadInput, SamplingFrequencyOfZeroIsRefused) {
    const std::wstring refused = L"Processing failed - Invalid header field -SamplingFrequency";
    for (const std::string value : {"0", "0.9", "none", "-0"}) {
        EXPECT_EQ(StatusOf(OrdHeaderText().Set("-SamplingFrequency", value).Block()), refused);
    }
}

TEST(BadInput, RefusalsComeInTheOrderOfTheHeader) {
    OrdHeaderText header;
    header.Set("-NumADChannels", "257").Set("-SamplingFrequency", "0");
    EXPECT_EQ(StatusOf(header.Block()), L"Processing failed - Invalid header field -NumADChannels");
}

TEST(BadInput, HeaderOfOneLongLineLacksTheFirstField) {
    EXPECT_EQ(StatusOf(std::string(16384, 'x')),
              L"Processing failed - Error retrieving header field -NumADChannels");
}

TEST(BadInput, JunkInPlaceOfAFullSpanIsReportedWhereItBegins) {
    const TempDirectory directory;
    const std::string recording =
        BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(10), std::string(60000, 'x'));
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing failed - Failed to process buffer. 0 bytes consumed.");
    EXPECT_EQ(run.recordsProcessed, 10U);
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_NE(run.details[0].text.find(L"byte 16494"), std::wstring::npos);
    // Opened files stay, with the header of a file that was not closed.
    EXPECT_NE(run.files.at("CSC1.vcs").find("File was not closed properly"), std::string::npos);
}

TEST(BadInput, FailedReadInTheMiddleEndsTheConversionWithItsReason) {
    const TempDirectory directory;
    const std::string recording = BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(9000));
    FaultyFileCalls calls;
    calls.readError = 5;
    calls.readsUntilError = 2;  // the header block and one span
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing failed - Failed to process input file");
    EXPECT_GT(run.recordsProcessed, 4000U);
    EXPECT_EQ(run.details.size(), 1U);
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(BadInput, FailedReadOfTheHeaderIsReported) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.readError = 5;
    const EngineRun run = RunEngine(directory, OrdHeaderText().Block(), ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing failed - Error reading header from file.");
    EXPECT_TRUE(run.files.empty());
}

TEST(BadInput, ControlCharactersOfAPathAreWrittenOutInDetails) {
    const TempDirectory directory;
    DataProcessor processor(QuickSettings());
    std::wstring status;
    const std::wstring path = directory.Path(L"a\nb\x1b[2J.ord");
    RunConversionJob(MakeJob(directory, {path}, AllOutputs(), processor, status));
    ASSERT_FALSE(processor.Details().empty());
    for (const ConversionDetail& detail : processor.Details()) {
        EXPECT_EQ(detail.text.find_first_of(L"\n\x1b"), std::wstring::npos);
    }
}

}  // namespace
}  // namespace stalwick::test
