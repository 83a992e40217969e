// SPDX-License-Identifier: BSD-3-Clause

// The rules of the conversion loop, each on a recording small enough to calculate by hand.

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kHeaderBytes = 16384;

std::uint64_t LittleEndian(const std::string& bytes, std::size_t at, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = count; i > 0; --i) {
        value = (value << 8U) | static_cast<unsigned char>(bytes.at(at + i - 1));
    }
    return value;
}

struct Event {
    std::uint64_t timestamp = 0;
    std::uint64_t ttlValue = 0;
    bool operator==(const Event&) const = default;
};

void PrintTo(const Event& event, std::ostream* out) {
    *out << event.timestamp << " us, TTL " << event.ttlValue;
}

std::vector<Event> EventsOf(const EngineRun& run) {
    const std::string& bytes = run.files.at("Events.vev");
    std::vector<Event> events;
    for (std::size_t at = kHeaderBytes; at < bytes.size(); at += 184) {
        events.push_back({LittleEndian(bytes, at + 6, 8), LittleEndian(bytes, at + 16, 2)});
    }
    return events;
}

// A packet with one state byte; its TTL value is the byte with its nibbles swapped.
PacketPlan StatePacket(std::uint8_t ttlValue, std::optional<std::uint64_t> timestamp = {}) {
    PacketPlan plan;
    plan.hardwareTimestamp = timestamp;
    plan.stateBytes = {static_cast<std::uint8_t>(ttlValue << 4 | ttlValue >> 4)};
    return plan;
}

EngineRun Convert(const OrdHeaderText& header, const std::vector<PacketPlan>& plans,
                  const ReferenceConvertOptions& options = ReferenceConvertOptions()) {
    const TempDirectory directory;
    return RunEngine(directory, BuildOrdFile(header, plans), options);
}

TEST(FileConversion, TtlInputThatNeverChangesGivesAnEventFileWithoutRecords) {
    const EngineRun run =
        Convert(Version1Header(1), std::vector<PacketPlan>(50, StatePacket(0x5A)));
    EXPECT_EQ(run.files.at("Events.vev").size(), kHeaderBytes);
    EXPECT_EQ(run.recordsProcessed, 50U);
}

TEST(FileConversion, FirstTtlValueMakesNoEventWhateverItIs) {
    const EngineRun run = Convert(Version1Header(1), {StatePacket(0xFF), StatePacket(0xFE)});
    EXPECT_EQ(EventsOf(run), (std::vector<Event>{{333, 0xFE}}));
}

TEST(FileConversion, RunningTimeCountsPacketsWithoutSamples) {
    // Version 1: no hardware timestamps; each packet is 333.33 µs, with samples or without.
    RandomPacketShape shape;
    std::mt19937_64 random(1);
    PacketPlan withSamples = MakeRandomPacket(random, shape);
    withSamples.stateBytes = {0};
    const EngineRun run =
        Convert(Version1Header(1), {StatePacket(0), withSamples, StatePacket(0), StatePacket(1)});
    EXPECT_EQ(EventsOf(run), (std::vector<Event>{{1000, 1}}));
}

TEST(FileConversion, RunningTimeAndFirstTtlValueStartAnewWithEveryFile) {
    const TempDirectory directory;
    const std::vector<PacketPlan> plans = {StatePacket(7), StatePacket(7), StatePacket(8)};
    const std::string recording = BuildOrdFile(Version1Header(1), plans);
    DataProcessor processor(QuickSettings());
    std::wstring status;
    RunConversionJob(MakeJob(directory,
                             {PutRecording(directory, recording, L"a.ord"),
                              PutRecording(directory, recording, L"b.ord")},
                             ReferenceConvertOptions(), processor, status));
    EXPECT_EQ(status, L"Processing complete");
    for (const wchar_t* name : {L"a", L"b"}) {
        EngineRun run;
        run.files = FilesIn(directory.Path(L"out") + kPathSeparator + name);
        EXPECT_EQ(EventsOf(run), (std::vector<Event>{{666, 8}}));
    }
}

TEST(FileConversion, RunningTimeIsKeptExactAcrossPackets) {
    // 300 packets of 333.33 µs are 100,000 µs, not 300 x 333.
    std::vector<PacketPlan> plans(300, StatePacket(0));
    plans.push_back(StatePacket(1));
    const EngineRun run = Convert(Version1Header(1), plans);
    ASSERT_EQ(EventsOf(run).size(), 1U);
    EXPECT_NEAR(static_cast<double>(EventsOf(run)[0].timestamp), 100000.0, 1.0);
}

TEST(FileConversion, FiveStatesOfTheWidestPacketAreTimedAtItsFirstFiveSamples) {
    PacketPlan five;
    five.channelCountCode = 3;
    five.stateBytePerSample = true;
    five.stateBytes = {0x00, 0x10, 0x20, 0x30, 0x40};
    const EngineRun run = Convert(Version1Header(1).Set("-SamplingFrequency", "10000"),
                                  {five, StatePacket(5), StatePacket(6)});
    // 100 µs per sample; the next packet begins ten sample periods later, not five.
    EXPECT_EQ(EventsOf(run),
              (std::vector<Event>{{100, 1}, {200, 2}, {300, 3}, {400, 4}, {1000, 5}, {2000, 6}}));
}

TEST(FileConversion, EventTimesUseTheHardwareTimestampAndTheOffset) {
    OrdHeaderText header = Version2Header(1);
    header.Set("-UTCOffsetMicroseconds", "1000000");
    const EngineRun run = Convert(header, {StatePacket(0, 1'000'000), StatePacket(9, 2'500'999)});
    EXPECT_EQ(EventsOf(run), (std::vector<Event>{{1002500, 9}}));
}

TEST(FileConversion, HeaderWithoutADChannelsGivesTheEventFileOnly) {
    std::mt19937_64 random(2);
    const EngineRun run =
        Convert(Version1Header(0), {MakeRandomPacket(random, RandomPacketShape())});
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(run.files.size(), 1U);
    EXPECT_TRUE(run.files.contains("Events.vev"));
}

TEST(FileConversion, SensorFilesWithoutADChannelsHaveNoTimestampOffset) {
    PacketPlan plan;
    plan.hardwareTimestamp = 5'000'000;
    plan.baseImu.emplace().fill(0);
    OrdHeaderText header = Version2Header(32);
    header.Set("-UTCOffsetMicroseconds", "1000000");
    const auto firstTimestamp = [&](bool csc) {
        const EngineRun run = Convert(header, {plan}, {csc, true, false, false, true, false});
        return LittleEndian(run.files.at("Base_LAX.vcs"), kHeaderBytes, 8);
    };
    EXPECT_EQ(firstTimestamp(true), 1005000U);
    EXPECT_EQ(firstTimestamp(false), 5000U);
}

TEST(FileConversion, GroupsNeedBothTheirSwitchAndTheHeader) {
    OrdHeaderText header = Version1Header(1);
    header.Set("-BaseIMUAvailable", "0").Set("-UltrasonicAvailable", "0");
    PacketPlan plan;
    plan.baseImu.emplace();
    plan.afeImu.emplace();
    plan.ultrasonic.emplace();
    const EngineRun all = Convert(header, {plan}, AllOutputs());
    EXPECT_FALSE(all.files.contains("Base_LAX.vcs"));
    EXPECT_FALSE(all.files.contains("Ultrasonic.vcs"));
    EXPECT_TRUE(all.files.contains("AFE_MZ.vcs"));
    const EngineRun none =
        Convert(OrdHeaderText(), {StatePacket(0, 1)}, {false, false, false, false, true, false});
    EXPECT_EQ(none.files.size(), 1U);
}

TEST(FileConversion, EventFileIsLeftOutWhenItIsNotWanted) {
    const EngineRun run = Convert(Version1Header(1), {StatePacket(0), StatePacket(1)},
                                  {true, false, false, false, false, false});
    EXPECT_EQ(run.files.size(), 1U);
    EXPECT_TRUE(run.files.contains("CSC1.vcs"));
}

TEST(FileConversion, RawDataIsWrittenBeforeTheSamplesAreScaled) {
    std::mt19937_64 random(3);
    PacketPlan plan;
    plan.adBlock = PlanAdBlock(std::vector<std::uint16_t>(320, 0x7FFC), 32, 10);
    const EngineRun run =
        Convert(Version1Header(32), {plan}, {true, false, false, false, true, true});
    const std::string& raw = run.files.at("RawData.vrd");
    EXPECT_EQ(LittleEndian(raw, kHeaderBytes + 17 * 4, 4), 408270U);
    // 32764 x 3190 / 65536 = 1594.8
    EXPECT_EQ(LittleEndian(run.files.at("CSC1.vcs"), kHeaderBytes + 20, 2), 1594U);
}

TEST(FileConversion, ClosedFilesSayWhenAndTheEventFileNever) {
    const EngineRun run = Convert(Version1Header(1), {StatePacket(0)}, AllOutputs());
    const std::string closed = "-TimeClosed 2021/03/04 09:05:07\r\n";
    const std::string notClosed = "-TimeClosed File was not closed properly\r\n";
    EXPECT_NE(run.files.at("CSC1.vcs").find(closed), std::string::npos);
    EXPECT_NE(run.files.at("RawData.vrd").find(closed), std::string::npos);
    EXPECT_NE(run.files.at("Events.vev").find(notClosed), std::string::npos);
}

}  // namespace
}  // namespace stalwick::test
