#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ord/ord_data_packet.h"
#include "survey/recording_survey.h"

namespace stalwick {

// Gathers the statistics of all channels, a packet at a time.
class ChannelCollector {
  public:
    // Takes the samples of a packet that has some.
    void Take(const ORDDataPacket& packet);
    // What comes next does not follow in time: flat runs end here.
    void BreakRuns();

    // Of the channels that had samples; `microvoltsPerStep` of a 16-bit sample.
    [[nodiscard]] std::vector<ChannelStatistics> Finish(double microvoltsPerStep);

  private:
    static constexpr std::size_t kMostSlots = std::size_t{kMostADChannels} * kSamplesPerPacket;

    struct Totals {
        std::uint64_t samples = 0;
        std::int64_t sum = 0;            // of the 16-bit samples
        std::uint64_t sumOfSquares = 0;  // of the 14-bit ones
        std::int16_t smallest = INT16_MAX;
        std::int16_t largest = INT16_MIN;
        std::uint64_t atRangeEnds = 0;
        std::uint64_t run = 0;  // samples of one value up to the last
        std::uint64_t longestRun = 0;
        std::int16_t last = 0;
    };

    void AddToBlock(const std::int16_t* samples);
    void FollowRuns(const std::int16_t* samples);
    void FlushBlock();

    // Sums over a few packets of one shape, a slot for each sample of a packet: loops without
    // branches that a compiler turns into vector instructions.
    std::array<std::int16_t, kMostSlots> blockSmallest_{};
    std::array<std::int16_t, kMostSlots> blockLargest_{};
    std::array<std::int32_t, kMostSlots> blockSum_{};
    std::array<std::uint32_t, kMostSlots> blockSquares_{};
    std::array<std::uint16_t, kMostSlots> blockAtEnds_{};
    std::uint32_t blockPackets_ = 0;
    std::size_t slots_ = 0;                  // of the block's packets
    std::vector<std::uint8_t> channelMask_;  // of the block's packets; empty: all channels
    std::array<bool, kMostADChannels> enabled_{};
    std::array<Totals, kMostADChannels> totals_{};
};

}  // namespace stalwick
