// SPDX-License-Identifier: BSD-3-Clause
#include "survey/trace_collector.h"

#include <utility>

namespace stalwick {

namespace {

constexpr std::size_t kPlaces = 3;
constexpr std::size_t kColumns = 400;
constexpr double kPlaceSeconds = 0.5;

}  // namespace

void TraceCollector::Begin(const RecordingHeader& header, std::uint64_t fileSize) {
    samplesPerSecond_ = header.samplingFrequency;
    fileSize_ = fileSize;
}

// At a sixth, at half and at five sixths of the file; for a pipe, whose length is unknown, at its
// beginning. If the header gives a sampling frequency of 0, nothing can be drawn.
bool TraceCollector::NextIsDue(std::uint64_t position) const {
    const std::size_t next = places_.size();
    return next < kPlaces && samplesPerSecond_ > 0.0 &&
           position >= fileSize_ / (2 * kPlaces) * (2 * next + 1);
}

void TraceCollector::Take(const WatchedPacket& watched) {
    if (!watched.packet.adSamples) return;
    if (envelope_ && watched.seconds >= startSeconds_ + kPlaceSeconds) EndPlace();
    if (!envelope_) {
        if (!NextIsDue(watched.position)) return;
        startSeconds_ = watched.seconds;
        envelope_.emplace(
            PacketEnvelope::Stretch{startSeconds_, kPlaceSeconds, samplesPerSecond_, kColumns});
    }
    envelope_->Take(watched.packet, watched.seconds);
}

void TraceCollector::EndPlace() {
    envelope_->Finish();
    TracePlace place{startSeconds_, kPlaceSeconds, envelope_->Scale(), {}};
    for (std::uint32_t channel = 0; channel < kMostADChannels; ++channel) {
        const std::vector<ColumnRange>& columns = envelope_->Columns(channel);
        if (!columns.empty()) place.channels.push_back({channel, columns});
    }
    places_.push_back(std::move(place));
    envelope_.reset();
}

std::vector<TracePlace> TraceCollector::Finish() {
    if (envelope_) EndPlace();
    return std::move(places_);
}

}  // namespace stalwick
