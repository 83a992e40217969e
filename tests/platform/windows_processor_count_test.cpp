// SPDX-License-Identifier: BSD-3-Clause
#include <bit>

#include <gtest/gtest.h>

#include "platform/processor_count.h"
#include "platform/windows/windows_api.h"

namespace stalwick {
namespace {

TEST(ProcessorCount, CountsOnlyThoseThatTheProcessIsBoundTo) {
    DWORD_PTR before = 0;
    DWORD_PTR system = 0;
    ASSERT_NE(::GetProcessAffinityMask(::GetCurrentProcess(), &before, &system), FALSE);
    EXPECT_EQ(UsableProcessors(), static_cast<unsigned>(std::popcount(before)));

    const DWORD_PTR lowest = before & (~before + 1);
    ASSERT_NE(::SetProcessAffinityMask(::GetCurrentProcess(), lowest), FALSE);
    EXPECT_EQ(UsableProcessors(), 1U);
    ASSERT_NE(::SetProcessAffinityMask(::GetCurrentProcess(), before), FALSE);
}

}  // namespace
}  // namespace stalwick
