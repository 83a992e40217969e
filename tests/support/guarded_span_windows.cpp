// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/guarded_span.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <stdexcept>

#include "platform/windows/windows_api.h"

namespace stalwick::test {

namespace {

constexpr std::size_t kUsable = std::size_t{64} << 10U;
constexpr std::size_t kGuard = std::size_t{64} << 10U;  // a whole page on every machine

}  // namespace

GuardedSpan::GuardedSpan() {
    void* memory =
        ::VirtualAlloc(nullptr, kUsable + kGuard, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (memory == nullptr) throw std::bad_alloc();
    start_ = static_cast<std::uint8_t*>(memory);
    DWORD previous = 0;
    if (::VirtualProtect(start_ + kUsable, kGuard, PAGE_NOACCESS, &previous) == FALSE) {
        throw std::bad_alloc();
    }
}

GuardedSpan::~GuardedSpan() {
    ::VirtualFree(start_, 0, MEM_RELEASE);
}

const std::uint8_t* GuardedSpan::Hold(std::string_view bytes) {
    if (bytes.size() > kUsable) throw std::length_error("more bytes than a guarded span holds");
    std::uint8_t* const at = start_ + kUsable - bytes.size();
    std::copy(bytes.begin(), bytes.end(), at);
    return at;
}

}  // namespace stalwick::test
