// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_plan.h"

#include <bit>

namespace stalwick {

namespace {

constexpr EightBytes kOnes = 0x0101010101010101U;
constexpr std::uint8_t kAllEnabled = 0xFF;

// 1 in each byte of `bytes` that is not 0; no byte is above 128.
constexpr EightBytes OneWhereNotZero(EightBytes bytes) {
    return ((bytes + 0x7F * kOnes) >> 7U) & kOnes;
}

// In each byte the sum of the bytes below it. No sum of all eight may be above 255.
constexpr EightBytes SumsBefore(EightBytes bytes) {
    return (bytes * kOnes) << 8U;
}

constexpr std::uint32_t SumOf(EightBytes bytes) {
    return static_cast<std::uint32_t>((bytes * kOnes) >> 56U);
}

// 1 in byte i where bit i of the mask byte is set.
constexpr EightBytes OnePerBit(std::uint8_t maskByte) {
    return OneWhereNotZero((maskByte * kOnes) & 0x8040201008040201U);
}

// The eight widths that begin on a byte, high nibble first.
EightBytes ReadEightNibbles(const std::uint8_t* data) {
    EightBytes pairs = EightBytes{data[0]} | EightBytes{data[1]} << 8U |
                       EightBytes{data[2]} << 16U | EightBytes{data[3]} << 24U;
    pairs = (pairs | pairs << 16U) & 0x0000FFFF0000FFFFU;
    pairs = (pairs | pairs << 8U) & 0x00FF00FF00FF00FFU;
    constexpr EightBytes kLowNibbles = 0x000F000F000F000FU;
    return ((pairs >> 4U) & kLowNibbles) | ((pairs & kLowNibbles) << 8U);
}

std::uint8_t ReadNibble(const std::uint8_t* data, std::uint32_t position) {
    const std::uint8_t byte = data[position / 2];
    return position % 2 == 0 ? static_cast<std::uint8_t>(byte >> 4U) : byte & 0x0FU;
}

// The widths of a group's enabled channels, 0 for the others; they begin at the block's nibble
// number `position`.
EightBytes ReadWidths(const std::uint8_t* data, std::uint32_t position, std::uint8_t enabled) {
    if (enabled == kAllEnabled && position % 2 == 0) return ReadEightNibbles(data + position / 2);
    EightBytes widths = 0;
    for (std::uint32_t bits = enabled; bits != 0; bits &= bits - 1) {
        const auto channel = static_cast<unsigned>(std::countr_zero(bits));
        widths |= EightBytes{ReadNibble(data, position++)} << (8 * channel);
    }
    return widths;
}

// The layout of consecutive channels with these widths; at most 255 bits in total.
constexpr GroupLayout LayOut(EightBytes widths, EightBytes enabled) {
    const EightBytes offsets = SumsBefore(widths);
    GroupLayout layout{};
    layout.firstBytes = ((offsets >> 3U) & (0x1F * kOnes)) | ((enabled ^ kOnes) * kNoByte);
    layout.bitsToSkip = offsets & (0x07 * kOnes);
    layout.widths = widths | (enabled ^ kOnes);
    return layout;
}

// Plans the group after those that the plan counts. False if `length` bytes do not hold its widths.
[[gnu::always_inline]] inline bool PlanGroup(const std::uint8_t* data, std::size_t length,
                                             std::uint8_t mask, ADBlockPlan& plan,
                                             ChannelGroup8& group) {
    const auto count = static_cast<std::uint32_t>(std::popcount(mask));
    if (std::size_t{plan.enabledCount + count} * kWidthBits > length * 8) return false;

    const EightBytes enabled = OnePerBit(mask);
    const EightBytes stored = ReadWidths(data, plan.enabledCount, mask);
    const EightBytes widths = stored | (enabled & ~OneWhereNotZero(stored));
    group.deltas = LayOut(widths, enabled);
    group.firstValues = LayOut(enabled * kFirstValueBits, enabled);
    group.deltasBit = plan.rowBits;
    group.firstValuesBit = plan.enabledCount * kFirstValueBits;
    plan.enabledCount += count;
    plan.widthSum += SumOf(stored);
    plan.rowBits += SumOf(widths);
    return true;
}

}  // namespace

bool BuildADBlockPlan(const std::uint8_t* data, std::size_t length, std::uint32_t numChannels,
                      std::span<const std::uint8_t> channelMask, ADBlockPlan& plan) {
    plan.groupCount = numChannels / kChannelsPerGroup;
    plan.enabledCount = 0;
    plan.widthSum = 0;
    plan.rowBits = 0;
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        const std::uint8_t mask =
            channelMask.empty() ? kAllEnabled : channelMask[channelMask.size() - 1 - i];
        ChannelGroup8& group = plan.groups[i];
        // The usual mask as a constant: nothing that depends on it is then computed here.
        const bool planned = mask == kAllEnabled ? PlanGroup(data, length, kAllEnabled, plan, group)
                                                 : PlanGroup(data, length, mask, plan, group);
        if (!planned) return false;
    }
    const std::uint32_t widthBits = plan.enabledCount * kWidthBits;
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        plan.groups[i].firstValuesBit += widthBits;
    }
    plan.deltasBit = widthBits + plan.enabledCount * kFirstValueBits;
    return true;
}

}  // namespace stalwick
