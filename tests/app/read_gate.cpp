// SPDX-License-Identifier: BSD-3-Clause
#include "tests/app/read_gate.h"

namespace stalwick::test {

void ReadGate::Allow(std::size_t reads) {
    const std::lock_guard lock(mutex_);
    readsLeft_ = reads;
    opened_.notify_all();
}

SystemErrorCode ReadGate::Read(FileHandle handle, void* data, std::size_t size,
                               std::size_t& transferred) {
    {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [this] { return readsLeft_ > 0; });
        --readsLeft_;
    }
    return ForwardingFileCalls::Read(handle, data, size, transferred);
}

}  // namespace stalwick::test
