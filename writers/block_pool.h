#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "writers/write_queue.h"

namespace stalwick {

// Blocks of memory of one size that a container fills with records and hands to its files. Nothing
// is cleared: a block holds what an earlier use left in it. Used by one thread.
class BlockPool {
  public:
    // `queue`, which must outlive the pool, appends what is submitted; null: Submit does.
    explicit BlockPool(WriteQueue* queue = nullptr) : queue_(queue) {}

    // Makes the blocks: one for each of `files` to fill, and others to go on with while full ones
    // are written. Throws std::bad_alloc. Call it once.
    void Reserve(std::size_t files, std::size_t blockBytes);

    // A block to fill, at least as aligned as a 64-bit number; waits until one is free.
    std::byte* Acquire();
    // Appends the block's first `size` bytes to the file, now or later, and takes the block back.
    void Submit(WriteTarget& target, std::byte* block, std::size_t size);
    // Waits until nothing is left of what was submitted for that file.
    void WaitFor(const WriteTarget& target) const;

  private:
    WriteQueue* queue_;
    std::unique_ptr<std::byte[]> memory_;
    WriteQueue::FreeBlocks free_;
};

}  // namespace stalwick
