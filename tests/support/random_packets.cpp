// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <stdexcept>

#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// std::uniform_int_distribution differs between standard libraries; the slight bias here is
// harmless.
std::uint64_t Below(std::mt19937_64& random, std::uint64_t bound) {
    return random() % bound;
}

template <std::size_t Count>
std::array<std::uint16_t, Count> RandomWords(std::mt19937_64& random) {
    std::array<std::uint16_t, Count> words{};
    for (std::uint16_t& word : words) word = static_cast<std::uint16_t>(random());
    return words;
}

std::vector<std::uint8_t> RandomBytes(std::mt19937_64& random, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& value : bytes) value = static_cast<std::uint8_t>(random());
    return bytes;
}

/** The smallest and largest delta that `width` bits hold; a width of 0 holds 0 and -1. */
std::pair<std::int32_t, std::int32_t> DeltaRange(unsigned width) {
    const std::int32_t half = width == 0 ? 1 : std::int32_t{1} << (width - 1);
    return {-half, width == 0 ? 0 : half - 1};
}

bool Fits(std::int32_t delta, unsigned width) {
    const auto [smallest, largest] = DeltaRange(width);
    return delta >= smallest && delta <= largest;
}

/** The difference of two samples as 14-bit numbers, -8192..8191. */
std::int32_t Delta14(std::uint16_t before, std::uint16_t after) {
    const std::int32_t difference = ((after >> 2) - (before >> 2)) & 0x3FFF;
    return difference >= 0x2000 ? difference - 0x4000 : difference;
}

std::vector<std::uint16_t> RandomWalk(std::mt19937_64& random, const RandomPacketShape& shape,
                                      unsigned channelCount, unsigned samplesPerChannel) {
    std::int32_t smallest = -static_cast<std::int32_t>(shape.largestStep);
    std::int32_t largest = static_cast<std::int32_t>(shape.largestStep);
    if (shape.width) {
        smallest = std::max(smallest, DeltaRange(*shape.width).first);
        largest = std::min(largest, DeltaRange(*shape.width).second);
    }
    const auto stepCount = static_cast<std::uint64_t>(largest - smallest + 1);
    std::vector<std::uint16_t> samples;
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        std::int32_t value = static_cast<std::int32_t>(Below(random, 0x4000));
        for (unsigned i = 0; i < samplesPerChannel; ++i) {
            samples.push_back(static_cast<std::uint16_t>((value & 0x3FFF) << 2));
            value += smallest + static_cast<std::int32_t>(Below(random, stepCount));
        }
    }
    return samples;
}

}  // namespace

AdBlockPlan PlanAdBlock(const std::vector<std::uint16_t>& samples, unsigned channelCount,
                        unsigned samplesPerChannel, std::optional<std::uint8_t> width) {
    AdBlockPlan plan;
    plan.samplesPerChannel = samplesPerChannel;
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        const std::size_t first = channel * samplesPerChannel;
        plan.initialValues.push_back(static_cast<std::uint16_t>(samples.at(first) >> 2));
        unsigned fitting = width ? *width : 1U;
        for (std::size_t i = 1; i < samplesPerChannel; ++i) {
            const std::int32_t delta = Delta14(samples[first + i - 1], samples.at(first + i));
            if (width && !Fits(delta, *width)) throw std::invalid_argument("delta does not fit");
            while (!Fits(delta, fitting)) ++fitting;
            plan.deltas.push_back(delta);
        }
        plan.widths.push_back(static_cast<std::uint8_t>(fitting));
    }
    return plan;
}

PacketPlan MakeRandomPacket(std::mt19937_64& random, const RandomPacketShape& shape) {
    constexpr unsigned kSamplesPerChannel = 10;
    const unsigned channelCount = ChannelCountOfCode(shape.channelCountCode);
    PacketPlan plan;
    plan.channelCountCode = shape.channelCountCode;
    plan.headerByte2 = static_cast<std::uint8_t>(random());
    plan.headerByte3 = static_cast<std::uint8_t>(random());
    for (std::uint8_t& value : plan.unreadBytes) value = static_cast<std::uint8_t>(random());
    plan.headerWord = static_cast<std::uint32_t>(random());
    plan.hardwareTimestamp = shape.hardwareTimestamp;
    if (shape.channelMask) plan.channelMask = RandomBytes(random, channelCount / 8);
    plan.stateBytePerSample = shape.stateBytePerSample;
    plan.stateBytes = RandomBytes(
        random, shape.stateBytePerSample ? StateByteCountOfCode(shape.channelCountCode) : 1);
    if (shape.baseImu) plan.baseImu = RandomWords<9>(random);
    if (shape.afeImu) plan.afeImu = RandomWords<9>(random);
    if (shape.ultrasonic) plan.ultrasonic = RandomWords<70>(random);
    if (shape.adBlock) {
        const auto samples = RandomWalk(random, shape, channelCount, kSamplesPerChannel);
        plan.adBlock = PlanAdBlock(samples, channelCount, kSamplesPerChannel, shape.width);
        plan.adBlock->writeZeroWidthBits = shape.writeZeroWidthBits;
    }
    return plan;
}

std::vector<PacketPlan> MakeRandomPackets(std::uint64_t seed, const RandomRecordingShape& shape) {
    std::mt19937_64 random(seed);
    std::vector<PacketPlan> plans;
    for (std::size_t i = 0; i < shape.packetCount; ++i) {
        RandomPacketShape packet = shape.packet;
        packet.hardwareTimestamp.reset();
        if (shape.timestamps) {
            packet.hardwareTimestamp = shape.firstTimestampNs + i * shape.timestampStepNs;
        }
        plans.push_back(MakeRandomPacket(random, packet));
    }
    return plans;
}

RandomPacketShape MakeRandomShape(std::mt19937_64& random, std::uint8_t channelCountCode,
                                  std::optional<std::uint64_t> hardwareTimestamp) {
    RandomPacketShape shape;
    shape.channelCountCode = channelCountCode;
    shape.hardwareTimestamp = hardwareTimestamp;
    shape.channelMask = Below(random, 2) == 0;
    shape.stateBytePerSample = Below(random, 2) == 0;
    shape.baseImu = Below(random, 2) == 0;
    shape.afeImu = Below(random, 2) == 0;
    shape.ultrasonic = Below(random, 4) == 0;
    shape.adBlock = Below(random, 8) != 0;
    shape.largestStep = 1U << Below(random, 14);
    if (Below(random, 2) == 0) shape.width = static_cast<std::uint8_t>(Below(random, 16));
    return shape;
}

}  // namespace stalwick::test
