// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace stalwick {

// The columns of a trace: equal stretches of time, the first of which begins at `originSeconds`.
struct ColumnScale {
    double originSeconds = 0.0;
    double columnSeconds = 0.0;
    std::size_t columns = 0;

    // Also for times outside: below 0, or `columns` and more.
    std::int64_t ColumnOf(double seconds) const;
    double MiddleOf(std::size_t column) const {
        return originSeconds + (static_cast<double>(column) + 0.5) * columnSeconds;
    }
};

// Equidistant samples of a channel.
struct SampleTimes {
    double oneSeconds = 0.0;  // of any of them
    double periodSeconds = 0.0;
};

// The scale of a stretch from `startSeconds` on with one column per sample, the sample in its
// middle.
[[nodiscard]] ColumnScale ScaleOfSamples(double startSeconds, double seconds,
                                         const SampleTimes& samples);

}  // namespace stalwick
