// SPDX-License-Identifier: BSD-3-Clause
#include "survey/time_spans.h"

#include <algorithm>
#include <utility>

namespace stalwick {

void TimeSpans::Add(const TimeSpan& span) {
    if (spans_.empty() || span.fromSeconds - spans_.back().toSeconds >= columnSeconds_) {
        spans_.push_back(span);
        return;
    }
    TimeSpan& last = spans_.back();
    last.toSeconds = std::max(last.toSeconds, span.toSeconds);
    last.count += span.count;
    last.missingSamples += span.missingSamples;
}

void TimeSpans::Coarsen(double columnSeconds) {
    columnSeconds_ = columnSeconds;
    for (const TimeSpan& span : std::exchange(spans_, {})) Add(span);
}

std::vector<TimeSpan> TimeSpans::Within(double fromSeconds, double toSeconds) const {
    std::vector<TimeSpan> within;
    for (TimeSpan span : spans_) {
        if (span.toSeconds < fromSeconds || span.fromSeconds > toSeconds) continue;
        span.fromSeconds = std::max(span.fromSeconds, fromSeconds);
        span.toSeconds = std::min(span.toSeconds, toSeconds);
        within.push_back(span);
    }
    return within;
}

}  // namespace stalwick
