// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

#include "ord/packet_stream.h"

namespace stalwick {

// What the ends of a recording show about its time, without the packets in between.
struct TimeEnds {
    std::uint64_t firstStampNs = 0;
    std::uint64_t lastStampNs = 0;
    std::uint64_t fileSize = 0;  // bytes
};

// Reads both ends of a recording in a regular file whose packets have timestamps; returns nothing
// if they do not determine when it ends. The stream learns the form of packets from the first ones,
// and is at the end of the file afterwards.
[[nodiscard]] std::optional<TimeEnds> FindTimeEnds(PacketStream& stream);

// Moves the stream to a certain packet before `nanoseconds` after the first one, not far from it.
// Bisects the file, so that little of it is read. Returns false if that packet is near the
// beginning; read the recording from there in that case. Timestamps must not go back.
[[nodiscard]] bool SkipToTime(PacketStream& stream, const TimeEnds& ends,
                              std::uint64_t nanoseconds);

}  // namespace stalwick
