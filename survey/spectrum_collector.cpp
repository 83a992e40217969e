// SPDX-License-Identifier: BSD-3-Clause
#include "survey/spectrum_collector.h"

#include <algorithm>
#include <bit>

#include "ord/ord_format.h"
#include "survey/channel_mask.h"

namespace stalwick {

namespace {

constexpr double kMicrovoltsPerVolt = 1e6;
constexpr std::size_t kMostStretches = 12;
constexpr std::size_t kSegmentsLong = 2;              // per stretch: three overlapping segments
constexpr std::uint32_t kSegmentsPerSecond = 8;       // at most: lines closer than 8 Hz are one
constexpr std::uint32_t kShortestSegment = 256;       // samples
constexpr std::uint32_t kLongestSegment = 1U << 14U;  // even if a header claims a high rate

std::size_t SegmentFor(std::uint32_t samplesPerSecond) {
    return std::bit_ceil(
        std::clamp(samplesPerSecond / kSegmentsPerSecond, kShortestSegment, kLongestSegment));
}

}  // namespace

void SpectrumCollector::Begin(const RecordingHeader& header, std::uint64_t fileSize) {
    samplesPerSecond_ = header.samplingFrequency;
    microvoltsPerStep_ = header.adBitVolts * kMicrovoltsPerVolt;
    fileSize_ = fileSize;
    spectra_.segmentSamples = SegmentFor(header.samplingFrequency);
    spectrum_.emplace(spectra_.segmentSamples);
    stretch_.emplace(kSegmentsLong * spectra_.segmentSamples);
}

// The n-th stretch begins after n parts of the file. In a pipe, whose length is unknown, the
// stretches follow one another.
bool SpectrumCollector::IsDue(std::uint64_t position) const {
    const std::size_t done = spectra_.stretches.size();
    if (done == kMostStretches) return false;
    return position >= fileSize_ / kMostStretches * done;
}

void SpectrumCollector::Take(const WatchedPacket& watched) {
    if (!watched.packet.adSamples) return;
    const std::uint64_t sample = sampleNumber_;
    sampleNumber_ += kSamplesPerPacket;
    if (stretch_->IsEmpty() && !IsDue(watched.position)) return;
    if (stretch_->IsEmpty()) firstSample_ = sample;
    if (!stretch_->Take(watched)) {
        // A stretch with a break in it is useless; the next one begins here.
        stretch_->Clear();
        firstSample_ = sample;
        if (!stretch_->Take(watched)) return;
    }
    if (!stretch_->IsFull()) return;
    AddStretch();
    stretch_->Clear();
}

void SpectrumCollector::AddStretch() {
    const std::size_t segment = spectra_.segmentSamples;
    spectra_.stretches.push_back({firstSample_, stretch_->Samples()});
    for (std::size_t channel = 0; channel < stretch_->Channels(); ++channel) {
        if (spectra_.channels.size() <= channel) {
            spectra_.channels.push_back({static_cast<std::uint32_t>(channel), 0, {}});
            spectra_.channels.back().density.assign(spectrum_->Frequencies(), 0.0);
        }
        if (!IsChannelRecorded(stretch_->ChannelMask(), channel)) continue;
        ChannelSpectrum& sums = spectra_.channels[channel];
        const auto samples = stretch_->Channel(channel);
        for (std::size_t at = 0; at + segment <= samples.size(); at += segment / 2) {
            spectrum_->AddSegment(samples.subspan(at, segment), sums.density);
            ++sums.segments;
        }
    }
}

SignalSpectra SpectrumCollector::Finish() {
    // For a short recording, whatever exists.
    if (spectra_.stretches.empty() && stretch_ && stretch_->Samples() >= spectra_.segmentSamples) {
        AddStretch();
    }
    if (samplesPerSecond_ == 0.0) spectra_.channels.clear();  // a header may contain that
    std::erase_if(spectra_.channels, [](const ChannelSpectrum& one) { return one.segments == 0; });
    for (ChannelSpectrum& one : spectra_.channels) {
        const double unit = microvoltsPerStep_ * microvoltsPerStep_ / samplesPerSecond_ /
                            static_cast<double>(one.segments);
        for (double& value : one.density) value *= unit;
    }
    return std::move(spectra_);
}

}  // namespace stalwick
