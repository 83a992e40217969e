// SPDX-License-Identifier: BSD-3-Clause
#include "platform/local_time.h"

#include <ctime>

namespace stalwick {

LocalTime SystemLocalTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    constexpr int kFirstYear = 1900;
    return {parts.tm_year + kFirstYear,
            parts.tm_mon + 1,
            parts.tm_mday,
            parts.tm_hour,
            parts.tm_min,
            parts.tm_sec};
}

}  // namespace stalwick
