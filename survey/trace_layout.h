#pragma once

#include <cstddef>
#include <vector>

#include "survey/svg_writer.h"
#include "survey/trace_set.h"

namespace stalwick {

// Pixels between the left and the right end of a picture's traces, with a column each.
inline constexpr std::size_t kTraceColumns = 1040;

// Where everything of a picture of traces stands, in pixels.
struct TraceLayout {
    double width = 0.0;
    double height = 0.0;
    double left = 0.0;       // of the traces
    double top = 0.0;        // the same
    double rowHeight = 0.0;  // from one trace to the next
    double padding = 0.0;    // above the first row and below the last one, for their spikes
    std::size_t rows = 0;
    std::size_t labelEvery = 1;         // rows: labels of them all would overlap
    bool hasTopLabels = false;          // of the time axis, where its other ones are far away
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
    // All that stands above a point of time.
    SvgRect Column(double x, double columnWidth) const { return {x, top, columnWidth, axis - top}; }
};

[[nodiscard]] TraceLayout LayOut(const TraceSet& set);

// A number of microvolts from one row to the next with which rows hardly overlap.
[[nodiscard]] double ChooseSpacing(const std::vector<Trace>& traces);

// What stands in a row's middle: where the trace is for most of its time, or half way from its
// lowest to its highest value.
[[nodiscard]] double MiddleMicrovolts(const Trace& trace, bool betweenEnds);

}  // namespace stalwick
