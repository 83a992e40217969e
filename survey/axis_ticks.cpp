// SPDX-License-Identifier: BSD-3-Clause
#include "survey/axis_ticks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "outputs/header_text.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr double kSlack = 1e-9;  // of a step or a number, to allow for rounding

double PowerOfTenBelow(double value) {
    return std::pow(10.0, std::floor(std::log10(value) + kSlack));
}

double StepAbove(double seconds) {
    constexpr std::array<double, 15> kLongSteps = {1.0,   2.0,    5.0,    10.0,   15.0,
                                                   30.0,  60.0,   120.0,  300.0,  600.0,
                                                   900.0, 1800.0, 3600.0, 7200.0, 21600.0};
    if (seconds > kLongSteps.back()) {
        return std::ceil(seconds / kLongSteps.back() - kSlack) * kLongSteps.back();
    }
    if (seconds > 0.5) {
        return *std::find_if(kLongSteps.begin(), kLongSteps.end(),
                             [=](double step) { return step >= seconds * (1.0 - kSlack); });
    }
    constexpr double kShortest = 1e-6;
    const double power = PowerOfTenBelow(std::max(seconds, kShortest));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= seconds * (1.0 - kSlack)) return factor * power;
    }
    return 10.0 * power;
}

std::string TwoDigits(std::int64_t number) {
    std::string text = std::to_string(number);
    if (number < 10) text.insert(text.begin(), '0');
    return text;
}

std::string ClockLabel(double seconds, bool withHours) {
    const std::int64_t whole = std::llround(seconds);
    const std::int64_t minutes = whole / 60;
    const std::string beforeSeconds =
        withHours ? std::to_string(minutes / 60) + ':' + TwoDigits(minutes % 60)
                  : std::to_string(minutes);
    return beforeSeconds + ':' + TwoDigits(whole % 60);
}

std::string Fixed(double value, int decimals) {
    return ToUtf8(FormatDouble(value, std::chars_format::fixed, decimals));
}

}  // namespace

double RoundDown(double value) {
    const double power = PowerOfTenBelow(value);
    double best = power;
    for (const double factor : {2.0, 5.0}) {
        if (factor * power <= value * (1.0 + kSlack)) best = factor * power;
    }
    return best;
}

double RoundUp(double value) {
    const double power = PowerOfTenBelow(value);
    for (const double factor : {1.0, 1.25, 1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0}) {
        if (factor * power >= value * (1.0 - kSlack)) return factor * power;
    }
    return 10.0 * power;
}

TimeAxis MakeTimeAxis(double startSeconds, double endSeconds, int mostTicks) {
    constexpr double kSecondsAsSuch = 120.0;
    constexpr double kHour = 3600.0;
    const double step = StepAbove((endSeconds - startSeconds) / mostTicks);
    const bool asClock = endSeconds > kSecondsAsSuch && step >= 1.0;
    const bool withHours = endSeconds >= kHour;
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - kSlack)));
    TimeAxis axis;
    axis.unit = !asClock ? "seconds" : withHours ? "hours:minutes:seconds" : "minutes:seconds";
    // A recording's length is known only to the nearest nanoseconds.
    const double near = (endSeconds - startSeconds) * 1e-4;
    const double last = std::floor((endSeconds + near) / step);
    for (double count = std::ceil((startSeconds - near) / step); count <= last; count += 1.0) {
        const double seconds = count * step + 0.0;  // no negative zero
        axis.ticks.push_back(
            {seconds, asClock ? ClockLabel(seconds, withHours) : Fixed(seconds, decimals)});
    }
    return axis;
}

std::string FewDigits(double value) {
    return ToUtf8(FormatDouble(value, std::chars_format::general, 6));
}

std::string Voltage(double microvolts) {
    if (microvolts >= 1e6) return FewDigits(microvolts / 1e6) + " V";
    if (microvolts >= 1e3) return FewDigits(microvolts / 1e3) + " mV";
    return FewDigits(microvolts) + " \xC2\xB5V";
}

}  // namespace stalwick
