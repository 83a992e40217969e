#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ord/ord_data_packet.h"
#include "survey/recording_survey.h"

namespace stalwick {

// Counts what the packets of a recording come to in each output.
class OutputCounter {
  public:
    void Take(const ORDDataPacket& packet);
    // As many samples at which a TTL line changed.
    void TakeEvents(std::uint64_t events) { events_ += events; }

    // The outputs of a conversion with every switch on, in the order in which it makes them.
    [[nodiscard]] std::vector<OutputSize> Finish(const RecordingHeader& header) const;

  private:
    std::array<std::uint64_t, 4> adPackets_{};  // with samples, by channel-count code
    std::uint64_t baseImuPackets_ = 0;
    std::uint64_t afeImuPackets_ = 0;
    std::uint64_t ultrasonicPackets_ = 0;
    std::uint64_t events_ = 0;
};

}  // namespace stalwick
