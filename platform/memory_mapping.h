#pragma once

#include <cstddef>

namespace stalwick {

// Zeroed memory straight from the operating system: reserved at once, taken only page by page as
// it is first touched.
class MemoryMapping {
  public:
    enum class Pages {
        kNormal,  // takes no more than is touched
        kHuge     // advises huge pages: cheaper to fill, rounds up to 2 MiB
    };

    MemoryMapping() = default;
    // Throws std::bad_alloc when the address range cannot be had.
    explicit MemoryMapping(std::size_t size, Pages pages = Pages::kNormal);
    ~MemoryMapping();
    MemoryMapping(MemoryMapping&& other) noexcept;
    MemoryMapping& operator=(MemoryMapping&& other) noexcept;

    std::byte* data() const { return data_; }
    std::size_t size() const { return size_; }

  private:
    std::byte* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace stalwick
