// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "tools/ord_synth/integer_random.h"
#include "tools/ord_synth/synth_options.h"

namespace stalwick {

// The A/D signal of all channels: noise whose strength differs between channels, slow waves that
// travel along them, drift, and spikes that appear weaker on neighbouring channels.
class SignalSource {
  public:
    explicit SignalSource(const SynthOptions& options);

    // The next ten samples per channel: samples[s * channelCount + channel], -8192 to 8191.
    void NextPacket(std::span<std::int16_t> samples);

  private:
    struct Wave {
        std::uint32_t phase = 0;
        std::uint32_t step = 0;                  // a packet
        std::vector<std::int16_t> sineWeight;    // for each channel; both together set
        std::vector<std::int16_t> cosineWeight;  // its amplitude and its lag
    };
    struct Spike {
        std::uint32_t channel = 0;
        std::int32_t amplitude = 0;
        std::int32_t age = 0;  // of the packet's first sample; negative: begins inside the packet
    };

    void MakeNoiseTable();
    void MakeChannels(std::uint32_t noiseSteps);
    void MakeWaves(std::uint32_t packetsPerSecond);
    const std::int16_t* NoiseRow();
    void UpdatePacketGain();
    void MoveWaves();
    void AddNoiseAndWaves(std::span<std::int16_t> samples);
    void StartSpikes();
    void AddSpikes(std::span<std::int16_t> samples);
    void AddSpike(const Spike& spike, std::span<std::int16_t> samples) const;
    void AddFaults(std::span<std::int16_t> samples);

    std::uint32_t channelCount_;
    IntegerRandom random_;
    IntegerRandom spikeRandom_;
    std::vector<std::int16_t> noise_;
    std::vector<std::int16_t> gain_;
    std::vector<std::int16_t> packetGain_;
    std::uint32_t envelopePhase_ = 0;
    std::uint32_t envelopeStep_ = 0;
    std::array<Wave, 3> waves_;
    // In eighths of a step: the slow part of the signal at both ends of the packet, and its drift.
    std::vector<std::int16_t> slowStart_;
    std::vector<std::int16_t> slowEnd_;
    std::vector<std::int16_t> drift_;
    std::vector<std::int16_t> spikeAmplitude_;
    std::array<std::uint32_t, 256> spikeChannel_{};
    std::vector<std::int32_t>
        quietLeft_;                    // samples during which a channel's cell cannot fire again
    std::uint32_t spikeInterval_ = 1;  // mean, over all channels
    std::uint32_t nextSpike_ = 0;      // samples from the packet's first
    std::vector<Spike> spikes_;
    std::vector<std::uint32_t> flatChannels_;
    std::vector<std::uint32_t> clippedChannels_;
    std::vector<std::uint32_t> noisyChannels_;
    IntegerRandom noisyRandom_;
};

}  // namespace stalwick
