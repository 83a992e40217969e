// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_calls.h"

#include <atomic>

namespace stalwick {

namespace {
std::atomic<FileCalls*> replacement{nullptr};
}  // namespace

FileCalls& CurrentFileCalls() {
    FileCalls* calls = replacement.load(std::memory_order_acquire);
    return calls != nullptr ? *calls : SystemFileCalls();
}

FileCalls* SetFileCalls(FileCalls* calls) {
    return replacement.exchange(calls, std::memory_order_acq_rel);
}

}  // namespace stalwick
