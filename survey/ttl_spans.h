// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "ord/ord_data_packet.h"
#include "survey/time_spans.h"

namespace stalwick {

// When each TTL line was high, in as much detail as a picture can show.
class TtlSpans {
  public:
    explicit TtlSpans(double samplePeriodSeconds) : samplePeriod_(samplePeriodSeconds) {}

    // Takes a packet's values; the first one has this time.
    void Take(const ORDDataPacket& packet, double seconds);
    // Takes the value from this time on.
    void TakeValue(std::uint8_t value, double seconds);
    // The next value does not follow: between the last packet's end and it, nothing is known.
    void Break();
    // Sets the width of the picture's columns.
    void Coarsen(double columnSeconds);
    void Finish() { Break(); }
    void EndAt(double seconds) { TakeValue(0, seconds); }

    const TimeSpans& High(std::size_t line) const { return lines_[line]; }

  private:
    double samplePeriod_;  // seconds
    double columnSeconds_ = 0.0;
    double until_ = 0.0;
    std::uint8_t value_ = 0;  // lines that are high
    std::array<double, kTtlLines> since_{};
    std::array<TimeSpans, kTtlLines> lines_;
    std::vector<std::uint8_t> values_;
};

}  // namespace stalwick
