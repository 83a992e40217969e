#pragma once

#include <cstddef>

#include "platform/memory_mapping.h"

namespace stalwick {

// A fixed number of records, all zero at first. Memory is taken only as records are touched.
template <typename Record>
class RecordBuffer {
  public:
    RecordBuffer() = default;
    explicit RecordBuffer(std::size_t count) : mapping_(count * sizeof(Record)), count_(count) {}

    Record* data() const { return reinterpret_cast<Record*>(mapping_.data()); }
    std::size_t size() const { return count_; }
    Record& operator[](std::size_t i) const { return data()[i]; }

  private:
    MemoryMapping mapping_;
    std::size_t count_ = 0;
};

}  // namespace stalwick
