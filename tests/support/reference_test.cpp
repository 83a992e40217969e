// SPDX-License-Identifier: BSD-3-Clause
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ord_builder.h"
#include "tests/support/reference_converter.h"
#include "tests/support/reference_decoder.h"
#include "tests/support/reference_header.h"
#include "tests/support/reference_writers.h"

// All other tests trust the reference; here it is compared with bytes and numbers calculated by
// hand.

namespace stalwick::test {
namespace {

using namespace std::string_literals;

std::uint32_t Little32(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i) {
        value = (value << 8) | static_cast<unsigned char>(bytes.at(offset + i - 1));
    }
    return value;
}

ReferenceParsedPacket Parse(std::string_view bytes, std::int32_t version) {
    return ReferenceParsePacket(bytes, ReferenceDecodeOptions{0, version}, 10);
}

TEST(OrdBuilder, WritesThePartsOfAPacketBigEndianInTheirOrder) {
    PacketPlan plan;
    plan.channelCountCode = 1;
    plan.headerByte2 = 0xA2;
    plan.headerByte3 = 0xA3;
    plan.headerWord = 0x01020304;
    plan.hardwareTimestamp = 0x1122334455667788;
    plan.channelMask = MakeChannelMask(64, {0, 63});
    plan.stateBytes = {0x5A};
    EXPECT_EQ(EncodePacket(plan),
              "\x04\x60\xA2\xA3\0\0\x01\x02\x03\x04\x11\x22\x33\x44\x55\x66\x77\x88"
              "\x80\0\0\0\0\0\0\x01\x5A"s);
}

TEST(OrdBuilder, WritesWidthsThenFirstValuesThenDeltasMostSignificantBitFirst) {
    AdBlockPlan plan;
    plan.samplesPerChannel = 2;
    plan.widths = {3, 0};
    plan.initialValues = {0x2001, 0x0003};
    plan.deltas = {-3, -1};
    // 0011 0000 | 10000000000001 | 00000000000011 | 101 1
    EXPECT_EQ(EncodeAdBlock(plan, 2, std::nullopt), "\x30\x80\x04\x00\x3B"s);
    plan.writeZeroWidthBits = false;
    EXPECT_EQ(EncodeAdBlock(plan, 2, std::nullopt), "\x30\x80\x04\x00\x3A"s);
}

TEST(OrdBuilder, PadsTheHeaderTextToItsBlock) {
    const std::string block = Version1Header(64).Set("-InputRange", "7").Block();
    EXPECT_EQ(block.size(), 16384U);
    EXPECT_NE(block.find("\r\n-NumADChannels 64\r\n"), std::string::npos);
    EXPECT_NE(block.find("\r\n-InputRange 7\r\n"), std::string::npos);
    EXPECT_EQ(block.find("-UTCOffsetMicroseconds"), std::string::npos);
    EXPECT_EQ(block.back(), '\0');
}

TEST(ReferenceDecoder, TakesElevenBytesForAPacketWithoutBlocks) {
    const std::string packet = EncodePacket(PacketPlan());
    EXPECT_EQ(Parse(packet, 10).consumedBytes, 11U);
    EXPECT_EQ(Parse(packet, 20).consumedBytes, 0U);
    EXPECT_EQ(Parse(packet + "12345678", 20).consumedBytes, 19U);
    EXPECT_EQ(Parse(packet.substr(0, 10), 10).consumedBytes, 0U);
}

TEST(ReferenceDecoder, SignExtendsADeltaAndShiftsItByTwo) {
    AdBlockPlan plan = PlanAdBlock(std::vector<std::uint16_t>(320, 400), 32, 10);
    plan.widths.assign(32, 3);
    plan.deltas[0] = -3;
    const auto block = ReferenceDecodeADBlock(EncodeAdBlock(plan, 32, std::nullopt), 32, 10, {});
    EXPECT_EQ(block.samples.at(0), 400);
    EXPECT_EQ(block.samples.at(1), 388);
    EXPECT_EQ(block.samples.at(9), 388);
    EXPECT_EQ(block.samples.at(10), 400);
}

TEST(ReferenceDecoder, ReadsAWidthZeroBitPerDeltaThatTheLengthDoesNotCount) {
    AdBlockPlan plan = PlanAdBlock(std::vector<std::uint16_t>(320, 400), 32, 10, std::uint8_t{0});
    const std::string whole = EncodeAdBlock(plan, 32, std::nullopt);
    EXPECT_EQ(whole.size(), 108U);
    EXPECT_EQ(ReferenceDecodeADBlock(whole, 32, 10, {}).consumedBytes, 108U);
    plan.writeZeroWidthBits = false;
    const std::string counted = EncodeAdBlock(plan, 32, std::nullopt);
    EXPECT_EQ(counted.size(), 72U);
    EXPECT_EQ(ReferenceDecodeADBlock(counted, 32, 10, {}).consumedBytes, 72U);
    EXPECT_TRUE(ReferenceDecodeADBlock(counted.substr(0, 71), 32, 10, {}).samples.empty());
}

TEST(ReferenceDecoder, KeepsReturningTheLastBitAtTheEnd) {
    AdBlockPlan plan = PlanAdBlock(std::vector<std::uint16_t>(320, 400), 32, 10, std::uint8_t{0});
    plan.writeZeroWidthBits = false;
    plan.initialValues[31] = 1;
    const auto block = ReferenceDecodeADBlock(EncodeAdBlock(plan, 32, std::nullopt), 32, 10, {});
    // The last bit is 1, and every delta of a width-0 channel that reads 1 is -1.
    EXPECT_EQ(block.samples.at(1), 396);
    EXPECT_EQ(block.samples.at(9), 364);
}

TEST(ReferenceDecoder, ReturnsWhatTheBuilderWrote) {
    std::mt19937_64 random(7);
    for (unsigned i = 0; i < 400; ++i) {
        const auto code = static_cast<std::uint8_t>(i % 4);
        std::optional<std::uint64_t> timestamp;
        if (i % 8 < 4) timestamp = random();
        const PacketPlan plan = MakeRandomPacket(random, MakeRandomShape(random, code, timestamp));
        const std::string bytes = EncodePacket(plan);
        const auto parsed = Parse(bytes, timestamp ? 20 : 10);
        ASSERT_EQ(parsed.consumedBytes, bytes.size());
        EXPECT_EQ(parsed.packet.hardwareTimestamp, plan.hardwareTimestamp);
        EXPECT_EQ(parsed.packet.headerWord, plan.headerWord);
        EXPECT_EQ(parsed.packet.baseIMU, plan.baseImu);
        EXPECT_EQ(parsed.packet.afeIMU, plan.afeImu);
        EXPECT_EQ(parsed.packet.ultrasonic, plan.ultrasonic);
        ASSERT_EQ(parsed.packet.adSamples.has_value(), plan.adBlock.has_value());
        if (!plan.adBlock) continue;
        for (unsigned channel = 0; channel < ChannelCountOfCode(code); ++channel) {
            std::int32_t value = plan.adBlock->initialValues[channel];
            for (std::size_t s = 0; s < 10; ++s) {
                if (s > 0) value += plan.adBlock->deltas[channel * 9 + s - 1];
                const bool enabled = IsChannelEnabled(plan.channelMask, channel);
                const auto expected =
                    static_cast<std::uint16_t>(enabled ? (value & 0x3FFF) * 4 : 0);
                ASSERT_EQ(parsed.packet.adSamples->at(channel * 10 + s), expected);
            }
        }
    }
}

TEST(ReferenceDecoder, RejectsAPacketCutAnywhere) {
    std::mt19937_64 random(8);
    RandomPacketShape shape;
    shape.hardwareTimestamp = 5;
    shape.channelMask = shape.stateBytePerSample = shape.baseImu = shape.afeImu = true;
    shape.ultrasonic = true;
    const std::string bytes = EncodePacket(MakeRandomPacket(random, shape));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_EQ(Parse(std::string_view(bytes).substr(0, length), 20).consumedBytes, 0U) << length;
    }
}

TEST(ReferenceSpans, FailWhenTheLeftoverOfAShortSpanHappensToEqualItsLength) {
    PacketPlan imuPacket;
    imuPacket.baseImu.emplace();
    std::string stream;
    while ((25000 - stream.size()) % 11 != 0) stream += EncodePacket(imuPacket);
    while (stream.size() < 25000) stream += EncodePacket(PacketPlan());
    bool failed = false;
    EXPECT_TRUE(ReferenceReadAll(stream, 10, &failed).empty());
    EXPECT_TRUE(failed);
    EXPECT_FALSE(ReferenceReadAll(stream + "\x04", 10, &failed).empty());
    EXPECT_FALSE(failed);
}

TEST(ReferenceSpans, FailWhenAFullSpanStartsWithoutAPacketButNotAShortOne) {
    bool failed = false;
    ReferenceReadAll(std::string(50000, '\x05'), 10, &failed);
    EXPECT_TRUE(failed);
    ReferenceReadAll(std::string(49999, '\x05'), 10, &failed);
    EXPECT_FALSE(failed);
}

TEST(ReferenceHeader, TurnsVersionTextsIntoNumbers) {
    EXPECT_EQ(ReferenceVersionNumber(L"1.0"), 10);
    EXPECT_EQ(ReferenceVersionNumber(L"1.10"), 110);
    EXPECT_EQ(ReferenceVersionNumber(L"2-0"), 2);
    EXPECT_EQ(ReferenceVersionNumber(L"v2.0"), -1);
    EXPECT_EQ(ReferenceVersionNumber(L""), -1);
    EXPECT_EQ(ReferenceVersionNumber(L"2147483648"), -1);
}

TEST(ReferenceHeader, ReadsBytesThatAreNotUtf8AsLatin1) {
    EXPECT_EQ(ReferenceHeaderText("5 \xB5V\0rest"s), L"5 \u00B5V");
    EXPECT_EQ(ReferenceHeaderText("5 \xC2\xB5V"), L"5 \u00B5V");
    EXPECT_EQ(ReferenceHeaderText("\xC0\x80"), L"\u00C0\u0080");
    EXPECT_EQ(ReferenceUtf8(L"5 \u00B5V"), "5 \xC2\xB5V");
}

TEST(ReferenceWriters, SaturateWhenADoubleLeavesTheUnsignedRange) {
    EXPECT_EQ(SaturatedUnsigned(-0.5), 0U);
    EXPECT_EQ(SaturatedUnsigned(-1e30), 0U);
    EXPECT_EQ(SaturatedUnsigned(1.9), 1U);
    EXPECT_EQ(SaturatedUnsigned(18446744073709551616.0), 18446744073709551615U);
}

TEST(ReferenceConverter, WritesOnePacketAsWorkedOutByHand) {
    PacketPlan plan;
    plan.hardwareTimestamp = 5'000'000;  // 5000 microseconds
    plan.stateBytePerSample = true;
    plan.stateBytes = {0x10, 0x10, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01};
    std::vector<std::uint16_t> samples(320, 1000);
    samples[319] = 0x7FFC;
    plan.adBlock = PlanAdBlock(samples, 32, 10);
    ReferenceConvertInput input;
    input.options.raw = true;
    input.fileName = "dir/a.b.ord";
    input.recording = BuildOrdFile(Version2Header(32).Set("-UTCOffsetMicroseconds", "70"), {plan});
    const ReferenceConvertResult result = ReferenceConvert(input);

    EXPECT_EQ(result.statusText, "Processing complete");
    EXPECT_EQ(result.files.size(), 34U);
    const std::string channel = result.files.at("CSC1.vcs");
    ASSERT_EQ(channel.size(), 16384U + 1044U);
    EXPECT_EQ(Little32(channel, 16384), 5070U);
    EXPECT_EQ(Little32(channel, 16384 + 12), 30000U);
    EXPECT_EQ(Little32(channel, 16384 + 16), 10U);
    EXPECT_EQ(Little32(channel, 16384 + 20), 0x00300030U);  // 1000 becomes 48
    EXPECT_NE(channel.find("-OriginalFileName \"ROOT/a.b/CSC1.vcs\"\r\n"), std::string::npos);

    const std::string events = result.files.at("Events.vev").substr(16384);
    ASSERT_EQ(events.size(), 184U);
    // Third sample: 5070, then twice 33.3 with the fraction dropped each time.
    EXPECT_EQ(Little32(events, 6), 5136U);
    EXPECT_EQ(Little32(events, 14), 21U | (0x10U << 16));
    EXPECT_EQ(events.substr(56, 12), "TTL Change.\0"s);

    const std::string raw = result.files.at("RawData.vrd").substr(16384);
    ASSERT_EQ(raw.size(), 10U * 50U * 4U);
    EXPECT_EQ(Little32(raw, 0), 2048U);
    EXPECT_EQ(Little32(raw, 200 + 4 * 4), 5103U);
    EXPECT_EQ(Little32(raw, 200 + 6 * 4), 0x01U);
    EXPECT_EQ(Little32(raw, 9 * 200 + 48 * 4), 408270U);
    std::uint32_t checksum = 0;
    for (std::size_t word = 0; word < 50; ++word) checksum ^= Little32(raw, word * 4);
    EXPECT_EQ(checksum, 0U);
}

TEST(ReferenceConverter, RefusesHeadersThatNothingSaneProduces) {
    ReferenceConvertInput input;
    input.fileName = "a.ord";
    input.recording = Version2Header(257).Block();
    EXPECT_EQ(ReferenceConvert(input).errorText, "Invalid header field -NumADChannels");
    input.recording = Version2Header(32).Set("-SamplingFrequency", "0").Block();
    const ReferenceConvertResult result = ReferenceConvert(input);
    EXPECT_EQ(result.statusText, "Processing failed - Invalid header field -SamplingFrequency");
    EXPECT_TRUE(result.files.empty());
}

TEST(ReferenceConverter, NumbersANameThatIsTaken) {
    ReferenceConvertInput input;
    input.fileName = "a.ord";
    input.recording = Version2Header(1).Block();
    input.takenNames = {"CSC1.vcs", "CSC1_01.vcs"};
    const ReferenceConvertResult result = ReferenceConvert(input);
    EXPECT_EQ(result.files.count("CSC1_02.vcs"), 1U);
    EXPECT_NE(result.files.at("CSC1_02.vcs").find("-AcqEntName CSC1\r\n"), std::string::npos);
}

TEST(ReferenceMask, HidesWhatDiffersFromRunToRunAndNothingElse) {
    const std::string_view uuid = "01234567-89ab-4cde-8f01-23456789abcd";
    const std::string text = "-FileUUID " + std::string(uuid) +
                             "\r\n-OriginalFileName \"/o/x/C\"\r\n" +
                             "-TimeCreated 2021/03/04 09:05:07\r\n-TimeClosed 2021/3/4\r\n";
    EXPECT_EQ(MaskHeaderText(text + std::string(9, '\0'), "/o"),
              "-FileUUID U\r\n-OriginalFileName \"ROOT/x/C\"\r\n-TimeCreated T\r\n"
              "-TimeClosed 2021/3/4\r\n");
    // Not a random UUID of version 4.
    const std::string wrong = "-FileUUID 01234567-89ab-1cde-8f01-23456789abcd\r\n";
    EXPECT_EQ(MaskHeaderText(wrong, "/o"), wrong);
}

}  // namespace
}  // namespace stalwick::test
