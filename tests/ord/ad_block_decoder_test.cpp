// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_decoder.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/bit_writer.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

struct DecodedBlock {
    std::vector<std::uint16_t> samples;
    std::size_t consumedBytes = 0;
};

DecodedBlock Decode(const std::string& bytes, std::uint32_t numChannels = 32,
                    std::uint32_t samplesPerChannel = 10,
                    const std::vector<std::uint8_t>& mask = {}) {
    // A copy of exactly this size, so that the sanitizers see any read beyond it.
    const std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
    DecodedBlock decoded;
    const std::uint8_t* end = DecodeADBlock(block.data(), block.size(), numChannels,
                                            samplesPerChannel, mask, decoded.samples);
    decoded.consumedBytes = static_cast<std::size_t>(end - block.data());
    return decoded;
}

// A plan in which every channel has this width, first value and constant delta.
AdBlockPlan UniformPlan(unsigned numChannels, std::uint8_t width, std::uint16_t firstValue,
                        std::int32_t delta) {
    AdBlockPlan plan;
    plan.widths.assign(numChannels, width);
    plan.initialValues.assign(numChannels, firstValue);
    plan.deltas.assign(std::size_t{numChannels} * 9, delta);
    return plan;
}

std::vector<std::uint8_t> MaskOf(unsigned numChannels, const std::vector<unsigned>& channels) {
    return MakeChannelMask(numChannels, channels);
}

TEST(ADBlockDecoder, WidthZeroTakesABitThatTheSizeDoesNotCount) {
    // 32 widths and 32 first values are counted: 576 bits, 72 bytes. 9 x 32 more bits are read.
    const AdBlockPlan plan = UniformPlan(32, 0, 100, 0);
    const std::string block = EncodeAdBlock(plan, 32, {});
    ASSERT_EQ(block.size(), 72U + 36U);
    const DecodedBlock decoded = Decode(block + std::string(20, '\0'));
    EXPECT_EQ(decoded.consumedBytes, 108U);

    // The counted size is enough for the block to count as complete.
    EXPECT_TRUE(Decode(block.substr(0, 71)).samples.empty());
    const DecodedBlock cut = Decode(block.substr(0, 72));
    ASSERT_EQ(cut.samples.size(), 320U);
    EXPECT_EQ(cut.consumedBytes, 72U);
    // Beyond the end, the last bit repeats, here the last bit of the first values.
    EXPECT_EQ(cut.samples[9], 100 << 2);
}

TEST(ADBlockDecoder, WidthZeroBeyondTheEndRepeatsTheLastBit) {
    const AdBlockPlan plan = UniformPlan(32, 0, 101, 0);  // the last bit is 1
    const DecodedBlock cut = Decode(EncodeAdBlock(plan, 32, {}).substr(0, 72));
    ASSERT_EQ(cut.samples.size(), 320U);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(cut.samples[i], (101 - static_cast<int>(i)) << 2);
    }
}

TEST(ADBlockDecoder, WidthZeroDeltaIsZeroOrMinusOne) {
    AdBlockPlan plan = UniformPlan(32, 0, 500, 0);
    plan.deltas[0] = -1;
    plan.deltas[2] = -1;
    const DecodedBlock decoded = Decode(EncodeAdBlock(plan, 32, {}));
    ASSERT_EQ(decoded.samples.size(), 320U);
    EXPECT_EQ(decoded.samples[0], 2000);
    EXPECT_EQ(decoded.samples[1], 1996);
    EXPECT_EQ(decoded.samples[2], 1996);
    EXPECT_EQ(decoded.samples[3], 1992);
    EXPECT_EQ(decoded.samples[9], 1992);
}

TEST(ADBlockDecoder, DeltaOfWidthThreeWithBits101AddsMinusTwelve) {
    const AdBlockPlan plan = UniformPlan(32, 3, 1000, -3);  // -3 in three bits is 101
    const DecodedBlock decoded = Decode(EncodeAdBlock(plan, 32, {}));
    ASSERT_EQ(decoded.samples.size(), 320U);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(decoded.samples[i], 4000 - 12 * static_cast<int>(i));
    }
}

TEST(ADBlockDecoder, SumsWrapModulo65536) {
    const DecodedBlock down = Decode(EncodeAdBlock(UniformPlan(32, 3, 1, -3), 32, {}));
    ASSERT_EQ(down.samples.size(), 320U);
    EXPECT_EQ(down.samples[1], 65536 + 4 - 12);
    const DecodedBlock up = Decode(EncodeAdBlock(UniformPlan(32, 3, 0x3FFF, 3), 32, {}));
    ASSERT_EQ(up.samples.size(), 320U);
    EXPECT_EQ(up.samples[0], 0xFFFC);
    EXPECT_EQ(up.samples[1], 8);
}

TEST(ADBlockDecoder, EveryWidthHoldsItsSmallestAndLargestDelta) {
    for (std::uint8_t width = 1; width <= 15; ++width) {
        const std::int32_t half = std::int32_t{1} << (width - 1);
        for (const std::int32_t delta : {-half, half - 1}) {
            const DecodedBlock decoded =
                Decode(EncodeAdBlock(UniformPlan(32, width, 7, delta), 32, {}));
            ASSERT_EQ(decoded.samples.size(), 320U) << int{width};
            EXPECT_EQ(decoded.samples[1], static_cast<std::uint16_t>((7 + delta) * 4))
                << int{width};
        }
    }
}

TEST(ADBlockDecoder, SamplesAreStoredChannelByChannelAndSentSampleBySample) {
    AdBlockPlan plan = UniformPlan(32, 8, 0, 0);
    for (std::size_t channel = 0; channel < 32; ++channel) {
        plan.initialValues[channel] = static_cast<std::uint16_t>(channel * 10);
        for (std::size_t i = 0; i < 9; ++i) {
            plan.deltas[channel * 9 + i] = static_cast<std::int32_t>(channel + i);
        }
    }
    const DecodedBlock decoded = Decode(EncodeAdBlock(plan, 32, {}));
    ASSERT_EQ(decoded.samples.size(), 320U);
    EXPECT_EQ(decoded.samples[5 * 10], 50 << 2);
    EXPECT_EQ(decoded.samples[5 * 10 + 1], 55 << 2);
    EXPECT_EQ(decoded.samples[5 * 10 + 2], 61 << 2);
}

TEST(ADBlockDecoder, MaskWithOnlyChannelZeroDecodesOneChannel) {
    const std::vector<std::uint8_t> mask = {0x00, 0x00, 0x00, 0x01};
    const AdBlockPlan plan = UniformPlan(32, 4, 300, 2);
    const std::string block = EncodeAdBlock(plan, 32, mask);
    EXPECT_EQ(block.size(), (4U + 14U + 36U + 7U) / 8U);
    const DecodedBlock decoded = Decode(block, 32, 10, mask);
    ASSERT_EQ(decoded.samples.size(), 320U);
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(decoded.samples[i], 1200 + 8 * i);
    EXPECT_TRUE(std::all_of(decoded.samples.begin() + 10, decoded.samples.end(),
                            [](std::uint16_t sample) { return sample == 0; }));
}

TEST(ADBlockDecoder, MaskBytesAreInReverseChannelOrder) {
    // Bit 1 of the last byte but one is channel 9; bit 7 of the first byte is channel 31.
    const std::vector<std::uint8_t> mask = {0x80, 0x00, 0x02, 0x00};
    EXPECT_EQ(mask, MaskOf(32, {9, 31}));
    const ChannelEnableSet enabled = BuildChannelEnableSet(mask);
    EXPECT_EQ(enabled.size(), 32U);
    EXPECT_EQ(enabled.count(), 2U);
    EXPECT_TRUE(enabled.test(9));
    EXPECT_TRUE(enabled.test(31));
    const DecodedBlock decoded =
        Decode(EncodeAdBlock(UniformPlan(32, 1, 6, 0), 32, mask), 32, 10, mask);
    ASSERT_EQ(decoded.samples.size(), 320U);
    for (std::size_t channel = 0; channel < 32; ++channel) {
        EXPECT_EQ(decoded.samples[channel * 10], channel == 9 || channel == 31 ? 24 : 0);
    }
}

TEST(ADBlockDecoder, EmptyMaskEnablesEveryChannel) {
    const DecodedBlock decoded = Decode(EncodeAdBlock(UniformPlan(64, 1, 9, 0), 64, {}), 64);
    ASSERT_EQ(decoded.samples.size(), 640U);
    EXPECT_TRUE(std::all_of(decoded.samples.begin(), decoded.samples.end(),
                            [](std::uint16_t sample) { return sample == 36; }));
}

TEST(ADBlockDecoder, MaskWithoutAnyChannelTakesNoByteAndGivesZeros) {
    const std::vector<std::uint8_t> mask(4, 0);
    const DecodedBlock decoded = Decode("\xFF\xFF", 32, 10, mask);
    EXPECT_EQ(decoded.samples, std::vector<std::uint16_t>(320, 0));
    EXPECT_EQ(decoded.consumedBytes, 0U);
}

TEST(ADBlockDecoder, FewerThanSixteenBitsAreNoBlock) {
    const std::vector<std::uint8_t> mask(4, 0);
    EXPECT_TRUE(Decode("", 32, 10, mask).samples.empty());
    EXPECT_TRUE(Decode("\xFF", 32, 10, mask).samples.empty());
}

TEST(ADBlockDecoder, BlockCutAnywhereGivesNothing) {
    for (const std::uint8_t width : {std::uint8_t{1}, std::uint8_t{5}, std::uint8_t{15}}) {
        const std::string block = EncodeAdBlock(UniformPlan(32, width, 8, 0), 32, {});
        for (std::size_t size = 0; size < block.size(); ++size) {
            const DecodedBlock decoded = Decode(block.substr(0, size));
            EXPECT_TRUE(decoded.samples.empty()) << size;
            EXPECT_EQ(decoded.consumedBytes, 0U) << size;
        }
        EXPECT_EQ(Decode(block).consumedBytes, block.size());
    }
}

TEST(ADBlockDecoder, BlockIsTakenUpToWholeBytes) {
    // One channel: 4 + 14 + 9 = 27 bits, so 5 bits of the fourth byte are left over.
    const std::vector<std::uint8_t> mask = MaskOf(32, {3});
    const std::string block = EncodeAdBlock(UniformPlan(32, 1, 8, 0), 32, mask);
    ASSERT_EQ(block.size(), 4U);
    EXPECT_EQ(Decode(block + "xyz", 32, 10, mask).consumedBytes, 4U);
}

TEST(ADBlockDecoder, SampleCountIsTheCallers) {
    AdBlockPlan plan = UniformPlan(32, 4, 2, 1);
    plan.samplesPerChannel = 5;
    plan.deltas.assign(32 * 4, 1);
    const DecodedBlock decoded = Decode(EncodeAdBlock(plan, 32, {}), 32, 5);
    ASSERT_EQ(decoded.samples.size(), 160U);
    EXPECT_EQ(decoded.samples[5 + 4], 24);
}

TEST(ADBlockDecoder, LowTwoBitsOfEverySampleAreZero) {
    std::mt19937_64 random(7);
    RandomPacketShape shape;
    shape.largestStep = 8000;
    const PacketPlan plan = MakeRandomPacket(random, shape);
    const DecodedBlock decoded = Decode(EncodeAdBlock(*plan.adBlock, 32, {}));
    ASSERT_EQ(decoded.samples.size(), 320U);
    for (const std::uint16_t sample : decoded.samples) EXPECT_EQ(sample & 3U, 0U);
}

}  // namespace
}  // namespace stalwick::test
