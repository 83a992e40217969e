// SPDX-License-Identifier: BSD-3-Clause
#include "ord/bit_reader.h"

#include <array>
#include <cstdint>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

TEST(BitReader, TakesTheHighestBitOfEachByteFirst) {
    const std::array<std::uint8_t, 2> bytes = {0b10110001, 0b01000000};
    BitReader reader(bytes.data(), 16);
    EXPECT_EQ(reader.ReadBits(4), 0b1011U);
    EXPECT_EQ(reader.ReadBits(6), 0b000101U);
    EXPECT_EQ(reader.position(), 10);
}

TEST(BitReader, ReadsTheLastBitForEverAtTheEnd) {
    const std::array<std::uint8_t, 1> bytes = {0b00000001};
    BitReader reader(bytes.data(), 8);
    EXPECT_EQ(reader.ReadBits(8), 1U);
    EXPECT_EQ(reader.position(), 7);
    EXPECT_EQ(reader.ReadBits(5), 0b11111U);
    EXPECT_EQ(reader.position(), 7);
}

TEST(BitReader, WithoutBitsReadsZero) {
    const std::array<std::uint8_t, 1> bytes = {0xFF};
    BitReader reader(bytes.data(), 0);
    EXPECT_EQ(reader.ReadBits(3), 0U);
    EXPECT_EQ(reader.position(), 0);
}

}  // namespace
}  // namespace stalwick
