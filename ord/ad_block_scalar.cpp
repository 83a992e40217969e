// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_kernel.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace stalwick {

namespace {

std::uint8_t ByteAt(EightBytes bytes, unsigned i) {
    return static_cast<std::uint8_t>(bytes >> (8 * i));
}

// The 8 bytes from `at` on, the first of them highest.
std::uint64_t LoadBigEndian(const std::uint8_t* at) {
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    if constexpr (std::endian::native == std::endian::little) value = __builtin_bswap64(value);
    return value;
}

// The `width` bits from bit `position` on, as a two's-complement number.
std::uint32_t ReadSigned(const std::uint8_t* data, std::uint32_t position, unsigned width) {
    const std::uint64_t bits = LoadBigEndian(data + position / 8) << (position % 8);
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(bits) >> (64 - width));
}

std::uint32_t FirstBit(const GroupLayout& layout, unsigned channel) {
    return ByteAt(layout.firstBytes, channel) * 8U + ByteAt(layout.bitsToSkip, channel);
}

// The positions of one channel's values, in bits from the block's first one.
struct ChannelBits {
    std::uint32_t firstValue;
    std::uint32_t firstDelta;
    std::uint32_t row;  // from one delta to the next
    unsigned width;     // of a delta
};

// The shift drops the sign extension of the first value's 14 bits.
inline void DecodeChannel(const std::uint8_t* data, const ChannelBits& bits,
                          std::uint32_t samplesPerChannel, std::uint16_t* samples) {
    std::uint32_t value = ReadSigned(data, bits.firstValue, kFirstValueBits);
    samples[0] = static_cast<std::uint16_t>(value << kSampleShift);
    std::uint32_t position = bits.firstDelta;
    for (std::uint32_t i = 1; i < samplesPerChannel; ++i, position += bits.row) {
        value += ReadSigned(data, position, bits.width);
        samples[i] = static_cast<std::uint16_t>(value << kSampleShift);
    }
}

}  // namespace

void DecodePlannedBlockScalar(const std::uint8_t* data, const ADBlockPlan& plan,
                              std::uint32_t samplesPerChannel, std::uint16_t* samples) {
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        const ChannelGroup8& group = plan.groups[i];
        for (unsigned channel = 0; channel < kChannelsPerGroup; ++channel) {
            const ChannelBits bits = {
                plan.firstValuesBit + group.firstValuesBit + FirstBit(group.firstValues, channel),
                plan.deltasBit + group.deltasBit + FirstBit(group.deltas, channel), plan.rowBits,
                ByteAt(group.deltas.widths, channel)};
            if ((ByteAt(group.deltas.firstBytes, channel) & kNoByte) != 0) {
                std::fill_n(samples, samplesPerChannel, std::uint16_t{0});
            } else if (samplesPerChannel == kSamplesPerPacket) {
                DecodeChannel(data, bits, kSamplesPerPacket, samples);  // a loop without a test
            } else {
                DecodeChannel(data, bits, samplesPerChannel, samples);
            }
            samples += samplesPerChannel;
        }
    }
}

}  // namespace stalwick
