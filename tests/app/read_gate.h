// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <condition_variable>
#include <cstddef>
#include <limits>
#include <mutex>

#include "tests/support/forwarding_file_calls.h"

namespace stalwick::test {

/**
 * The system's file calls, with a gate before every read: a conversion stops where a test
 * inspects the window. Open at first. In place from construction to destruction; any
 * thread may use it.
 */
class ReadGate final : public ForwardingFileCalls {
  public:
    // From now on this many reads pass; later ones wait.
    void Allow(std::size_t reads);
    void AllowAll() { Allow(std::numeric_limits<std::size_t>::max()); }

    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override;

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    std::size_t readsLeft_ = std::numeric_limits<std::size_t>::max();
};

}  // namespace stalwick::test
