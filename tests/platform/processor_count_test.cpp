// SPDX-License-Identifier: BSD-3-Clause
#include "platform/processor_count.h"

#include <cstddef>

#include <sched.h>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

TEST(ProcessorCount, CountsOnlyThoseThatTheProcessIsBoundTo) {
    cpu_set_t before;
    ASSERT_EQ(::sched_getaffinity(0, sizeof before, &before), 0);
    EXPECT_EQ(UsableProcessors(), static_cast<unsigned>(CPU_COUNT(&before)));

    std::size_t first = 0;
    while (!CPU_ISSET(first, &before)) ++first;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    ASSERT_EQ(::sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(UsableProcessors(), 1U);
    ASSERT_EQ(::sched_setaffinity(0, sizeof before, &before), 0);
}

}  // namespace
}  // namespace stalwick
