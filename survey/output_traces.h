#pragma once

#include "survey/trace_set.h"

namespace stalwick {

// The same of channel files (.vcs) and event files (.vev) of one set, each with its own clock rate
// and microvolts a step. Where a stretch begins is found by halving a file's records.
[[nodiscard]] TraceSet ReadOutputTraces(const TraceRequest& request);

}  // namespace stalwick
