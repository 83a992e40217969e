// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "writers/write_queue.h"

namespace stalwick {

// Equally sized blocks of memory that a container fills with records and hands to its files.
// Nothing is cleared: a block keeps the contents of its previous use. Used by one thread.
class BlockPool {
  public:
    // `queue`, which must outlive the pool, appends submitted blocks; if null, Submit does.
    explicit BlockPool(WriteQueue* queue = nullptr) : queue_(queue) {}

    // Allocates the blocks: one for each of `files` to fill, and more to continue with while full
    // ones are written. Throws std::bad_alloc. Call it once.
    void Reserve(std::size_t files, std::size_t blockBytes);

    // A block to fill, aligned at least like a 64-bit number; waits until one is free.
    std::byte* Acquire();
    // Appends the block's first `size` bytes to the file, now or later, and takes the block back.
    void Submit(WriteTarget& target, std::byte* block, std::size_t size);
    // Waits until everything submitted for that file is written.
    void WaitFor(const WriteTarget& target) const;

  private:
    WriteQueue* queue_;
    std::unique_ptr<std::byte[]> memory_;
    WriteQueue::FreeBlocks free_;
};

}  // namespace stalwick
