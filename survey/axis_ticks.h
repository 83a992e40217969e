// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

namespace stalwick {

// The round numbers 1, 2 and 5 times a power of ten next to a positive number.
[[nodiscard]] double RoundDown(double value);
// Like the above, but finer: at most a third above the number.
[[nodiscard]] double RoundUp(double value);

struct AxisTick {
    double seconds = 0.0;
    std::string label;  // "12.5", "2:30", "1:02:30"
};

struct TimeAxis {
    std::vector<AxisTick> ticks;
    std::string unit;  // of the labels: "seconds", "minutes:seconds", "hours:minutes:seconds"
};

// At most `mostTicks` at round times from `startSeconds` to `endSeconds`, which must be later.
[[nodiscard]] TimeAxis MakeTimeAxis(double startSeconds, double endSeconds, int mostTicks);

// A number with few digits: "0.25", "1500", "3.2e+06".
[[nodiscard]] std::string FewDigits(double value);

// "200 µV", "1.5 mV", "2 V".
[[nodiscard]] std::string Voltage(double microvolts);

}  // namespace stalwick
