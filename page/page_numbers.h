#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace stalwick {

// Numbers as a page has them, the same under every locale.

[[nodiscard]] std::string FixedNumber(double value, int decimals);
// With about three digits that count: "0.012", "3.41", "152", "2e-05"; "unknown" where it is none.
[[nodiscard]] std::string ShortNumber(double value);

// A place on an axis, as a share of its length.
struct AxisTick {
    double share = 0.0;
    std::string label;
};

// At round numbers from `low` to `high`, about so many.
[[nodiscard]] std::vector<AxisTick> LinearTicks(double low, double high, std::size_t count);
// At powers of ten.
[[nodiscard]] std::vector<AxisTick> LogarithmicTicks(double low, double high);

// An axis of time in the unit that suits it.
struct TimeAxis {
    explicit TimeAxis(double secondsFrom, double secondsTo);

    double ShareOf(double seconds) const;  // 0 to 1, also of times outside
    std::vector<AxisTick> Ticks() const;

    double fromSeconds;
    double toSeconds;
    double unitSeconds;
    std::string title;  // "time (minutes)"
};

}  // namespace stalwick
