// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "survey/trace_set.h"

namespace stalwick {

// The same for channel files (.vcs) and event files (.vev) of one set, each with its own clock rate
// and microvolts per step. The start of a stretch is found by bisecting the records of a file.
[[nodiscard]] TraceSet ReadOutputTraces(const TraceRequest& request);

}  // namespace stalwick
