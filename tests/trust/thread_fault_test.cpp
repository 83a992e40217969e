// SPDX-License-Identifier: BSD-3-Clause

// Conversions by a process that cannot start another thread: slower, and otherwise the same.

#include <gtest/gtest.h>

#include "cli/conversion_batch.h"
#include "cli/convert_command.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/no_threads.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

OutputSettings SettingsThatWantThreads() {
    OutputSettings settings;  // waits for the disk, many files at a time
    settings.helperThreads = HelperThreads::kOn;
    settings.recordsPerWrite = 1;
    return settings;
}

TEST(ThreadFault, ConversionThatGetsNoThreadWritesTheSameFiles) {
    const std::string recording = MakeFullRecording(32, 130);
    const NoThreads scarcity;
    EXPECT_TRUE(ConvertsLikeTheReference(recording, AllOutputs(), SettingsThatWantThreads()));
    EXPECT_GT(scarcity.RefusedCount(), 0U);
}

TEST(ThreadFault, JobsThatGetNoThreadAreDoneOneAfterAnother) {
    const TempDirectory directory;
    const std::string recording = MakeFullRecording(2, 60);
    CommandLine line;
    for (const wchar_t* name : {L"a.ord", L"b.ord", L"c.ord"}) {
        line.inputFiles.push_back(PutRecording(directory, recording, name));
    }
    line.outputDirectory = directory.Path(L"out");
    line.channelOptions = {1, 0, 0, 0};
    line.jobs = 3;
    line.outputSettings = SettingsThatWantThreads();
    MakeDirectory(line.outputDirectory);
    const NoThreads scarcity;
    ConversionBatch batch(line, PlanRecordings(line));
    batch.Run();
    EXPECT_EQ(batch.Status(), L"Processing complete");
    EXPECT_GT(scarcity.RefusedCount(), 0U);
    ReferenceConvertInput input;
    input.recording = recording;
    for (const auto& [name, bytes] : ReferenceConvert(input).files) {
        for (const wchar_t* converted : {L"out/a", L"out/b", L"out/c"}) {
            const auto files = FilesIn(directory.Path(converted));
            EXPECT_TRUE(
                SameBytes(files.at(name).substr(kOrdHeaderBytes), bytes.substr(kOrdHeaderBytes)));
        }
    }
}

TEST(ThreadFault, CommandThatGetsNoThreadConvertsOnItsOne) {
    const TempDirectory directory;
    const std::string recording = MakeFullRecording(2, 60);
    const std::wstring input = PutRecording(directory, recording);
    const FixedIdentity identity;
    testing::internal::CaptureStdout();
    const NoThreads scarcity;
    const int exitStatus =
        RunConvertCommand({"--all", "-o", ToUtf8(directory.Path(L"out")), ToUtf8(input)});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Processing complete\n");
    EXPECT_EQ(exitStatus, 0);
    EXPECT_GT(scarcity.RefusedCount(), 0U);
    EXPECT_TRUE(SameFiles(FilesIn(directory.Path(L"out/rec")),
                          RunReference(directory, recording, AllOutputs()).files));
}

}  // namespace
}  // namespace stalwick::test
