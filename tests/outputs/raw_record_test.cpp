// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/raw_record.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "tests/outputs/reference_outputs.h"

namespace stalwick::test {
namespace {

std::vector<std::uint32_t> FirstRecord(std::uint32_t channels) {
    const std::string bytes = ReferenceRawBytes(channels, 1);
    std::vector<std::uint32_t> words(RawRecordWords(channels));
    std::memcpy(words.data(), bytes.data() + 16384, words.size() * 4);
    return words;
}

TEST(RawRecord, HasEighteenWordsBesidesItsSamples) {
    EXPECT_EQ(RawRecordWords(0), 18U);
    EXPECT_EQ(RawRecordWords(256), 274U);
}

TEST(RawRecord, ChecksumFindsEveryChangedBit) {
    std::vector<std::uint32_t> words = FirstRecord(32);
    EXPECT_TRUE(RawRecordView(words).ChecksumIsRight());
    for (std::uint32_t& word : words) {
        for (unsigned bit = 0; bit < 32; ++bit) {
            word ^= 1U << bit;
            EXPECT_FALSE(RawRecordView(words).ChecksumIsRight());
            word ^= 1U << bit;
        }
    }
}

TEST(RawRecord, TimestampTakesBothItsWords) {
    std::vector<std::uint32_t> words = FirstRecord(1);
    words[kRawTimestampHighWord] = 0x01020304;
    words[kRawTimestampLowWord] = 0xF5F6F7F8;
    EXPECT_EQ(RawRecordView(words).Timestamp(), 0x01020304F5F6F7F8U);
}

TEST(RawRecord, SamplesAreSigned) {
    std::vector<std::uint32_t> words = FirstRecord(2);
    words[kRawFirstSampleWord + 1] = 0xFFFFFFFF;
    EXPECT_EQ(RawRecordView(words).Sample(1), -1);
}

}  // namespace
}  // namespace stalwick::test
