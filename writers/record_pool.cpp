#include "writers/record_pool.h"

namespace stalwick {

namespace {

// Bytes from one block to the next: whole cache lines, and an odd number of them, so that the
// records that all files fill at the same time do not meet in the same sets of the cache.
std::size_t BlockStride(std::size_t recordsPerBlock) {
    constexpr std::size_t kCacheLine = 64;
    const std::size_t bytes = recordsPerBlock * sizeof(VtxDataTypes::CRRec);
    const std::size_t lines = (bytes + kCacheLine - 1) / kCacheLine;
    return (lines | 1U) * kCacheLine;
}

}  // namespace

void RecordPool::Reserve(std::size_t blockCount, std::size_t recordsPerBlock,
                         MemoryMapping::Pages pages) {
    const std::size_t stride = BlockStride(recordsPerBlock);
    memory_ = MemoryMapping(blockCount * stride, pages);
    free_.reserve(blockCount);
    for (std::size_t i = blockCount; i-- > 0;) {
        std::byte* const start = memory_.data() + i * stride;
        free_.emplace_back(reinterpret_cast<VtxDataTypes::CRRec*>(start), recordsPerBlock);
    }
}

RecordPool::Block RecordPool::Take() {
    const Block block = free_.back();
    free_.pop_back();
    return block;
}

}  // namespace stalwick
