// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <optional>
#include <string>

#include "survey/trace_set.h"

namespace stalwick {

struct TracePictureOptions {
    std::string title;                        // UTF-8
    std::optional<double> spacingMicrovolts;  // between rows; none: chosen from the traces
    std::string id = "traces";                // prefix of its ids
};

// Draws traces one above the other with channel names, time axis and scale bar, gaps and damage
// shaded and TTL lines below, as an <svg> element. A trace has at most two points in each of
// kTraceColumns columns, with which the set should have been read.
[[nodiscard]] std::string PaintTraces(const TraceSet& set, const TracePictureOptions& options);

}  // namespace stalwick
