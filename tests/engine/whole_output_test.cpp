// SPDX-License-Identifier: BSD-3-Clause

// Compares every byte of every output with a conversion that shares no code with the program.

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

OrdHeaderText HeaderFor(bool timestamps, unsigned channelCount) {
    return timestamps ? Version2Header(channelCount) : Version1Header(channelCount);
}

// A recording with every kind of block in every packet.
std::string FullRecording(std::uint64_t seed, bool timestamps, std::uint8_t code, bool mask,
                          bool statePerSample, std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packet = {code, {}, mask, statePerSample, true, true, true, true, 40, {}, true};
    shape.packetCount = packetCount;
    shape.timestamps = timestamps;
    return BuildOrdFile(HeaderFor(timestamps, ChannelCountOfCode(code)),
                        MakeRandomPackets(seed, shape));
}

// Packets of any shape, one after another.
std::string MixedRecording(std::uint64_t seed, bool timestamps, std::uint8_t code,
                           std::size_t packetCount) {
    std::mt19937_64 random(seed);
    std::vector<PacketPlan> plans;
    std::uint64_t time = 5'000'000'000;
    for (std::size_t i = 0; i < packetCount; ++i, time += 333'333) {
        std::optional<std::uint64_t> timestamp;
        if (timestamps) timestamp = time;
        plans.push_back(MakeRandomPacket(random, MakeRandomShape(random, code, timestamp)));
    }
    return BuildOrdFile(HeaderFor(timestamps, ChannelCountOfCode(code)), plans);
}

using Format = std::tuple<bool, int>;  // with timestamps; channel count code

std::string FormatName(const testing::TestParamInfo<Format>& format) {
    const auto [timestamps, code] = format.param;
    return std::string(timestamps ? "Version2" : "Version1") + "With" +
           std::to_string(ChannelCountOfCode(static_cast<std::uint8_t>(code))) + "Channels";
}

class WholeOutputOfFormat : public testing::TestWithParam<Format> {
  protected:
    bool Timestamps() const { return std::get<0>(GetParam()); }
    std::uint8_t Code() const { return static_cast<std::uint8_t>(std::get<1>(GetParam())); }
};

INSTANTIATE_TEST_SUITE_P(All, WholeOutputOfFormat,
                         testing::Combine(testing::Bool(), testing::Range(0, 4)), FormatName);

TEST_P(WholeOutputOfFormat, FullPacketsConvertLikeTheReference) {
    EXPECT_TRUE(ConvertsLikeTheReference(FullRecording(1, Timestamps(), Code(), false, false, 110),
                                         AllOutputs()));
}

TEST_P(WholeOutputOfFormat, MasksAndStatesOfEverySampleConvertLikeTheReference) {
    EXPECT_TRUE(ConvertsLikeTheReference(FullRecording(2, Timestamps(), Code(), true, true, 70),
                                         AllOutputs()));
}

TEST_P(WholeOutputOfFormat, MixedPacketsConvertLikeTheReference) {
    for (std::uint64_t seed = 10; seed < 13; ++seed) {
        EXPECT_TRUE(ConvertsLikeTheReference(MixedRecording(seed, Timestamps(), Code(), 150),
                                             AllOutputs()));
    }
}

TEST_P(WholeOutputOfFormat, WidthZeroConvertsLikeTheReference) {
    RandomRecordingShape shape;
    shape.packet.channelCountCode = Code();
    shape.packet.width = std::uint8_t{0};
    shape.packet.channelMask = Code() % 2 == 1;
    shape.timestamps = Timestamps();
    for (const bool written : {true, false}) {
        shape.packet.writeZeroWidthBits = written;
        EXPECT_TRUE(ConvertsLikeTheReference(
            BuildOrdFile(HeaderFor(Timestamps(), ChannelCountOfCode(Code())),
                         MakeRandomPackets(3, shape)),
            AllOutputs()));
    }
}

TEST_P(WholeOutputOfFormat, BufferedRecordsMakeNoDifferenceToTheFiles) {
    OutputSettings settings = QuickSettings();
    for (const std::uint32_t recordsPerWrite : {1U, 3U}) {
        settings.recordsPerWrite = recordsPerWrite;
        EXPECT_TRUE(ConvertsLikeTheReference(MixedRecording(4, Timestamps(), Code(), 260),
                                             AllOutputs(), settings));
    }
}

TEST(WholeOutput, EveryCombinationOfOutputsConvertsLikeTheReference) {
    const std::string recording = FullRecording(5, true, 0, false, true, 60);
    for (unsigned bits = 0; bits < 64; ++bits) {
        const auto on = [bits](unsigned bit) { return ((bits >> bit) & 1U) != 0; };
        const ReferenceConvertOptions options{on(0), on(1), on(2), on(3), on(4), on(5)};
        EXPECT_TRUE(ConvertsLikeTheReference(recording, options)) << bits;
    }
}

TEST(WholeOutput, EveryCombinationOfAvailableSensorsConvertsLikeTheReference) {
    const std::string stream = FullRecording(6, true, 0, false, true, 60).substr(kOrdHeaderBytes);
    for (unsigned bits = 0; bits < 16; ++bits) {
        OrdHeaderText header = Version2Header((bits & 8U) != 0 ? 32 : 0);
        header.Set("-BaseIMUAvailable", (bits & 1U) != 0 ? "1" : "0");
        header.Set("-AfeIMUAvailable", (bits & 2U) != 0 ? "1" : "0");
        header.Set("-UltrasonicAvailable", (bits & 4U) != 0 ? "1" : "0");
        EXPECT_TRUE(ConvertsLikeTheReference(header.Block() + stream, AllOutputs())) << bits;
    }
}

TEST(WholeOutput, ChannelCountOfTheHeaderMayDifferFromThePackets) {
    for (const std::uint8_t code : {std::uint8_t{0}, std::uint8_t{2}}) {
        const std::string stream =
            FullRecording(7, true, code, true, true, 130).substr(kOrdHeaderBytes);
        for (const unsigned channelCount : {1U, 31U, 33U, 64U, 127U, 129U, 256U}) {
            EXPECT_TRUE(ConvertsLikeTheReference(Version2Header(channelCount).Block() + stream,
                                                 AllOutputs()))
                << channelCount;
        }
    }
}

TEST(WholeOutput, PacketsOfDifferentChannelCountsShareAStream) {
    std::mt19937_64 random(8);
    std::vector<PacketPlan> plans;
    for (std::uint64_t i = 0; i < 200; ++i) {
        RandomPacketShape shape = MakeRandomShape(random, static_cast<std::uint8_t>(i % 4), i * 7);
        plans.push_back(MakeRandomPacket(random, shape));
    }
    for (const unsigned channelCount : {32U, 100U, 256U}) {
        EXPECT_TRUE(ConvertsLikeTheReference(BuildOrdFile(Version2Header(channelCount), plans),
                                             AllOutputs()));
    }
}

TEST(WholeOutput, RawBufferOfFewRecordsHoldsTheWidestRecord) {
    // The header announces one channel, the packets have 256: records longer than the buffer's
    // plan.
    OutputSettings settings = QuickSettings();
    settings.recordsPerWrite = 1;
    EXPECT_TRUE(ConvertsLikeTheReference(
        Version2Header(1).Block() +
            FullRecording(9, true, 3, false, true, 40).substr(kOrdHeaderBytes),
        AllOutputs(), settings));
}

TEST(WholeOutput, WaitingForTheDiskMakesNoDifferenceToTheFiles) {
    EXPECT_TRUE(ConvertsLikeTheReference(FullRecording(10, true, 0, false, false, 60), AllOutputs(),
                                         OutputSettings()));
}

TEST(WholeOutput, UnusualClocksConvertLikeTheReference) {
    for (const std::string frequency : {"1", "7", "999", "30303", "44100", "4294967295"}) {
        for (const bool timestamps : {true, false}) {
            OrdHeaderText header = HeaderFor(timestamps, 32).Set("-SamplingFrequency", frequency);
            EXPECT_TRUE(ConvertsLikeTheReference(
                header.Block() +
                    FullRecording(11, timestamps, 0, false, true, 60).substr(kOrdHeaderBytes),
                AllOutputs()))
                << frequency;
        }
    }
}

TEST(WholeOutput, UtcOffsetIsAddedModulo64Bits) {
    const std::string stream = FullRecording(12, true, 0, false, true, 60).substr(kOrdHeaderBytes);
    for (const std::string offset : {"-1", "-9223372036854775808", "9223372036854775807", "0"}) {
        OrdHeaderText header = Version2Header(32).Set("-UTCOffsetMicroseconds", offset);
        EXPECT_TRUE(ConvertsLikeTheReference(header.Block() + stream, AllOutputs())) << offset;
    }
}

TEST(WholeOutput, RepeatedZeroAndHugeTimestampsConvertLikeTheReference) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    std::vector<PacketPlan> plans = MakeRandomPackets(13, shape);
    const std::vector<std::vector<std::uint64_t>> patterns = {
        {0},
        {0, 0, 5'000'000'000},
        {7'000'000'000},
        {9'000'000'000, 9'000'000'000, 9'000'333'333},
        {9'000'000'000, 8'000'000'000},
        {18'446'744'073'709'551'615U},
        {1'700'000'000'123'456'789},
        {9'007'199'254'740'993, 9'007'199'254'740'995}};
    for (const auto& pattern : patterns) {
        for (std::size_t i = 0; i < plans.size(); ++i) {
            plans[i].hardwareTimestamp = pattern[i % pattern.size()];
        }
        EXPECT_TRUE(ConvertsLikeTheReference(BuildOrdFile(Version2Header(32), plans), AllOutputs()))
            << pattern[0];
    }
}

TEST(WholeOutput, NumbersAndTextsOfTheHeaderReachTheOutputs) {
    OrdHeaderText header = Version2Header(2);
    header.Set("-ADMaxValue", "4294967295").Set("-SessionUUID", "\"x y\"");
    header.Set("-AcquisitionSystem", "one \"\xC2\xB5 two\"").Set("-SamplingFrequency", "1234567");
    const std::string stream = FullRecording(14, true, 0, false, true, 5).substr(kOrdHeaderBytes);
    EXPECT_TRUE(ConvertsLikeTheReference(header.Block() + stream, AllOutputs()));
    header.AddLine("# stray \xB5").Remove("-AcquisitionSystem").Remove("-SessionUUID");
    EXPECT_TRUE(ConvertsLikeTheReference(header.Block() + stream, AllOutputs()));
}

}  // namespace
}  // namespace stalwick::test
