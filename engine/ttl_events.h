// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "ord/ord_data_packet.h"
#include "writers/event_file_writer_container.h"

namespace stalwick {

// When a packet began.
struct PacketTime {
    std::optional<std::uint64_t> hardwareTimestamp;  // nanoseconds
    double runningMicroseconds = 0.0;                // used without a hardware timestamp
};

// Adds an event for each value that differs from the one before it; the file's first value produces
// none. Returns 0, or -1 if a full block of events could not be written.
[[nodiscard]] std::int32_t WriteTtlEvents(EventFileWriterContainer& eventFile,
                                          const std::vector<std::uint8_t>& ttlValues,
                                          const PacketTime& time);

}  // namespace stalwick
