// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <vector>

#include "survey/svg_writer.h"
#include "survey/trace_set.h"

namespace stalwick {

// Pixels between the left and the right end of a picture's traces, one column each.
inline constexpr std::size_t kTraceColumns = 1040;

// The layout of a picture of traces, in pixels.
struct TraceLayout {
    double width = 0.0;
    double height = 0.0;
    double left = 0.0;       // of the traces
    double top = 0.0;        // the same
    double rowHeight = 0.0;  // from one trace to the next
    double padding = 0.0;    // above the first row and below the last one, for their spikes
    std::size_t rows = 0;
    std::size_t labelEvery = 1;         // rows: labels of all would overlap
    bool hasTopLabels = false;          // of the time axis, if its other ticks are far away
    std::vector<std::size_t> ttlLines;  // that are high at any time
    double ttlTop = 0.0;
    double ttlRowHeight = 0.0;
    double axis = 0.0;  // height of the time axis

    double Right() const { return left + static_cast<double>(kTraceColumns); }
    double TracesBottom() const {
        return top + static_cast<double>(rows) * rowHeight + 2.0 * padding;
    }
    double RowMiddle(std::size_t row) const {
        return top + padding + (static_cast<double>(row) + 0.5) * rowHeight;
    }
    SvgRect TracesArea() const { return {left, top, Right() - left, TracesBottom() - top}; }
    // Everything above a point in time.
    SvgRect Column(double x, double columnWidth) const { return {x, top, columnWidth, axis - top}; }
};

[[nodiscard]] TraceLayout LayOut(const TraceSet& set);

// A number of microvolts between rows with which rows hardly overlap.
[[nodiscard]] double ChooseSpacing(const std::vector<Trace>& traces);

// The value in the middle of a row: where the trace is for most of its time, or half way from its
// lowest to its highest value.
[[nodiscard]] double MiddleMicrovolts(const Trace& trace, bool betweenEnds);

}  // namespace stalwick
