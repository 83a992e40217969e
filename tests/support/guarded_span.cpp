// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/guarded_span.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <stdexcept>

#include <sys/mman.h>

namespace stalwick::test {

namespace {

constexpr std::size_t kUsable = std::size_t{64} << 10U;
constexpr std::size_t kGuard = std::size_t{64} << 10U;  // a whole page on every machine

}  // namespace

GuardedSpan::GuardedSpan() {
    void* memory = ::mmap(nullptr, kUsable + kGuard, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    start_ = static_cast<std::uint8_t*>(memory);
    if (::mprotect(start_ + kUsable, kGuard, PROT_NONE) != 0) throw std::bad_alloc();
}

GuardedSpan::~GuardedSpan() {
    ::munmap(start_, kUsable + kGuard);
}

const std::uint8_t* GuardedSpan::Hold(std::string_view bytes) {
    if (bytes.size() > kUsable) throw std::length_error("more bytes than a guarded span holds");
    std::uint8_t* const at = start_ + kUsable - bytes.size();
    std::copy(bytes.begin(), bytes.end(), at);
    return at;
}

}  // namespace stalwick::test
