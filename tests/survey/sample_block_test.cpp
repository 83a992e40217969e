// SPDX-License-Identifier: BSD-3-Clause
#include "survey/sample_block.h"

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace stalwick::test {
namespace {

// Few different values, so that some repeat and some are at the range's ends.
std::vector<std::vector<std::int16_t>> RandomPackets(std::size_t slots, std::mt19937& random) {
    const std::int16_t values[] = {kRangeStart, kRangeEnd, -4, 0, 12, 8188, -32000};
    const bool hasEnds = random() % 2 == 0;
    std::vector<std::vector<std::int16_t>> packets(kBlockPackets);
    for (auto& packet : packets) {
        for (std::size_t i = 0; i < slots; ++i) {
            packet.push_back(values[hasEnds ? random() % 7 : 2 + random() % 5]);
        }
    }
    return packets;
}

TEST(SampleBlock, SumsOfPacketsAreThoseOfTheirSlots) {
    std::mt19937 random(5);
    for (const std::size_t slots : {10U, 320U, 640U, 1280U, 2550U, 2560U}) {
        for (const std::size_t count : {std::size_t{1}, std::size_t{3}, kBlockPackets}) {
            const auto packets = RandomPackets(slots, random);
            std::vector<const std::int16_t*> starts;
            for (std::size_t n = 0; n < count; ++n) starts.push_back(packets[n].data());
            const auto sums = std::make_unique<SlotSums>();
            sums->Clear();
            AddPackets(starts, slots, *sums);
            AddPackets(starts, slots, *sums);  // adds to the existing sums
            bool anyAtEnd = false;
            for (std::size_t i = 0; i < slots; ++i) {
                std::int64_t sum = 0;
                std::uint64_t squares = 0;
                bool atEnd = false;
                bool alike = false;
                std::vector<std::int16_t> values;
                for (std::size_t n = 0; n < count; ++n) {
                    const std::vector<std::int16_t>& packet = packets[n];
                    values.push_back(packet[i]);
                    sum += packet[i];
                    squares += static_cast<std::uint64_t>(packet[i] / 4 * (packet[i] / 4));
                    atEnd = atEnd || packet[i] == -32768 || packet[i] == 32764;
                    alike = alike || (i + 2 < slots && packet[i] == packet[i + 1] &&
                                      packet[i] == packet[i + 2]);
                }
                ASSERT_EQ(sums->smallest[i], *std::min_element(values.begin(), values.end()));
                ASSERT_EQ(sums->largest[i], *std::max_element(values.begin(), values.end()));
                ASSERT_EQ(sums->sum[i], 2 * sum) << i;
                ASSERT_EQ(sums->sumOfSquares[i], 2 * squares) << i;
                ASSERT_EQ(sums->atRangeEnd[i] != 0, atEnd) << i << " of " << slots;
                ASSERT_EQ(sums->threeAlike[i] != 0, alike) << i << " of " << slots;
                anyAtEnd = anyAtEnd || atEnd;
            }
            EXPECT_EQ(sums->anyAtRangeEnd, anyAtEnd);
        }
    }
}

}  // namespace
}  // namespace stalwick::test
