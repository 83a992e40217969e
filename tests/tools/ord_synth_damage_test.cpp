// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ord_synth/damage.h"
#include "tools/ord_synth/synth_truth.h"

namespace stalwick::test {
namespace {

using Kind = SynthDamage::Kind;

// The bytes 0, 1, 2 ... 99 after damage, passed on in pieces of `step`.
std::vector<std::uint8_t> Damaged(std::vector<SynthDamage> damage, std::size_t step,
                                  bool* met = nullptr) {
    std::vector<std::uint8_t> bytes(100);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
    std::vector<std::uint8_t> out;
    const ByteSink sink = [&out](std::span<const std::uint8_t> more) {
        out.insert(out.end(), more.begin(), more.end());
        return true;
    };
    EXPECT_EQ(OrderDamage(damage), "");
    DamagingSink damaging(sink, damage, 1);
    for (std::size_t i = 0; i < bytes.size(); i += step) {
        damaging.Take(std::span(bytes).subspan(i, std::min(step, bytes.size() - i)));
    }
    if (met != nullptr) *met = damaging.MetAll();
    return out;
}

TEST(OrdSynthDamage, EachKindTouchesItsPlaceAloneWhateverThePieces) {
    const std::vector<SynthDamage> damage = {{Kind::kCut, 90, 0},
                                             {Kind::kDropBytes, 20, 15},
                                             {Kind::kFlip, 10, 7},
                                             {Kind::kInsert, 50, 3}};
    for (const std::size_t step : {std::size_t{1}, std::size_t{7}, std::size_t{100}}) {
        const std::vector<std::uint8_t> out = Damaged(damage, step);
        ASSERT_EQ(out.size(), 90U - 15 + 3);
        EXPECT_EQ(out[9], 9);
        EXPECT_EQ(out[10], 10 ^ 0x80);
        EXPECT_EQ(out[19], 19);
        EXPECT_EQ(out[20], 35);
        EXPECT_EQ(out[34], 49);
        EXPECT_EQ(out[38], 50);
        EXPECT_EQ(out.back(), 89);
    }
}

TEST(OrdSynthDamage, PlaceAfterTheEndIsNotMet) {
    bool met = true;
    EXPECT_EQ(Damaged({{Kind::kFlip, 100, 0}}, 10, &met).size(), 100U);
    EXPECT_FALSE(met);
    Damaged({{Kind::kFlip, 99, 0}}, 10, &met);
    EXPECT_TRUE(met);
}

TEST(OrdSynthDamage, PlacesInsideOfEachOtherAreRefused) {
    std::vector<SynthDamage> damage = {{Kind::kFlip, 29, 0}, {Kind::kDropBytes, 20, 10}};
    EXPECT_NE(OrderDamage(damage), "");
    damage = {{Kind::kFlip, 30, 0}, {Kind::kDropBytes, 20, 10}};
    EXPECT_EQ(OrderDamage(damage), "");
    damage = {{Kind::kFlip, 30, 0}, {Kind::kCut, 20, 0}};
    EXPECT_NE(OrderDamage(damage), "");
}

TEST(OrdSynthDamage, DriftAndRepeatedStampsChangeNothingButTimestamps) {
    SynthOptions options;
    options.channelCount = 32;
    options.packetCount = 20;
    std::vector<std::uint8_t> bytes[2];
    for (auto& made : bytes) {
        const ByteSink sink = [&made](std::span<const std::uint8_t> more) {
            made.insert(made.end(), more.begin(), more.end());
            return true;
        };
        EXPECT_TRUE(MakeRecording(options, sink).complete);
        options.driftPpm = 50;
        options.repeatedStamps = {3};
    }
    EXPECT_EQ(bytes[0].size(), bytes[1].size());
    EXPECT_NE(bytes[0], bytes[1]);
    EXPECT_NE(DescribeTruth(options, {}).find("\"drift_ppm\": 50"), std::string::npos);
}

}  // namespace
}  // namespace stalwick::test
