// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <functional>

namespace stalwick::test {

/** The smallest stack that a worker thread may have. */
inline constexpr std::size_t kSmallStackBytes = std::size_t{512} * 1024;

/** Runs `work` on a thread with a stack of that size and waits for it. */
void RunOnSmallStack(std::function<void()> work);

}  // namespace stalwick::test
