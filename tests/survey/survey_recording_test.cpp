// SPDX-License-Identifier: BSD-3-Clause
#include "survey/survey_recording.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/memory_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"

namespace stalwick::test {
namespace {

constexpr double kMicrovoltsPerStep = 0.12;  // of the builder's header

RecordingSurvey Survey(const std::string& bytes) {
    MemoryFileCalls disk;
    disk.files[L"rec.ord"] = bytes;
    FileCalls* const before = SetFileCalls(&disk);
    RecordingSurvey survey = SurveyRecording(L"rec.ord");
    SetFileCalls(before);
    return survey;
}

struct TruthGap {
    std::size_t firstLostPacket;
    std::size_t lostPackets;
};

// A recording whose clock runs `driftPpm` fast, without the lost packets.
struct Shape {
    std::uint8_t code = 0;
    double driftPpm = 0.0;  // of the sampling rate
    std::uint64_t firstTimestampNs = 1'000'000;
    std::vector<TruthGap> gaps;
    std::size_t packets = 600;  // including lost ones
};

std::uint64_t StampOf(const Shape& shape, std::size_t packet) {
    const double stepNs = 1e10 / 30000.0 / (1.0 + shape.driftPpm * 1e-6);
    return shape.firstTimestampNs +
           static_cast<std::uint64_t>(stepNs * static_cast<double>(packet));
}

std::vector<PacketPlan> MakePlans(const Shape& shape) {
    std::mt19937_64 random(shape.code);
    RandomPacketShape packet;
    packet.channelCountCode = shape.code;
    std::vector<PacketPlan> plans;
    for (std::size_t i = 0; i < shape.packets; ++i) {
        const bool lost = std::any_of(shape.gaps.begin(), shape.gaps.end(), [i](const auto& gap) {
            return i >= gap.firstLostPacket && i < gap.firstLostPacket + gap.lostPackets;
        });
        packet.hardwareTimestamp = StampOf(shape, i);
        if (!lost) plans.push_back(MakeRandomPacket(random, packet));
    }
    return plans;
}

std::string Build(const std::vector<PacketPlan>& plans, std::uint8_t code) {
    return BuildOrdFile(Version2Header(ChannelCountOfCode(code)), plans);
}

TEST(SurveyRecording, EveryGapIsFoundToTheSampleAndNoneInvented) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        for (const double drift : {-50.0, 0.0, 50.0}) {
            for (const std::uint64_t first :
                 {std::uint64_t{5}, (std::uint64_t{1} << 63U) - 90'000'000,
                  UINT64_MAX - 90'000'000}) {
                const Shape shape{code, drift, first, {{100, 1}, {150, 2}, {300, 200}}, 600};
                const RecordingSurvey survey = Survey(Build(MakePlans(shape), code));
                ASSERT_EQ(survey.gaps.size(), shape.gaps.size()) << drift;
                for (std::size_t i = 0; i < shape.gaps.size(); ++i) {
                    EXPECT_EQ(survey.gaps[i].missingSamples, shape.gaps[i].lostPackets * 10);
                    const double at = static_cast<double>(shape.gaps[i].firstLostPacket) / 3000.0;
                    EXPECT_NEAR(survey.gaps[i].atSeconds, at, 1e-4);
                }
                EXPECT_EQ(survey.missingSamples, 2030U);
                EXPECT_EQ(survey.packets, 397U);
                EXPECT_NEAR(survey.durationSeconds, 0.2, 2e-5);
                EXPECT_NEAR(survey.driftPpm.value_or(1e9), drift, 0.2);
                EXPECT_TRUE(survey.damage.empty());
                EXPECT_EQ(survey.repeatedTimestamps, 0U);
                EXPECT_EQ(survey.shortSteps, 0U);
                EXPECT_TRUE(survey.backwardTimestamps.empty());
            }
        }
    }
}

TEST(SurveyRecording, GapOfAnHourIsFoundToTheSampleUnderDrift) {
    Shape shape{0, 50.0, 7, {{100, 10'800'000}}, 200};
    std::vector<PacketPlan> plans = MakePlans(shape);
    shape.gaps.clear();
    std::mt19937_64 random(1);
    RandomPacketShape packet;
    for (std::size_t i = 0; i < 100; ++i) {
        packet.hardwareTimestamp = StampOf(shape, 10'800'100 + i);
        plans.push_back(MakeRandomPacket(random, packet));
    }
    const RecordingSurvey survey = Survey(Build(plans, 0));
    ASSERT_EQ(survey.gaps.size(), 1U);
    EXPECT_EQ(survey.gaps.front().missingSamples, 108'000'000U);
}

TEST(SurveyRecording, GapsThatAreNoWholePacketsAreFoundToTheSample) {
    std::vector<PacketPlan> plans = MakePlans({});
    for (std::size_t i = 200; i < plans.size(); ++i) *plans[i].hardwareTimestamp += 3 * 33'333;
    const RecordingSurvey survey = Survey(Build(plans, 0));
    ASSERT_EQ(survey.gaps.size(), 1U);
    EXPECT_EQ(survey.gaps.front().missingSamples, 3U);
}

TEST(SurveyRecording, RepeatedBackwardAndEarlyTimestampsAreNoGaps) {
    std::vector<PacketPlan> plans = MakePlans({});
    plans[100].hardwareTimestamp = plans[99].hardwareTimestamp;
    for (std::size_t i = 200; i < plans.size(); ++i) *plans[i].hardwareTimestamp -= 10'000'000;
    for (std::size_t i = 300; i < plans.size(); ++i) *plans[i].hardwareTimestamp -= 100'000;
    const RecordingSurvey survey = Survey(Build(plans, 0));
    EXPECT_EQ(survey.repeatedTimestamps, 1U);
    ASSERT_EQ(survey.backwardTimestamps.size(), 1U);
    EXPECT_NEAR(static_cast<double>(survey.backwardTimestamps.front().nanoseconds), 9'666'667, 2);
    EXPECT_EQ(survey.shortSteps, 1U);
    // According to the timestamps, the packet after the repeated one is one packet late.
    ASSERT_EQ(survey.gaps.size(), 1U);
    EXPECT_EQ(survey.gaps.front().missingSamples, 10U);
    EXPECT_TRUE(survey.damage.empty());
}

TEST(SurveyRecording, VersionOneHasNoOwnTimes) {
    RandomRecordingShape shape;
    shape.timestamps = false;
    shape.packetCount = 300;
    const RecordingSurvey survey =
        Survey(BuildOrdFile(Version1Header(32), MakeRandomPackets(1, shape)));
    EXPECT_FALSE(survey.hasTimestamps);
    EXPECT_FALSE(survey.measuredRate.has_value());
    EXPECT_TRUE(survey.gaps.empty());
    EXPECT_NEAR(survey.durationSeconds, 0.1, 1e-9);
}

// The statistics of a channel, directly from their definitions.
struct PlainStatistics {
    std::uint64_t count = 0;
    double smallest = 1e9;
    double largest = -1e9;
    double sum = 0.0;
    double squares = 0.0;
    std::uint64_t atEnds = 0;
    std::uint64_t longest = 0;
};

PlainStatistics Plain(const std::vector<std::int16_t>& samples) {
    PlainStatistics plain;
    std::uint64_t run = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double value = samples[i];
        ++plain.count;
        plain.smallest = std::min(plain.smallest, value);
        plain.largest = std::max(plain.largest, value);
        plain.sum += value;
        plain.squares += value * value;
        if (samples[i] == -32768 || samples[i] == 32764) ++plain.atEnds;
        run = i != 0 && samples[i] == samples[i - 1] ? run + 1 : 1;
        plain.longest = std::max(plain.longest, run);
    }
    return plain;
}

void ExpectStatistics(const ChannelStatistics& found, const PlainStatistics& plain) {
    const auto count = static_cast<double>(plain.count);
    EXPECT_EQ(found.samples, plain.count);
    EXPECT_NEAR(found.minMicrovolts, plain.smallest * kMicrovoltsPerStep, 1e-9);
    EXPECT_NEAR(found.maxMicrovolts, plain.largest * kMicrovoltsPerStep, 1e-9);
    EXPECT_NEAR(found.meanMicrovolts, plain.sum / count * kMicrovoltsPerStep, 1e-9);
    EXPECT_NEAR(found.rmsMicrovolts, std::sqrt(plain.squares / count) * kMicrovoltsPerStep, 1e-6);
    EXPECT_EQ(found.atRangeEnds, plain.atEnds);
    EXPECT_EQ(found.longestFlatRun, plain.longest) << found.channel;
}

TEST(SurveyRecording, ChannelStatisticsAreThoseOfTheSamples) {
    // From a signal that hardly moves to one that jumps over the whole range.
    for (const unsigned step : {0U, 1U, 3U, 40U, 16000U}) {
        for (std::uint8_t code = 0; code < 4; ++code) {
            const std::size_t channels = ChannelCountOfCode(code);
            RandomRecordingShape shape;
            shape.packet.channelCountCode = code;
            shape.packet.largestStep = step;
            shape.packet.hardwareTimestamp = 0;
            shape.packetCount = 150;
            const std::vector<PacketPlan> plans = MakeRandomPackets(step + code, shape);
            const RecordingSurvey survey = Survey(Build(plans, code));
            ASSERT_EQ(survey.channelStatistics.size(), channels);
            const auto packets =
                ReferenceProcessDataBuffer(EncodePackets(plans), ReferenceDecodeOptions{0, 20}, 10)
                    .packets;
            for (std::size_t channel = 0; channel < channels; ++channel) {
                std::vector<std::int16_t> samples;
                for (const ReferencePacket& packet : packets) {
                    for (std::size_t i = 0; i < 10; ++i) {
                        samples.push_back(
                            static_cast<std::int16_t>((*packet.adSamples)[channel * 10 + i]));
                    }
                }
                ExpectStatistics(survey.channelStatistics[channel], Plain(samples));
            }
        }
    }
}

TEST(SurveyRecording, MaskedChannelsHaveNoStatistics) {
    std::mt19937_64 random(2);
    std::vector<PacketPlan> plans;
    std::vector<std::uint64_t> recorded(32, 0);
    for (std::size_t i = 0; i < 90; ++i) {
        RandomPacketShape shape;
        shape.hardwareTimestamp = 5 + i * 333'333;
        shape.channelMask = i % 30 > 3;
        plans.push_back(MakeRandomPacket(random, shape));
        for (unsigned channel = 0; channel < 32; ++channel) {
            if (IsChannelEnabled(plans.back().channelMask, channel)) recorded[channel] += 10;
        }
    }
    const RecordingSurvey survey = Survey(Build(plans, 0));
    ASSERT_EQ(survey.channelStatistics.size(), 32U);
    for (unsigned channel = 0; channel < 32; ++channel) {
        EXPECT_EQ(survey.channelStatistics[channel].samples, recorded[channel]);
    }
    EXPECT_EQ(survey.channelsMasked, 0U);
    EXPECT_EQ(survey.blocks.channelMask, 90U - 12U);
}

TEST(SurveyRecording, BlocksAndTtlChangesAreCounted) {
    std::mt19937_64 random(3);
    std::vector<PacketPlan> plans;
    BlockCounts expected;
    std::array<std::uint64_t, 8> changes{};
    int last = -1;
    for (unsigned i = 0; i < 200; ++i) {
        const RandomPacketShape shape = MakeRandomShape(random, 0, 5 + i * 333'333);
        plans.push_back(MakeRandomPacket(random, shape));
        expected.baseImu += shape.baseImu ? 1U : 0U;
        expected.afeImu += shape.afeImu ? 1U : 0U;
        expected.ultrasonic += shape.ultrasonic ? 1U : 0U;
        expected.adSamples += shape.adBlock ? 1U : 0U;
        for (const std::uint8_t state : plans.back().stateBytes) {
            const int value = (state >> 4) | ((state & 15) << 4);  // high nibble: lines 0 to 3
            for (unsigned line = 0; line < 8; ++line) {
                if (last >= 0 && (((value ^ last) >> line) & 1) != 0) ++changes[line];
            }
            last = value;
        }
    }
    const RecordingSurvey survey = Survey(Build(plans, 0));
    EXPECT_EQ(survey.packets, 200U);
    EXPECT_EQ(survey.blocks.adSamples, expected.adSamples);
    EXPECT_EQ(survey.blocks.baseImu, expected.baseImu);
    EXPECT_EQ(survey.blocks.afeImu, expected.afeImu);
    EXPECT_EQ(survey.blocks.ultrasonic, expected.ultrasonic);
    EXPECT_EQ(survey.ttlChanges, changes);
}

TEST(SurveyRecording, DamageIsNoGapAndSaysWhatItTook) {
    const Shape shape{1, 20.0, 5, {{400, 30}}, 600};
    const std::vector<PacketPlan> plans = MakePlans(shape);
    std::string bytes = Build(plans, 1);
    const std::size_t at =
        kOrdHeaderBytes + EncodePackets({plans.begin(), plans.begin() + 200}).size();
    bytes.erase(at + 100, 3000);
    const RecordingSurvey survey = Survey(bytes);
    ASSERT_EQ(survey.damage.size(), 1U);
    const DamagedStretch& damage = survey.damage.front();
    EXPECT_LE(damage.position, at);
    EXPECT_GE(damage.position + damage.bytes, at + 100);
    EXPECT_EQ(damage.missingSamples.value_or(0), (570 - survey.packets) * 10);
    EXPECT_LE(damage.missingSamples.value_or(0), 100U);
    ASSERT_EQ(survey.gaps.size(), 1U);
    EXPECT_EQ(survey.gaps.front().missingSamples, 300U);
    EXPECT_TRUE(survey.LostData());
}

TEST(SurveyRecording, WhatIsNoRecordingHasAnError) {
    EXPECT_NE(Survey("no header").error, L"");
    EXPECT_NE(SurveyRecording(L"no/such/file").error, L"");
    EXPECT_EQ(Survey(Version2Header(32).Block()).error, L"");
}

}  // namespace
}  // namespace stalwick::test
