// SPDX-License-Identifier: BSD-3-Clause
#include "platform/processor_count.h"

#include <algorithm>
#include <bit>

#include "platform/windows/windows_api.h"

namespace stalwick {

unsigned UsableProcessors() {
    DWORD_PTR process = 0;
    DWORD_PTR system = 0;
    if (::GetProcessAffinityMask(::GetCurrentProcess(), &process, &system) == 0) return 1;
    return static_cast<unsigned>(std::max(1, std::popcount(process)));
}

}  // namespace stalwick
