// SPDX-License-Identifier: BSD-3-Clause
#include "page/readable_figures.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

TEST(ReadableFigures, DurationsAreHoursMinutesAndTenthsOfSeconds) {
    EXPECT_EQ(ReadableDuration(0), L"0.0 s");
    EXPECT_EQ(ReadableDuration(3.24), L"3.2 s");
    EXPECT_EQ(ReadableDuration(59.94), L"59.9 s");
    EXPECT_EQ(ReadableDuration(59.96), L"1 min 0.0 s");
    EXPECT_EQ(ReadableDuration(600), L"10 min 0.0 s");
    EXPECT_EQ(ReadableDuration(3599.97), L"1 h 0 min 0.0 s");
    EXPECT_EQ(ReadableDuration(7500.5), L"2 h 5 min 0.5 s");
}

TEST(ReadableFigures, DurationsOfDamagedHeadersAreNoTrouble) {
    EXPECT_EQ(ReadableDuration(-1), L"0.0 s");
    EXPECT_EQ(ReadableDuration(std::nan("")), L"0.0 s");
    EXPECT_EQ(ReadableDuration(std::numeric_limits<double>::infinity()), ReadableDuration(1e15));
}

TEST(ReadableFigures, BytesAreThousandsWithOneDecimal) {
    EXPECT_EQ(ReadableBytes(0), L"0 bytes");
    EXPECT_EQ(ReadableBytes(1), L"1 byte");
    EXPECT_EQ(ReadableBytes(999), L"999 bytes");
    EXPECT_EQ(ReadableBytes(1000), L"1.0 kB");
    EXPECT_EQ(ReadableBytes(16384), L"16.3 kB");
    EXPECT_EQ(ReadableBytes(999999), L"999.9 kB");
    EXPECT_EQ(ReadableBytes(1000000), L"1.0 MB");
    EXPECT_EQ(ReadableBytes(2'345'678'901), L"2.3 GB");
    EXPECT_EQ(ReadableBytes(std::numeric_limits<std::uint64_t>::max()), L"18.4 EB");
}

TEST(ReadableFigures, OnlyOneIsSingular) {
    EXPECT_EQ(Counted(0, L"file"), L"0 files");
    EXPECT_EQ(Counted(1, L"file"), L"1 file");
    EXPECT_EQ(Counted(67, L"file"), L"67 files");
}

}  // namespace
}  // namespace stalwick
