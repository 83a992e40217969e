// SPDX-License-Identifier: BSD-3-Clause
#include "page/readable_figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace stalwick {

namespace {

// With one decimal, truncated.
std::wstring Tenths(std::uint64_t tenths) {
    return std::to_wstring(tenths / 10) + L'.' + std::to_wstring(tenths % 10);
}

}  // namespace

std::wstring ReadableDuration(double seconds) {
    constexpr double kMost = 1e15;  // beyond any clock; a damaged header may contain anything
    constexpr std::uint64_t kTenthsPerMinute = 600;
    constexpr std::uint64_t kMinutesPerHour = 60;
    const double sane = seconds > 0 ? std::min(seconds, kMost) : 0.0;
    const auto tenths = static_cast<std::uint64_t>(std::round(sane * 10));
    const std::uint64_t minutes = tenths / kTenthsPerMinute;
    std::wstring text;
    if (minutes >= kMinutesPerHour) text += std::to_wstring(minutes / kMinutesPerHour) + L" h ";
    if (minutes > 0) text += std::to_wstring(minutes % kMinutesPerHour) + L" min ";
    return text + Tenths(tenths % kTenthsPerMinute) + L" s";
}

std::wstring ReadableBytes(std::uint64_t bytes) {
    constexpr std::uint64_t kThousand = 1000;
    constexpr std::array kUnits = {L" kB", L" MB", L" GB", L" TB", L" PB", L" EB"};
    if (bytes < kThousand) return Counted(bytes, L"byte");
    std::size_t unit = 0;
    while (bytes >= kThousand * kThousand) {
        bytes /= kThousand;
        ++unit;
    }
    return Tenths(bytes / (kThousand / 10)) + kUnits[unit];
}

std::wstring Counted(std::uint64_t count, const std::wstring& singular) {
    return std::to_wstring(count) + L' ' + singular + (count == 1 ? L"" : L"s");
}

}  // namespace stalwick
