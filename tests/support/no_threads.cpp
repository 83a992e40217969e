// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/no_threads.h"

#include <atomic>
#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

namespace {

std::atomic<bool> refusing{false};
std::atomic<unsigned> refusedCount{0};

}  // namespace

// Replaces the system's function, also for the libraries.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
    if (refusing) {
        ++refusedCount;
        return EAGAIN;
    }
    static const auto next =
        reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, start, argument);
}

namespace stalwick::test {

NoThreads::NoThreads() {
    refusedCount = 0;
    refusing = true;
}

NoThreads::~NoThreads() {
    refusing = false;
}

unsigned NoThreads::RefusedCount() const {
    return refusedCount;
}

}  // namespace stalwick::test
