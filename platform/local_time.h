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

// The wall clock in the machine's time zone, as the operating system gives it.
[[nodiscard]] LocalTime SystemLocalTime();

// The time in use: the system's, unless a test has put another source in its place.
[[nodiscard]] LocalTime CurrentLocalTime();

// For tests: puts `source` (null: the system's) in place and returns what was there.
LocalTimeSource SetLocalTimeSource(LocalTimeSource source);

}  // namespace stalwick
