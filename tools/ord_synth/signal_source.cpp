// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/signal_source.h"

#include <algorithm>

#include "tools/ord_synth/integer_sine.h"

namespace stalwick {

namespace {

constexpr std::uint32_t kNoiseRows = 65536;
constexpr std::uint32_t kMaxChannels = 256;
constexpr std::int32_t kMaxSample = 8191;
constexpr std::int32_t kMinSample = -8192;
constexpr std::uint32_t kSpikesPerChannelAndSecond = 12;

// An extracellular spike, 256 at its peak: about 1.6 ms at 30 kHz.
constexpr std::array<std::int16_t, 48> kSpikeShape = {
    0,  -2, -5, -10, -20, -42, -80, -134, -192, -238, -256, -246, -212, -162, -106, -54,
    -8, 30, 60, 82,  96,  104, 106, 104,  98,   90,   82,   73,   65,   57,   50,   43,
    37, 32, 27, 23,  19,  16,  13,  11,   9,    7,    5,    4,    3,    2,    1,    0};
constexpr std::int32_t kSpikeSamples = static_cast<std::int32_t>(kSpikeShape.size());

struct WavePlan {
    std::uint32_t milliHz;
    std::int32_t amplitude;  // in sixteenths of a step, below 32768
    std::uint32_t lag;       // phase from one channel to the next
};

constexpr WavePlan kWavePlans[] = {
    {1'700, 6'400, 0x00400000u},  // delta, 400 steps
    {7'900, 3'200, 0x00A00000u},  // theta, 200 steps
    {41'000, 480, 0x02000000u},   // gamma, 30 steps
};

std::int16_t HighHalf(std::int16_t a, std::int16_t b) {
    return static_cast<std::int16_t>((std::int32_t{a} * b) >> 16);
}

// The sum of four uniform numbers: close to normal, and never beyond 3.5 standard deviations.
std::int32_t DrawNormal(IntegerRandom& random) {
    const std::uint64_t bits = random.Next();
    const std::uint64_t sum =
        (bits & 0xFFFF) + ((bits >> 16) & 0xFFFF) + ((bits >> 32) & 0xFFFF) + (bits >> 48);
    return static_cast<std::int32_t>(sum) - 131070;
}

}  // namespace

SignalSource::SignalSource(const SynthOptions& options)
    : channelCount_(options.channelCount),
      random_(MakeRandom(options.seed, RandomStream::kSignal)),
      spikeRandom_(MakeRandom(options.seed, RandomStream::kSpikes)),
      flatChannels_(options.flatChannels),
      clippedChannels_(options.clippedChannels),
      noisyChannels_(options.noisyChannels),
      noisyRandom_(MakeRandom(options.seed, RandomStream::kNoisyChannels)) {
    const std::uint32_t packetsPerSecond = options.samplingFrequency / kSynthSamplesPerPacket;
    MakeNoiseTable();
    MakeChannels(options.noiseSteps);
    MakeWaves(packetsPerSecond);
    envelopeStep_ = PhaseStep(600, packetsPerSecond);
    spikeInterval_ =
        std::max(options.samplingFrequency / (kSpikesPerChannelAndSecond * channelCount_), 1u);
    MoveWaves();
}

// Rows that begin anywhere in the table serve as the noise of all channels at one sample. Each
// value contains a little of both its neighbours, so neighbouring channels are slightly correlated.
void SignalSource::MakeNoiseTable() {
    std::vector<std::int32_t> white(kNoiseRows + kMaxChannels + 2);
    for (std::int32_t& value : white) value = DrawNormal(random_);
    noise_.resize(kNoiseRows + kMaxChannels);
    for (std::size_t i = 0; i < noise_.size(); ++i) {
        const std::int64_t mixed = std::int64_t{8} * white[i + 1] + white[i] + white[i + 2];
        // 3493 / 2^17 brings the standard deviation to 8192.
        noise_[i] = static_cast<std::int16_t>(
            std::clamp<std::int64_t>((mixed * 3493) >> 17, -32767, 32767));
    }
}

void SignalSource::MakeChannels(std::uint32_t noiseSteps) {
    packetGain_.resize(channelCount_);
    drift_.assign(channelCount_, 0);
    slowStart_.assign(channelCount_, 0);
    slowEnd_.assign(channelCount_, 0);
    quietLeft_.assign(channelCount_, 0);
    for (std::uint32_t channel = 0; channel < channelCount_; ++channel) {
        // Electrodes differ: half to 1.75 times the requested noise, most of them less than it.
        const std::uint32_t draw = random_.Between(0, 255);
        const std::uint32_t factor = 128 + ((draw * draw * 320) >> 16);
        gain_.push_back(static_cast<std::int16_t>((8 * noiseSteps * factor) >> 8));
        spikeAmplitude_.push_back(static_cast<std::int16_t>(random_.Between(60, 520)));
    }
    for (std::uint32_t& channel : spikeChannel_) channel = random_.Between(0, channelCount_ - 1);
}

void SignalSource::MakeWaves(std::uint32_t packetsPerSecond) {
    for (std::size_t i = 0; i < waves_.size(); ++i) {
        const WavePlan& plan = kWavePlans[i];
        Wave& wave = waves_[i];
        wave.phase = static_cast<std::uint32_t>(random_.Next());
        wave.step = PhaseStep(plan.milliHz, packetsPerSecond);
        for (std::uint32_t channel = 0; channel < channelCount_; ++channel) {
            const std::int32_t amplitude =
                plan.amplitude * static_cast<std::int32_t>(random_.Between(200, 256)) >> 8;
            const std::uint32_t lag = plan.lag * channel;
            wave.sineWeight.push_back(
                static_cast<std::int16_t>((amplitude * Sine(lag + kQuarterTurn)) >> 15));
            wave.cosineWeight.push_back(static_cast<std::int16_t>((amplitude * Sine(lag)) >> 15));
        }
    }
}

const std::int16_t* SignalSource::NoiseRow() {
    return noise_.data() + (random_.Next() % kNoiseRows);
}

// The noise swells and fades between 0.75 and 1.5 times its level, as background activity does.
void SignalSource::UpdatePacketGain() {
    const std::int32_t envelope = 288 + ((96 * Sine(envelopePhase_)) >> 15);
    envelopePhase_ += envelopeStep_;
    for (std::uint32_t j = 0; j < channelCount_; ++j) {
        packetGain_[j] = static_cast<std::int16_t>((gain_[j] * envelope) >> 8);
    }
}

void SignalSource::MoveWaves() {
    slowStart_.swap(slowEnd_);
    const std::int16_t* push = NoiseRow();
    for (std::uint32_t j = 0; j < channelCount_; ++j) {
        drift_[j] = static_cast<std::int16_t>(drift_[j] + (push[j] >> 8) - (drift_[j] >> 8));
        slowEnd_[j] = drift_[j];
    }
    for (Wave& wave : waves_) {
        wave.phase += wave.step;
        const std::int16_t sine = Sine(wave.phase);
        const std::int16_t cosine = Sine(wave.phase + kQuarterTurn);
        const std::int16_t* sineWeight = wave.sineWeight.data();
        const std::int16_t* cosineWeight = wave.cosineWeight.data();
        for (std::uint32_t j = 0; j < channelCount_; ++j) {
            slowEnd_[j] = static_cast<std::int16_t>(slowEnd_[j] + HighHalf(sineWeight[j], sine) +
                                                    HighHalf(cosineWeight[j], cosine));
        }
    }
}

void SignalSource::AddNoiseAndWaves(std::span<std::int16_t> samples) {
    constexpr std::int16_t kTenth = 6554;  // 65536 / 10
    const std::int16_t* start = slowStart_.data();
    const std::int16_t* end = slowEnd_.data();
    const std::int16_t* gain = packetGain_.data();
    for (std::uint32_t s = 0; s < kSynthSamplesPerPacket; ++s) {
        const std::int16_t* noise = NoiseRow();
        std::int16_t* row = samples.data() + std::size_t{s} * channelCount_;
        const auto weight = static_cast<std::int16_t>(s);
        for (std::uint32_t j = 0; j < channelCount_; ++j) {
            const auto way =
                static_cast<std::int16_t>(static_cast<std::int16_t>(end[j] - start[j]) * weight);
            const auto slow = static_cast<std::int16_t>(start[j] + HighHalf(way, kTenth));
            row[j] = static_cast<std::int16_t>((slow >> 3) + HighHalf(noise[j], gain[j]));
        }
    }
}

void SignalSource::StartSpikes() {
    for (std::int32_t& quiet : quietLeft_)
        quiet -= static_cast<std::int32_t>(kSynthSamplesPerPacket);
    while (nextSpike_ < kSynthSamplesPerPacket) {
        const std::uint64_t draw = spikeRandom_.Next();
        const std::uint32_t channel = spikeChannel_[draw & 255];
        if (quietLeft_[channel] <= 0) {
            const auto jitter = static_cast<std::int32_t>(224 + ((draw >> 8) & 63));
            spikes_.push_back({channel, (spikeAmplitude_[channel] * jitter) >> 8,
                               -static_cast<std::int32_t>(nextSpike_)});
            quietLeft_[channel] = 2 * kSpikeSamples;
        }
        nextSpike_ += 1 + static_cast<std::uint32_t>((draw >> 16) % (2 * spikeInterval_));
    }
    nextSpike_ -= kSynthSamplesPerPacket;
}

void SignalSource::AddSpike(const Spike& spike, std::span<std::int16_t> samples) const {
    constexpr std::array<std::int32_t, 5> kSpread = {40, 110, 256, 110, 40};
    for (std::int32_t k = 0; k < 5; ++k) {
        const std::int32_t channel = static_cast<std::int32_t>(spike.channel) + k - 2;
        if (channel < 0 || channel >= static_cast<std::int32_t>(channelCount_)) continue;
        const std::int32_t amplitude =
            (spike.amplitude * kSpread[static_cast<std::size_t>(k)]) >> 8;
        const std::int32_t first = std::max(-spike.age, 0);
        const std::int32_t last =
            std::min(kSpikeSamples - spike.age, std::int32_t{kSynthSamplesPerPacket});
        for (std::int32_t s = first; s < last; ++s) {
            const std::int32_t shape = kSpikeShape[static_cast<std::size_t>(spike.age + s)];
            std::int16_t& sample = samples[static_cast<std::size_t>(s) * channelCount_ +
                                           static_cast<std::size_t>(channel)];
            sample = static_cast<std::int16_t>(sample + ((amplitude * shape) >> 8));
        }
    }
}

void SignalSource::AddSpikes(std::span<std::int16_t> samples) {
    for (Spike& spike : spikes_) {
        AddSpike(spike, samples);
        spike.age += static_cast<std::int32_t>(kSynthSamplesPerPacket);
    }
    std::erase_if(spikes_, [](const Spike& spike) { return spike.age >= kSpikeSamples; });
}

void SignalSource::AddFaults(std::span<std::int16_t> samples) {
    // A normal draw's standard deviation is about 37,800: 1,500 steps, several times the waves.
    constexpr std::int32_t kDrawsPerStep = 25;
    constexpr std::int16_t kFlatValue = 12;
    constexpr std::int16_t kNearTheEnd = kMaxSample - 300;
    for (std::size_t row = 0; row < samples.size(); row += channelCount_) {
        for (const std::uint32_t channel : noisyChannels_) {
            std::int16_t& sample = samples[row + channel];
            sample = static_cast<std::int16_t>(sample + DrawNormal(noisyRandom_) / kDrawsPerStep);
        }
        for (const std::uint32_t channel : clippedChannels_) {
            std::int16_t& sample = samples[row + channel];
            sample = static_cast<std::int16_t>(sample + kNearTheEnd);
        }
        for (const std::uint32_t channel : flatChannels_) samples[row + channel] = kFlatValue;
    }
}

void SignalSource::NextPacket(std::span<std::int16_t> samples) {
    UpdatePacketGain();
    MoveWaves();
    AddNoiseAndWaves(samples);
    StartSpikes();
    AddSpikes(samples);
    AddFaults(samples);
    for (std::int16_t& sample : samples) {
        sample = std::clamp<std::int16_t>(sample, kMinSample, kMaxSample);
    }
}

}  // namespace stalwick
