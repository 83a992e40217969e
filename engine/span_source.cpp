// SPDX-License-Identifier: BSD-3-Clause
#include "engine/span_source.h"

#include <numeric>

namespace stalwick {

namespace {

// The packets are contiguous, up to `end`.
void SetPositions(const std::vector<std::uint32_t>& sizes, std::uint64_t end, DecodedSpan& span) {
    std::uint64_t position = end - std::accumulate(sizes.begin(), sizes.end(), std::uint64_t{0});
    span.positions.clear();
    for (const std::uint32_t size : sizes) {
        span.positions.push_back(position);
        position += size;
    }
}

}  // namespace

void SpanSource::Read(DecodedSpan& span) {
    span.status = reader_.GetData(span.packets, span.endOfFile);
    if (span.status == 0) SetPositions(reader_.PacketSizes(), reader_.NextPacketPosition(), span);
    span.bytesRead = reader_.BytesRead();
    span.readFailedAfter = reader_.ReadHasFailed();
}

}  // namespace stalwick
