// SPDX-License-Identifier: BSD-3-Clause
#include "survey/time_steps.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace stalwick {

namespace {

constexpr std::size_t kMostGaps = 100;  // that are listed
constexpr double kMicrosecondsPerSecond = 1e6;

std::uint64_t Rounded(double count) {
    constexpr double kMost = 1e18;  // damaged times can have any value
    return static_cast<std::uint64_t>(std::llround(std::min(count, kMost)));
}

}  // namespace

std::optional<double> MissingBetween(std::uint64_t fromMicroseconds, std::uint64_t toMicroseconds,
                                     std::uint64_t samples, double samplesPerSecond) {
    const double seconds =
        static_cast<double>(static_cast<std::int64_t>(toMicroseconds - fromMicroseconds)) /
        kMicrosecondsPerSecond;
    const double missing = seconds * samplesPerSecond - static_cast<double>(samples);
    // Times are whole microseconds, and the recorder's clock may drift.
    constexpr double kLeastSamples = 0.5;
    constexpr double kDrift = 2e-4;
    const double rounding = 2.0 * samplesPerSecond / kMicrosecondsPerSecond;
    if (missing < kLeastSamples + rounding + kDrift * static_cast<double>(samples)) {
        return std::nullopt;
    }
    return missing;
}

void TimeSteps::CheckOrder(std::uint64_t time, const FindingPlace& place) {
    const auto before = std::exchange(last_, time);
    if (!before || static_cast<std::int64_t>(time - *before) >= 0) return;
    log_.Add(place, L"its time is " + std::to_wstring(*before - time) +
                        L" microseconds earlier than that of the previous record");
}

void TimeSteps::CheckGap(std::uint64_t time, std::uint64_t samples, const FindingPlace& place) {
    const auto before = std::exchange(lastOfGap_, time);
    if (samplesPerSecond_ == 0.0 || !before) return;
    const auto missing = MissingBetween(*before, time, samples, samplesPerSecond_);
    if (!missing) return;
    ++set_.gapCount;
    if (set_.gaps.size() >= kMostGaps) return;
    set_.gaps.push_back({log_.Path(), place.record.value_or(0), place.byte.value_or(0),
                         *missing / samplesPerSecond_, Rounded(*missing)});
}

void TimeSteps::Break() {
    last_.reset();
    lastOfGap_.reset();
}

}  // namespace stalwick
