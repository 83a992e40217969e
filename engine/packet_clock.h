// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

namespace stalwick {

// Counts a recording's packets and how much time they span.
class PacketClock {
  public:
    // `hardwareTimestamp` in nanoseconds, of the packet's first sample.
    void Count(std::optional<std::uint64_t> hardwareTimestamp) {
        ++packets_;
        if (!hardwareTimestamp) return;
        if (!first_) first_ = hardwareTimestamp;
        last_ = *hardwareTimestamp;
    }

    [[nodiscard]] std::uint64_t Packets() const { return packets_; }
    [[nodiscard]] bool HasTimestamps() const { return first_.has_value(); }

    // From the first timestamp to the end of the last packet, which spans `packetSeconds`. Without
    // timestamps, or if they run backwards, the sum of the packets' lengths.
    [[nodiscard]] double Seconds(double packetSeconds) const {
        if (!first_ || last_ < *first_) return static_cast<double>(packets_) * packetSeconds;
        return static_cast<double>(last_ - *first_) / kNanosecondsPerSecond + packetSeconds;
    }

  private:
    static constexpr double kNanosecondsPerSecond = 1e9;

    std::uint64_t packets_ = 0;
    std::optional<std::uint64_t> first_;
    std::uint64_t last_ = 0;
};

}  // namespace stalwick
