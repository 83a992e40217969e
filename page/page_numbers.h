// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace stalwick {

// Numbers as a page shows them, the same in every locale.

[[nodiscard]] std::string FixedNumber(double value, int decimals);
// With about three significant digits: "0.012", "3.41", "152", "2e-05"; "unknown" for NaN and
// infinity.
[[nodiscard]] std::string ShortNumber(double value);

// A position on an axis, as a share of its length.
struct AxisTick {
    double share = 0.0;
    std::string label;
};

// At round numbers from `low` to `high`, about this many.
[[nodiscard]] std::vector<AxisTick> LinearTicks(double low, double high, std::size_t count);
// At powers of ten.
[[nodiscard]] std::vector<AxisTick> LogarithmicTicks(double low, double high);

// An axis of time in the unit that suits it.
struct TimeAxis {
    explicit TimeAxis(double secondsFrom, double secondsTo);

    double ShareOf(double seconds) const;  // 0 to 1, also for times outside
    std::vector<AxisTick> Ticks() const;

    double fromSeconds;
    double toSeconds;
    double unitSeconds;
    std::string title;  // "time (minutes)"
};

}  // namespace stalwick
