// The pages that the program takes from the system, for the linker's --wrap=__imp_VirtualAlloc: a
// function of the system's is called by a pointer of this name.

#include <windows.h>

#include "tests/trust/failing_allocations.h"

using VirtualAllocCall = decltype(&VirtualAlloc);
extern "C" VirtualAllocCall __real___imp_VirtualAlloc;
extern "C" VirtualAllocCall __wrap___imp_VirtualAlloc;

namespace {

void* WINAPI Reserve(void* address, SIZE_T size, DWORD type, DWORD protection) {
    if (!stalwick::test::FailingAllocations::FailsNext()) {
        return __real___imp_VirtualAlloc(address, size, type, protection);
    }
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

}  // namespace

VirtualAllocCall __wrap___imp_VirtualAlloc = &Reserve;
