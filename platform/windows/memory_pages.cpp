#include "platform/memory_pages.h"

#include "platform/windows/windows_api.h"

namespace stalwick {

// Large pages need a privilege that ordinary users do not have, so the advice is not taken.
std::byte* ReservePages(std::size_t size, bool) {
    return static_cast<std::byte*>(
        ::VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

void ReleasePages(std::byte* data, std::size_t) {
    ::VirtualFree(data, 0, MEM_RELEASE);
}

}  // namespace stalwick
