#include "survey/channel_collector.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "ord/ord_format.h"

namespace stalwick {

namespace {

// The sum of squares of so many 14-bit values fits into 32 bits, and the counts into 16.
constexpr std::uint32_t kMostBlockPackets = 32;
constexpr std::int16_t kRangeStart = INT16_MIN;
constexpr std::int16_t kRangeEnd = INT16_MAX - 3;  // the two lowest bits of a sample are 0
constexpr double kStepsPer14BitStep = 4.0;

// Channel j's bit is in mask byte K/8 - 1 - j/8.
bool IsEnabled(const std::vector<std::uint8_t>& mask, std::size_t channel) {
    if (mask.empty()) return true;
    const std::size_t byte = channel / 8;
    return byte < mask.size() && ((mask[mask.size() - 1 - byte] >> (channel % 8)) & 1U) != 0;
}

// Bit i of the result: whether samples[i] has the value of the sample before it.
unsigned EqualToTheOneBefore(const std::int16_t* samples, std::int16_t before) {
    unsigned equal = samples[0] == before ? 1U : 0U;
    for (unsigned i = 1; i < kSamplesPerPacket; ++i) {
        equal |= (samples[i] == samples[i - 1] ? 1U : 0U) << i;
    }
    return equal;
}

}  // namespace

void ChannelCollector::Take(const ORDDataPacket& packet) {
    const std::vector<std::uint16_t>& samples = *packet.adSamples;
    const std::size_t slots = std::min(samples.size(), kMostSlots);
    const std::vector<std::uint8_t>& mask = *packet.channelMask;
    if (slots != slots_ || mask != channelMask_ || blockPackets_ == kMostBlockPackets) {
        FlushBlock();
        slots_ = slots;
        channelMask_ = mask;
        for (std::size_t channel = 0; channel < slots / kSamplesPerPacket; ++channel) {
            enabled_[channel] = IsEnabled(mask, channel);
        }
    }
    const auto* const values = reinterpret_cast<const std::int16_t*>(samples.data());
    AddToBlock(values);
    FollowRuns(values);
    ++blockPackets_;
}

void ChannelCollector::AddToBlock(const std::int16_t* samples) {
    if (blockPackets_ == 0) {
        std::fill_n(blockSmallest_.begin(), slots_, INT16_MAX);
        std::fill_n(blockLargest_.begin(), slots_, INT16_MIN);
        std::fill_n(blockSum_.begin(), slots_, 0);
        std::fill_n(blockSquares_.begin(), slots_, 0U);
        std::fill_n(blockAtEnds_.begin(), slots_, std::uint16_t{0});
    }
    const std::size_t slots = slots_;
    for (std::size_t i = 0; i < slots; ++i) {
        blockSmallest_[i] = std::min(blockSmallest_[i], samples[i]);
        blockLargest_[i] = std::max(blockLargest_[i], samples[i]);
        const bool atEnd = samples[i] == kRangeStart || samples[i] == kRangeEnd;
        blockAtEnds_[i] = static_cast<std::uint16_t>(blockAtEnds_[i] + (atEnd ? 1 : 0));
    }
    for (std::size_t i = 0; i < slots; ++i) {
        const std::int32_t value = samples[i] >> kSampleShift;
        blockSum_[i] += samples[i];
        blockSquares_[i] += static_cast<std::uint32_t>(value * value);
    }
}

void ChannelCollector::FollowRuns(const std::int16_t* samples) {
    const std::size_t channels = slots_ / kSamplesPerPacket;
    for (std::size_t channel = 0; channel < channels; ++channel, samples += kSamplesPerPacket) {
        if (!enabled_[channel]) continue;
        Totals& totals = totals_[channel];
        unsigned equal = EqualToTheOneBefore(samples, totals.last);
        if (totals.run == 0) equal &= ~1U;  // nothing is before it
        totals.last = samples[kSamplesPerPacket - 1];
        constexpr unsigned kAllEqual = (1U << kSamplesPerPacket) - 1;
        if (equal == kAllEqual) {
            totals.run += kSamplesPerPacket;
            continue;
        }
        // The run that came in goes on over the ones at the start; each later run of n ones is one
        // of n + 1 samples; the last of them goes out.
        totals.run += static_cast<unsigned>(std::countr_one(equal));
        totals.longestRun = std::max(totals.longestRun, totals.run);
        unsigned inner = equal & (equal + 1);  // without the ones at the start
        std::uint64_t longest = 1;
        for (; inner != 0; inner &= inner >> 1U) ++longest;
        totals.longestRun = std::max(totals.longestRun, longest);
        totals.run =
            1U + static_cast<unsigned>(std::countl_one(equal << (32U - kSamplesPerPacket)));
    }
}

void ChannelCollector::BreakRuns() {
    for (Totals& totals : totals_) {
        totals.longestRun = std::max(totals.longestRun, totals.run);
        totals.run = 0;
    }
}

void ChannelCollector::FlushBlock() {
    if (blockPackets_ == 0) return;
    for (std::size_t slot = 0; slot < slots_; ++slot) {
        const std::size_t channel = slot / kSamplesPerPacket;
        if (!enabled_[channel]) continue;
        Totals& totals = totals_[channel];
        totals.samples += blockPackets_;
        totals.sum += blockSum_[slot];
        totals.sumOfSquares += blockSquares_[slot];
        totals.smallest = std::min(totals.smallest, blockSmallest_[slot]);
        totals.largest = std::max(totals.largest, blockLargest_[slot]);
        totals.atRangeEnds += blockAtEnds_[slot];
    }
    blockPackets_ = 0;
}

std::vector<ChannelStatistics> ChannelCollector::Finish(double microvoltsPerStep) {
    FlushBlock();
    BreakRuns();
    std::vector<ChannelStatistics> all;
    for (std::uint32_t channel = 0; channel < kMostADChannels; ++channel) {
        const Totals& totals = totals_[channel];
        if (totals.samples == 0) continue;
        const auto count = static_cast<double>(totals.samples);
        const double meanSquare = static_cast<double>(totals.sumOfSquares) / count;
        all.push_back({channel, totals.samples, totals.smallest * microvoltsPerStep,
                       totals.largest * microvoltsPerStep,
                       static_cast<double>(totals.sum) / count * microvoltsPerStep,
                       std::sqrt(meanSquare) * kStepsPer14BitStep * microvoltsPerStep,
                       totals.atRangeEnds, totals.longestRun});
    }
    return all;
}

}  // namespace stalwick
