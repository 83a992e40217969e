// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "tools/ord_synth/integer_random.h"

namespace stalwick {

// The eight TTL inputs of an experiment: camera frames, trials, a one-second clock, rewards,
// licks and stimuli, each a line of pulses.
class TtlSource {
  public:
    TtlSource(std::uint64_t seed, std::uint32_t samplingFrequency);

    // One TTL value (bit i is input i) for each of the next samples.
    void Next(std::span<std::uint8_t> values);

  private:
    struct Line {
        std::uint8_t bit = 0;
        std::uint64_t nextEdge = 0;  // sample number
        std::array<std::uint32_t, 2> highMs{};
        std::array<std::uint32_t, 2> lowMs{};
    };

    void AdvanceTo(std::uint64_t sample);
    std::uint64_t SamplesOf(std::uint32_t milliseconds) const;

    IntegerRandom random_;
    std::uint32_t samplingFrequency_;
    std::vector<Line> lines_;
    std::uint64_t sample_ = 0;
    std::uint64_t nextEdge_ = 0;
    std::uint8_t value_ = 0;
};

}  // namespace stalwick
