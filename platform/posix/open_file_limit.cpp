// SPDX-License-Identifier: BSD-3-Clause
#include "platform/open_file_limit.h"

#include <algorithm>
#include <limits>
#include <mutex>

#include <sys/resource.h>

namespace stalwick {

std::uint64_t RaiseOpenFileLimit(std::uint64_t count) {
    // Between the two calls, another thread could raise the limit further, and this one lower it
    // again.
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return std::numeric_limits<std::uint64_t>::max();
    if (limit.rlim_cur >= count) return limit.rlim_cur;
    const rlim_t before = limit.rlim_cur;
    limit.rlim_cur = std::min<rlim_t>(count, limit.rlim_max);
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : before;
}

}  // namespace stalwick
