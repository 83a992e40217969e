// SPDX-License-Identifier: BSD-3-Clause
#include "survey/column_scale.h"

#include <algorithm>
#include <cmath>

namespace stalwick {

std::int64_t ColumnScale::ColumnOf(double seconds) const {
    constexpr double kFar = 1e15;  // damaged times can have any value
    const double column = std::floor((seconds - originSeconds) / columnSeconds);
    return static_cast<std::int64_t>(std::clamp(column, -kFar, kFar));
}

ColumnScale ScaleOfSamples(double startSeconds, double seconds, const SampleTimes& samples) {
    constexpr double kNearly = 1e-3;  // of a sample; times are rounded
    const double period = samples.periodSeconds;
    const double skipped = std::ceil((startSeconds - samples.oneSeconds) / period - kNearly);
    const double first = samples.oneSeconds + skipped * period;
    const double count = std::ceil((startSeconds + seconds - first) / period - kNearly);
    return {first - period / 2.0, period, count > 1.0 ? static_cast<std::size_t>(count) : 1};
}

}  // namespace stalwick
