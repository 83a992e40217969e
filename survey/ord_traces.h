// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "survey/trace_set.h"

namespace stalwick {

// Reads the content of a picture of a stretch of a recording, in one pass over the stretch. If
// packets have timestamps and the recording is a regular file, nothing before the stretch is read;
// times are then those of timestamps that do not go back before it.
[[nodiscard]] TraceSet ReadOrdTraces(const TraceRequest& request);

}  // namespace stalwick
