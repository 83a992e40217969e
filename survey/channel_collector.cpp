// SPDX-License-Identifier: BSD-3-Clause
#include "survey/channel_collector.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "ord/ord_format.h"
#include "survey/channel_mask.h"

namespace stalwick {

namespace {

// The sum of this many 16-bit values fits into 32 bits.
constexpr std::uint32_t kMostSumPackets = 1U << 15U;
constexpr std::int64_t kWholeStepsPer14BitStep = 4;
constexpr double kStepsPer14BitStep = kWholeStepsPer14BitStep;
constexpr double kSecondsPerMinute = 60.0;

// Bit i of the result: whether samples[i] equals the previous sample.
unsigned EqualToTheOneBefore(const std::int16_t* samples, std::int16_t before) {
    unsigned equal = samples[0] == before ? 1U : 0U;
    for (unsigned i = 1; i < kSamplesPerPacket; ++i) {
        equal |= (samples[i] == samples[i - 1] ? 1U : 0U) << i;
    }
    return equal;
}

// RMS about the mean, in 14-bit steps, from the sums of this many 14-bit samples and of their
// squares. The difference is computed in integers: nothing cancels, however far the mean is from 0.
double DeviationOf(std::uint64_t samples, std::int64_t sum, std::uint64_t sumOfSquares) {
    __extension__ using Wide = unsigned __int128;
    const auto size = static_cast<std::uint64_t>(std::abs(sum));
    const Wide spread = Wide{samples} * sumOfSquares - Wide{size} * size;
    return std::sqrt(static_cast<double>(spread)) / static_cast<double>(samples);
}

// Whether any of a channel's slots is set.
bool AnySlot(const std::array<std::uint16_t, kMostSlots>& slots, std::size_t channel) {
    const std::uint16_t* const first = slots.data() + channel * kSamplesPerPacket;
    unsigned any = 0;
    for (std::size_t i = 0; i < kSamplesPerPacket; ++i) any |= first[i];
    return any != 0;
}

}  // namespace

ChannelCollector::ChannelCollector(std::uint32_t samplingFrequency)
    : packetsPerSecond_(std::clamp(samplingFrequency / kSamplesPerPacket, 1U, kMostSumPackets)),
      secondSeconds_(samplingFrequency != 0 ? static_cast<double>(packetsPerSecond_) *
                                                  kSamplesPerPacket / samplingFrequency
                                            : 0.0) {
    sums_.Clear();
}

void ChannelCollector::Take(ORDDataPacket& packet) {
    const std::size_t slots = std::min(packet.adSamples->size(), kMostSlots);
    if (slots != slots_ || *packet.channelMask != channelMask_) {
        ChangeShape(slots, *packet.channelMask);
    }
    std::vector<std::uint16_t>& samples = block_[blockPackets_];
    samples.swap(*packet.adSamples);
    samples_[blockPackets_++] = reinterpret_cast<const std::int16_t*>(samples.data());
    if (blockPackets_ == kBlockPackets) AddBlock();
    if (++secondPackets_ == packetsPerSecond_) EndSecond();
}

void ChannelCollector::ChangeShape(std::size_t slots, const std::vector<std::uint8_t>& mask) {
    AddBlock();
    AddSums();
    slots_ = slots;
    channelMask_ = mask;
    for (std::size_t channel = 0; channel < slots / kSamplesPerPacket; ++channel) {
        enabled_[channel] = IsChannelRecorded(mask, channel);
    }
}

void ChannelCollector::AddBlock() {
    if (blockPackets_ == 0) return;
    AddPackets({samples_.data(), blockPackets_}, slots_, sums_);
    sumPackets_ += static_cast<std::uint32_t>(blockPackets_);
    const std::int16_t* const lastPacket = samples_[blockPackets_ - 1];
    for (std::size_t channel = 0; channel < slots_ / kSamplesPerPacket; ++channel) {
        if (!enabled_[channel]) continue;
        if (sums_.anyAtRangeEnd && AnySlot(sums_.atRangeEnd, channel)) CountAtRangeEnds(channel);
        Totals& totals = totals_[channel];
        if (MayHoldLongerRun(channel)) {
            FollowRuns(channel);
            continue;
        }
        const std::int16_t* const end = lastPacket + (channel + 1) * kSamplesPerPacket;
        totals.last = end[-1];
        totals.run = end[-1] == end[-2] ? 2 : 1;
    }
    blockPackets_ = 0;
    if (sumPackets_ >= kMostSumPackets) AddSums();
}

// Whether the block may contain a run of the channel that is longer than those before. If no packet
// has three equal samples in a row, it contains none of more than four; and none of more than two
// if, in addition, each packet begins with another value than the previous one's last.
bool ChannelCollector::MayHoldLongerRun(std::size_t channel) const {
    const Totals& totals = totals_[channel];
    if (totals.run > 2 || totals.longestRun < 3 || AnySlot(sums_.threeAlike, channel)) return true;
    if (totals.longestRun >= 4) return false;
    std::int16_t last = totals.last;
    for (std::size_t n = 0; n < blockPackets_; ++n) {
        const std::int16_t* const samples = samples_[n] + channel * kSamplesPerPacket;
        if (samples[0] == last) return true;
        last = samples[kSamplesPerPacket - 1];
    }
    return false;
}

void ChannelCollector::CountAtRangeEnds(std::size_t channel) {
    for (std::size_t n = 0; n < blockPackets_; ++n) {
        const std::int16_t* const first = samples_[n] + channel * kSamplesPerPacket;
        for (std::size_t i = 0; i < kSamplesPerPacket; ++i) {
            if (first[i] == kRangeStart || first[i] == kRangeEnd) ++totals_[channel].atRangeEnds;
        }
    }
}

void ChannelCollector::FollowRuns(std::size_t channel) {
    Totals& totals = totals_[channel];
    for (std::size_t n = 0; n < blockPackets_; ++n) {
        const std::int16_t* const samples = samples_[n] + channel * kSamplesPerPacket;
        unsigned equal = EqualToTheOneBefore(samples, totals.last);
        if (totals.run == 0) equal &= ~1U;  // nothing precedes it
        totals.last = samples[kSamplesPerPacket - 1];
        constexpr unsigned kAllEqual = (1U << kSamplesPerPacket) - 1;
        if (equal == kAllEqual) {
            totals.run += kSamplesPerPacket;
            continue;
        }
        // The incoming run continues over the ones at the start; each later run of n ones is a run
        // of n + 1 samples; the last of them is the outgoing run.
        totals.run += static_cast<unsigned>(std::countr_one(equal));
        std::uint64_t longest = 1;
        for (unsigned ones = equal & (equal + 1); ones != 0; ones &= ones >> 1U) ++longest;
        totals.longestRun = std::max({totals.longestRun, totals.run, longest});
        totals.run =
            1U + static_cast<unsigned>(std::countl_one(equal << (32U - kSamplesPerPacket)));
    }
}

void ChannelCollector::BreakRuns() {
    AddBlock();
    for (Totals& totals : totals_) {
        totals.longestRun = std::max(totals.longestRun, totals.run);
        totals.run = 0;
    }
}

void ChannelCollector::AddSums() {
    if (sumPackets_ == 0) return;
    for (std::size_t slot = 0; slot < slots_; ++slot) {
        const std::size_t channel = slot / kSamplesPerPacket;
        if (!enabled_[channel]) continue;
        Totals& totals = totals_[channel];
        totals.samples += sumPackets_;
        totals.sum += sums_.sum[slot];
        totals.secondSum += sums_.sum[slot];
        totals.secondSamples += sumPackets_;
        totals.sumOfSquares += sums_.sumOfSquares[slot];
        totals.smallest = std::min(totals.smallest, sums_.smallest[slot]);
        totals.largest = std::max(totals.largest, sums_.largest[slot]);
    }
    sums_.Clear();
    sumPackets_ = 0;
}

void ChannelCollector::EndSecond() {
    AddBlock();
    AddSums();
    const std::uint64_t whole = std::uint64_t{packetsPerSecond_} * kSamplesPerPacket;
    for (Totals& totals : totals_) {
        if (totals.secondSamples == whole) {
            totals.drift.Add(static_cast<double>(seconds_),
                             static_cast<double>(totals.secondSum) / static_cast<double>(whole));
        }
        totals.secondSum = 0;
        totals.secondSamples = 0;
    }
    secondPackets_ = 0;
    ++seconds_;
}

// RMS about the mean, in 16-bit steps.
double ChannelCollector::NoiseOf(const Totals& totals) {
    return kStepsPer14BitStep *
           DeviationOf(totals.samples, totals.sum / kWholeStepsPer14BitStep, totals.sumOfSquares);
}

std::optional<double> ChannelCollector::DriftOf(const Totals& totals,
                                                double microvoltsPerStep) const {
    const std::optional<double> slope = totals.drift.Slope();
    if (!slope || secondSeconds_ == 0.0) return std::nullopt;
    return *slope * kSecondsPerMinute / secondSeconds_ * microvoltsPerStep;
}

std::vector<ChannelStatistics> ChannelCollector::Finish(double microvoltsPerStep) {
    BreakRuns();
    AddSums();
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
                       totals.atRangeEnds, totals.longestRun,
                       NoiseOf(totals) * std::abs(microvoltsPerStep),
                       DriftOf(totals, microvoltsPerStep)});
    }
    return all;
}

}  // namespace stalwick
