// SPDX-License-Identifier: BSD-3-Clause
#include "engine/conversion_job.h"

#include <string>

#include <gtest/gtest.h>

#include "engine/output_directory.h"
#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// Recordings in one directory, converted into another with one processor.
struct JobRun {
    explicit JobRun(const OutputSettings& settings = QuickSettings()) : processor(settings) {}

    std::wstring Put(const std::wstring& name, const std::string& recording) {
        return PutRecording(directory, recording, name);
    }
    void Run(const std::vector<std::wstring>& inputFiles) {
        RunConversionJob(
            MakeJob(directory, inputFiles, ReferenceConvertOptions(), processor, statusText));
    }
    std::set<std::string> OutputsOf(const std::wstring& name) const {
        return NamesIn(directory.Path(L"out") + kPathSeparator + name);
    }

    TempDirectory directory;
    DataProcessor processor;
    std::wstring statusText = L"(not finished)";
};

std::string SmallRecording() {
    return BuildOrdFile(Version1Header(2), std::vector<PacketPlan>(3));
}

TEST(ConversionJob, EmptySelectionIsCompleteAtOnce) {
    JobRun job;
    job.Run({});
    EXPECT_EQ(job.statusText, L"Processing complete");
}

TEST(ConversionJob, FilesAreConvertedInTheirOrder) {
    JobRun job;
    job.Run({job.Put(L"b.ord", SmallRecording()), job.Put(L"a.ord", SmallRecording())});
    EXPECT_EQ(job.statusText, L"Processing complete");
    EXPECT_EQ(job.OutputsOf(L"a").size(), 3U);
    EXPECT_EQ(job.OutputsOf(L"b").size(), 3U);
}

TEST(ConversionJob, FailureInTheSecondOfThreeKeepsTheFirstAndNeverOpensTheThird) {
    JobRun job;
    job.Run({job.Put(L"a.ord", SmallRecording()), job.Put(L"b.ord", ""),
             job.Put(L"c.ord", SmallRecording())});
    EXPECT_EQ(job.statusText, L"Processing failed - Error retrieving header field -NumADChannels");
    EXPECT_EQ(job.OutputsOf(L"a").size(), 3U);
    EXPECT_FALSE(Exists(job.directory.Path(L"out") + kPathSeparator + L"c"));
}

TEST(ConversionJob, FailureWithoutTextIsJustAFailure) {
    JobRun job;
    MakeDirectory(job.directory.Path(L"out"));
    WriteFile(job.directory.Path(L"out") + kPathSeparator + L"a", "in the way");
    job.Run({job.Put(L"a.ord", SmallRecording())});
    EXPECT_EQ(job.statusText, L"Processing failed");
}

TEST(ConversionJob, FailureWithoutTextShowsTheTextOfAnEarlierOne) {
    JobRun job;
    job.Run({job.Put(L"b.ord", "")});
    WriteFile(job.directory.Path(L"out") + kPathSeparator + L"a", "in the way");
    job.Run({job.Put(L"a.ord", SmallRecording())});
    EXPECT_EQ(job.statusText, L"Processing failed - Error retrieving header field -NumADChannels");
}

TEST(ConversionJob, WithoutACallableFailuresStopNothing) {
    JobRun job;
    ConversionJob silent =
        MakeJob(job.directory,
                {job.Put(L"a.ord", ""), job.Put(L"b.ord", ""), job.Put(L"c.ord", SmallRecording())},
                ReferenceConvertOptions(), job.processor, job.statusText);
    silent.onFinished = nullptr;
    RunConversionJob(silent);
    EXPECT_EQ(job.OutputsOf(L"c").size(), 3U);
    EXPECT_EQ(job.statusText, L"(not finished)");
}

TEST(ConversionJob, CanceledJobNeverSaysComplete) {
    JobRun job;
    job.processor.cancelRequested.store(1);
    job.Run({job.Put(L"a.ord", SmallRecording())});
    EXPECT_EQ(job.statusText, L"Data processing canceled.");
    JobRun empty;
    empty.processor.cancelRequested.store(1);
    empty.Run({});
    EXPECT_EQ(empty.statusText, L"Data processing canceled.");
}

TEST(ConversionJob, FilesAfterACancelGetHeadersAndNoData) {
    JobRun job;
    job.processor.cancelRequested.store(1);
    job.Run({job.Put(L"a.ord", SmallRecording()), job.Put(L"b.ord", SmallRecording())});
    for (const wchar_t* name : {L"a", L"b"}) {
        for (const auto& [file, bytes] :
             FilesIn(job.directory.Path(L"out") + kPathSeparator + name)) {
            EXPECT_EQ(bytes.size(), 16384U) << file;
        }
        EXPECT_EQ(job.OutputsOf(name).size(), 3U);
    }
}

TEST(ConversionJob, FailureAfterACancelIsAFailure) {
    JobRun job;
    job.processor.cancelRequested.store(1);
    job.Run({job.Put(L"a.ord", "")});
    EXPECT_EQ(job.statusText, L"Processing failed - Error retrieving header field -NumADChannels");
}

TEST(ConversionJob, CancelBetweenSpansFinishesTheFileInOrder) {
    RandomRecordingShape shape;
    shape.packetCount = 700;
    const std::string recording = BuildOrdFile(Version2Header(32), MakeRandomPackets(41, shape));
    ASSERT_GT(recording.size(), 16384U + 2 * 50000U);
    for (const unsigned spans : {1U, 2U, 3U}) {
        // With one thread, a read of the file is a known moment of the conversion.
        OutputSettings settings = QuickSettings();
        settings.helperThreads = HelperThreads::kOff;
        JobRun job(settings);
        const std::wstring path = job.Put(L"rec.ord", recording);
        const FixedIdentity identity;
        FaultyFileCalls calls;
        // The first read is the header's; the flag is checked before the next span.
        calls.beforeRead = [&](unsigned readCount) {
            if (readCount == spans) job.processor.cancelRequested.store(1);
        };
        job.Run({path});
        ReferenceConvertInput input;
        input.recording = recording;
        input.spansUntilCancel = spans;
        input.fileName = "rec.ord";
        ReferenceConvertResult expected = ReferenceConvert(input);
        EXPECT_EQ(job.statusText, L"Data processing canceled.");
        EXPECT_EQ(job.processor.recordsProcessed.load(), expected.packetCount);
        for (const auto& [name, bytes] :
             FilesIn(job.directory.Path(L"out") + kPathSeparator + L"rec")) {
            EXPECT_TRUE(SameBytes(bytes.substr(16384), expected.files.at(name).substr(16384)))
                << name;
        }
    }
}

TEST(ConversionJob, InputsOfTheSameNameShareADirectoryAndNothingIsOverwritten) {
    JobRun job;
    const std::wstring first = job.Put(L"rec.ord", SmallRecording());
    MakeDirectory(job.directory.Path(L"other"));
    const std::wstring second = job.directory.Path(L"other") + kPathSeparator + L"rec.ord";
    WriteFile(second, BuildOrdFile(Version1Header(1), {}));
    job.Run({first, second});
    EXPECT_EQ(job.statusText, L"Processing complete");
    EXPECT_EQ(job.OutputsOf(L"rec"), (std::set<std::string>{"CSC1.vcs", "CSC1_01.vcs", "CSC2.vcs",
                                                            "Events.vev", "Events_01.vev"}));
}

TEST(ConversionJob, ExistingFileInPlaceOfTheOutputDirectoryCannotBeADirectory) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"out"), "a file");
    EXPECT_NE(EnsureOutputDirectory(directory.Path(L"out")), 0);
    EXPECT_EQ(ReadFile(directory.Path(L"out")), "a file");
}

TEST(ConversionJob, OneLevelOfTheOutputDirectoryIsCreatedAndNoMore) {
    const TempDirectory directory;
    EXPECT_EQ(EnsureOutputDirectory(directory.Path(L"out")), 0);
    EXPECT_EQ(EnsureOutputDirectory(directory.Path(L"out")), 0);
    const std::wstring deep = directory.Path(L"no") + kPathSeparator + L"out";
    EXPECT_NE(EnsureOutputDirectory(deep), 0);
    EXPECT_FALSE(Exists(directory.Path(L"no")));
}

TEST(ConversionJob, OutputDirectoryErrorHasItsTextWithTwoBlanks) {
    EXPECT_EQ(OutputDirectoryErrorText(L"/x/y"),
              L"Error creating output directory(/x/y).  Unable to proceed.  Please make sure the "
              L"output directory location exists.");
}

}  // namespace
}  // namespace stalwick::test
