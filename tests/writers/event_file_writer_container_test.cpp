// SPDX-License-Identifier: BSD-3-Clause
#include "writers/event_file_writer_container.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/output_failures.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

// An event file for a recording of 32 kHz.
struct OpenEvents {
    explicit OpenEvents(const OutputSettings& settings = QuickSettings()) : container(settings) {
        container.samplingFrequency = 32000;
        container.lastTtl = 9;
        EXPECT_EQ(container.Open(directory.Path()), 0);
    }
    std::string Bytes() const { return ReadFile(directory.Path(L"Events.vev")); }

    TempDirectory directory;
    EventFileWriterContainer container;
};

TEST(EventFileWriterContainer, OpeningPreparesItsOneRecord) {
    const OpenEvents events;
    ASSERT_EQ(events.container.records.size(), 1U);
    const OutputFileRecord& record = events.container.records[0];
    EXPECT_EQ(record.acqEntName, L"Events");
    EXPECT_EQ(record.recordSize, 184U);
    EXPECT_EQ(record.eventBuffer.size(), 5000U);
    EXPECT_EQ(record.channelIndex, 0U);
    EXPECT_EQ(events.container.samplePeriod, 31.25);
    EXPECT_EQ(events.container.lastTtl, 0);
    EXPECT_TRUE(events.container.ttlUnset);
}

TEST(EventFileWriterContainer, FinishedFileSaysThatItWasNotClosed) {
    OpenEvents events;
    EXPECT_EQ(events.container.WriteBufferedEvents(), 0);
    EXPECT_EQ(events.container.fileIO.CloseAllOutputFiles(), 0);
    EXPECT_NE(events.Bytes().find("-TimeClosed File was not closed properly\r\n"),
              std::string::npos);
}

TEST(EventFileWriterContainer, HeaderHasTheEventTypeAndVersionAndNoAdditionalLines) {
    const OpenEvents events;
    const std::string bytes = events.Bytes();
    EXPECT_EQ(bytes.size(), 16384U);
    EXPECT_NE(bytes.find("-FileType Event\r\n-FileVersion 3.2\r\n"), std::string::npos);
    EXPECT_NE(bytes.find("-RecordSize 184\r\n"), std::string::npos);
    const std::string last = "-AcqEntName Events\r\n";
    ASSERT_NE(bytes.find(last), std::string::npos);
    EXPECT_EQ(bytes.find_first_not_of('\0', bytes.find(last) + last.size()), std::string::npos);
}

TEST(EventFileWriterContainer, FullBlockIsWrittenAtOnceAndTheCountStartsAgain) {
    OpenEvents events;
    for (std::uint64_t i = 0; i < 5000; ++i) {
        events.container.NextEvent().timestamp = i;
        EXPECT_EQ(events.container.CommitEvent(), 0);
    }
    EXPECT_EQ(events.container.records[0].bufferedCount, 0U);
    EXPECT_EQ(events.Bytes().size(), 16384U + 5000 * 184);
    // The block is reused without being cleared.
    const std::uint64_t last = events.container.records[0].eventBuffer[2].timestamp;
    EXPECT_EQ(last, 2U);
    events.container.NextEvent().timestamp = 77;
    EXPECT_EQ(events.container.CommitEvent(), 0);
    EXPECT_EQ(events.container.WriteBufferedEvents(), 0);
    EXPECT_EQ(events.Bytes().size(), 16384U + 5001 * 184);
    EXPECT_EQ(events.Bytes()[16384 + 5000 * 184 + 6], 77);
}

TEST(EventFileWriterContainer, FullBlockThatCannotBeWrittenFails) {
    OpenEvents events;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 0;
    for (int i = 0; i < 4999; ++i) EXPECT_EQ(events.container.CommitEvent(), 0);
    EXPECT_EQ(events.container.CommitEvent(), -1);
}

TEST(EventFileWriterContainer, RecordingThatFailsLosesWhatIsBufferedUnlessTheSettingsKeepIt) {
    for (const bool keep : {false, true}) {
        OutputSettings settings = QuickSettings();
        settings.keepPartialBlocks = keep;
        OpenEvents events(settings);
        for (int i = 0; i < 5001; ++i) EXPECT_EQ(events.container.CommitEvent(), 0);
        events.container.LeaveUnfinished();
        EXPECT_EQ(events.Bytes().size(), 16384U + (keep ? 5001 : 5000) * 184);
    }
}

TEST(EventFileWriterContainer, FileThatCannotBeCreatedFailsWithItsReason) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"Events.vev"));
    EventFileWriterContainer container(QuickSettings());
    container.samplingFrequency = 32000;
    EXPECT_EQ(container.Open(directory.Path()), -1);
    ASSERT_EQ(FailuresOf(container.fileIO.Files()).size(), 1U);
    EXPECT_NE(FailuresOf(container.fileIO.Files())[0].find(directory.Path(L"Events.vev")),
              std::wstring::npos);
}

TEST(EventFileWriterContainer, RefusedHeaderFails) {
    const TempDirectory directory;
    EventFileWriterContainer container(QuickSettings());
    container.samplingFrequency = 32000;
    container.sessionUuid = std::wstring(17000, L'x');
    EXPECT_EQ(container.Open(directory.Path()), -1);
    EXPECT_EQ(FailuresOf(container.fileIO.Files()).size(), 1U);
}

}  // namespace
}  // namespace stalwick::test
