// Recordings that fill the buffers of 5000 records.

#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kHeaderBytes = 16384;
constexpr std::size_t kEventBytes = 184;

// A recording whose TTL input changes exactly so often, ten times a packet.
std::string RecordingWithChanges(std::size_t changes) {
    std::vector<PacketPlan> plans(1);  // the first value, 0, is no change
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

struct EventWrites {
    std::size_t fileSize = 0;
    unsigned writeCount = 0;  // the headers' included
};

EventWrites ConvertEvents(std::size_t changes) {
    const TempDirectory directory;
    const std::string recording = RecordingWithChanges(changes);
    FaultyFileCalls calls;
    const EngineRun run =
        RunEngine(directory, recording, {false, false, false, false, true, false});
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(calls.openCount, 0U);
    return {run.files.at("Events.vev").size(), calls.writeCount};
}

TEST(FullBuffer, ExactlyFiveThousandChangesMakeOneFullWrite) {
    const EventWrites writes = ConvertEvents(5000);
    EXPECT_EQ(writes.fileSize, kHeaderBytes + 5000 * kEventBytes);
    // The header and one block; the remainder of 0 bytes needs no call.
    EXPECT_EQ(writes.writeCount, 2U);
}

TEST(FullBuffer, OneChangeMoreMakesARemainderOfOneRecord) {
    const EventWrites writes = ConvertEvents(5001);
    EXPECT_EQ(writes.fileSize, kHeaderBytes + 5001 * kEventBytes);
    EXPECT_EQ(writes.writeCount, 3U);
}

TEST(FullBuffer, OneChangeFewerIsWrittenAtTheEnd) {
    const EventWrites writes = ConvertEvents(4999);
    EXPECT_EQ(writes.fileSize, kHeaderBytes + 4999 * kEventBytes);
    EXPECT_EQ(writes.writeCount, 2U);
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
    ASSERT_EQ(run.details.size(), 2U);
    EXPECT_NE(run.details[0].text.find(L"Events.vev"), std::wstring::npos);
    EXPECT_NE(run.details[1].text.find(L"rec.ord: not converted whole: "), std::wstring::npos);
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
