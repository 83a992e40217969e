// SPDX-License-Identifier: BSD-3-Clause
#include "engine/conversion_account.h"

#include <string>

#include <gtest/gtest.h>

#include "engine/data_processor.h"
#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr ChannelOptions kAllChannels = {1, 1, 1, 1};

// A block is read after the previous one was converted: cancels come at a known place.
OutputSettings OneThread() {
    OutputSettings settings = QuickSettings();
    settings.helperThreads = HelperThreads::kOff;
    return settings;
}

class Account : public testing::Test {
  protected:
    ConversionAccount Of(const std::string& recording, bool raw = true) {
        MakeDirectory(directory_.Path(L"out"));
        path_ = PutRecording(directory_, recording);
        status_ =
            processor_.ProcessFile({path_}, directory_.Path(L"out"), kAllChannels, 1, raw ? 1 : 0);
        return processor_.LastAccount();
    }
    std::wstring RecDirectory() const { return directory_.Path(L"out") + kPathSeparator + L"rec"; }
    std::uint64_t BytesOnDisk() const {
        std::uint64_t bytes = 0;
        for (const auto& [name, content] : FilesIn(RecDirectory())) bytes += content.size();
        return bytes;
    }

    TempDirectory directory_;
    DataProcessor processor_{OneThread()};
    std::wstring path_;
    std::int32_t status_ = 0;
};

std::string Recording(bool timestamps, std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    shape.packetCount = packetCount;
    shape.timestamps = timestamps;
    shape.timestampStepNs = 1'000'000;
    return BuildOrdFile(timestamps ? Version2Header(32) : Version1Header(32),
                        MakeRandomPackets(5, shape));
}

TEST_F(Account, SaysWhatWasReadAndWhatWasWritten) {
    const std::string recording = Recording(true, 700);
    const ConversionAccount account = Of(recording);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(account.recording, path_);
    EXPECT_EQ(account.outputDirectory, RecDirectory());
    EXPECT_FALSE(account.failed);
    EXPECT_FALSE(account.canceled);
    EXPECT_EQ(account.adChannels, 32U);
    EXPECT_EQ(account.packets, 700U);
    EXPECT_EQ(account.inputBytes, recording.size());
    EXPECT_EQ(account.inputBytesRead, recording.size());
    EXPECT_EQ(account.outputFiles, 53U);
    EXPECT_EQ(account.outputBytes, BytesOnDisk());
    EXPECT_TRUE(account.details.empty());
}

TEST_F(Account, DurationIsThatOfTheTimestampsAndOfTheLastPacketsSamples) {
    // One timestamp per millisecond; ten samples at 30 kHz.
    EXPECT_DOUBLE_EQ(Of(Recording(true, 700)).durationSeconds, 0.699 + 10.0 / 30000);
}

TEST_F(Account, DurationWithoutTimestampsIsTenSamplesAPacket) {
    EXPECT_DOUBLE_EQ(Of(Recording(false, 700)).durationSeconds, 7000.0 / 30000);
}

TEST_F(Account, TimestampsThatRunBackwardsAreNoDuration) {
    std::vector<PacketPlan> packets(3);
    for (std::size_t i = 0; i < 3; ++i) packets[i].hardwareTimestamp = 1'000'000'000 - i;
    EXPECT_DOUBLE_EQ(Of(BuildOrdFile(Version2Header(1), packets)).durationSeconds, 30.0 / 30000);
}

TEST_F(Account, FailureSaysHowFarTheConversionCame) {
    const std::string recording =
        BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(9000), std::string(60000, 'x'));
    const ConversionAccount account = Of(recording);
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(account.failed);
    EXPECT_EQ(account.packets, 9000U);
    EXPECT_EQ(account.inputBytes, recording.size());
    EXPECT_LT(account.inputBytesRead, recording.size());
    EXPECT_EQ(account.outputBytes, BytesOnDisk());
    ASSERT_EQ(account.details.size(), 1U);
    EXPECT_EQ(account.details[0].text, processor_.Details()[0].text);
}

TEST_F(Account, RecordingThatCannotBeOpenedHasAnAccountToo) {
    EXPECT_EQ(processor_.ProcessFile({L"none.ord"}, directory_.Path(L"none"), kAllChannels, 1, 0),
              -1);
    EXPECT_EQ(processor_.LastAccount().recording, L"none.ord");
    EXPECT_TRUE(processor_.LastAccount().failed);
    EXPECT_EQ(processor_.LastAccount().outputFiles, 0U);
}

TEST_F(Account, CancelSaysHowFarTheConversionCame) {
    FaultyFileCalls disk;
    disk.beforeRead = [this](unsigned readCount) {
        if (readCount == 2) processor_.cancelRequested.store(1);
    };
    const std::string recording = BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(90000));
    const ConversionAccount account = Of(recording);
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(account.canceled);
    EXPECT_FALSE(account.failed);
    EXPECT_LT(account.packets, 90000U);
    EXPECT_LT(account.inputBytesRead, recording.size());
    EXPECT_EQ(account.outputFiles, NamesIn(RecDirectory()).size());
    EXPECT_EQ(account.outputBytes, BytesOnDisk());
}

TEST_F(Account, CancelAfterTheLastBlockIsNone) {
    FaultyFileCalls disk;
    disk.afterRead = [this](std::size_t count) {
        if (count == 0) processor_.cancelRequested.store(1);
    };
    const ConversionAccount account = Of(Recording(true, 1));
    EXPECT_EQ(account.packets, 1U);
    EXPECT_FALSE(account.canceled);
}

TEST_F(Account, TakingTheAccountLeavesAnEmptyOne) {
    Of(Recording(true, 3));
    EXPECT_EQ(processor_.TakeAccount().packets, 3U);
    EXPECT_EQ(processor_.LastAccount().packets, 0U);
    EXPECT_TRUE(processor_.LastAccount().recording.empty());
}

}  // namespace
}  // namespace stalwick::test
