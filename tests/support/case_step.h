// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>

namespace stalwick::test {

#ifdef __has_feature
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define STALWICK_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define STALWICK_SANITIZED
#endif

// Sanitizers make a test about ten times as slow. Loops over many similar cases test every seventh
// there, and all of them otherwise.
#ifdef STALWICK_SANITIZED
inline constexpr std::size_t kCaseStep = 7;
#else
inline constexpr std::size_t kCaseStep = 1;
#endif

}  // namespace stalwick::test
