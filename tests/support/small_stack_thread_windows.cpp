// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/small_stack_thread.h"

#include <stdexcept>

#include <process.h>

#include "platform/windows/windows_api.h"

namespace stalwick::test {

namespace {

unsigned __stdcall CallWork(void* work) {
    (*static_cast<std::function<void()>*>(work))();
    return 0;
}

}  // namespace

void RunOnSmallStack(std::function<void()> work) {
    // Without the flag, the size would be that of the initially committed memory, and the stack
    // would grow.
    const auto thread = ::_beginthreadex(nullptr, kSmallStackBytes, CallWork, &work,
                                         STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == 0) throw std::runtime_error("cannot start a thread with a small stack");
    const HANDLE handle = reinterpret_cast<HANDLE>(thread);
    ::WaitForSingleObject(handle, INFINITE);
    ::CloseHandle(handle);
}

}  // namespace stalwick::test
