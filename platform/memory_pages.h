#pragma once

#include <cstddef>

namespace stalwick {

// The operating system's side of MemoryMapping. Null when the range cannot be had.
std::byte* ReservePages(std::size_t size, bool adviseHuge);
void ReleasePages(std::byte* data, std::size_t size);

}  // namespace stalwick
