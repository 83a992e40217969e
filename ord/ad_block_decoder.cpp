#include "ord/ad_block_decoder.h"

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

// Whether the bits behind the widths hold the whole block, padded to a byte. A width of 0 counts
// as no bits here although decoding takes one bit a delta for it: such a block is taken for
// complete too early. Kept (pinned by ADBlockDecoder.WidthZeroTakesABitThatTheSizeDoesNotCount).
bool IsComplete(const BitReader& reader, const ChannelBitWidths& widths,
                std::uint32_t samplesPerChannel, std::uint32_t enabledCount) {
    const std::uint32_t widthSum = std::accumulate(widths.begin(), widths.end(), 0U);
    const auto need = static_cast<std::int32_t>((samplesPerChannel - 1) * widthSum +
                                                kFirstValueBits * enabledCount);
    const std::int32_t beyondByte = (reader.position() + need) % kBitsPerByte;
    const std::int32_t pad = beyondByte != 0 ? kBitsPerByte - beyondByte : 0;
    return reader.bitCount() - reader.position() >= need + pad;
}

// A two's-complement number of `width` bits, sign-extended to 16. Width 0 reads one bit all the
// same and gives 0 or -1.
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

const std::uint8_t* DecodeADBlock(const std::uint8_t* data, std::size_t length,
                                  std::uint32_t numChannels, std::uint32_t samplesPerChannel,
                                  const std::vector<std::uint8_t>& channelMask,
                                  std::vector<std::uint16_t>& samples) {
    samples.clear();
    const auto bitCount = static_cast<std::int32_t>(length * kBitsPerByte);
    if (bitCount < kShortestBlockBits) return data;

    const ChannelEnableSet enabled = BuildChannelEnableSet(channelMask);
    BitReader reader(data, bitCount);
    const ChannelBitWidths widths = ReadChannelBitWidths(reader, numChannels, enabled);
    const std::uint32_t enabledCount = CountEnabled(channelMask, numChannels);
    if (!IsComplete(reader, widths, samplesPerChannel, enabledCount)) return data;

    samples.assign(std::size_t{numChannels} * samplesPerChannel, 0);
    std::array<std::uint16_t, kMostADChannels> last{};
    for (std::uint32_t channel = 0; channel < numChannels; ++channel) {
        if (!IsEnabled(enabled, channel)) continue;
        const std::uint32_t value = reader.ReadBits(kFirstValueBits) << kSampleShift;
        last[channel] = static_cast<std::uint16_t>(value);
        samples[std::size_t{channel} * samplesPerChannel] = last[channel];
    }
    for (std::uint32_t i = 1; i < samplesPerChannel; ++i) {
        for (std::uint32_t channel = 0; channel < numChannels; ++channel) {
            if (!IsEnabled(enabled, channel)) continue;
            const std::uint32_t delta = ReadDelta(reader, widths[channel]);
            last[channel] = static_cast<std::uint16_t>(last[channel] + (delta << kSampleShift));
            samples[std::size_t{channel} * samplesPerChannel + i] = last[channel];
        }
    }
    return data + length - (reader.bitCount() - reader.position()) / kBitsPerByte;
}

}  // namespace stalwick
