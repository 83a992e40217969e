// SPDX-License-Identifier: BSD-3-Clause

// Recordings that fill the buffers of 5000 records.

#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kHeaderBytes = 16384;
constexpr std::size_t kEventBytes = 184;

// A recording whose TTL input changes exactly this often, ten times per packet.
std::string RecordingWithChanges(std::size_t changes) {
    std::vector<PacketPlan> plans(1);  // the first value, 0, is not a change
    std::uint8_t state = 0;
    while (changes > 0) {
        PacketPlan plan;
        plan.stateBytePerSample = true;
        plan.stateBytes.clear();
        for (std::size_t i = 0; i < 10; ++i) {
            if (changes > 0) {
                state ^= 0x10;
                --changes;
            }
            plan.stateBytes.push_back(state);
        }
        plans.push_back(plan);
    }
    return BuildOrdFile(Version1Header(1), plans);
}

// The system's calls; records the length of each write. For one thread.
class NotingWrites final : public ForwardingFileCalls {
  public:
    std::vector<std::size_t> sizes;

    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        sizes.push_back(size);
        return ForwardingFileCalls::WriteAt(handle, offset, data, size, transferred);
    }
};

// The lengths of all writes to the event file, the header's first.
std::vector<std::size_t> WritesOfEvents(std::size_t changes) {
    const TempDirectory directory;
    const std::string recording = RecordingWithChanges(changes);
    NotingWrites calls;
    const EngineRun run =
        RunEngine(directory, recording, {false, false, false, false, true, false});
    EXPECT_EQ(run.statusText, L"Processing complete");
    return calls.sizes;
}

TEST(FullBuffer, ExactlyFiveThousandChangesMakeOneFullWriteAndNoRemainder) {
    EXPECT_EQ(WritesOfEvents(5000), (std::vector<std::size_t>{kHeaderBytes, 5000 * kEventBytes}));
}

TEST(FullBuffer, OneChangeMoreMakesARemainderOfOneRecord) {
    EXPECT_EQ(WritesOfEvents(5001),
              (std::vector<std::size_t>{kHeaderBytes, 5000 * kEventBytes, kEventBytes}));
}

TEST(FullBuffer, OneChangeFewerIsWrittenAtTheEnd) {
    EXPECT_EQ(WritesOfEvents(4999), (std::vector<std::size_t>{kHeaderBytes, 4999 * kEventBytes}));
}

TEST(FullBuffer, NoChangeWritesTheHeaderAlone) {
    EXPECT_EQ(WritesOfEvents(0), (std::vector<std::size_t>{kHeaderBytes}));
}

TEST(FullBuffer, EventsConvertLikeTheReference) {
    for (const std::size_t changes : {4999U, 5000U, 5001U, 10003U}) {
        EXPECT_TRUE(
            ConvertsLikeTheReference(RecordingWithChanges(changes), ReferenceConvertOptions()))
            << changes;
    }
}

TEST(FullBuffer, FullEventBlockThatCannotBeWrittenEndsTheConversion) {
    const TempDirectory directory;
    const std::string recording = RecordingWithChanges(6000);
    FaultyFileCalls calls;
    calls.bytesUntilFull = 1000;
    const EngineRun run =
        RunEngine(directory, recording, {false, false, false, false, true, false});
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_EQ(run.errorText, L"");
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_NE(run.details[0].text.find(L"Events.vev"), std::wstring::npos);
    EXPECT_EQ(calls.openCount, 0U);
}

// Ultrasonic blocks fill records fastest: 512 samples in 7.3 packets.
std::string UltrasonicRecording(std::size_t packetCount, bool timestamps) {
    std::vector<PacketPlan> plans(packetCount);
    for (std::size_t i = 0; i < packetCount; ++i) {
        plans[i].ultrasonic.emplace().fill(static_cast<std::uint16_t>(i * 13));
        if (timestamps) plans[i].hardwareTimestamp = 1'000'000'000 + i * 333'333;
    }
    return BuildOrdFile(timestamps ? Version2Header(0) : Version1Header(0), plans);
}

TEST(FullBuffer, ChannelFileOfMoreThanFiveThousandRecordsConvertsLikeTheReference) {
    // 36,572 packets are 5000 records and 40 samples; 36,571 end 30 samples before them.
    for (const std::size_t packetCount : {36571U, 36572U, 37000U}) {
        EXPECT_TRUE(ConvertsLikeTheReference(UltrasonicRecording(packetCount, false),
                                             {false, false, false, true, false, false}))
            << packetCount;
    }
    EXPECT_TRUE(ConvertsLikeTheReference(UltrasonicRecording(37000, true),
                                         {false, false, false, true, false, false}));
}

// Ten samples per packet of one channel: 51.2 packets fill a record.
std::string OneChannelRecording(std::size_t packetCount) {
    PacketPlan plan;
    plan.channelMask = MakeChannelMask(32, {0});
    plan.adBlock = PlanAdBlock(std::vector<std::uint16_t>(320, 4), 32, 10, 1);
    return BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(packetCount, plan));
}

TEST(FullBuffer, RecordingThatEndsWithFiveThousandWholeRecordsHasNothingAfterThem) {
    const ReferenceConvertOptions channelsOnly = {true, false, false, false, false, false};
    const std::string recording = OneChannelRecording(256'000);  // 5000 x 512 samples
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, channelsOnly);
    EXPECT_EQ(run.files.at("CSC1.vcs").size(), kHeaderBytes + 5'220'000);
    EXPECT_TRUE(SameFiles(run.files, RunReference(directory, recording, channelsOnly).files));
}

TEST(FullBuffer, RawDataOfMoreThanFiveThousandRecordsConvertsLikeTheReference) {
    RandomRecordingShape shape;
    for (const std::size_t packetCount : {499U, 500U, 501U, 1100U}) {
        shape.packetCount = packetCount;
        EXPECT_TRUE(
            ConvertsLikeTheReference(BuildOrdFile(Version2Header(32), MakeRandomPackets(31, shape)),
                                     {false, false, false, false, false, true}))
            << packetCount;
    }
}

TEST(FullBuffer, RawDataOfOtherChannelCountsIsWrittenInBoundedPieces) {
    RandomRecordingShape shape;
    shape.packet.channelCountCode = 1;
    shape.packetCount = 1100;
    EXPECT_TRUE(
        ConvertsLikeTheReference(BuildOrdFile(Version2Header(32), MakeRandomPackets(32, shape)),
                                 {false, false, false, false, false, true}));
}

}  // namespace
}  // namespace stalwick::test
