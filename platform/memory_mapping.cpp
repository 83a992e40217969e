#include "platform/memory_mapping.h"

#include <new>
#include <utility>

#include "platform/memory_pages.h"

namespace stalwick {

MemoryMapping::MemoryMapping(std::size_t size, Pages pages) {
    if (size == 0) return;
    data_ = ReservePages(size, pages == Pages::kHuge);
    if (data_ == nullptr) throw std::bad_alloc();
    size_ = size;
}

MemoryMapping::~MemoryMapping() {
    if (data_ != nullptr) ReleasePages(data_, size_);
}

MemoryMapping::MemoryMapping(MemoryMapping&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

MemoryMapping& MemoryMapping::operator=(MemoryMapping&& other) noexcept {
    if (this != &other) {
        if (data_ != nullptr) ReleasePages(data_, size_);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

}  // namespace stalwick
