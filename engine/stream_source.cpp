// SPDX-License-Identifier: BSD-3-Clause
#include "engine/stream_source.h"

#include <utility>

#include "ord/ord_format.h"

namespace stalwick {

namespace {

void AddStretch(DecodedSpan& span, const StreamPart& part, std::size_t packetsBefore) {
    if (!span.skipped.empty() && span.skipped.back().packetsBefore == packetsBefore) {
        StreamPart& before = span.skipped.back().part;
        before.size += part.size;
        // Timestamps count from the last packet.
        before.packetsLost =
            part.packetsLostIsKnown ? part.packetsLost : before.packetsLost + part.packetsLost;
        before.packetsLostIsKnown = part.packetsLostIsKnown;
    } else {
        span.skipped.push_back({part, packetsBefore});
    }
}

}  // namespace

std::int32_t StreamSource::Open(const std::wstring& path) {
    stream_.BeStrict();
    return stream_.Open(path);
}

std::wstring StreamSource::GetErrorMessage() const {
    return readFailed_ ? L"Failed to process input file" : stream_.GetErrorMessage();
}

void StreamSource::Read(DecodedSpan& span) {
    span.status = readFailed_ ? -1 : 0;
    span.endOfFile = false;
    span.skipped.clear();
    span.positions.clear();
    std::size_t count = 0;
    if (!readFailed_) ReadParts(span, count);
    for (; span.packets.size() > count; span.packets.pop_back()) {
        spares_.push_back(std::move(span.packets.back()));
    }
    span.bytesRead = BytesRead();
    span.readFailedAfter = readFailed_;
}

// Until the packets and stretches have about the bytes of a span, and not between two stretches.
void StreamSource::ReadParts(DecodedSpan& span, std::size_t& count) {
    std::uint64_t bytes = 0;
    bool isAfterStretch = false;
    while (bytes < kDataBufferSize || isAfterStretch) {
        if (count == span.packets.size()) {
            ORDDataPacket blank;
            if (!spares_.empty()) {
                blank = std::move(spares_.back());
                spares_.pop_back();
            }
            span.packets.push_back(std::move(blank));
        }
        const StreamPart part = stream_.Next(span.packets[count]);
        if (part.kind == StreamPart::Kind::kEnd) {
            end_ = part;
            readFailed_ = stream_.SystemError() != 0;
            span.endOfFile = !readFailed_;
            return;
        }
        end_.position = part.position + part.size;
        isAfterStretch = part.kind == StreamPart::Kind::kDamage;
        if (isAfterStretch) {
            AddStretch(span, part, count);
        } else {
            span.positions.push_back(part.position);
            ++count;
        }
        bytes += part.size;
    }
}

}  // namespace stalwick
