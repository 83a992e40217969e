// SPDX-License-Identifier: BSD-3-Clause
#include "ord/step_clock.h"

#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

namespace stalwick::test {
namespace {

constexpr std::uint64_t kStart = 5'000'000'000;
constexpr std::uint32_t kFrequency = 30'000;  // ten samples take 333,333.3 ns
constexpr double kNominalNs = 1e9 * 10 / 30'000;

std::optional<std::uint64_t> Steps(const StepClock& clock, std::uint64_t distanceNs) {
    return clock.WholeSteps(kStart, kStart + distanceNs);
}

void LearnOne(StepClock& clock, std::uint64_t stepNs) {
    clock.Learn(kStart, kStart + stepNs);
}

void LearnMany(StepClock& clock, unsigned count, std::uint64_t stepNs) {
    for (unsigned i = 0; i < count; ++i) LearnOne(clock, stepNs);
}

TEST(StepClock, BeginsWithTenSamplesOfTheHeadersFrequency) {
    EXPECT_DOUBLE_EQ(StepClock(kFrequency).StepNs(), kNominalNs);
    EXPECT_DOUBLE_EQ(StepClock(2'000).StepNs(), 5e6);
    EXPECT_EQ(StepClock(0).StepNs(), 0.0);
}

TEST(StepClock, CountsWholeStepsForward) {
    const StepClock clock(kFrequency);
    EXPECT_EQ(Steps(clock, 333'333), 1U);
    EXPECT_EQ(Steps(clock, 333'334), 1U);
    EXPECT_EQ(Steps(clock, 666'667), 2U);
    EXPECT_EQ(Steps(clock, 33'333'333), 100U);
    EXPECT_EQ(Steps(clock, 500'000), std::nullopt);
    EXPECT_EQ(Steps(clock, 0), std::nullopt);
    EXPECT_EQ(Steps(clock, 1), std::nullopt) << "within the rounding of no step at all";
    EXPECT_EQ(Steps(clock, 2), std::nullopt);
    EXPECT_EQ(clock.WholeSteps(kStart, kStart - 333'333), std::nullopt);
    EXPECT_EQ(StepClock(0).WholeSteps(kStart, kStart + 333'333), std::nullopt);
}

TEST(StepClock, CountsAcrossTheLargestTimestamp) {
    const StepClock clock(kFrequency);
    EXPECT_EQ(clock.WholeSteps(UINT64_MAX - 333'332, 333'334), 2U);
    // Half the range is the farthest distance that counts as forward; 5e6 ns are 1.8e12 whole steps
    // of it.
    EXPECT_EQ(StepClock(2'000).WholeSteps(0, 5'000'000ULL * 1'800'000'000'000ULL),
              1'800'000'000'000ULL);
    EXPECT_EQ(StepClock(2'000).WholeSteps(5'000'000ULL * 1'800'000'000'000ULL, 0), std::nullopt);
}

// 2 ns of rounding and 0.02 % of the distance: 68.7 ns of one step, 135.3 of two.
TEST(StepClock, AllowsRoundingAndDriftBeforeItHasLearned) {
    const StepClock clock(kFrequency);
    EXPECT_EQ(Steps(clock, 333'401), 1U);
    EXPECT_EQ(Steps(clock, 333'403), std::nullopt);
    EXPECT_EQ(Steps(clock, 333'265), 1U);
    EXPECT_EQ(Steps(clock, 333'263), std::nullopt);
    EXPECT_EQ(Steps(clock, 666'801), 2U);
    EXPECT_EQ(Steps(clock, 666'803), std::nullopt);
}

// For 5,000 steps, 0.02 % are a whole step; a quarter of a step, 83,333 ns, is the limit.
TEST(StepClock, AllowsAQuarterOfAStepHoweverManyThereAre) {
    const StepClock clock(kFrequency);
    EXPECT_EQ(Steps(clock, 1'666'666'667 + 83'331), 5000U);
    EXPECT_EQ(Steps(clock, 1'666'666'667 + 83'336), std::nullopt);
}

TEST(StepClock, TakesTheMeanOfAHundredSteps) {
    StepClock clock(kFrequency);
    LearnMany(clock, 50, 333'000);
    LearnMany(clock, 49, 334'000);
    EXPECT_DOUBLE_EQ(clock.StepNs(), kNominalNs);
    LearnOne(clock, 334'000);
    EXPECT_DOUBLE_EQ(clock.StepNs(), 333'500.0);
    LearnMany(clock, 100, 333'200);
    EXPECT_DOUBLE_EQ(clock.StepNs(), 333'350.0);
}

// 2 ns and 0.0002 %: 668 ns of a thousand steps.
TEST(StepClock, AllowsLessDriftOnceItHasLearned) {
    StepClock clock(kFrequency);
    LearnMany(clock, 99, 333'000);
    EXPECT_EQ(Steps(clock, 333'333'333 + 5'000), 1000U);
    LearnOne(clock, 333'000);
    EXPECT_EQ(Steps(clock, 333'000'667), 1000U);
    EXPECT_EQ(Steps(clock, 333'000'670), std::nullopt);
    EXPECT_EQ(Steps(clock, 332'999'333), 1000U);
    EXPECT_EQ(Steps(clock, 332'999'330), std::nullopt);
}

// A twentieth of the nominal step is 16,666.7 ns.
TEST(StepClock, LearnsOnlyFromStepsNearTheNominalOne) {
    StepClock clock(kFrequency);
    LearnMany(clock, 99, 349'999);
    LearnMany(clock, 20, 350'001);
    LearnMany(clock, 20, 316'666);
    EXPECT_DOUBLE_EQ(clock.StepNs(), kNominalNs);
    LearnOne(clock, 316'668);
    EXPECT_DOUBLE_EQ(clock.StepNs(), (99 * 349'999 + 316'668) / 100.0);
}

TEST(StepClock, LearnsFromAStepThatIsExactlyATwentiethAway) {
    StepClock clock(2'000);
    LearnMany(clock, 99, 5'000'000);
    LearnOne(clock, 5'250'000);
    EXPECT_DOUBLE_EQ(clock.StepNs(), 5'002'500.0);
}

TEST(StepClock, LearnsNothingFromTimesThatDoNotGoForward) {
    StepClock clock(kFrequency);
    LearnMany(clock, 99, 333'400);
    clock.Learn(kStart, kStart);
    clock.Learn(kStart, kStart - 333'400);
    EXPECT_DOUBLE_EQ(clock.StepNs(), kNominalNs);
    LearnOne(clock, 333'400);
    EXPECT_DOUBLE_EQ(clock.StepNs(), 333'400.0);
}

// Far from the nominal step, but packets that follow each other like this may do it again.
TEST(StepClock, TakesAStepLikeTheLastRegularOneForOne) {
    StepClock clock(kFrequency);
    LearnOne(clock, 349'000);
    EXPECT_EQ(Steps(clock, 348'998), std::nullopt);
    EXPECT_EQ(Steps(clock, 348'999), 1U);
    EXPECT_EQ(Steps(clock, 349'000), 1U);
    EXPECT_EQ(Steps(clock, 349'001), 1U);
    EXPECT_EQ(Steps(clock, 349'002), std::nullopt);
    LearnOne(clock, 345'000);
    EXPECT_EQ(Steps(clock, 349'000), std::nullopt);
    EXPECT_EQ(Steps(clock, 345'000), 1U);
}

TEST(StepClock, NineAlikeStepsShowThatTheHeadersFrequencyIsWrong) {
    for (const std::uint32_t frequency : {0U, kFrequency}) {
        StepClock clock(frequency);
        LearnMany(clock, 8, 500'000);
        EXPECT_NE(clock.StepNs(), 500'000.0);
        LearnOne(clock, 500'000);
        EXPECT_EQ(clock.StepNs(), 500'000.0);
        EXPECT_EQ(Steps(clock, 1'000'000), 2U);
        // From here on this is the nominal step.
        LearnMany(clock, 100, 500'010);
        EXPECT_EQ(clock.StepNs(), 500'010.0);
    }
}

TEST(StepClock, AlikeStepsDifferByTheRoundingOfTimestamps) {
    StepClock rounded(kFrequency);
    StepClock unequal(kFrequency);
    for (unsigned i = 0; i < 9; ++i) {
        LearnOne(rounded, 500'000 + i % 2 * 2);
        LearnOne(unequal, 500'000 + i % 2 * 3);
    }
    EXPECT_EQ(rounded.StepNs(), 500'000.0);
    LearnMany(unequal, 7, 500'000);  // with the one before these are eight
    EXPECT_DOUBLE_EQ(unequal.StepNs(), kNominalNs);
    LearnOne(unequal, 500'000);
    EXPECT_EQ(unequal.StepNs(), 500'000.0);
}

TEST(StepClock, OneRegularStepShowsThatTheHeadersFrequencyIsRight) {
    StepClock clock(kFrequency);
    LearnOne(clock, 333'333);
    LearnMany(clock, 20, 500'000);
    EXPECT_DOUBLE_EQ(clock.StepNs(), kNominalNs);
}

// Each new one is learned only from its own steps.
TEST(StepClock, ForgetsWhatItLearnedOfAnotherFrequency) {
    StepClock clock(0);
    LearnMany(clock, 9, 500'000);
    LearnMany(clock, 9, 800'000);
    EXPECT_EQ(clock.StepNs(), 800'000.0);
    LearnMany(clock, 99, 800'010);
    EXPECT_EQ(clock.StepNs(), 800'000.0);
    LearnOne(clock, 800'010);
    EXPECT_EQ(clock.StepNs(), 800'010.0);
}

}  // namespace
}  // namespace stalwick::test
