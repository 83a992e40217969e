// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_plan.h"

#include <algorithm>
#include <bit>

namespace stalwick {

namespace {

constexpr EightBytes kOnes = 0x0101010101010101U;
constexpr std::uint8_t kAllEnabled = 0xFF;
constexpr std::size_t kBytesPerEightNibbles = 4;

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

// What the groups planned so far take. It is not in the plan, so that it stays in registers.
struct PlannedSoFar {
    std::uint32_t enabledCount = 0;
    std::uint32_t rowBits = 0;
};

// Plans the next group from its widths as in the block, 0 for channels that are not enabled.
inline void PlanGroup(EightBytes stored, EightBytes enabled, PlannedSoFar& planned,
                      ChannelGroup8& group) {
    const EightBytes widths = stored | (enabled & ~OneWhereNotZero(stored));
    group.deltas = LayOut(widths, enabled);
    group.firstValues = LayOut(enabled * kFirstValueBits, enabled);
    group.deltasBit = planned.rowBits;
    group.firstValuesBit = planned.enabledCount * kFirstValueBits;
    planned.enabledCount += SumOf(enabled);
    planned.rowBits += SumOf(widths);
}

// Whether `length` bytes hold the widths of `count` channels.
bool HoldsWidths(std::size_t length, std::uint32_t count) {
    return std::size_t{count} * kWidthBits <= length * 8;
}

// The usual case on its own: everything that depends on the mask is a constant.
bool PlanAllEnabled(const std::uint8_t* data, std::size_t length, ADBlockPlan& plan,
                    PlannedSoFar& planned) {
    if (!HoldsWidths(length, plan.groupCount * kChannelsPerGroup)) return false;
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        PlanGroup(ReadEightNibbles(data + std::size_t{i} * kBytesPerEightNibbles), kOnes, planned,
                  plan.groups[i]);
    }
    return true;
}

bool PlanMasked(const std::uint8_t* data, std::size_t length,
                std::span<const std::uint8_t> channelMask, ADBlockPlan& plan,
                PlannedSoFar& planned) {
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        const std::uint8_t mask = channelMask[channelMask.size() - 1 - i];
        const auto count = static_cast<std::uint32_t>(std::popcount(mask));
        if (!HoldsWidths(length, planned.enabledCount + count)) return false;
        PlanGroup(ReadWidths(data, planned.enabledCount, mask), OnePerBit(mask), planned,
                  plan.groups[i]);
    }
    return true;
}

}  // namespace

bool BuildADBlockPlan(const std::uint8_t* data, std::size_t length, std::uint32_t numChannels,
                      std::span<const std::uint8_t> channelMask, ADBlockPlan& plan) {
    plan.groupCount = numChannels / kChannelsPerGroup;
    PlannedSoFar planned;
    const bool allEnabled = std::all_of(channelMask.begin(), channelMask.end(),
                                        [](std::uint8_t mask) { return mask == kAllEnabled; });
    const bool hasWidths = allEnabled ? PlanAllEnabled(data, length, plan, planned)
                                      : PlanMasked(data, length, channelMask, plan, planned);
    if (!hasWidths) return false;
    plan.enabledCount = planned.enabledCount;
    plan.rowBits = planned.rowBits;
    plan.firstValuesBit = plan.enabledCount * kWidthBits;
    plan.deltasBit = plan.firstValuesBit + plan.enabledCount * kFirstValueBits;
    return true;
}

std::uint32_t SumADWidths(const std::uint8_t* data, std::uint32_t enabledCount) {
    std::uint32_t sum = 0;
    for (std::uint32_t i = 0; i < enabledCount; ++i) sum += ReadNibble(data, i);
    return sum;
}

}  // namespace stalwick
