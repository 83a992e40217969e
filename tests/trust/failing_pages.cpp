// The pages that the program takes from the system, for the linker's --wrap=mmap.

#include <cerrno>

#include <sys/mman.h>

#include "tests/trust/failing_allocations.h"

extern "C" void* __real_mmap(void* address, std::size_t size, int protection, int flags, int file,
                             off_t offset);
extern "C" void* __wrap_mmap(void* address, std::size_t size, int protection, int flags, int file,
                             off_t offset);
extern "C" void* __wrap_mmap(void* address, std::size_t size, int protection, int flags, int file,
                             off_t offset) {
    if (!stalwick::test::FailingAllocations::FailsNext()) {
        return __real_mmap(address, size, protection, flags, file, offset);
    }
    errno = ENOMEM;
    return MAP_FAILED;
}
