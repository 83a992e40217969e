// SPDX-License-Identifier: BSD-3-Clause
#include "platform/local_time.h"

#include <atomic>

namespace stalwick {

namespace {
std::atomic<LocalTimeSource> replacement{nullptr};
}  // namespace

LocalTime CurrentLocalTime() {
    const LocalTimeSource source = replacement.load(std::memory_order_acquire);
    return source != nullptr ? source() : SystemLocalTime();
}

LocalTimeSource SetLocalTimeSource(LocalTimeSource source) {
    return replacement.exchange(source, std::memory_order_acq_rel);
}

}  // namespace stalwick
