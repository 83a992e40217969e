// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace stalwick {

struct LocalTime {
    int year = 0;
    int month = 0;  // 1 to 12
    int day = 0;    // 1 to 31
    int hour = 0;   // 0 to 23
    int minute = 0;
    int second = 0;
};

using LocalTimeSource = LocalTime (*)();

// The wall clock in the machine's time zone, from the operating system.
[[nodiscard]] LocalTime SystemLocalTime();

// The time source in use: the system's, unless a test has replaced it.
[[nodiscard]] LocalTime CurrentLocalTime();

// For tests: installs `source` (null: the system's) and returns the previous one.
LocalTimeSource SetLocalTimeSource(LocalTimeSource source);

}  // namespace stalwick
