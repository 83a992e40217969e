// SPDX-License-Identifier: BSD-3-Clause
#include "platform/processor_count.h"

#include <algorithm>
#include <thread>

#ifdef __linux__
#include <sched.h>
#endif

namespace stalwick {

unsigned UsableProcessors() {
#ifdef __linux__
    cpu_set_t processors;
    if (::sched_getaffinity(0, sizeof processors, &processors) == 0) {
        return static_cast<unsigned>(std::max(1, CPU_COUNT(&processors)));
    }
#endif
    return std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace stalwick
