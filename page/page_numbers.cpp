// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace stalwick {

namespace {

std::string Written(double value, std::chars_format format, int digits) {
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format, digits);
    return {text.data(), end.ptr};
}

// 1, 2 or 5 times a power of ten: the smallest one with at most this many steps.
double RoundStep(double length, std::size_t steps) {
    const double least = length / static_cast<double>(steps);
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least) return factor * power;
    }
    return 10.0 * power;
}

std::string WithoutLastZeros(std::string text) {
    if (text.find('.') == std::string::npos) return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

}  // namespace

std::string FixedNumber(double value, int decimals) {
    if (!std::isfinite(value)) return "unknown";
    constexpr double kMostWritten = 1e15;
    if (std::abs(value) > kMostWritten) return Written(value, std::chars_format::scientific, 2);
    const std::string text = Written(value, std::chars_format::fixed, decimals);
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    return isZero && text.front() == '-' ? text.substr(1) : text;
}

std::string ShortNumber(double value) {
    if (!std::isfinite(value)) return "unknown";
    const double size = std::abs(value);
    if (size == 0.0) return "0";
    if (size >= 100.0) return FixedNumber(value, 0);
    if (size >= 10.0) return WithoutLastZeros(FixedNumber(value, 1));
    if (size >= 1.0) return WithoutLastZeros(FixedNumber(value, 2));
    if (size >= 0.001) return WithoutLastZeros(FixedNumber(value, 4));
    const std::string text = Written(value, std::chars_format::scientific, 1);
    const std::size_t zero = text.find(".0");
    return zero == std::string::npos ? text : text.substr(0, zero) + text.substr(zero + 2);
}

std::vector<AxisTick> LinearTicks(double low, double high, std::size_t count) {
    std::vector<AxisTick> ticks;
    if (!std::isfinite(low) || !std::isfinite(high) || low >= high) return ticks;
    const double step = RoundStep(high - low, count);
    const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(step))), 0, 9);
    const double first = std::ceil(low / step - 1e-9);
    for (std::size_t i = 0; i <= 2 * count; ++i) {
        const double value = (first + static_cast<double>(i)) * step;
        if (value > high + step * 1e-9) break;
        ticks.push_back(
            {std::clamp((value - low) / (high - low), 0.0, 1.0), FixedNumber(value, decimals)});
    }
    return ticks;
}

std::vector<AxisTick> LogarithmicTicks(double low, double high) {
    std::vector<AxisTick> ticks;
    const double first = std::log10(low);
    const double length = std::log10(high) - first;
    if (!std::isfinite(length) || length <= 0.0) return ticks;
    const int every = length > 6.0 ? 2 : 1;
    const int from = static_cast<int>(std::ceil(first - 1e-9));
    const int to = static_cast<int>(std::floor(first + length + 1e-9));
    for (int power = from; power <= to; power += every) {
        ticks.push_back(
            {std::clamp((power - first) / length, 0.0, 1.0), ShortNumber(std::pow(10.0, power))});
    }
    return ticks;
}

TimeAxis::TimeAxis(double secondsFrom, double secondsTo)
    : fromSeconds(secondsFrom), toSeconds(std::max(secondsTo, secondsFrom + 1e-6)) {
    constexpr double kMinute = 60.0;
    constexpr double kHour = 3600.0;
    constexpr double kOfMost = 2.0;
    const double length = toSeconds - fromSeconds;
    unitSeconds = 1.0;
    title = "time (seconds)";
    if (length > kOfMost * kHour) {
        unitSeconds = kHour;
        title = "time (hours)";
    } else if (length > kOfMost * kMinute) {
        unitSeconds = kMinute;
        title = "time (minutes)";
    }
}

double TimeAxis::ShareOf(double seconds) const {
    return std::clamp((seconds - fromSeconds) / (toSeconds - fromSeconds), 0.0, 1.0);
}

std::vector<AxisTick> TimeAxis::Ticks() const {
    constexpr std::size_t kAbout = 5;
    return LinearTicks(fromSeconds / unitSeconds, toSeconds / unitSeconds, kAbout);
}

}  // namespace stalwick
