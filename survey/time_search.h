#pragma once

#include <cstdint>
#include <optional>

#include "ord/packet_stream.h"

namespace stalwick {

// What the ends of a recording say of its time, without the packets between.
struct TimeEnds {
    std::uint64_t firstStampNs = 0;
    std::uint64_t lastStampNs = 0;
    std::uint64_t fileSize = 0;  // bytes
};

// Looks at both ends of a recording in a regular file whose packets have timestamps; nothing where
// that does not say when it ends. The stream learns from the first packets what all are like, and
// is at the file's end then.
[[nodiscard]] std::optional<TimeEnds> FindTimeEnds(PacketStream& stream);

// Brings the stream to a certain packet before `nanoseconds` after the first one, not far from it:
// by halving the file, so that little of it is read. False where that packet is near the
// beginning, from where the recording is to be read then. Timestamps must not go back.
[[nodiscard]] bool SkipToTime(PacketStream& stream, const TimeEnds& ends,
                              std::uint64_t nanoseconds);

}  // namespace stalwick
