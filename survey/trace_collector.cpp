#include "survey/trace_collector.h"

#include <algorithm>

#include "survey/channel_mask.h"

namespace stalwick {

namespace {

constexpr std::size_t kPlaces = 3;
constexpr std::size_t kMostColumns = 400;
constexpr std::uint32_t kStretchesPerSecond = 2;
constexpr std::uint32_t kMostSamples = 1U << 14U;  // also where a header claims a high rate

TraceEnvelope EnvelopeOf(std::span<const std::int16_t> samples, std::size_t channel) {
    TraceEnvelope envelope;
    envelope.channel = static_cast<std::uint32_t>(channel);
    const std::size_t columns = std::min(kMostColumns, samples.size());
    for (std::size_t i = 0; i < columns; ++i) {
        const std::size_t begin = i * samples.size() / columns;
        const std::size_t end = (i + 1) * samples.size() / columns;
        const auto [smallest, largest] =
            std::minmax_element(samples.begin() + static_cast<std::ptrdiff_t>(begin),
                                samples.begin() + static_cast<std::ptrdiff_t>(end));
        envelope.columns.push_back({*smallest, *largest});
    }
    return envelope;
}

}  // namespace

void TraceCollector::Begin(const RecordingHeader& header, std::uint64_t fileSize) {
    samplesPerSecond_ = header.samplingFrequency;
    fileSize_ = fileSize;
    stretch_.emplace(std::clamp(header.samplingFrequency / kStretchesPerSecond, 1U, kMostSamples));
}

// At a sixth, at half and at five sixths of the file; of a pipe, whose length nobody knows, at its
// beginning.
bool TraceCollector::NextIsDue(std::uint64_t position) const {
    const std::size_t next = places_.size();
    return next < kPlaces && position >= fileSize_ / (2 * kPlaces) * (2 * next + 1);
}

void TraceCollector::Take(const WatchedPacket& watched) {
    if (!watched.packet.adSamples) return;
    if (stretch_->IsEmpty() && !NextIsDue(watched.position)) return;
    if (!stretch_->Take(watched)) {
        // It ends here for a gap or the like; where that leaves next to nothing it begins anew.
        if (stretch_->Samples() >= kMostColumns) EndPlace();
        stretch_->Clear();
        return;
    }
    if (stretch_->IsFull()) EndPlace();
}

void TraceCollector::EndPlace() {
    TracePlace place;
    place.startSeconds = stretch_->StartSeconds();
    place.seconds = static_cast<double>(stretch_->Samples()) / samplesPerSecond_;
    for (std::size_t channel = 0; channel < stretch_->Channels(); ++channel) {
        if (!IsChannelRecorded(stretch_->ChannelMask(), channel)) continue;
        place.channels.push_back(EnvelopeOf(stretch_->Channel(channel), channel));
    }
    places_.push_back(std::move(place));
    stretch_->Clear();
}

std::vector<TracePlace> TraceCollector::Finish() {
    if (stretch_ && !stretch_->IsEmpty()) EndPlace();
    return std::move(places_);
}

}  // namespace stalwick
