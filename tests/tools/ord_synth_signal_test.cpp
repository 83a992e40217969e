// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/tools/recording_in_memory.h"
#include "tools/ord_synth/sensor_source.h"
#include "tools/ord_synth/signal_source.h"

namespace stalwick {
namespace {

using test::MadeRecording;
using test::MakeInMemory;

// signal[channel][i], one second of it.
std::vector<std::vector<int>> OneSecond(const SynthOptions& options) {
    SignalSource source(options);
    std::vector<std::vector<int>> signal(options.channelCount);
    std::vector<std::int16_t> samples(options.channelCount * 10U);
    for (int packet = 0; packet < 3000; ++packet) {
        source.NextPacket(samples);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            signal[i % options.channelCount].push_back(samples[i]);
        }
    }
    return signal;
}

std::int64_t CovarianceOfSteps(const std::vector<int>& a, const std::vector<int>& b) {
    std::int64_t sum = 0;
    for (std::size_t i = 1; i < a.size(); ++i) sum += (a[i] - a[i - 1]) * (b[i] - b[i - 1]);
    return sum;
}

// The delta widths of every packet, read from the bytes: in half bytes after the head, the
// timestamp and the state byte.
std::vector<std::vector<int>> DeltaWidths(const std::string& stream, std::size_t channelCount) {
    std::vector<std::vector<int>> widths;
    for (std::size_t at = 0; at < stream.size();) {
        std::vector<int> packet;
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            const auto byte = static_cast<unsigned char>(stream[at + 19 + channel / 2]);
            packet.push_back(channel % 2 == 0 ? byte >> 4 : byte & 15);
        }
        widths.push_back(packet);
        at += test::ReferenceParsePacket(stream.substr(at, 6000),
                                         test::ReferenceDecodeOptions{0, 20}, 10U)
                  .consumedBytes;
    }
    return widths;
}

TEST(OrdSynthSignalTest, DefaultNoiseTakesAboutSevenAndAQuarterBitsASample) {
    const MadeRecording made = MakeInMemory(SynthOptions{});
    const double bits = static_cast<double>(made.Stream().size()) * 8 / (64.0 * 30000);
    EXPECT_GT(bits, 7.0);
    EXPECT_LT(bits, 7.6);
}

TEST(OrdSynthSignalTest, DeltaWidthsVaryBetweenChannelsAndPackets) {
    SynthOptions options;
    options.packetCount = 300;
    const auto widths = DeltaWidths(MakeInMemory(options).Stream(), 64);
    std::set<int> ofChannel;
    for (const auto& packet : widths) {
        EXPECT_GE(std::set<int>(packet.begin(), packet.end()).size(), 3U);
        ofChannel.insert(packet[0]);
    }
    EXPECT_GE(ofChannel.size(), 3U);
}

TEST(OrdSynthSignalTest, NoDeltaWidthIsZero) {
    SynthOptions options;
    options.packetCount = 300;
    options.noiseSteps = 0;
    int smallest = 15;
    for (const auto& packet : DeltaWidths(MakeInMemory(options).Stream(), 64)) {
        smallest = std::min(smallest, *std::min_element(packet.begin(), packet.end()));
    }
    EXPECT_EQ(smallest, 1);  // many channels do not change at all within a packet
}

TEST(OrdSynthSignalTest, SummaryCountsTheDeltaWidths) {
    SynthOptions options;
    options.packetCount = 300;
    const MadeRecording made = MakeInMemory(options);
    std::array<std::uint64_t, 16> counts{};
    for (const auto& packet : DeltaWidths(made.Stream(), 64)) {
        for (const int width : packet) ++counts[static_cast<std::size_t>(width)];
    }
    EXPECT_EQ(made.summary.widthCounts, counts);
}

TEST(OrdSynthSignalTest, NeighboursAreALittleCorrelated) {
    const auto signal = OneSecond(SynthOptions{});
    for (std::size_t channel = 0; channel + 1 < signal.size(); ++channel) {
        const auto own = CovarianceOfSteps(signal[channel], signal[channel]);
        const auto other = CovarianceOfSteps(signal[channel + 1], signal[channel + 1]);
        const auto shared = CovarianceOfSteps(signal[channel], signal[channel + 1]);
        EXPECT_GT(shared * 20, std::min(own, other));
        EXPECT_LT(shared, std::max(own, other) * 7 / 10);
    }
}

TEST(OrdSynthSignalTest, SlowWavesAndSpikesRemainWithoutNoise) {
    SynthOptions options;
    options.noiseSteps = 0;
    const auto signal = OneSecond(options);
    const auto [low, high] = std::minmax_element(signal[0].begin(), signal[0].end());
    EXPECT_GT(*high - *low, 400);
    int steepest = 0;
    for (const auto& channel : signal) {
        for (std::size_t i = 1; i < channel.size(); ++i) {
            steepest = std::max(steepest, std::abs(channel[i] - channel[i - 1]));
        }
    }
    EXPECT_GT(steepest, 60);   // a spike; the waves alone stay far below
    EXPECT_LT(steepest, 400);  // and no jump between packets
}

TEST(OrdSynthSignalTest, SamplesStayWithinFourteenBits) {
    SynthOptions options;
    options.noiseSteps = 1000;
    int low = 0;
    int high = 0;
    for (const auto& channel : OneSecond(options)) {
        const auto [channelLow, channelHigh] = std::minmax_element(channel.begin(), channel.end());
        low = std::min(low, *channelLow);
        high = std::max(high, *channelHigh);
    }
    EXPECT_GE(low, -8192);
    EXPECT_LE(high, 8191);
    EXPECT_GT(high - low, 10'000);
}

TEST(OrdSynthSignalTest, AccelerationIsGravityAndTheFieldTurns) {
    ImuSource source(1, RandomStream::kBaseImu, 3000);
    ImuValues values{};
    std::int64_t lowestField = 32767;
    std::int64_t highestField = -32768;
    for (int packet = 0; packet < 60'000; ++packet) {
        source.Next(values);
        std::int64_t square = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::int64_t value = static_cast<std::int16_t>(values[i]);
            square += value * value;
        }
        ASSERT_NEAR(static_cast<double>(square), 16384.0 * 16384.0, 0.12 * 16384.0 * 16384.0);
        lowestField = std::min<std::int64_t>(lowestField, static_cast<std::int16_t>(values[6]));
        highestField = std::max<std::int64_t>(highestField, static_cast<std::int16_t>(values[6]));
    }
    EXPECT_LT(lowestField, -8000);
    EXPECT_GT(highestField, 8000);
}

TEST(OrdSynthSignalTest, UltrasonicCallsAreBetweenPauses) {
    UltrasonicSource source(1, 3000);
    UltrasonicValues values{};
    int calls = 0;
    int loudBefore = 0;
    for (int packet = 0; packet < 30'000; ++packet) {
        source.Next(values);
        const auto isLoud = [](std::uint16_t value) {
            return std::abs(int{static_cast<std::int16_t>(value)}) > 8000;
        };
        const int loud = std::any_of(values.begin(), values.end(), isLoud) ? 1 : 0;
        calls += loud > loudBefore ? 1 : 0;
        loudBefore = loud;
    }
    EXPECT_GE(calls, 8);  // in ten seconds
    EXPECT_LE(calls, 50);
}

}  // namespace
}  // namespace stalwick
