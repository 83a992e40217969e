// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/sensor_source.h"

#include <algorithm>

#include "tools/ord_synth/integer_sine.h"

namespace stalwick {

namespace {

constexpr std::int32_t kGravity = 16384;    // 1 g
constexpr std::int32_t kFieldLevel = 9000;  // horizontal part of the field
constexpr std::int32_t kFieldUpright = -14000;
constexpr std::int32_t kTurnRate = 6000;  // peak angular velocity

std::uint16_t Word(std::int32_t value) {
    return static_cast<std::uint16_t>(static_cast<std::int16_t>(std::clamp(value, -32768, 32767)));
}

std::int32_t Scaled(std::int32_t amplitude, std::int16_t sine) {
    return static_cast<std::int32_t>((std::int64_t{amplitude} * sine) >> 15);
}

}  // namespace

ImuSource::ImuSource(std::uint64_t seed, RandomStream stream, std::uint32_t packetsPerSecond)
    : random_(MakeRandom(seed, stream)) {
    constexpr std::array<std::array<std::uint32_t, 2>, 3> kMilliHz = {
        {{300, 700}, {200, 500}, {50, 120}}};
    for (std::size_t axis = 0; axis < phase_.size(); ++axis) {
        phase_[axis] = static_cast<std::uint32_t>(random_.Next());
        step_[axis] =
            PhaseStep(random_.Between(kMilliHz[axis][0], kMilliHz[axis][1]), packetsPerSecond);
    }
}

void ImuSource::Next(ImuValues& values) {
    // The head tilts by up to a sixteenth of a turn, so its cosine stays close to 1.
    const auto pitch = static_cast<std::uint32_t>(std::int32_t{Sine(phase_[0])} << 13);
    const auto roll = static_cast<std::uint32_t>(std::int32_t{Sine(phase_[1])} << 13);
    const std::int16_t upright = Sine(kQuarterTurn + pitch);
    const std::array<std::int32_t, 9> ideal = {
        Scaled(kGravity, Sine(pitch)),
        Scaled(kGravity, Sine(roll)),
        Scaled(Scaled(kGravity, upright), Sine(kQuarterTurn + roll)),
        Scaled(kTurnRate, Sine(phase_[0] + kQuarterTurn)),
        Scaled(kTurnRate, Sine(phase_[1] + kQuarterTurn)),
        kTurnRate / 4,
        Scaled(kFieldLevel, Sine(phase_[2] + kQuarterTurn)),
        Scaled(kFieldLevel, Sine(phase_[2])),
        Scaled(kFieldUpright, upright),
    };
    std::uint64_t noise = random_.Next();
    for (std::size_t i = 0; i < values.size(); ++i, noise >>= 7) {
        values[i] = Word(ideal[i] + static_cast<std::int32_t>(noise & 127u) - 64);
    }
    for (std::size_t axis = 0; axis < phase_.size(); ++axis) phase_[axis] += step_[axis];
}

UltrasonicSource::UltrasonicSource(std::uint64_t seed, std::uint32_t packetsPerSecond)
    : random_(MakeRandom(seed, RandomStream::kUltrasonic)), packetsPerSecond_(packetsPerSecond) {}

void UltrasonicSource::StartNextPhase() {
    calling_ = !calling_;
    const std::uint32_t milliseconds =
        calling_ ? random_.Between(30, 90) : random_.Between(150, 1200);
    packetsLeft_ = std::max(
        static_cast<std::uint32_t>(std::uint64_t{milliseconds} * packetsPerSecond_ / 1000), 1u);
    if (!calling_) return;
    const std::uint64_t samplesPerSecond =
        std::uint64_t{packetsPerSecond_} * std::tuple_size_v<UltrasonicValues>;
    const std::uint32_t fromHz = random_.Between(40'000, 55'000);
    const std::uint32_t toHz = fromHz + random_.Between(5'000, 25'000);
    step_ = PhaseStep(std::uint64_t{fromHz} * 1000, samplesPerSecond);
    const std::uint32_t growth = PhaseStep(std::uint64_t{toHz} * 1000, samplesPerSecond) - step_;
    sweep_ =
        growth / (packetsLeft_ * static_cast<std::uint32_t>(std::tuple_size_v<UltrasonicValues>));
}

void UltrasonicSource::Next(UltrasonicValues& values) {
    if (packetsLeft_ == 0) StartNextPhase();
    --packetsLeft_;
    const std::int32_t amplitude = calling_ ? 12'000 : 0;
    std::uint64_t noise = 0;
    for (std::size_t i = 0; i < values.size(); ++i, noise >>= 9) {
        if (i % 7 == 0) noise = random_.Next();
        values[i] =
            Word(Scaled(amplitude, Sine(phase_)) + static_cast<std::int32_t>(noise & 511u) - 256);
        phase_ += step_;
        step_ += calling_ ? sweep_ : 0;
    }
}

}  // namespace stalwick
