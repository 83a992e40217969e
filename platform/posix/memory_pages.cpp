#include "platform/memory_pages.h"

#include <sys/mman.h>

namespace stalwick {

std::byte* ReservePages(std::size_t size, bool adviseHuge) {
    void* data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (data == MAP_FAILED) return nullptr;
#ifdef MADV_HUGEPAGE
    ::madvise(data, size, adviseHuge ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
#else
    (void)adviseHuge;
#endif
    return static_cast<std::byte*>(data);
}

void ReleasePages(std::byte* data, std::size_t size) {
    ::munmap(data, size);
}

}  // namespace stalwick
