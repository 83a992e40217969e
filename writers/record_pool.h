#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "outputs/vtx_data_types.h"
#include "platform/memory_mapping.h"

namespace stalwick {

// The buffers of a recording's channel files: blocks of records, all cut from one stretch of
// memory. Nothing is cleared: a block holds zeros or what an earlier use left in it.
class RecordPool {
  public:
    using Block = std::span<VtxDataTypes::CRRec>;

    // Reserves the memory of `blockCount` blocks of `recordsPerBlock` records; it is taken only
    // as records are touched. Throws std::bad_alloc. Call it once.
    void Reserve(std::size_t blockCount, std::size_t recordsPerBlock, MemoryMapping::Pages pages);

    bool IsEmpty() const { return free_.empty(); }
    Block Take();

  private:
    MemoryMapping memory_;
    std::vector<Block> free_;  // the next one to take last
};

}  // namespace stalwick
