// SPDX-License-Identifier: BSD-3-Clause
#include "tests/trust/failing_allocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace stalwick::test {

namespace {

constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

std::atomic<std::uint64_t> failingNumber{kNever};
std::atomic<bool> failsForGood{false};
std::atomic<std::uint64_t> count{0};
std::atomic<bool> met{false};

}  // namespace

FailingAllocations::FailingAllocations(std::uint64_t nth, bool lasting) {
    count = 0;
    met = false;
    failsForGood = lasting;
    failingNumber = nth;
}

FailingAllocations::~FailingAllocations() {
    Stop();
}

bool FailingAllocations::Met() {
    return met;
}

void FailingAllocations::Stop() {
    failingNumber = kNever;
}

bool FailingAllocations::FailsNext() {
    const std::uint64_t nth = failingNumber.load(std::memory_order_relaxed);
    if (nth == kNever) return false;
    const std::uint64_t number = count.fetch_add(1, std::memory_order_relaxed);
    if (number != nth && (number < nth || !failsForGood)) return false;
    met.store(true, std::memory_order_relaxed);
    return true;
}

namespace {

void* Allocate(std::size_t size) {
    void* memory = FailingAllocations::FailsNext() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

}  // namespace stalwick::test

void* operator new(std::size_t size) {
    return stalwick::test::Allocate(size);
}
void* operator new[](std::size_t size) {
    return stalwick::test::Allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return stalwick::test::FailingAllocations::FailsNext() ? nullptr
                                                           : std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
