// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace stalwick::test {

/**
 * While it lives this process gets no further thread. POSIX systems only; a program that uses it
 * compiles no_threads.cpp itself, which stands before the system's pthread_create.
 */
class NoThreads {
  public:
    NoThreads();
    ~NoThreads();
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

    /** How often a thread was asked for since then. */
    unsigned RefusedCount() const;
};

}  // namespace stalwick::test
