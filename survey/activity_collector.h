// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>

#include "ord/ord_format.h"
#include "survey/survey_recording.h"
#include "survey/time_bins.h"

namespace stalwick {

// What an inertial unit measured in the packets of a bin, in counts.
struct ImuBin {
    std::uint64_t packets = 0;
    std::array<std::int64_t, kImuValues> sums{};

    void Add(const ImuBin& other);
    double Mean(std::size_t value) const {
        return static_cast<double>(sums[value]) / static_cast<double>(packets);
    }
};

struct ActivityBin {
    std::uint64_t packets = 0;
    std::array<std::uint64_t, kTtlLines> ttlChangedPackets{};  // packets in which each line changed
    ImuBin baseImu;
    ImuBin afeImu;
    std::uint64_t ultrasonicSamples = 0;
    std::uint64_t ultrasonicSquares = 0;  // their sum

    void Add(const ActivityBin& other);
};

struct EventBin {
    std::uint64_t events = 0;

    void Add(const EventBin& other) { events += other.events; }
};

// What happened when: TTL lines, inertial units, ultrasonic.
class ActivityCollector {
  public:
    void Take(const WatchedPacket& watched);

    const TimeBins<ActivityBin>& Activity() const { return activity_; }
    const TimeBins<EventBin>& Events() const { return events_; }  // TTL events, by minutes

  private:
    static constexpr double kFirstWidthSeconds = 0.05;
    static constexpr double kMinuteSeconds = 60.0;

    TimeBins<ActivityBin> activity_{kFirstWidthSeconds};
    TimeBins<EventBin> events_{kMinuteSeconds};
};

}  // namespace stalwick
