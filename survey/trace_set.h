// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "survey/column_scale.h"
#include "survey/recording_survey.h"

namespace stalwick {

// The content of a picture of traces: plain values. Times are seconds from the first sample.

// The smallest and the largest sample in a column.
struct ColumnRange {
    std::int16_t smallest = INT16_MAX;
    std::int16_t largest = INT16_MIN;

    bool IsEmpty() const { return smallest > largest; }
    void Add(std::int16_t low, std::int16_t high) {
        if (low < smallest) smallest = low;
        if (high > largest) largest = high;
    }
};

struct Trace {
    std::wstring name;  // "CSC1"
    double microvoltsPerStep = 0.0;
    ColumnScale scale;
    std::vector<ColumnRange> columns;  // as many as in the scale; none: no samples
};

// A stretch of time with something in common; several less than a column apart are merged.
struct TimeSpan {
    double fromSeconds = 0.0;
    double toSeconds = 0.0;
    std::uint64_t count = 1;           // stretches in it
    std::uint64_t missingSamples = 0;  // per channel, in gaps and damage
};

// Why there is no picture.
struct TraceError {
    enum class Kind {
        kNone,
        kUnreadable,
        kRequest  // the files are fine, but do not contain what was requested
    };
    Kind kind = Kind::kNone;
    std::wstring text;  // one line: file, why, what to do

    explicit operator bool() const { return kind != Kind::kNone; }
};

struct TraceSet {
    TraceError error;
    double startSeconds = 0.0;
    double seconds = 0.0;
    std::vector<Trace> traces;
    std::vector<TimeSpan> gaps;
    std::vector<TimeSpan> damage;
    std::array<std::vector<TimeSpan>, kTtlLines> ttlHigh;
    std::vector<std::wstring> warnings;  // one line each
    bool lostData = false;               // a file could not be read to the stretch's end

    double EndSeconds() const { return startSeconds + seconds; }
};

struct TraceRequest {
    std::vector<std::wstring> paths;  // one recording; or channel files and event files of a set
    double startSeconds = 0.0;
    std::optional<double> seconds;        // none: to the end
    std::vector<std::uint32_t> channels;  // A/D channels from 0, ascending; none: all
    std::size_t columns = 1000;           // of a trace, at most
};

}  // namespace stalwick
