// SPDX-License-Identifier: BSD-3-Clause
#include "platform/open_file_limit.h"

#include <limits>

namespace stalwick {

std::uint64_t RaiseOpenFileLimit(std::uint64_t /*count*/) {
    // Handles of the system itself: only memory limits them.
    return std::numeric_limits<std::uint64_t>::max();
}

}  // namespace stalwick
