// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/small_stack_thread.h"

#include <stdexcept>

#include <pthread.h>

namespace stalwick::test {

namespace {

void* CallWork(void* work) {
    (*static_cast<std::function<void()>*>(work))();
    return nullptr;
}

}  // namespace

void RunOnSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kSmallStackBytes);
    pthread_t thread{};
    const int result = pthread_create(&thread, &attributes, CallWork, &work);
    pthread_attr_destroy(&attributes);
    if (result != 0) throw std::runtime_error("cannot start a thread with a small stack");
    pthread_join(thread, nullptr);
}

}  // namespace stalwick::test
