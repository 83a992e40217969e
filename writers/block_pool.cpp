// SPDX-License-Identifier: BSD-3-Clause
#include "writers/block_pool.h"

#include <algorithm>

namespace stalwick {

namespace {

constexpr std::size_t kSpareBytes = std::size_t{1} << 20U;
constexpr std::size_t kFewestSpareBlocks = 4;

// Bytes from one block to the next: whole cache lines, and an odd number of them, so that the
// records that all files fill at the same time do not map to the same sets of the cache.
std::size_t Stride(std::size_t blockBytes) {
    constexpr std::size_t kCacheLine = 64;
    const std::size_t lines = (blockBytes + kCacheLine - 1) / kCacheLine;
    return (lines | 1U) * kCacheLine;
}

}  // namespace

void BlockPool::Reserve(std::size_t files, std::size_t blockBytes) {
    const std::size_t spare =
        queue_ != nullptr ? std::max(kSpareBytes / blockBytes, kFewestSpareBlocks) : 0;
    const std::size_t count = files + spare;
    memory_ = std::make_unique_for_overwrite<std::byte[]>(count * Stride(blockBytes));
    free_.reserve(count);
    if (queue_ != nullptr) queue_->Reserve(count);
    for (std::size_t i = count; i-- > 0;) free_.push_back(&memory_[i * Stride(blockBytes)]);
}

std::byte* BlockPool::Acquire() {
    if (queue_ != nullptr) return queue_->Take(free_);
    std::byte* const block = free_.back();
    free_.pop_back();
    return block;
}

void BlockPool::Submit(WriteTarget& target, std::byte* block, std::size_t size) {
    if (queue_ != nullptr) {
        queue_->Submit(target, block, size, free_);
    } else {
        target.PerformAppend(block, size);
        free_.push_back(block);
    }
}

void BlockPool::WaitFor(const WriteTarget& target) const {
    if (queue_ != nullptr) queue_->WaitForTarget(target);
}

}  // namespace stalwick
