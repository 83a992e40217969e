// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_decoder.h"

#include "ord/ad_block_kernel.h"
#include "ord/ad_block_plan.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace stalwick {

namespace {

constexpr std::int32_t kBitsPerByte = 8;
constexpr std::int32_t kShortestBlockBits = 16;

bool IsEnabled(const ChannelEnableSet& enabled, std::uint32_t channel) {
    return enabled.empty() || (channel < enabled.size() && enabled.test(channel));
}

std::uint32_t CountEnabled(const std::vector<std::uint8_t>& channelMask,
                           std::uint32_t numChannels) {
    if (channelMask.empty()) return numChannels;
    return std::accumulate(channelMask.begin(), channelMask.end(), 0U,
                           [](std::uint32_t count, std::uint8_t byte) {
                               return count + static_cast<std::uint32_t>(std::popcount(byte));
                           });
}

// Whether the bits after the widths hold the whole block, padded to a byte. A width of 0 counts as
// no bits here although decoding takes one bit per delta for it, so such a block counts as complete
// too early. Do not change this (pinned by
// ADBlockDecoder.WidthZeroTakesABitThatTheSizeDoesNotCount).
bool IsComplete(std::int32_t bitCount, std::int32_t position, std::uint32_t widthSum,
                std::uint32_t enabledCount, std::uint32_t samplesPerChannel) {
    const auto need = static_cast<std::int32_t>((samplesPerChannel - 1) * widthSum +
                                                kFirstValueBits * enabledCount);
    const std::int32_t beyondByte = (position + need) % kBitsPerByte;
    const std::int32_t pad = beyondByte != 0 ? kBitsPerByte - beyondByte : 0;
    return bitCount - position >= need + pad;
}

// A two's-complement number of `width` bits, sign-extended to 16. Width 0 reads one bit
// nevertheless and returns 0 or -1.
std::uint16_t ReadDelta(BitReader& reader, unsigned width) {
    const std::uint32_t sign = reader.ReadBit();
    std::uint32_t value = sign != 0 ? 0xFFFFU : 0;
    if (width > 0) {
        value = (value << 1U) | sign;
        for (unsigned i = 1; i < width; ++i) value = (value << 1U) | reader.ReadBit();
    }
    return static_cast<std::uint16_t>(value);
}

}  // namespace

ChannelEnableSet BuildChannelEnableSet(const std::vector<std::uint8_t>& channelMask) {
    return {channelMask.rbegin(), channelMask.rend()};
}

ChannelBitWidths ReadChannelBitWidths(BitReader& reader, std::uint32_t numChannels,
                                      const ChannelEnableSet& enabled) {
    ChannelBitWidths widths{};
    for (std::uint32_t channel = 0; channel < numChannels; ++channel) {
        if (!IsEnabled(enabled, channel)) continue;
        widths[channel] = static_cast<std::uint8_t>(reader.ReadBits(kWidthBits));
    }
    return widths;
}

namespace {

// A block to decode, and the `length` bytes of the span from its first byte on.
struct Block {
    const std::uint8_t* data;
    std::size_t length;
    std::uint32_t numChannels;
    std::uint32_t samplesPerChannel;
    const std::vector<std::uint8_t>& channelMask;

    std::int32_t BitCount() const { return static_cast<std::int32_t>(length * kBitsPerByte); }
    std::size_t SampleCount() const { return std::size_t{numChannels} * samplesPerChannel; }
    // The position after a block of this many bits, rounded up to the next whole byte.
    const std::uint8_t* EndAt(std::int32_t position) const {
        return data + length - (BitCount() - position) / kBitsPerByte;
    }
};

// Decodes with the bit reader, which has a rule for the end of the span. Needed for blocks that
// take more bits than their size counts (see IsComplete), and for shapes that no recording has.
const std::uint8_t* DecodeBitByBit(const Block& block, std::vector<std::uint16_t>& samples) {
    const ChannelEnableSet enabled = BuildChannelEnableSet(block.channelMask);
    BitReader reader(block.data, block.BitCount());
    const ChannelBitWidths widths = ReadChannelBitWidths(reader, block.numChannels, enabled);
    const std::uint32_t widthSum = std::accumulate(widths.begin(), widths.end(), 0U);
    if (!IsComplete(reader.bitCount(), reader.position(), widthSum,
                    CountEnabled(block.channelMask, block.numChannels), block.samplesPerChannel)) {
        return block.data;
    }
    samples.assign(block.SampleCount(), 0);
    std::array<std::uint16_t, kMostADChannels> last{};
    for (std::uint32_t channel = 0; channel < block.numChannels; ++channel) {
        if (!IsEnabled(enabled, channel)) continue;
        const std::uint32_t value = reader.ReadBits(kFirstValueBits) << kSampleShift;
        last[channel] = static_cast<std::uint16_t>(value);
        samples[std::size_t{channel} * block.samplesPerChannel] = last[channel];
    }
    for (std::uint32_t i = 1; i < block.samplesPerChannel; ++i) {
        for (std::uint32_t channel = 0; channel < block.numChannels; ++channel) {
            if (!IsEnabled(enabled, channel)) continue;
            const std::uint32_t delta = ReadDelta(reader, widths[channel]);
            last[channel] = static_cast<std::uint16_t>(last[channel] + (delta << kSampleShift));
            samples[std::size_t{channel} * block.samplesPerChannel + i] = last[channel];
        }
    }
    return block.EndAt(reader.position());
}

bool HasUsualShape(const Block& block) {
    return block.numChannels % kChannelsPerGroup == 0 && block.numChannels <= kMostADChannels &&
           block.samplesPerChannel >= 1 && block.samplesPerChannel <= kSamplesPerPacket &&
           (block.channelMask.empty() ||
            block.channelMask.size() == block.numChannels / kChannelsPerGroup);
}

// Decodes a block whose every bit is inside the span.
void DecodePlanned(const Block& block, const ADBlockPlan& plan, std::uint16_t* samples) {
    const std::size_t bytes = plan.BlockBits(block.samplesPerChannel) / kBitsPerByte + 1;
    const auto decode = CurrentADBlockKernel().decode;
    if (bytes + kKernelOverrun <= block.length) {
        decode(block.data, plan, block.samplesPerChannel, samples);
        return;
    }
    // The kernels read in wide steps, so the span's last block is decoded from a padded copy.
    std::array<std::uint8_t, kLargestADBlock + 1 + kKernelOverrun> copy;
    std::copy_n(block.data, std::min(bytes, block.length), copy.begin());
    decode(copy.data(), plan, block.samplesPerChannel, samples);
}

}  // namespace

const std::uint8_t* DecodeADBlock(const std::uint8_t* data, std::size_t length,
                                  std::uint32_t numChannels, std::uint32_t samplesPerChannel,
                                  const std::vector<std::uint8_t>& channelMask,
                                  std::vector<std::uint16_t>& samples) {
    const Block block{data, length, numChannels, samplesPerChannel, channelMask};
    const std::int32_t bitCount = block.BitCount();
    ADBlockPlan plan;
    if (bitCount >= kShortestBlockBits && HasUsualShape(block) &&
        BuildADBlockPlan(data, length, numChannels, channelMask, plan)) {
        const auto blockBits = static_cast<std::int32_t>(plan.BlockBits(samplesPerChannel));
        if (blockBits <= bitCount) {
            samples.resize(block.SampleCount());
            DecodePlanned(block, plan, samples.data());
            return block.EndAt(blockBits);
        }
        // Many spans end in a truncated block; this avoids reading its widths bit by bit.
        if (!IsComplete(bitCount, static_cast<std::int32_t>(plan.firstValuesBit),
                        SumADWidths(data, plan.enabledCount), plan.enabledCount,
                        samplesPerChannel)) {
            samples.clear();
            return data;
        }
    }
    samples.clear();
    if (bitCount < kShortestBlockBits) return data;
    return DecodeBitByBit(block, samples);
}

}  // namespace stalwick
