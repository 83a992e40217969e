// SPDX-License-Identifier: BSD-3-Clause
#include "ord/packet_decoder.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

const DecodeOptions kVersion1 = PacketFormat{0, 10};
const DecodeOptions kVersion2 = PacketFormat{0, 20};

struct ParsedPacket {
    ORDDataPacket packet;
    std::size_t consumedBytes = 0;
};

ParsedPacket Parse(const std::string& bytes, const DecodeOptions& options = kVersion1,
                   std::optional<std::uint32_t> samplesOverride = 10) {
    const std::vector<std::uint8_t> span(bytes.begin(), bytes.end());
    ParsedPacket parsed;
    parsed.packet.headerWord = 77;  // whatever was there before
    const std::uint8_t* end =
        ParseDataPacket(span.data(), span.size(), parsed.packet, options, samplesOverride);
    parsed.consumedBytes = static_cast<std::size_t>(end - span.data());
    return parsed;
}

std::size_t Process(const std::string& bytes, std::vector<ORDDataPacket>& packets,
                    const DecodeOptions& options = kVersion1) {
    const std::vector<std::uint8_t> span(bytes.begin(), bytes.end());
    return static_cast<std::size_t>(
        ProcessDataBuffer(span.data(), span.size(), packets, options, 10) - span.data());
}

PacketPlan RandomPlan(const RandomPacketShape& shape) {
    std::mt19937_64 random(11);
    return MakeRandomPacket(random, shape);
}

TEST(PacketDecoder, SpanOfTenBytesOrFewerYieldsNoPacket) {
    for (std::size_t size = 0; size <= 10; ++size) {
        std::vector<ORDDataPacket> packets(3);
        EXPECT_EQ(Process(std::string(size, '\4'), packets), 0U);
        EXPECT_TRUE(packets.empty());
    }
}

TEST(PacketDecoder, FirstByteOtherThanFourYieldsNoPacket) {
    for (int type = 0; type < 256; ++type) {
        if (type == 4) continue;
        PacketPlan plan;
        plan.packetType = static_cast<std::uint8_t>(type);
        const ParsedPacket parsed = Parse(EncodePacket(plan) + std::string(50, '\0'));
        EXPECT_EQ(parsed.consumedBytes, 0U) << type;
        EXPECT_EQ(parsed.packet, ORDDataPacket()) << type;
    }
}

TEST(PacketDecoder, WrongTypeByteAfterGoodPacketsEndsTheCallOnly) {
    std::vector<ORDDataPacket> packets;
    const std::string good = EncodePackets({PacketPlan(), PacketPlan()});
    EXPECT_EQ(Process(good + '\5' + good, packets), 22U);
    EXPECT_EQ(packets.size(), 2U);
}

TEST(PacketDecoder, FlagsZeroConsumesElevenBytes) {
    PacketPlan plan;
    plan.stateBytes = {0xA7};
    const ParsedPacket parsed = Parse(EncodePacket(plan) + "more");
    EXPECT_EQ(parsed.consumedBytes, 11U);
    EXPECT_EQ(parsed.packet.stateHigh, std::vector<std::uint8_t>{0x0A});
    EXPECT_EQ(parsed.packet.stateLow, std::vector<std::uint8_t>{0x07});
    EXPECT_FALSE(parsed.packet.hardwareTimestamp.has_value());
    EXPECT_FALSE(parsed.packet.adSamples.has_value());
    EXPECT_FALSE(parsed.packet.channelMask.has_value());
}

TEST(PacketDecoder, FlagsZeroConsumesNineteenBytesWithATimestamp) {
    PacketPlan plan;
    plan.hardwareTimestamp = 0x0102030405060708U;
    const ParsedPacket parsed = Parse(EncodePacket(plan) + "more", kVersion2);
    EXPECT_EQ(parsed.consumedBytes, 19U);
    EXPECT_EQ(parsed.packet.hardwareTimestamp, 0x0102030405060708U);
}

TEST(PacketDecoder, TimestampNeedsFirstNumber240OrVersion20) {
    EXPECT_FALSE(PacketsCarryTimestamps(std::nullopt));
    EXPECT_FALSE(PacketsCarryTimestamps(PacketFormat{0, -1}));
    EXPECT_FALSE(PacketsCarryTimestamps(PacketFormat{0, 19}));
    EXPECT_TRUE(PacketsCarryTimestamps(PacketFormat{0, 20}));
    EXPECT_TRUE(PacketsCarryTimestamps(PacketFormat{0, 110}));
    EXPECT_FALSE(PacketsCarryTimestamps(PacketFormat{239, 19}));
    EXPECT_TRUE(PacketsCarryTimestamps(PacketFormat{240, 0}));
}

TEST(PacketDecoder, HeadIsReadBigEndianAndBytesFourAndFiveAreSkipped) {
    PacketPlan plan;
    plan.channelCountCode = 2;
    plan.headerByte2 = 0x22;
    plan.headerByte3 = 0x33;
    plan.unreadBytes = {0xEE, 0xFF};
    plan.headerWord = 0x01020304;
    const ParsedPacket parsed = Parse(EncodePacket(plan));
    EXPECT_EQ(parsed.packet.packetType, 4);
    EXPECT_EQ(parsed.packet.channelCountCode, 2);
    EXPECT_EQ(parsed.packet.headerByte2, 0x22);
    EXPECT_EQ(parsed.packet.headerByte3, 0x33);
    EXPECT_EQ(parsed.packet.headerWord, 0x01020304U);
}

TEST(PacketDecoder, BlocksFollowInTheOrderOfTheFormat) {
    PacketPlan plan;
    plan.hardwareTimestamp = 9;
    plan.channelMask = MakeChannelMask(32, {1});
    plan.stateBytes = {0x12};
    plan.baseImu.emplace().fill(0x1111);
    plan.afeImu.emplace().fill(0x2222);
    plan.ultrasonic.emplace().fill(0x3333);
    const ParsedPacket parsed = Parse(EncodePacket(plan), kVersion2);
    EXPECT_EQ(parsed.consumedBytes, 10U + 8 + 4 + 1 + 18 + 18 + 140);
    ASSERT_TRUE(parsed.packet.baseIMU && parsed.packet.afeIMU && parsed.packet.ultrasonic);
    EXPECT_EQ(parsed.packet.baseIMU->back(), 0x1111);
    EXPECT_EQ(parsed.packet.afeIMU->front(), 0x2222);
    EXPECT_EQ(parsed.packet.ultrasonic->back(), 0x3333);
    ASSERT_TRUE(parsed.packet.channelMask.has_value());
    EXPECT_EQ(*parsed.packet.channelMask, *plan.channelMask);
}

TEST(PacketDecoder, StateBytePerSampleMeansTenOrFiveBytes) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        PacketPlan plan;
        plan.channelCountCode = code;
        plan.stateBytePerSample = true;
        plan.stateBytes.assign(StateByteCountOfCode(code), 0x5C);
        const ParsedPacket parsed = Parse(EncodePacket(plan));
        EXPECT_EQ(parsed.consumedBytes, code == 3 ? 15U : 20U);
        EXPECT_EQ(parsed.packet.stateHigh.size(), code == 3 ? 5U : 10U);
        EXPECT_EQ(parsed.packet.stateLow.size(), parsed.packet.stateHigh.size());
    }
}

TEST(PacketDecoder, WidestPacketHasFiveStateBytesAndTenSamplesUnderTheOverride) {
    RandomPacketShape shape;
    shape.channelCountCode = 3;
    shape.stateBytePerSample = true;
    const std::string bytes = EncodePacket(RandomPlan(shape));
    const ParsedPacket parsed = Parse(bytes);
    EXPECT_EQ(parsed.consumedBytes, bytes.size());
    EXPECT_EQ(parsed.packet.stateHigh.size(), 5U);
    ASSERT_TRUE(parsed.packet.adSamples.has_value());
    EXPECT_EQ(parsed.packet.adSamples->size(), 2560U);
}

TEST(PacketDecoder, OverrideCountsOnlyByBeingThere) {
    RandomPacketShape shape;
    shape.channelCountCode = 3;
    const std::string bytes = EncodePacket(RandomPlan(shape));
    const ParsedPacket withZero = Parse(bytes, kVersion1, 0);
    ASSERT_TRUE(withZero.packet.adSamples.has_value());
    EXPECT_EQ(withZero.packet.adSamples->size(), 2560U);
    const ParsedPacket without = Parse(bytes, kVersion1, std::nullopt);
    ASSERT_TRUE(without.packet.adSamples.has_value());
    EXPECT_EQ(without.packet.adSamples->size(), 256U * 5);
}

TEST(PacketDecoder, SamplesWithoutAMaskEngageAnEmptyMask) {
    const ParsedPacket parsed = Parse(EncodePacket(RandomPlan(RandomPacketShape())));
    ASSERT_TRUE(parsed.packet.adSamples.has_value());
    ASSERT_TRUE(parsed.packet.channelMask.has_value());
    EXPECT_TRUE(parsed.packet.channelMask->empty());
}

TEST(PacketDecoder, PacketCutAnywhereIsRejectedWhole) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        for (const bool timestamp : {false, true}) {
            RandomPacketShape shape{code, {}, true, true, true, true, true, true, 40, 5, true};
            if (timestamp) shape.hardwareTimestamp = 123456789;
            const std::string bytes = EncodePacket(RandomPlan(shape));
            const DecodeOptions& options = timestamp ? kVersion2 : kVersion1;
            for (std::size_t size = 0; size < bytes.size(); ++size) {
                const ParsedPacket parsed = Parse(bytes.substr(0, size), options);
                ASSERT_EQ(parsed.consumedBytes, 0U) << size;
                ASSERT_EQ(parsed.packet, ORDDataPacket()) << size;
            }
            EXPECT_EQ(Parse(bytes, options).consumedBytes, bytes.size());
        }
    }
}

TEST(PacketDecoder, PacketVectorIsReusedAndEndsWithThisCallsPackets) {
    std::vector<ORDDataPacket> packets;
    Process(EncodePackets(std::vector<PacketPlan>(5)), packets);
    EXPECT_EQ(packets.size(), 5U);
    PacketPlan plan;
    plan.headerWord = 42;
    Process(EncodePackets({plan, plan}), packets);
    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(packets[0].headerWord, 42U);
    EXPECT_EQ(packets[1].headerWord, 42U);
}

TEST(PacketDecoder, SpansOfDifferentPacketCountsShareOneSetOfPackets) {
    const std::string packet = EncodePacket(RandomPlan({}));
    std::string longSpan;
    for (int i = 0; i < 5; ++i) longSpan += packet;
    const std::vector<std::uint8_t> span(longSpan.begin(), longSpan.end());
    std::vector<ORDDataPacket> packets;
    SpanMemory memory;
    std::set<const std::uint16_t*> used;
    for (std::size_t round = 0; round < 30; ++round) {
        const std::size_t length = packet.size() * (1 + round % 5) + round % packet.size();
        const std::size_t usable = std::min(length, span.size());
        ProcessDataBuffer(span.data(), usable, packets, kVersion1, 10, memory);
        ASSERT_EQ(packets.size(), usable / packet.size());
        for (const ORDDataPacket& decoded : packets) {
            ASSERT_EQ(*decoded.adSamples, *packets.front().adSamples);
            used.insert(decoded.adSamples->data());
        }
        EXPECT_EQ(
            memory.packetSizes,
            std::vector<std::uint32_t>(packets.size(), static_cast<std::uint32_t>(packet.size())));
    }
    // At most five packets, and the one attempted with a span's last bytes.
    EXPECT_LE(used.size(), 6U);
}

TEST(PacketDecoder, ReusedPacketKeepsNothingOfTheOneBefore) {
    RandomPacketShape shape{0, {}, true, true, true, true, true, true, 40, {}, true};
    const std::string full = EncodePacket(RandomPlan(shape));
    const std::string bare = EncodePacket(PacketPlan());
    std::vector<ORDDataPacket> packets;
    Process(full + full + full, packets);
    Process(bare + bare, packets);
    Process(bare, packets);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0], Parse(bare).packet);
}

// A packet of 32 channels with every block, and the position of each of its blocks.
PacketPlan PlanWithEveryBlock() {
    RandomPacketShape shape;
    shape.hardwareTimestamp = 5;
    shape.channelMask = shape.stateBytePerSample = true;
    shape.baseImu = shape.afeImu = shape.ultrasonic = true;
    return RandomPlan(shape);
}

PacketRefusal RefusalOf(std::string_view bytes) {
    const std::vector<std::uint8_t> span(bytes.begin(), bytes.end());
    ORDDataPacket packet;
    const PacketParse parse = TryParsePacket(span, packet, kVersion2, 10);
    EXPECT_EQ(parse.end == span.data(), parse.refusal != PacketRefusal::kNone);
    return parse.refusal;
}

TEST(PacketDecoder, RefusalNamesTheBlockInWhichThePacketIsCut) {
    const std::string bytes = EncodePacket(PlanWithEveryBlock());
    struct Block {
        PacketRefusal refusal;
        std::size_t end;  // bytes from the packet's first one
    };
    // Head and state byte; timestamp, mask, states, two inertial units, ultrasonic; samples.
    const std::vector<Block> blocks = {
        {PacketRefusal::kTooShort, 11},           {PacketRefusal::kCutInTimestamp, 18},
        {PacketRefusal::kCutInMask, 22},          {PacketRefusal::kCutInStates, 32},
        {PacketRefusal::kCutInBaseIMU, 50},       {PacketRefusal::kCutInAfeIMU, 68},
        {PacketRefusal::kCutInUltrasonic, 208},   {PacketRefusal::kCutInSamples, bytes.size()},
        {PacketRefusal::kNone, bytes.size() + 1},
    };
    std::size_t length = 0;
    for (const Block& block : blocks) {
        for (; length < block.end; ++length) {
            EXPECT_EQ(RefusalOf(std::string_view(bytes).substr(0, length)), block.refusal)
                << length;
        }
    }
}

TEST(PacketDecoder, RefusalOfAnotherTypeByteIsItsOwnAtAnyLength) {
    std::string bytes = EncodePacket(PlanWithEveryBlock());
    bytes.front() = 5;
    for (const std::size_t length : {std::size_t{1}, std::size_t{10}, bytes.size()}) {
        EXPECT_EQ(RefusalOf(bytes.substr(0, length)), PacketRefusal::kWrongType);
    }
}

}  // namespace
}  // namespace stalwick::test
