// SPDX-License-Identifier: BSD-3-Clause
#include "ord/step_clock.h"

#include <algorithm>
#include <cmath>

#include "ord/ord_format.h"

namespace stalwick {

namespace {

constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kNearNominal = 0.05;         // of a step
constexpr double kNanosecondsOfRounding = 2;  // timestamps are whole nanoseconds
constexpr double kDriftBeforeLearning = 2e-4;
constexpr double kDriftAfterLearning = 2e-6;
constexpr std::uint64_t kStepsToLearn = 100;
constexpr unsigned kAlikeSteps = 8;
constexpr double kMostDeviation = 0.25;  // of a step, for any number of steps

// Unsigned, so that it is right beyond 2^63 too; beyond half the range `to` is before `from`.
std::optional<std::uint64_t> ForwardBy(std::uint64_t from, std::uint64_t to) {
    const std::uint64_t difference = to - from;
    if (difference == 0 || difference > UINT64_MAX / 2) return std::nullopt;
    return difference;
}

}  // namespace

StepClock::StepClock(std::uint32_t samplingFrequency) {
    if (samplingFrequency == 0) return;
    Restart(kNanosecondsPerSecond * kSamplesPerPacket / samplingFrequency);
}

void StepClock::Restart(double stepNs) {
    nominalNs_ = stepNs_ = stepNs;
    sumNs_ = count_ = 0;
    alike_ = 0;
}

void StepClock::Learn(std::uint64_t from, std::uint64_t to) {
    const std::optional<std::uint64_t> step = ForwardBy(from, to);
    if (!step) return;
    const auto length = static_cast<double>(*step);
    if (std::abs(length - nominalNs_) <= kNearNominal * nominalNs_) {
        lastRegularNs_ = *step;
        sumNs_ += *step;
        ++count_;
        alike_ = 0;
        if (count_ >= kStepsToLearn) {
            stepNs_ = static_cast<double>(sumNs_) / static_cast<double>(count_);
        }
        return;
    }
    // The header's frequency is wrong if no step is near it and the steps agree with each other.
    const double difference = std::abs(length - static_cast<double>(lastStepNs_));
    alike_ = difference <= kNanosecondsOfRounding ? alike_ + 1 : 0;
    lastStepNs_ = *step;
    if (count_ == 0 && alike_ >= kAlikeSteps) Restart(length);
}

std::optional<std::uint64_t> StepClock::WholeSteps(std::uint64_t from, std::uint64_t to) const {
    const std::optional<std::uint64_t> distance = ForwardBy(from, to);
    if (!distance || stepNs_ <= 0.0) return std::nullopt;
    // As nearly all are: the same as the previous one, except for rounding.
    if (lastRegularNs_ != 0 && *distance - lastRegularNs_ + 1 <= 2) return 1;
    const auto length = static_cast<double>(*distance);
    const double steps = std::round(length / stepNs_);
    const double drift = count_ < kStepsToLearn ? kDriftBeforeLearning : kDriftAfterLearning;
    const double tolerance =
        std::min(kNanosecondsOfRounding + length * drift, kMostDeviation * stepNs_);
    if (steps < 1.0 || std::abs(length - steps * stepNs_) > tolerance) return std::nullopt;
    return static_cast<std::uint64_t>(steps);
}

}  // namespace stalwick
