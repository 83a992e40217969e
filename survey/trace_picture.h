#pragma once

#include <optional>
#include <string>

#include "survey/trace_set.h"

namespace stalwick {

struct TracePictureOptions {
    std::string title;                        // UTF-8
    std::optional<double> spacingMicrovolts;  // from row to row; none: as the traces need
    std::string id = "traces";                // what its ids begin with
};

// Draws traces above each other with channel names, time axis and scale bar, gaps and damage shaded
// and TTL lines below: an <svg> element. A trace has at most two points a column of kTraceColumns,
// which the set should have been read with.
[[nodiscard]] std::string PaintTraces(const TraceSet& set, const TracePictureOptions& options);

}  // namespace stalwick
