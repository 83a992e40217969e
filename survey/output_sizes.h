// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ord/ord_data_packet.h"
#include "survey/recording_survey.h"

namespace stalwick {

// Counts how much the packets of a recording produce in each output.
class OutputCounter {
  public:
    void Take(const ORDDataPacket& packet);
    // The number of samples at which a TTL line changed.
    void TakeEvents(std::uint64_t events) { events_ += events; }

    // The outputs of a conversion with every output switched on, in order of creation.
    [[nodiscard]] std::vector<OutputSize> Finish(const RecordingHeader& header) const;

  private:
    std::array<std::uint64_t, 4> adPackets_{};  // with samples, by channel-count code
    std::uint64_t baseImuPackets_ = 0;
    std::uint64_t afeImuPackets_ = 0;
    std::uint64_t ultrasonicPackets_ = 0;
    std::uint64_t events_ = 0;
};

}  // namespace stalwick
