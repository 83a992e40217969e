// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "survey/power_spectrum.h"
#include "survey/sample_stretch.h"

namespace stalwick {

// The power density of one channel.
struct ChannelSpectrum {
    std::uint32_t channel = 0;  // from 0
    std::uint64_t segments = 0;
    std::vector<double> density;  // of k * rate / segment; microvolts squared per hertz
};

struct SignalSpectra {
    std::size_t segmentSamples = 0;
    // Their samples, counted from the first recorded one of the packets with A/D samples.
    struct Stretch {
        std::uint64_t firstSample = 0;
        std::uint64_t samples = 0;
    };
    std::vector<Stretch> stretches;
    std::vector<ChannelSpectrum> channels;  // recorded in these stretches
};

// Takes the spectra of all channels from a few stretches spread over the recording, so that they
// cost the same for any length.
class SpectrumCollector {
  public:
    void Begin(const RecordingHeader& header, std::uint64_t fileSize);
    void Take(const WatchedPacket& watched);
    [[nodiscard]] SignalSpectra Finish();

  private:
    bool IsDue(std::uint64_t position) const;
    void AddStretch();

    double samplesPerSecond_ = 0.0;
    double microvoltsPerStep_ = 0.0;
    std::uint64_t fileSize_ = 0;
    std::uint64_t sampleNumber_ = 0;  // of the next packet
    std::uint64_t firstSample_ = 0;   // of stretch_
    std::optional<PowerSpectrum> spectrum_;
    std::optional<SampleStretch> stretch_;
    SignalSpectra spectra_;
};

}  // namespace stalwick
