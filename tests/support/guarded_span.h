// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string_view>

namespace stalwick::test {

/** Memory whose last byte precedes an inaccessible page: reading beyond it ends the
 * program. */
class GuardedSpan {
  public:
    GuardedSpan();
    ~GuardedSpan();
    GuardedSpan(const GuardedSpan&) = delete;
    GuardedSpan& operator=(const GuardedSpan&) = delete;

    /** Copies `bytes` (at most 64 KiB) to the very end; valid until the next call. */
    const std::uint8_t* Hold(std::string_view bytes);

  private:
    std::uint8_t* start_ = nullptr;
};

}  // namespace stalwick::test
