// SPDX-License-Identifier: BSD-3-Clause
#include "survey/trace_layout.h"

#include <algorithm>

#include "survey/axis_ticks.h"

namespace stalwick {

namespace {

constexpr double kLeft = 78.0;
constexpr double kRightMargin = 84.0;  // for the scale bar
constexpr double kTop = 66.0;
constexpr double kTallestRow = 320.0;
constexpr double kLowestRow = 8.0;
constexpr double kTracesHeight = 720.0;  // as long as rows are between these
constexpr double kMostPadding = 20.0;
constexpr double kLabelHeight = 12.0;
constexpr double kTtlRowHeight = 16.0;
constexpr double kTtlMargin = 10.0;
constexpr double kBottomMargin = 54.0;
constexpr double kTallPicture = 900.0;

// The value below which that share of the values lies.
double Percentile(std::vector<double>& values, double share) {
    const auto at = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + at, values.end());
    return values[static_cast<std::size_t>(at)];
}

// From near its lowest to near its highest value; all of it if `isWhole`.
double Extent(const Trace& trace, bool isWhole) {
    std::vector<double> low;
    std::vector<double> high;
    for (const ColumnRange& range : trace.columns) {
        if (range.IsEmpty()) continue;
        low.push_back(range.smallest);
        high.push_back(range.largest);
    }
    if (low.empty()) return 0.0;
    const double leftOut = isWhole ? 0.0 : 0.02;
    return (Percentile(high, 1.0 - leftOut) - Percentile(low, leftOut)) * trace.microvoltsPerStep;
}

}  // namespace

TraceLayout LayOut(const TraceSet& set) {
    TraceLayout layout;
    layout.left = kLeft;
    layout.top = kTop;
    layout.width = layout.Right() + kRightMargin;
    layout.rows = set.traces.size();
    const auto rows = static_cast<double>(std::max<std::size_t>(layout.rows, 1));
    layout.rowHeight = std::clamp(kTracesHeight / rows, kLowestRow, kTallestRow);
    if (layout.rows > 1) layout.padding = std::min(kMostPadding, layout.rowHeight / 2.0);
    while (layout.rowHeight * static_cast<double>(layout.labelEvery) < kLabelHeight) {
        layout.labelEvery *= 2;
    }
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        if (!set.ttlHigh[line].empty()) layout.ttlLines.push_back(line);
    }
    layout.ttlRowHeight = kTtlRowHeight;
    layout.ttlTop = layout.TracesBottom() + kTtlMargin;
    layout.axis = layout.ttlTop + kTtlRowHeight * static_cast<double>(layout.ttlLines.size());
    layout.height = layout.axis + kBottomMargin;
    layout.hasTopLabels = layout.height > kTallPicture;
    return layout;
}

double ChooseSpacing(const std::vector<Trace>& traces) {
    constexpr double kBetweenRows = 1.1;
    constexpr double kOfFlatTraces = 100.0;  // microvolts
    std::vector<double> extents;
    for (const Trace& trace : traces) {
        const double extent = Extent(trace, traces.size() == 1);
        if (extent > 0.0) extents.push_back(extent);
    }
    if (extents.empty()) return kOfFlatTraces;
    return RoundUp(kBetweenRows * Percentile(extents, 0.5));
}

double MiddleMicrovolts(const Trace& trace, bool betweenEnds) {
    std::vector<double> middles;
    ColumnRange all;
    for (const ColumnRange& range : trace.columns) {
        if (range.IsEmpty()) continue;
        all.Add(range.smallest, range.largest);
        middles.push_back((range.smallest + range.largest) / 2.0);
    }
    if (middles.empty()) return 0.0;
    const double middle =
        betweenEnds ? (all.smallest + all.largest) / 2.0 : Percentile(middles, 0.5);
    return middle * trace.microvoltsPerStep;
}

}  // namespace stalwick
