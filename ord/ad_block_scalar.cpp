#include <bit>
#include <cstring>

#include "ord/ad_block_kernel.h"

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

}  // namespace

void DecodePlannedBlockScalar(const std::uint8_t* data, const ADBlockPlan& plan,
                              std::uint32_t samplesPerChannel, std::uint16_t* samples) {
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        const ChannelGroup8& group = plan.groups[i];
        for (unsigned channel = 0; channel < kChannelsPerGroup; ++channel) {
            std::uint16_t* const end = samples + samplesPerChannel;
            if ((ByteAt(group.deltas.firstBytes, channel) & kNoByte) != 0) {
                while (samples != end) *samples++ = 0;
                continue;
            }
            // The sign extension of the 14 bits leaves with the shift.
            std::uint32_t value = ReadSigned(
                data, group.firstValuesBit + FirstBit(group.firstValues, channel), kFirstValueBits);
            *samples++ = static_cast<std::uint16_t>(value << kSampleShift);
            const unsigned width = ByteAt(group.deltas.widths, channel);
            std::uint32_t position =
                plan.deltasBit + group.deltasBit + FirstBit(group.deltas, channel);
            for (; samples != end; position += plan.rowBits) {
                value += ReadSigned(data, position, width);
                *samples++ = static_cast<std::uint16_t>(value << kSampleShift);
            }
        }
    }
}

}  // namespace stalwick
