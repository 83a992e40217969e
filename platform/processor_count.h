#pragma once

namespace stalwick {

// Processors that this process may run on, at least 1. A process that was bound to one of many
// (taskset, a container's set) has 1.
unsigned UsableProcessors();

}  // namespace stalwick
