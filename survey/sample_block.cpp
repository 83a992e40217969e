#include "survey/sample_block.h"

#include <algorithm>

namespace stalwick {

namespace {

// Loops without branches, which compilers turn into vector instructions; inlined into a function
// for each instruction set.
template <std::size_t N>
[[gnu::always_inline]] inline void AddExtremes(const std::array<const std::int16_t*, N>& samples,
                                               std::size_t slots, SlotSums& sums) {
    // Nothing of these overlaps; the compiler cannot know.
    std::int16_t* __restrict const smallest = sums.smallest.data();
    std::int16_t* __restrict const largest = sums.largest.data();
    std::uint16_t* __restrict const atRangeEnd = sums.atRangeEnd.data();
    std::fill_n(atRangeEnd, slots, std::uint16_t{0});
    std::uint16_t any = 0;
    for (const std::int16_t* const packet : samples) {
        for (std::size_t i = 0; i < slots; ++i) {
            const std::int16_t value = packet[i];
            smallest[i] = value < smallest[i] ? value : smallest[i];
            largest[i] = value > largest[i] ? value : largest[i];
            const auto atEnd =
                static_cast<std::uint16_t>((value == kRangeStart) | (value == kRangeEnd));
            atRangeEnd[i] = static_cast<std::uint16_t>(atRangeEnd[i] | atEnd);
            any = static_cast<std::uint16_t>(any | atEnd);
        }
    }
    sums.anyAtRangeEnd = any != 0;
}

template <std::size_t N>
[[gnu::always_inline]] inline void AddSums(const std::array<const std::int16_t*, N>& samples,
                                           std::size_t slots, SlotSums& sums) {
    std::int32_t* __restrict const sum = sums.sum.data();
    std::uint64_t* __restrict const sumOfSquares = sums.sumOfSquares.data();
    std::array<std::int32_t, kMostSlots> squares;  // of at most eight 14-bit values
    std::int32_t* __restrict const square = squares.data();
    std::fill_n(square, slots, 0);
    for (const std::int16_t* const packet : samples) {
        for (std::size_t i = 0; i < slots; ++i) {
            const auto narrow = static_cast<std::int16_t>(packet[i] >> kSampleShift);
            sum[i] += packet[i];
            square[i] += narrow * narrow;
        }
    }
    for (std::size_t i = 0; i < slots; ++i)
        sumOfSquares[i] += static_cast<std::uint32_t>(square[i]);
}

template <std::size_t N>
[[gnu::always_inline]] inline void FindThreeAlike(const std::array<const std::int16_t*, N>& samples,
                                                  std::size_t slots, SlotSums& sums) {
    std::uint16_t* __restrict const threeAlike = sums.threeAlike.data();
    const std::size_t triples = slots < 2 ? 0 : slots - 2;
    std::fill_n(threeAlike, slots, std::uint16_t{0});
    for (const std::int16_t* const packet : samples) {
        const std::int16_t* const first = packet;
        const std::int16_t* const second = packet + 1;
        const std::int16_t* const third = packet + 2;
        for (std::size_t i = 0; i < triples; ++i) {
            const auto difference =
                static_cast<std::uint16_t>((first[i] ^ second[i]) | (second[i] ^ third[i]));
            threeAlike[i] = difference == 0 ? std::uint16_t{1} : threeAlike[i];
        }
    }
}

template <std::size_t N>
[[gnu::always_inline]] inline void Add(const std::int16_t* const* packets, std::size_t slots,
                                       SlotSums& sums) {
    std::array<const std::int16_t*, N> samples;
    std::copy_n(packets, N, samples.begin());
    AddExtremes(samples, slots, sums);
    AddSums(samples, slots, sums);
    FindThreeAlike(samples, slots, sums);
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] void AddBlockAvx2(const std::int16_t* const* packets, std::size_t slots,
                                          SlotSums& sums) {
    Add<kBlockPackets>(packets, slots, sums);
}
bool HasAvx2() {
    static const bool has = __builtin_cpu_supports("avx2") != 0;
    return has;
}
#endif

void AddBlock(const std::int16_t* const* packets, std::size_t slots, SlotSums& sums) {
#if defined(__x86_64__)
    if (HasAvx2()) return AddBlockAvx2(packets, slots, sums);
#endif
    Add<kBlockPackets>(packets, slots, sums);
}

}  // namespace

void SlotSums::Clear() {
    smallest.fill(INT16_MAX);
    largest.fill(INT16_MIN);
    sum.fill(0);
    sumOfSquares.fill(0);
}

void AddPackets(std::span<const std::int16_t* const> packets, std::size_t slots, SlotSums& sums) {
    if (packets.size() == kBlockPackets) return AddBlock(packets.data(), slots, sums);
    std::array<std::uint16_t, kMostSlots> atRangeEnd{};
    std::array<std::uint16_t, kMostSlots> threeAlike{};
    for (const std::int16_t* const& packet : packets) {
        Add<1>(&packet, slots, sums);
        for (std::size_t i = 0; i < slots; ++i) {
            atRangeEnd[i] |= sums.atRangeEnd[i];
            threeAlike[i] |= sums.threeAlike[i];
        }
    }
    sums.anyAtRangeEnd = std::any_of(atRangeEnd.begin(), atRangeEnd.end(),
                                     [](std::uint16_t slot) { return slot != 0; });
    sums.atRangeEnd = atRangeEnd;
    sums.threeAlike = threeAlike;
}

}  // namespace stalwick
