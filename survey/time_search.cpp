// SPDX-License-Identifier: BSD-3-Clause
#include "survey/time_search.h"

#include "ord/ord_format.h"

namespace stalwick {

namespace {

constexpr std::uint64_t kFirstPackets = 200;          // from which the stream learns
constexpr std::uint64_t kEndBytes = 131'072;          // more than ten of the longest packets
constexpr std::uint64_t kReadInOrderBytes = 262'144;  // not worth bisecting

struct FoundPacket {
    std::uint64_t position = 0;
    std::uint64_t timestampNs = 0;
};

// The first packet from a position on that others follow in step: a false one in the middle of
// samples has no such successors.
std::optional<FoundPacket> FindPacket(PacketStream& stream, std::uint64_t position) {
    if (!stream.SkipTo(position)) return std::nullopt;
    ORDDataPacket packet;
    const StreamPart part = stream.Next(packet);
    if (part.kind != StreamPart::Kind::kPacket || !packet.hardwareTimestamp) return std::nullopt;
    return FoundPacket{part.position, *packet.hardwareTimestamp};
}

}  // namespace

std::optional<TimeEnds> FindTimeEnds(PacketStream& stream) {
    TimeEnds ends;
    ends.fileSize = stream.FileSize();
    std::optional<std::uint64_t> first;
    std::optional<std::uint64_t> last;
    ORDDataPacket packet;
    for (std::uint64_t packets = 0; packets < kFirstPackets; ++packets) {
        if (stream.Next(packet).kind == StreamPart::Kind::kEnd) return std::nullopt;
        if (!first) first = packet.hardwareTimestamp;
    }
    if (!first || ends.fileSize < kHeaderBlockSize + kEndBytes ||
        !stream.SkipTo(ends.fileSize - kEndBytes)) {
        return std::nullopt;
    }
    for (;;) {
        const StreamPart part = stream.Next(packet);
        if (part.kind == StreamPart::Kind::kEnd) break;
        if (part.kind == StreamPart::Kind::kPacket) last = packet.hardwareTimestamp;
    }
    if (!last || stream.SystemError() != 0) return std::nullopt;
    ends.firstStampNs = *first;
    ends.lastStampNs = *last;
    // Otherwise the clock was set back, or a timestamp is damaged.
    if (*last - *first > UINT64_MAX / 2) return std::nullopt;
    return ends;
}

bool SkipToTime(PacketStream& stream, const TimeEnds& ends, std::uint64_t nanoseconds) {
    std::uint64_t low = 0;  // of a packet before the time; 0: none known
    std::uint64_t high = ends.fileSize;
    while (high - low > kReadInOrderBytes) {
        const std::uint64_t middle = low + (high - low) / 2;
        const auto found = FindPacket(stream, middle);
        if (found && found->position < high &&
            found->timestampNs - ends.firstStampNs < nanoseconds) {
            low = found->position;
        } else {
            high = middle;
        }
    }
    return low >= kHeaderBlockSize && stream.SkipTo(low);
}

}  // namespace stalwick
