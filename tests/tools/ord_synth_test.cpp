// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/recording_synth.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"
#include "tests/tools/recording_in_memory.h"
#include "tools/ord_synth/packet_source.h"

namespace stalwick {
namespace {

using test::DecodeAll;
using test::MadeRecording;
using test::MakeInMemory;
using test::ReferencePacket;
using test::TtlValues;

std::vector<SynthOptions> EveryCombination() {
    std::vector<SynthOptions> all;
    for (const std::uint32_t channelCount : {32U, 64U, 128U, 256U}) {
        for (unsigned bits = 0; bits < 128; ++bits) {
            SynthOptions options;
            options.channelCount = channelCount;
            options.packetCount = 3;
            options.seed = bits;
            options.hardwareTimestamps = (bits & 1) != 0;
            options.perSampleStates = (bits & 2) != 0;
            options.baseImu = (bits & 4) != 0;
            options.afeImu = (bits & 8) != 0;
            options.ultrasonic = (bits & 16) != 0;
            options.ttl = (bits & 32) != 0;
            // An odd number of channels, and both ends.
            if ((bits & 64) != 0) options.enabledChannels = {0, 1, 9, 17, channelCount - 1};
            all.push_back(options);
        }
    }
    return all;
}

bool IsRecorded(const SynthOptions& options, std::uint32_t channel) {
    const auto& enabled = options.enabledChannels;
    return enabled.empty() || std::find(enabled.begin(), enabled.end(), channel) != enabled.end();
}

std::vector<std::uint16_t> ExpectedSamples(const SynthOptions& options, const SynthPacket& packet) {
    std::vector<std::uint16_t> samples;
    for (std::uint32_t channel = 0; channel < options.channelCount; ++channel) {
        for (std::uint32_t s = 0; s < 10; ++s) {
            const int value = packet.samples[s * options.channelCount + channel] * 4;
            samples.push_back(IsRecorded(options, channel) ? static_cast<std::uint16_t>(value) : 0);
        }
    }
    return samples;
}

ReferencePacket ExpectedPacket(const SynthOptions& options, const SynthPacket& packet) {
    ReferencePacket expected;
    expected.packetType = 4;
    while ((32U << expected.channelCountCode) < options.channelCount) ++expected.channelCountCode;
    expected.headerWord = packet.packetNumber;
    if (options.hardwareTimestamps) expected.hardwareTimestamp = packet.hardwareTimestampNs;
    expected.channelMask.emplace();
    if (!options.enabledChannels.empty()) {
        expected.channelMask = test::MakeChannelMask(options.channelCount, options.enabledChannels);
    }
    const std::size_t states = !options.perSampleStates ? 1 : options.channelCount == 256 ? 5 : 10;
    for (std::size_t s = 0; s < states; ++s) {
        expected.stateHigh.push_back(packet.ttlValues[s] & 15);
        expected.stateLow.push_back(static_cast<std::uint8_t>(packet.ttlValues[s] >> 4));
    }
    if (options.baseImu) expected.baseIMU = packet.baseImu;
    if (options.afeImu) expected.afeIMU = packet.afeImu;
    if (options.ultrasonic) expected.ultrasonic = packet.ultrasonic;
    expected.adSamples = ExpectedSamples(options, packet);
    return expected;
}

std::uint64_t Fnv1a(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return hash;
}

TEST(OrdSynthTest, EveryCombinationDecodesToThePacketsItWasMadeOf) {
    for (const SynthOptions& options : EveryCombination()) {
        SCOPED_TRACE(testing::Message()
                     << options.channelCount << " channels, combination " << options.seed);
        const std::vector<ReferencePacket> decoded =
            DecodeAll(options, MakeInMemory(options).Stream());
        ASSERT_EQ(decoded.size(), options.packetCount);
        PacketSource source(options);
        SynthPacket packet;
        for (const ReferencePacket& got : decoded) {
            source.Next(packet);
            ASSERT_EQ(got, ExpectedPacket(options, packet));
        }
    }
}

TEST(OrdSynthTest, EveryCombinationIsConsumedToTheLastByte) {
    for (const SynthOptions& options : EveryCombination()) {
        const std::string stream = MakeInMemory(options).Stream();
        const test::ReferenceDecodeOptions version{0, test::VersionNumber(options)};
        ASSERT_EQ(test::ReferenceProcessDataBuffer(stream, version, 10U).consumedBytes,
                  stream.size());
    }
}

TEST(OrdSynthTest, SpansOfALongRecordingGiveAllItsPackets) {
    SynthOptions options;
    options.channelCount = 256;
    options.packetCount = 200;  // several reads of 50,000 bytes
    bool failed = true;
    const auto packets = test::ReferenceReadAll(MakeInMemory(options).Stream(), 20, &failed);
    EXPECT_FALSE(failed);
    EXPECT_EQ(packets.size(), 200U);
}

TEST(OrdSynthTest, ASeedGivesTheSameBytesOnEveryPlatform) {
    SynthOptions options;
    options.channelCount = 32;
    options.packetCount = 300;
    options.perSampleStates = true;
    options.baseImu = options.afeImu = options.ultrasonic = true;
    options.seed = 7;
    EXPECT_EQ(Fnv1a(MakeInMemory(options).bytes), 0x1435FB77884E6BC3U);
    options.channelCount = 256;
    options.hardwareTimestamps = false;
    options.noiseSteps = 1000;
    options.enabledChannels = {3, 4, 5, 200};
    EXPECT_EQ(Fnv1a(MakeInMemory(options).bytes), 0xBBD163251DE452ABU);
}

TEST(OrdSynthTest, AnotherSeedGivesAnotherStream) {
    SynthOptions options;
    options.packetCount = 10;
    const std::string stream = MakeInMemory(options).Stream();
    options.seed = 2;
    EXPECT_NE(MakeInMemory(options).Stream(), stream);
}

TEST(OrdSynthTest, ALongerRecordingBeginsWithTheShorterOne) {
    SynthOptions options;
    options.packetCount = 50;
    const std::string shorter = MakeInMemory(options).bytes;
    options.packetCount = 60;
    EXPECT_EQ(MakeInMemory(options).bytes.substr(0, shorter.size()), shorter);
}

TEST(OrdSynthTest, TimestampsCountNanosecondsFromAboveZero) {
    SynthOptions options;
    options.packetCount = 3001;
    const auto packets = DecodeAll(options, MakeInMemory(options).Stream());
    const std::uint64_t first = packets[0].hardwareTimestamp.value();
    EXPECT_GT(first, 0U);  // a time of 0 would mean no time
    EXPECT_EQ(packets[1].hardwareTimestamp, first + 333'333);
    EXPECT_EQ(packets[3].hardwareTimestamp, first + 1'000'000);
    EXPECT_EQ(packets[3000].hardwareTimestamp, first + 1'000'000'000);
}

TEST(OrdSynthTest, AGapLeavesPacketsOutWhileTheClockRunsOn) {
    SynthOptions options;
    options.packetCount = 40;
    options.ultrasonic = true;
    auto packets = DecodeAll(options, MakeInMemory(options).Stream());
    options.gaps = {{10, 3}, {20, 12}};
    packets.erase(packets.begin() + 20, packets.begin() + 32);
    packets.erase(packets.begin() + 10, packets.begin() + 13);
    EXPECT_EQ(DecodeAll(options, MakeInMemory(options).Stream()), packets);
    EXPECT_EQ(packets[10].hardwareTimestamp.value() - packets[9].hardwareTimestamp.value(),
              1'333'333U);
    EXPECT_EQ(packets[10].headerWord, 13U);
}

TEST(OrdSynthTest, TtlPulsesAppearAtTheirTimes) {
    SynthOptions options;
    options.packetCount = 3000;  // one second
    options.perSampleStates = true;
    std::vector<std::uint8_t> ttl;
    for (const ReferencePacket& packet : DecodeAll(options, MakeInMemory(options).Stream())) {
        const auto values = TtlValues(packet);
        ttl.insert(ttl.end(), values.begin(), values.end());
    }
    ASSERT_EQ(ttl.size(), 30000U);
    unsigned frames = 0;
    unsigned seen = 0;
    for (std::size_t i = 1; i < ttl.size(); ++i) {
        if ((ttl[i] & 1) > (ttl[i - 1] & 1)) ++frames;
        seen |= ttl[i];
    }
    EXPECT_EQ(frames, 25U);      // camera frames, one every 40 ms
    EXPECT_EQ(seen, 0xAFU);      // inputs of both nibbles
    EXPECT_EQ(ttl[599] & 1, 0);  // the first of them from 20 to 28 ms
    EXPECT_EQ(ttl[600] & 1, 1);
    EXPECT_EQ(ttl[839] & 1, 1);
    EXPECT_EQ(ttl[840] & 1, 0);
}

TEST(OrdSynthTest, OneStateByteIsTheFirstSamplesInputs) {
    SynthOptions options;
    options.packetCount = 1000;
    const auto single = DecodeAll(options, MakeInMemory(options).Stream());
    options.perSampleStates = true;
    const auto each = DecodeAll(options, MakeInMemory(options).Stream());
    for (std::size_t i = 0; i < single.size(); ++i) {
        ASSERT_EQ(TtlValues(single[i]).at(0), TtlValues(each[i]).at(0));
    }
}

TEST(OrdSynthTest, WithoutTtlTheInputsStayLow) {
    SynthOptions options;
    options.packetCount = 1000;
    options.ttl = false;
    for (const ReferencePacket& packet : DecodeAll(options, MakeInMemory(options).Stream())) {
        ASSERT_EQ(TtlValues(packet), std::vector<std::uint8_t>{0});
    }
}

// The number of packets for which the recording of options has at least fromBytes of stream and a
// converter would refuse it because of where it ends; 0 if there is no such number up to toBytes.
std::size_t PacketsBeforeRefusedEnd(const SynthOptions& options, const std::string& stream,
                                    std::size_t fromBytes, std::size_t toBytes) {
    const test::ReferenceDecodeOptions version{0, test::VersionNumber(options)};
    std::size_t end = 0;
    for (std::size_t packets = 1; end < toBytes; ++packets) {
        end += test::ReferenceParsePacket(stream.substr(end, 5000), version, 10U).consumedBytes;
        if (end < fromBytes) continue;
        bool failed = false;
        test::ReferenceReadAll(stream.substr(0, end), version.second, &failed);
        if (failed) return packets;
    }
    return 0;
}

void ExpectRefusedEndIsAvoided(std::size_t fromBytes, std::size_t toBytes) {
    SynthOptions options;
    options.channelCount = 32;
    options.enabledChannels = {0, 1};
    for (options.seed = 1; options.seed < 500; ++options.seed) {
        options.packetCount = toBytes / 25;
        const std::string stream = MakeInMemory(options).Stream();
        options.packetCount = PacketsBeforeRefusedEnd(options, stream, fromBytes, toBytes);
        if (options.packetCount == 0) continue;
        const MadeRecording made = MakeInMemory(options);
        bool failed = true;
        const auto packets = test::ReferenceReadAll(made.Stream(), 20, &failed);
        EXPECT_FALSE(failed);
        EXPECT_EQ(packets.size(), options.packetCount + 1);
        EXPECT_EQ(made.summary.packets, options.packetCount + 1);
        return;
    }
    FAIL() << "no recording with a refused end was found";
}

TEST(OrdSynthTest, AStreamThatWouldEndInAHalfFilledFirstSpanGetsAPacketMore) {
    ExpectRefusedEndIsAvoided(24'990, 25'010);
}

TEST(OrdSynthTest, AStreamThatWouldEndInAHalfFilledLaterSpanGetsAPacketMore) {
    ExpectRefusedEndIsAvoided(74'900, 75'000);
}

TEST(OrdSynthTest, ASinkThatRefusesEndsTheRecording) {
    SynthOptions options;
    options.packetCount = 100'000;
    unsigned calls = 0;
    const SynthSummary summary =
        MakeRecording(options, [&calls](std::span<const std::uint8_t>) { return ++calls < 3; });
    EXPECT_FALSE(summary.complete);
    EXPECT_EQ(calls, 3U);
}

}  // namespace
}  // namespace stalwick
