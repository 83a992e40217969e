// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_kernel.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "ord/ad_block_decoder.h"
#include "tests/support/guarded_span.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"

namespace stalwick {
namespace {

constexpr std::uint16_t kGarbage = 0xA5C3;

using Mask = std::optional<std::vector<std::uint8_t>>;

Mask MaskOf(unsigned channels, unsigned perCent, std::mt19937_64& random) {
    std::vector<unsigned> enabled;
    for (unsigned i = 0; i < channels; ++i) {
        if (random() % 100 < perCent) enabled.push_back(i);
    }
    return test::MakeChannelMask(channels, enabled);
}

// No mask, and masks from empty to full.
std::vector<Mask> MasksFor(unsigned channels, std::mt19937_64& random) {
    std::vector<Mask> masks = {std::nullopt};
    for (const unsigned perCent : {0U, 4U, 50U, 93U, 100U}) {
        masks.push_back(MaskOf(channels, perCent, random));
    }
    return masks;
}

// A block of random bits after the given widths; without `width`, one random width per channel.
std::string RandomBlock(unsigned channels, unsigned samplesPerChannel,
                        std::optional<std::uint8_t> width, const Mask& mask,
                        std::mt19937_64& random) {
    test::AdBlockPlan plan;
    plan.samplesPerChannel = samplesPerChannel;
    for (unsigned channel = 0; channel < channels; ++channel) {
        const auto bits = width ? *width : static_cast<std::uint8_t>(random() % 16);
        plan.widths.push_back(bits);
        plan.initialValues.push_back(random() & 0x3FFFU);
        const std::int32_t range = bits > 0 ? 1 << (bits - 1) : 1;
        for (unsigned i = 1; i < samplesPerChannel; ++i) {
            const auto step = static_cast<std::int32_t>(random() % 0x8000U) % (2 * range) - range;
            plan.deltas.push_back(bits > 0 ? step : -static_cast<std::int32_t>(random() % 2));
        }
    }
    return test::EncodeAdBlock(plan, channels, mask);
}

// Bytes that an earlier block left on the stack must not replace bytes that were not copied.
[[gnu::noinline]] void SoilStack() {
    volatile std::uint8_t soil[32768];
    for (volatile std::uint8_t& byte : soil) byte = 0x5A;
}

class ADBlockKernelTest : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        const auto kernels = AvailableADBlockKernels();
        const auto kernel = std::find_if(kernels.begin(), kernels.end(),
                                         [](const auto& k) { return k.name == GetParam(); });
        ASSERT_NE(kernel, kernels.end());
        SetADBlockKernel(&*kernel);
    }
    void TearDown() override { SetADBlockKernel(nullptr); }

    // The block is the rest of the span, and the memory ends with the span.
    void ExpectAsReference(std::string_view span, unsigned channels, unsigned samplesPerChannel,
                           const Mask& mask) {
        const std::vector<std::uint8_t> maskBytes = mask.value_or(std::vector<std::uint8_t>());
        const auto expected =
            test::ReferenceDecodeADBlock(span, channels, samplesPerChannel, maskBytes);
        const std::uint8_t* const data = guarded_.Hold(span);
        samples_.assign(std::size_t{channels} * samplesPerChannel, kGarbage);
        SoilStack();
        const std::uint8_t* const end =
            DecodeADBlock(data, span.size(), channels, samplesPerChannel, maskBytes, samples_);
        ASSERT_EQ(samples_, expected.samples);
        ASSERT_EQ(static_cast<std::size_t>(end - data), expected.consumedBytes);
    }

    test::GuardedSpan guarded_;
    std::vector<std::uint16_t> samples_;
};

TEST_P(ADBlockKernelTest, EveryWidthChannelCountAndMaskDecodesAsTheReference) {
    std::mt19937_64 random(1);
    for (const unsigned channels : {32U, 64U, 128U, 256U}) {
        for (const Mask& mask : MasksFor(channels, random)) {
            for (unsigned width = 0; width <= 15; ++width) {
                SCOPED_TRACE(testing::Message() << channels << " channels, width " << width);
                const std::string block =
                    RandomBlock(channels, 10, static_cast<std::uint8_t>(width), mask, random);
                ASSERT_NO_FATAL_FAILURE(ExpectAsReference(block, channels, 10, mask));
                ASSERT_NO_FATAL_FAILURE(
                    ExpectAsReference(block + std::string(64, '\x5A'), channels, 10, mask));
            }
        }
    }
}

TEST_P(ADBlockKernelTest, MixedWidthsDecodeAsTheReference) {
    std::mt19937_64 random(2);
    for (const unsigned channels : {32U, 64U, 128U, 256U}) {
        for (unsigned round = 0; round < 10; ++round) {
            for (const Mask& mask : MasksFor(channels, random)) {
                const std::string block = RandomBlock(channels, 10, std::nullopt, mask, random);
                ASSERT_NO_FATAL_FAILURE(ExpectAsReference(block, channels, 10, mask));
            }
        }
    }
}

TEST_P(ADBlockKernelTest, EveryDistanceFromTheSpansEndDecodesAsTheReference) {
    constexpr std::size_t kMostCut = 80;
    constexpr std::size_t kMostBehind = 40;
    std::mt19937_64 random(3);
    for (const unsigned channels : {32U, 64U, 128U, 256U}) {
        for (const Mask& mask : MasksFor(channels, random)) {
            // Only width 0 reads past the span's end during decoding.
            for (const auto width : {std::optional<std::uint8_t>(), std::optional<std::uint8_t>(0),
                                     std::optional<std::uint8_t>(1)}) {
                const std::string block = RandomBlock(channels, 10, width, mask, random) +
                                          std::string(kMostBehind, '\xFF');
                const std::size_t shortest =
                    block.size() - std::min(block.size(), kMostCut + kMostBehind);
                for (std::size_t length = shortest; length <= block.size(); ++length) {
                    SCOPED_TRACE(testing::Message() << channels << " channels, " << length << " of "
                                                    << block.size() << " bytes");
                    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(
                        std::string_view(block).substr(0, length), channels, 10, mask));
                }
            }
        }
    }
}

TEST_P(ADBlockKernelTest, EveryLengthOfASmallBlockDecodesAsTheReference) {
    std::mt19937_64 random(4);
    for (const Mask& mask : MasksFor(32, random)) {
        const std::string block = RandomBlock(32, 10, 0, mask, random) + std::string(20, '\x81');
        for (std::size_t length = 0; length <= block.size(); ++length) {
            ASSERT_NO_FATAL_FAILURE(
                ExpectAsReference(std::string_view(block).substr(0, length), 32, 10, mask));
        }
    }
}

TEST_P(ADBlockKernelTest, FiveSamplesAChannelDecodeAsTheReference) {
    std::mt19937_64 random(5);
    for (const Mask& mask : MasksFor(256, random)) {
        const std::string block = RandomBlock(256, 5, std::nullopt, mask, random);
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(block, 256, 5, mask));
    }
}

TEST_P(ADBlockKernelTest, RandomBytesDecodeAsTheReference) {
    std::mt19937_64 random(6);
    for (unsigned round = 0; round < 400; ++round) {
        const unsigned channels = 32U << (round % 4);
        const Mask mask = round % 3 == 0 ? Mask() : MaskOf(channels, 50, random);
        std::string span(random() % 6000, '\0');
        std::generate(span.begin(), span.end(), [&] { return static_cast<char>(random()); });
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(span, channels, 10, mask));
    }
}

std::vector<std::string> KernelNames() {
    std::vector<std::string> names;
    for (const ADBlockKernel& kernel : AvailableADBlockKernels()) names.push_back(kernel.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Kernels, ADBlockKernelTest, testing::ValuesIn(KernelNames()),
                         [](const auto& kernel) { return kernel.param; });

TEST(ADBlockKernel, ScalarIsAlwaysThere) {
    EXPECT_EQ(AvailableADBlockKernels().back().name, "scalar");
}

TEST(ADBlockKernel, FastestIsInUseUnlessATestChoseAnother) {
    EXPECT_EQ(CurrentADBlockKernel().name, AvailableADBlockKernels().front().name);
    SetADBlockKernel(&AvailableADBlockKernels().back());
    EXPECT_EQ(CurrentADBlockKernel().name, "scalar");
    SetADBlockKernel(nullptr);
    EXPECT_EQ(CurrentADBlockKernel().name, AvailableADBlockKernels().front().name);
}

}  // namespace
}  // namespace stalwick
