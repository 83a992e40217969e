// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace stalwick::test {

/**
 * During its lifetime this process cannot start another thread. POSIX systems only; a program that
 * uses it compiles no_threads.cpp itself, which replaces the system's pthread_create.
 */
class NoThreads {
  public:
    NoThreads();
    ~NoThreads();
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

    /** How often a thread was requested since then. */
    unsigned RefusedCount() const;
};

}  // namespace stalwick::test
