// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace stalwick {

// Processors on which this process may run, at least 1. A process bound to one of many (taskset, a
// container's set) has 1.
unsigned UsableProcessors();

}  // namespace stalwick
