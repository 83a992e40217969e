// SPDX-License-Identifier: BSD-3-Clause
#include "survey/time_line.h"

#include <cmath>

#include "ord/ord_format.h"

namespace stalwick {

namespace {

constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kSamples = kSamplesPerPacket;
// In sample periods; a step that differs by less is ten samples of a drifting clock.
constexpr double kNearestSample = 0.5;

}  // namespace

TimeLine::TimeLine(std::uint32_t samplingFrequency)
    : samplingFrequency_(samplingFrequency),
      nominalNs_(samplingFrequency != 0 ? kNanosecondsPerSecond * kSamples / samplingFrequency
                                        : 0.0) {}

TimeLine::Step TimeLine::Take(std::uint64_t timestamp, std::uint64_t position,
                              std::optional<std::size_t> damageBefore) {
    if (!first_) {
        first_ = last_ = timestamp;
        return Step::kRegular;
    }
    // Modulo 2^64, so a counter beyond 2^63 is not a special case.
    const std::uint64_t step = timestamp - last_;
    last_ = timestamp;
    if (step == 0) {
        ++repeated_;
        return Step::kOdd;
    }
    if (step > UINT64_MAX / 2) {
        backward_.push_back({position, 0 - step});
        return Step::kOdd;
    }
    const double deviation = std::abs(static_cast<double>(step) - nominalNs_);
    const bool isRegular = deviation < kNearestSample * nominalNs_ / kSamples;
    if (isRegular && !damageBefore) {
        regularNs_ += step;
        ++regularSteps_;
    } else {
        oddSteps_.push_back({position, elapsedNs_, step, damageBefore});
    }
    elapsedNs_ += step;
    return isRegular ? Step::kRegular : Step::kOdd;
}

double TimeLine::MeasuredStepNs() const {
    if (regularSteps_ == 0) return nominalNs_;
    return static_cast<double>(regularNs_) / static_cast<double>(regularSteps_);
}

// For a step: negative if it is too short. Packets hold ten samples, so a length that is not known
// to the sample is rounded to whole packets.
std::int64_t TimeLine::MissingSamples(std::uint64_t stepNs) const {
    if (nominalNs_ == 0.0) return 0;
    const auto length = static_cast<double>(stepNs);
    const double samples = length / MeasuredStepNs() * kSamples;
    const double packets = std::round(samples / kSamples) * kSamples;
    const double uncertainty =
        regularNs_ != 0 ? 2.0 * samples / static_cast<double>(regularNs_) : samples * 1e-4;
    const bool wholePackets = std::abs(samples - packets) <= kNearestSample + uncertainty;
    return std::llround((wholePackets ? packets : samples) - kSamples);
}

void TimeLine::AddOddStep(const OddStep& step, TimeAccount& account,
                          std::span<DamagedStretch> damage) const {
    const std::int64_t missing = MissingSamples(step.stepNs);
    const double atSeconds =
        (static_cast<double>(step.elapsedNs) + MeasuredStepNs()) / kNanosecondsPerSecond;
    if (step.damage) {
        DamagedStretch& stretch = damage[*step.damage];
        stretch.atSeconds = atSeconds;
        stretch.missingSamples = missing > 0 ? static_cast<std::uint64_t>(missing) : 0;
    } else if (missing > 0) {
        const double seconds =
            (static_cast<double>(step.stepNs) - MeasuredStepNs()) / kNanosecondsPerSecond;
        account.gaps.push_back(
            {step.position, atSeconds, seconds, static_cast<std::uint64_t>(missing)});
        account.missingSamples += account.gaps.back().missingSamples;
        account.gapSeconds += seconds;
    } else {
        ++account.shortSteps;
    }
}

void TimeLine::Finish(TimeAccount& account, std::span<DamagedStretch> damage) const {
    if (!first_) return;
    account.firstTimestampNs = first_;
    account.lastTimestampNs = last_;
    account.repeatedTimestamps = repeated_;
    account.backwardTimestamps = backward_;
    account.durationSeconds =
        (static_cast<double>(elapsedNs_) + MeasuredStepNs()) / kNanosecondsPerSecond;
    for (const OddStep& step : oddSteps_) AddOddStep(step, account, damage);
    if (regularSteps_ == 0) return;
    account.measuredRate = kNanosecondsPerSecond * kSamples / MeasuredStepNs();
    account.driftPpm = (*account.measuredRate / samplingFrequency_ - 1.0) * 1e6;
}

}  // namespace stalwick
