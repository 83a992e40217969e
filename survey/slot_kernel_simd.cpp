// SPDX-License-Identifier: BSD-3-Clause
#include "survey/slot_kernel.h"

// A few slots of all packets at a time: intermediate results stay in registers.
//
// Only Highway's headers are used, as in ord/ad_block_simd.cpp. Vectors wider than AVX2's would not
// be faster: half of the work is on 32-bit lanes made from 16-bit ones.
#define HWY_DISABLE_PCLMUL_AES
#define HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_F16C
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3 | HWY_AVX3_DL)

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "survey/slot_kernel_simd.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace stalwick {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

namespace hn = hwy::HWY_NAMESPACE;

using Lanes16 = hn::CappedTag<std::int16_t, 16>;
using Lanes32 = hn::CappedTag<std::int32_t, 8>;
using Half16 = hn::Rebind<std::int16_t, Lanes32>;
using Lanes64 = hn::Repartition<std::uint64_t, Lanes32>;
using Half32 = hn::Rebind<std::uint32_t, Lanes64>;

constexpr std::size_t kLanes = hn::MaxLanes(Lanes16());
constexpr std::size_t kLanes32 = hn::MaxLanes(Lanes32());
constexpr std::size_t kLanes64 = hn::MaxLanes(Lanes64());

// Smallest and largest values, values at the range's ends, and three equal ones in a row.
HWY_INLINE hn::Vec<Lanes16> AddExtremes(const std::int16_t* const* packets, std::size_t slot,
                                        SlotSums& sums) {
    const Lanes16 d;
    const auto start = hn::Set(d, kRangeStart);
    const auto end = hn::Set(d, kRangeEnd);
    auto smallest = hn::LoadU(d, sums.smallest.data() + slot);
    auto largest = hn::LoadU(d, sums.largest.data() + slot);
    auto atEnd = hn::Zero(d);
    auto alike = hn::Zero(d);
    for (std::size_t n = 0; n < kBlockPackets; ++n) {
        const auto first = hn::LoadU(d, packets[n] + slot);
        const auto second = hn::LoadU(d, packets[n] + slot + 1);
        const auto third = hn::LoadU(d, packets[n] + slot + 2);
        smallest = hn::Min(smallest, first);
        largest = hn::Max(largest, first);
        const auto isEnd = hn::Or(hn::Eq(first, start), hn::Eq(first, end));
        atEnd = hn::Or(atEnd, hn::VecFromMask(d, isEnd));
        const auto isAlike = hn::And(hn::Eq(first, second), hn::Eq(second, third));
        alike = hn::Or(alike, hn::VecFromMask(d, isAlike));
    }
    hn::StoreU(smallest, d, sums.smallest.data() + slot);
    hn::StoreU(largest, d, sums.largest.data() + slot);
    const hn::RebindToUnsigned<Lanes16> flags;
    hn::StoreU(hn::BitCast(flags, atEnd), flags, sums.atRangeEnd.data() + slot);
    hn::StoreU(hn::BitCast(flags, alike), flags, sums.threeAlike.data() + slot);
    return atEnd;
}

// For eight packets, whose 14-bit squares add up to less than 2^31.
HWY_INLINE void AddSums(const std::int16_t* const* packets, std::size_t slot, SlotSums& sums) {
    const Lanes32 d;
    auto sum = hn::LoadU(d, sums.sum.data() + slot);
    auto squares = hn::Zero(d);
    for (std::size_t n = 0; n < kBlockPackets; ++n) {
        const auto value = hn::PromoteTo(d, hn::LoadU(Half16(), packets[n] + slot));
        const auto narrow = hn::ShiftRight<kSampleShift>(value);
        sum = hn::Add(sum, value);
        squares = hn::Add(squares, hn::Mul(narrow, narrow));
    }
    hn::StoreU(sum, d, sums.sum.data() + slot);
    HWY_ALIGN std::uint32_t squaresOfSlots[kLanes32];
    const hn::RebindToUnsigned<Lanes32> asUnsigned;
    hn::Store(hn::BitCast(asUnsigned, squares), asUnsigned, squaresOfSlots);
    for (std::size_t i = 0; i < kLanes32; i += kLanes64) {
        std::uint64_t* const target = sums.sumOfSquares.data() + slot + i;
        const auto added = hn::PromoteTo(Lanes64(), hn::LoadU(Half32(), squaresOfSlots + i));
        hn::StoreU(hn::Add(hn::LoadU(Lanes64(), target), added), Lanes64(), target);
    }
}

std::size_t AddSlots(const std::int16_t* const* packets, std::size_t slots, SlotSums& sums) {
    auto atEnd = hn::Zero(Lanes16());
    std::size_t slot = 0;
    for (; slot + kLanes + 2 <= slots; slot += kLanes) {
        atEnd = hn::Or(atEnd, AddExtremes(packets, slot, sums));
        for (std::size_t i = 0; i < kLanes; i += kLanes32) AddSums(packets, slot + i, sums);
    }
    sums.anyAtRangeEnd = !hn::AllTrue(Lanes16(), hn::Eq(atEnd, hn::Zero(Lanes16())));
    return slot;
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace stalwick
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace stalwick {

SlotKernel BestSlotKernel() {
#if HWY_ARCH_X86
#if HWY_TARGETS & HWY_AVX2
    if (__builtin_cpu_supports("avx2")) return N_AVX2::AddSlots;
#endif
#if HWY_TARGETS & HWY_SSE4
    if (__builtin_cpu_supports("sse4.2")) return N_SSE4::AddSlots;
#endif
#elif HWY_STATIC_TARGET != HWY_SCALAR && HWY_STATIC_TARGET != HWY_EMU128
    return HWY_STATIC_DISPATCH(AddSlots);
#endif
    return nullptr;
}

}  // namespace stalwick

#endif  // HWY_ONCE
