// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "ord/ord_data_packet.h"
#include "survey/line_fit.h"
#include "survey/recording_survey.h"
#include "survey/sample_block.h"

namespace stalwick {

// Gathers the statistics of all channels, one packet at a time.
class ChannelCollector {
  public:
    explicit ChannelCollector(std::uint32_t samplingFrequency);  // samples per second

    // Takes the samples of a packet that has some; the packet keeps the memory of another one.
    void Take(ORDDataPacket& packet);
    // The next packet does not follow in time: flat runs end here.
    void BreakRuns();

    // For the channels that had samples; `microvoltsPerStep` is for a 16-bit sample.
    [[nodiscard]] std::vector<ChannelStatistics> Finish(double microvoltsPerStep);

  private:
    struct Totals {
        std::uint64_t samples = 0;
        std::int64_t sum = 0;            // of the 16-bit samples
        std::uint64_t sumOfSquares = 0;  // of the 14-bit ones
        std::int16_t smallest = INT16_MAX;
        std::int16_t largest = INT16_MIN;
        std::uint64_t atRangeEnds = 0;
        std::uint64_t run = 0;  // equal samples up to the last one
        std::uint64_t longestRun = 0;
        std::int16_t last = 0;
        std::int64_t secondSum = 0;  // for the current second
        std::uint64_t secondSamples = 0;
        LineFit drift;  // means of whole seconds, by their number
    };

    void ChangeShape(std::size_t slots, const std::vector<std::uint8_t>& mask);
    void AddBlock();
    bool MayHoldLongerRun(std::size_t channel) const;
    void FollowRuns(std::size_t channel);
    void CountAtRangeEnds(std::size_t channel);
    void AddSums();
    void EndSecond();
    static double NoiseOf(const Totals& totals);
    std::optional<double> DriftOf(const Totals& totals, double microvoltsPerStep) const;

    // Packets of the same shape are added together, a few at a time.
    std::array<std::vector<std::uint16_t>, kBlockPackets> block_;
    std::array<const std::int16_t*, kBlockPackets> samples_{};  // of block_
    std::size_t blockPackets_ = 0;
    std::size_t slots_ = 0;                  // of the block's packets
    std::vector<std::uint8_t> channelMask_;  // of the block's packets; empty: all channels
    std::array<bool, kMostADChannels> enabled_{};
    SlotSums sums_;
    std::uint32_t sumPackets_ = 0;  // in sums_
    std::uint32_t packetsPerSecond_;
    double secondSeconds_;  // duration of that many packets
    std::uint32_t secondPackets_ = 0;
    std::uint64_t seconds_ = 0;  // completed ones
    std::array<Totals, kMostADChannels> totals_{};
};

}  // namespace stalwick
