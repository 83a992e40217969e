// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ad_block_simd.h"

#include <cstring>

// Only Highway's headers are used: its library calibrates the timer at every program start, which
// takes longer than converting a second of recording. So this file chooses the instruction set
// itself, and needs only what is named here.
#define HWY_DISABLE_PCLMUL_AES
#define HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_F16C
// Without shifts by lane the oldest one is slower than the scalar kernel; the newest adds nothing.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)

// Compiled once for each instruction set: this file includes itself through Highway.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ord/ad_block_simd.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace stalwick {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors, the scalar kernel is the fastest.
void DecodePlannedBlock(const std::uint8_t* data, const ADBlockPlan& plan,
                        std::uint32_t samplesPerChannel, std::uint16_t* samples) {
    DecodePlannedBlockScalar(data, plan, samplesPerChannel, samples);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// One 32-bit lane per channel, eight channels if the vectors are wide enough, otherwise four. The
// bits of eight channels' values, 8 * 15 and 7 of the byte they begin in, fit one 16-byte load.
using Lanes32 = hn::CappedTag<std::int32_t, kChannelsPerGroup>;
using Lanes8 = hn::Repartition<std::uint8_t, Lanes32>;
using Vector32 = hn::Vec<Lanes32>;
using Vector8 = hn::Vec<Lanes8>;

constexpr std::size_t kLanes = hn::MaxLanes(Lanes32());
constexpr int kLaneBits = 32;
constexpr std::uint32_t kSamples = kSamplesPerPacket;
constexpr std::size_t kPairs = kSamples / 2;  // a lane holds two samples at the end

// Byte i of the channels from `first` on in lane i - first.
Vector32 HWY_INLINE Spread(EightBytes bytes, std::size_t first) {
    const hn::Rebind<std::uint8_t, Lanes32> narrow;
    std::uint8_t values[sizeof bytes];
    std::memcpy(values, &bytes, sizeof bytes);
    return hn::PromoteTo(Lanes32(), hn::LoadU(narrow, values + first));
}

// How a row's values of some channels are extracted from the 16 bytes that hold them: the four
// bytes from each value's first byte on go to its lane, the first byte highest. They are shifted
// left until the value's first bit is the lane's first, then right until its last bit is the lane's
// last.
struct Extraction {
    Vector8 byteOrder;
    Vector32 leftShift;
    Vector32 rightShift;
};

Extraction HWY_INLINE PlanExtraction(const GroupLayout& layout, std::size_t first) {
    const Lanes32 d;
    // kNoByte stays above 127 in every byte of its lane and so gives 0.
    const Vector32 byteNumbers = hn::Add(
        hn::Mul(Spread(layout.firstBytes, first), hn::Set(d, 0x01010101)), hn::Set(d, 0x00010203));
    return {hn::BitCast(Lanes8(), byteNumbers), Spread(layout.bitsToSkip, first),
            hn::Sub(hn::Set(d, kLaneBits), Spread(layout.widths, first))};
}

// The values of one row, sign-extended, when the group's row begins at bit `position`.
Vector32 HWY_INLINE Extract(const std::uint8_t* data, std::uint32_t position,
                            const Extraction& how) {
    const Lanes32 d;
    const Vector8 bytes = hn::LoadDup128(Lanes8(), data + position / 8);
    const Vector32 lanes = hn::BitCast(d, hn::TableLookupBytesOr0(bytes, how.byteOrder));
    const Vector32 phase = hn::Set(d, static_cast<std::int32_t>(position % 8));
    return hn::Shr(hn::Shl(lanes, hn::Add(how.leftShift, phase)), how.rightShift);
}

// Two samples of each channel in its lane, as in memory.
Vector32 HWY_INLINE Pair(Vector32 earlier, Vector32 later) {
    const Lanes32 d;
    const Vector32 low = hn::And(hn::ShiftLeft<kSampleShift>(earlier), hn::Set(d, 0xFFFF));
    return hn::Or(low, hn::ShiftLeft<16 + kSampleShift>(later));
}

using Lanes64 = hn::Repartition<std::uint64_t, Lanes32>;

// Writes four pairs, 16 bytes, of a channel and, in vectors of eight lanes, of the channel four
// places after it.
void HWY_INLINE StoreFourPairs(hn::Vec<Lanes64> channels, std::uint16_t* samples) {
    auto* const at = reinterpret_cast<std::uint64_t*>(samples);
    if constexpr (kLanes == kChannelsPerGroup) {
        const hn::Half<Lanes64> half;
        auto* const next = reinterpret_cast<std::uint64_t*>(samples + 4 * kSamples);
        hn::StoreU(hn::LowerHalf(half, channels), half, at);
        hn::StoreU(hn::UpperHalf(half, channels), half, next);
    } else {
        hn::StoreU(channels, Lanes64(), at);
    }
}

// Turns pairs[pair] with one channel per lane into samples[channel * kSamples + i].
void HWY_INLINE StoreTransposed(const Vector32 (&pairs)[kPairs], std::uint16_t* samples) {
    const Lanes32 d;
    const Lanes64 d64;
    const auto low01 = hn::BitCast(d64, hn::InterleaveLower(d, pairs[0], pairs[1]));
    const auto high01 = hn::BitCast(d64, hn::InterleaveUpper(d, pairs[0], pairs[1]));
    const auto low23 = hn::BitCast(d64, hn::InterleaveLower(d, pairs[2], pairs[3]));
    const auto high23 = hn::BitCast(d64, hn::InterleaveUpper(d, pairs[2], pairs[3]));
    StoreFourPairs(hn::InterleaveLower(d64, low01, low23), samples);
    StoreFourPairs(hn::InterleaveUpper(d64, low01, low23), samples + kSamples);
    StoreFourPairs(hn::InterleaveLower(d64, high01, high23), samples + 2 * kSamples);
    StoreFourPairs(hn::InterleaveUpper(d64, high01, high23), samples + 3 * kSamples);

    HWY_ALIGN std::int32_t lastPairs[kLanes];
    hn::Store(pairs[kPairs - 1], d, lastPairs);
    for (std::size_t i = 0; i < kLanes; ++i) {
        std::memcpy(samples + i * kSamples + kSamples - 2, &lastPairs[i], sizeof lastPairs[i]);
    }
}

void HWY_INLINE DecodeChannels(const std::uint8_t* data, const ADBlockPlan& plan,
                               const ChannelGroup8& group, std::size_t first,
                               std::uint16_t* samples) {
    Vector32 pairs[kPairs];
    Vector32 value = Extract(data, plan.firstValuesBit + group.firstValuesBit,
                             PlanExtraction(group.firstValues, first));
    const Extraction deltas = PlanExtraction(group.deltas, first);
    std::uint32_t position = plan.deltasBit + group.deltasBit;
    for (std::size_t i = 0; i < kPairs; ++i) {
        if (i > 0) {
            value = hn::Add(value, Extract(data, position, deltas));
            position += plan.rowBits;
        }
        const Vector32 earlier = value;
        value = hn::Add(value, Extract(data, position, deltas));
        position += plan.rowBits;
        pairs[i] = Pair(earlier, value);
    }
    StoreTransposed(pairs, samples);
}

void DecodePlannedBlock(const std::uint8_t* data, const ADBlockPlan& plan,
                        std::uint32_t samplesPerChannel, std::uint16_t* samples) {
    if (samplesPerChannel != kSamples) {
        DecodePlannedBlockScalar(data, plan, samplesPerChannel, samples);
        return;
    }
    for (std::uint32_t i = 0; i < plan.groupCount; ++i) {
        for (std::size_t first = 0; first < kChannelsPerGroup; first += kLanes) {
            DecodeChannels(data, plan, plan.groups[i], first, samples);
            samples += kLanes * kSamples;
        }
    }
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace stalwick
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace stalwick {

std::vector<ADBlockKernel> ListSimdADBlockKernels() {
    std::vector<ADBlockKernel> kernels;
#if HWY_ARCH_X86
#if HWY_TARGETS & HWY_AVX3
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw")) {
        kernels.push_back({"AVX3", N_AVX3::DecodePlannedBlock});
    }
#endif
#if HWY_TARGETS & HWY_AVX2
    if (__builtin_cpu_supports("avx2")) kernels.push_back({"AVX2", N_AVX2::DecodePlannedBlock});
#endif
#if HWY_TARGETS & HWY_SSE4
    if (__builtin_cpu_supports("sse4.2")) kernels.push_back({"SSE4", N_SSE4::DecodePlannedBlock});
#endif
#elif HWY_STATIC_TARGET != HWY_SCALAR && HWY_STATIC_TARGET != HWY_EMU128
    kernels.push_back({"vector", HWY_STATIC_DISPATCH(DecodePlannedBlock)});
#endif
    return kernels;
}

}  // namespace stalwick

#endif  // HWY_ONCE
