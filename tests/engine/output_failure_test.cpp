// SPDX-License-Identifier: BSD-3-Clause

// Outputs that cannot be created, filled or closed: what is reported, and what stays unchanged.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

std::string FullRecording(std::size_t packetCount = 60) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    shape.packetCount = packetCount;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(51, shape));
}

std::wstring RecDirectory(const TempDirectory& directory) {
    MakeDirectory(directory.Path(L"out"));
    return directory.Path(L"out") + kPathSeparator + L"rec";
}

bool Tells(const EngineRun& run, const std::wstring& text) {
    return std::any_of(run.details.begin(), run.details.end(), [&](const ConversionDetail& detail) {
        return detail.kind == ConversionDetail::Kind::kIncomplete &&
               detail.text.find(text) != std::wstring::npos;
    });
}

std::string DetailsOf(const EngineRun& run) {
    std::string text;
    for (const ConversionDetail& detail : run.details) text += ToUtf8(detail.text) + "\n";
    return text;
}

TEST(OutputFailure, FileInPlaceOfTheRecordingsDirectoryStaysAndIsNamed) {
    const TempDirectory directory;
    WriteFile(RecDirectory(directory), "in the way");
    const EngineRun run = RunEngine(directory, FullRecording(), AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_EQ(run.errorText, L"");
    EXPECT_TRUE(Tells(run, RecDirectory(directory))) << DetailsOf(run);
    EXPECT_EQ(ReadFile(RecDirectory(directory)), "in the way");
}

TEST(OutputFailure, OutputDirectoryThatIsNotThereIsNamed) {
    const TempDirectory directory;
    const std::wstring input = PutRecording(directory, FullRecording());
    DataProcessor processor(QuickSettings());
    std::wstring status;
    ConversionJob job = MakeJob(directory, {input}, AllOutputs(), processor, status);
    job.outputDirectory = directory.Path(L"no") + kPathSeparator + L"such";
    RunConversionJob(job);
    EXPECT_EQ(status, L"Processing failed");
    ASSERT_EQ(processor.Details().size(), 1U);
    EXPECT_NE(processor.Details()[0].text.find(job.outputDirectory), std::wstring::npos);
}

TEST(OutputFailure, DirectoryWithTheNameOfAnOutputFailsAndStays) {
    for (const wchar_t* name : {L"CSC1.vcs", L"CSC32.vcs", L"Events.vev", L"RawData.vrd"}) {
        const TempDirectory directory;
        const std::wstring taken = RecDirectory(directory) + kPathSeparator + name;
        MakeDirectory(RecDirectory(directory));
        MakeDirectory(taken);
        const EngineRun run = RunEngine(directory, FullRecording(), AllOutputs());
        EXPECT_EQ(run.statusText, L"Processing failed");
        EXPECT_EQ(run.errorText, L"");
        EXPECT_TRUE(Tells(run, taken)) << DetailsOf(run);
        // Not opened at all: no file gets the second name.
        EXPECT_EQ(NamesIn(taken).size(), 0U);
        for (const auto& entry : run.files) EXPECT_EQ(entry.first.find("_01"), std::string::npos);
    }
}

TEST(OutputFailure, RefusedCreationIsNamedWithItsReason) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.createError = SystemErrorFor(SystemErrorKind::kAccessDenied);
    const EngineRun run = RunEngine(directory, FullRecording(), AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_TRUE(Tells(run, RecDirectory(directory) + kPathSeparator + L"CSC1.vcs"));
    EXPECT_TRUE(Tells(run, SystemErrorText(calls.createError))) << DetailsOf(run);
    EXPECT_TRUE(run.files.empty());
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(OutputFailure, TooManyOpenFilesFailAndTellOfTheLimit) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.createError = SystemErrorFor(SystemErrorKind::kTooManyOpenFiles);
    calls.createFails = [](const std::wstring& path) {
        return path.find(L"CSC20.vcs") != std::wstring::npos;
    };
    const EngineRun run = RunEngine(directory, FullRecording(), AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_TRUE(Tells(run, L"raise the limit of open files")) << DetailsOf(run);
    EXPECT_EQ(run.files.size(), 19U);
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(OutputFailure, TooManyOpenFilesOfAllJobsTellHowManyAreNeeded) {
    if (kPathSeparator != L'/') GTEST_SKIP() << "only memory limits them there";
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.createError = SystemErrorFor(SystemErrorKind::kTooManyOpenFiles);
    constexpr std::uint32_t kBeyondAnyLimit = 2'000'000'000;
    const EngineRun run = RunEngine(directory, FullRecording(), AllOutputs(), QuickSettings(),
                                    std::make_shared<ParallelConversions>(kBeyondAnyLimit));
    EXPECT_EQ(run.statusText, L"Processing failed");
    // 32 + 9 + 9 + 1 channel files, events, raw data and the recording; and 64 for everything else.
    EXPECT_TRUE(
        Tells(run, L"its 53 outputs are open at the same time as those of the other recordings"))
        << DetailsOf(run);
    EXPECT_EQ(run.details.front().cause, ConversionDetail::Cause::kOpenFileLimit);
    EXPECT_EQ(run.details.front().openFilesNeeded, 108'000'000'064U);
}

// The disk is full after this many bytes of records. Every outcome must be reported.
TEST(OutputFailure, FullDiskIsNeverSilent) {
    const std::string recording = FullRecording();
    for (const std::uint64_t bytes : {0U, 1U, 1043U, 1044U, 1045U, 40000U, 100000U, 150000U}) {
        const TempDirectory directory;
        FaultyFileCalls calls;
        calls.bytesUntilFull = bytes;
        const EngineRun run = RunEngine(directory, recording, AllOutputs());
        EXPECT_TRUE(Tells(run, SystemErrorText(SystemErrorFor(SystemErrorKind::kNoSpace))))
            << bytes << "\n"
            << DetailsOf(run);
        EXPECT_EQ(calls.openCount, 0U);
    }
}

TEST(OutputFailure, FullDiskWhileChannelFilesAreFinishedFailsTheFile) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 1044 * 3;
    const EngineRun run =
        RunEngine(directory, FullRecording(), {true, false, false, false, true, false});
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_EQ(run.errorText, L"");
    EXPECT_TRUE(Tells(run, L"rec.ord: not completely converted: ")) << DetailsOf(run);
    // No channel file claims to be closed.
    for (const auto& [name, bytes] : run.files) {
        EXPECT_NE(bytes.find("File was not closed properly"), std::string::npos) << name;
    }
}

TEST(OutputFailure, FullDiskAtTheRemainderOfTheEventsIsCompleteInStatusOnly) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 100;
    const EngineRun run =
        RunEngine(directory, FullRecording(), {false, false, false, false, true, false});
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(Tells(run, L"Events.vev")) << DetailsOf(run);
}

TEST(OutputFailure, FullDiskInTheRawDataIsCompleteInStatusOnly) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 5000;
    const EngineRun run =
        RunEngine(directory, FullRecording(), {false, false, false, false, false, true});
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(Tells(run, L"RawData.vrd is incomplete: ")) << DetailsOf(run);
    EXPECT_NE(run.files.at("RawData.vrd").find("File was not closed properly"), std::string::npos);
}

TEST(OutputFailure, BytesOnAFullDiskAreABeginningOfTheRightOnes) {
    const std::string recording = FullRecording(1200);
    const TempDirectory plain;
    const std::string whole = RunEngine(plain, recording, {false, false, false, false, false, true})
                                  .files.at("RawData.vrd");
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 1'000'100;
    const std::string cut =
        RunEngine(directory, recording, {false, false, false, false, false, true})
            .files.at("RawData.vrd");
    ASSERT_EQ(cut.size(), 16384U + 1'000'100U);
    EXPECT_TRUE(SameBytes(cut.substr(16384), whole.substr(16384, 1'000'100)));
}

TEST(OutputFailure, FullDiskOnlyForTheFinalHeadersFailsTheFile) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    bool hasData = false;
    calls.writeError = SystemErrorFor(SystemErrorKind::kNoSpace);
    calls.writeFails = [&](std::uint64_t offset) {
        hasData = hasData || offset > 0;
        return hasData && offset == 0;
    };
    const EngineRun run =
        RunEngine(directory, FullRecording(), {true, false, false, false, true, false});
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_TRUE(Tells(run, L"CSC1.vcs")) << DetailsOf(run);
}

TEST(OutputFailure, FailingCloseIsReportedForEveryKindOfFile) {
    const auto convert = [](const ReferenceConvertOptions& options) {
        const TempDirectory directory;
        FaultyFileCalls calls;
        calls.closeError = SystemErrorFor(SystemErrorKind::kNoSpace);
        return RunEngine(directory, FullRecording(), options);
    };
    const EngineRun channels = convert({true, false, false, false, false, false});
    EXPECT_EQ(channels.statusText, L"Processing failed");
    EXPECT_TRUE(Tells(channels, L"CSC1.vcs")) << DetailsOf(channels);
    const EngineRun events = convert({false, false, false, false, true, false});
    EXPECT_EQ(events.statusText, L"Processing complete");
    EXPECT_TRUE(Tells(events, L"Events.vev")) << DetailsOf(events);
    const EngineRun raw = convert({false, false, false, false, false, true});
    EXPECT_EQ(raw.statusText, L"Processing complete");
    EXPECT_TRUE(Tells(raw, L"RawData.vrd")) << DetailsOf(raw);
}

TEST(OutputFailure, FailingCloseOfTheRawDataIsReportedAfterAFailedConversionToo) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.closeError = SystemErrorFor(SystemErrorKind::kNoSpace);
    const EngineRun run = RunEngine(directory, FullRecording() + std::string(60000, 'x'),
                                    {false, false, false, false, false, true});
    EXPECT_EQ(run.errorText, L"Failed to process buffer. 0 bytes consumed.");
    EXPECT_TRUE(Tells(run, L"RawData.vrd is incomplete: cannot close")) << DetailsOf(run);
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(OutputFailure, FailingSyncKeepsTheHeaderThatSaysNotClosed) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.syncError = SystemErrorFor(SystemErrorKind::kOther);
    const EngineRun run = RunEngine(directory, FullRecording(),
                                    {false, true, false, false, false, false}, OutputSettings());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_TRUE(Tells(run, L"Base_LAX.vcs")) << DetailsOf(run);
    EXPECT_NE(run.files.at("Base_LAX.vcs").find("File was not closed properly"), std::string::npos);
}

TEST(OutputFailure, FailingSyncOfADirectoryIsReportedAndFailsNoFile) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.syncDirectoryError = SystemErrorFor(SystemErrorKind::kOther);
    const EngineRun run = RunEngine(directory, FullRecording(),
                                    {true, false, false, false, true, false}, OutputSettings());
    EXPECT_EQ(run.statusText, L"Processing complete");
    ASSERT_EQ(run.details.size(), 1U) << DetailsOf(run);
    EXPECT_TRUE(Tells(run,
                      L"rec.ord: its outputs may be lost after a power cut: cannot sync "
                      L"directory " +
                          RecDirectory(directory) + L": " +
                          SystemErrorText(calls.syncDirectoryError)))
        << DetailsOf(run);
}

TEST(OutputFailure, ShortAndInterruptedWritesGiveTheSameFiles) {
    const std::string recording = FullRecording();
    const TempDirectory directory;
    const ReferenceConvertResult expected = RunReference(directory, recording, AllOutputs());
    FaultyFileCalls calls;
    calls.mostBytesPerCall = 1001;
    calls.interruptionsPerCall = 2;
    const EngineRun run = RunEngine(directory, recording, AllOutputs(), OutputSettings());
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(run.details.empty()) << DetailsOf(run);
    EXPECT_TRUE(SameFiles(run.files, expected.files));
}

TEST(OutputFailure, HeaderTextThatDoesNotFitFailsTheFile) {
    // The session's text alone nearly fills the recording's header, and those of the outputs too.
    OrdHeaderText header = Version1Header(1);
    header.Set("-SessionUUID", std::string(16000, 's'));
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, header.Block(), ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_EQ(run.errorText, L"");
    EXPECT_TRUE(Tells(run, L"CSC1.vcs")) << DetailsOf(run);
}

TEST(OutputFailure, EarlierFilesAreNeverTouched) {
    const TempDirectory directory;
    const std::string recording = FullRecording();
    RunEngine(directory, recording, AllOutputs());
    const auto before = FilesIn(RecDirectory(directory));
    FaultyFileCalls calls;
    calls.bytesUntilFull = 3000;
    const EngineRun run = RunEngine(directory, recording, AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing failed");
    for (const auto& [name, bytes] : before) EXPECT_EQ(run.files.at(name), bytes) << name;
}

}  // namespace
}  // namespace stalwick::test
