// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "survey/recording_survey.h"

namespace stalwick {

// Follows the hardware timestamps of a recording.
class TimeLine {
  public:
    explicit TimeLine(std::uint32_t samplingFrequency);  // samples per second; 0: unknown

    // How a packet's timestamp relates to the previous packet's.
    enum class Step { kRegular, kOdd };

    // Takes the next packet's timestamp (ns) and position. `damageBefore`: the number of the
    // damaged stretch between it and the previous packet.
    Step Take(std::uint64_t timestamp, std::uint64_t position,
              std::optional<std::size_t> damageBefore);

    // Nanoseconds from the first timestamp on; steps back in time are not subtracted.
    [[nodiscard]] std::uint64_t ElapsedNs() const { return elapsedNs_; }

    // Fills in what timestamps show; nothing if there were none. `damage`: the stretches whose
    // numbers were passed to Take; they get their times and lengths. Call it once.
    void Finish(TimeAccount& account, std::span<DamagedStretch> damage = {}) const;

  private:
    struct OddStep {
        std::uint64_t position;   // of the packet after it
        std::uint64_t elapsedNs;  // before it
        std::uint64_t stepNs;
        std::optional<std::size_t> damage;
    };

    double MeasuredStepNs() const;
    std::int64_t MissingSamples(std::uint64_t stepNs) const;
    void AddOddStep(const OddStep& step, TimeAccount& account,
                    std::span<DamagedStretch> damage) const;

    std::uint32_t samplingFrequency_;
    double nominalNs_;  // of ten samples
    std::optional<std::uint64_t> first_;
    std::uint64_t last_ = 0;
    std::uint64_t elapsedNs_ = 0;
    std::uint64_t regularNs_ = 0;  // in all regular steps
    std::uint64_t regularSteps_ = 0;
    std::uint64_t repeated_ = 0;
    std::vector<OddStep> oddSteps_;
    std::vector<BackwardTimestamp> backward_;
};

}  // namespace stalwick
