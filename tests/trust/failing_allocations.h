// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace stalwick::test {

/**
 * Lets allocations of this program fail, of every thread. Linked in, it replaces the program's
 * operator new.
 */
class FailingAllocations {
  public:
    /** From now on the n-th allocation fails, counted from 0; with `lasting` all later ones too. */
    explicit FailingAllocations(std::uint64_t nth, bool lasting);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /** Whether an allocation failed. */
    static bool Met();
    /** From now on they succeed again. */
    static void Stop();
    /** Counts an allocation; returns whether it should fail. For replacements of an allocator. */
    static bool FailsNext();
};

}  // namespace stalwick::test
