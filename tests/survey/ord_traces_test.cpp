// SPDX-License-Identifier: BSD-3-Clause
#include "survey/ord_traces.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ord/packet_stream.h"
#include "survey/time_search.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr double kPeriod = 1.0 / 30000.0;  // of the builder's header

/** Counts the bytes that are read of files. */
class CountingFileCalls final : public ForwardingFileCalls {
  public:
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        const SystemErrorCode code = ForwardingFileCalls::Read(handle, data, size, transferred);
        bytes += transferred;
        return code;
    }
    SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset, void* data, std::size_t size,
                           std::size_t& transferred) override {
        const SystemErrorCode code =
            ForwardingFileCalls::ReadAt(handle, offset, data, size, transferred);
        bytes += transferred;
        return code;
    }
    std::uint64_t bytes = 0;
};

bool IsLost(std::size_t packet) {
    return (packet > 300 && packet < 340) || (packet >= 1500 && packet < 2500) || packet == 3000;
}

/** Packets of every shape and length, with gaps. */
std::vector<PacketPlan> MixedPlans(std::uint8_t code, std::size_t packets,
                                   std::uint64_t firstStampNs = 1'000'000) {
    std::mt19937_64 random(code);
    std::vector<PacketPlan> plans;
    for (std::size_t i = 0; i < packets; ++i) {
        const auto stamp =
            firstStampNs + static_cast<std::uint64_t>(static_cast<double>(i) * 1e10 / 30000.0);
        RandomPacketShape shape = MakeRandomShape(random, code, stamp);
        if (!IsLost(i)) plans.push_back(MakeRandomPacket(random, shape));
    }
    return plans;
}

/** A packet and when it was. */
struct TimedPacket {
    double seconds = 0.0;
    ReferencePacket packet;
};

std::vector<TimedPacket> Timed(std::vector<ReferencePacket> packets) {
    std::vector<TimedPacket> timed;
    const std::uint64_t first = packets.front().hardwareTimestamp.value_or(0);
    for (ReferencePacket& packet : packets) {
        const double seconds = packet.hardwareTimestamp
                                   ? static_cast<double>(*packet.hardwareTimestamp - first) / 1e9
                                   : static_cast<double>(timed.size()) * 10.0 * kPeriod;
        timed.push_back({seconds, std::move(packet)});
    }
    return timed;
}

using Cells = std::map<std::size_t, ColumnRange>;  // by column

Cells PlainCells(const std::vector<TimedPacket>& packets, std::size_t channel,
                 const ColumnScale& scale) {
    Cells cells;
    for (const TimedPacket& timed : packets) {
        if (!timed.packet.adSamples || timed.packet.adSamples->size() <= channel * 10) continue;
        const auto& mask = *timed.packet.channelMask;
        const std::optional<std::vector<std::uint8_t>> given =
            mask.empty() ? std::nullopt : std::optional(mask);
        if (!IsChannelEnabled(given, static_cast<unsigned>(channel))) continue;
        for (std::size_t i = 0; i < 10; ++i) {
            const double seconds = timed.seconds + static_cast<double>(i) * kPeriod;
            const double column = std::floor((seconds - scale.originSeconds) / scale.columnSeconds);
            if (column < 0.0 || column >= static_cast<double>(scale.columns)) continue;
            const auto sample =
                static_cast<std::int16_t>((*timed.packet.adSamples)[channel * 10 + i]);
            cells[static_cast<std::size_t>(column)].Add(sample, sample);
        }
    }
    return cells;
}

void ExpectCells(const Trace& trace, const Cells& expected) {
    if (trace.columns.empty()) {
        EXPECT_TRUE(expected.empty());
        return;
    }
    ASSERT_EQ(trace.columns.size(), trace.scale.columns);
    for (std::size_t column = 0; column < trace.columns.size(); ++column) {
        const auto found = expected.find(column);
        const ColumnRange range = found != expected.end() ? found->second : ColumnRange();
        ASSERT_EQ(trace.columns[column].smallest, range.smallest) << column;
        ASSERT_EQ(trace.columns[column].largest, range.largest) << column;
    }
}

class OrdTraces : public testing::Test {
  protected:
    std::wstring Put(const std::string& bytes) {
        WriteFile(directory_.Path(L"rec.ord"), bytes);
        return directory_.Path(L"rec.ord");
    }
    TempDirectory directory_;
};

std::vector<std::uint32_t> AllChannels(std::uint8_t code) {
    std::vector<std::uint32_t> all(ChannelCountOfCode(code));
    for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = i;
    return all;
}

TEST_F(OrdTraces, EnvelopeIsThatOfTheSamples) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        const std::size_t count = code == 3 ? 700 : 4000;
        const std::vector<PacketPlan> plans = MixedPlans(code, count, UINT64_MAX - 40'000'000);
        const std::wstring path =
            Put(BuildOrdFile(Version2Header(ChannelCountOfCode(code)), plans));
        const auto packets = Timed(
            ReferenceProcessDataBuffer(EncodePackets(plans), ReferenceDecodeOptions{0, 20}, 10)
                .packets);
        for (const double start : {0.0, 0.0871234, 0.1333777}) {
            for (const double seconds : {0.0211, 0.09773}) {
                TraceRequest request{{path}, start, seconds, AllChannels(code), 97};
                const TraceSet set = ReadOrdTraces(request);
                ASSERT_FALSE(set.error) << code;
                EXPECT_TRUE(set.damage.empty());
                ASSERT_EQ(set.traces.size(), request.channels.size());
                for (const Trace& trace : set.traces) {
                    const auto channel = static_cast<std::size_t>(&trace - set.traces.data());
                    ExpectCells(trace, PlainCells(packets, channel, trace.scale));
                }
            }
        }
    }
}

TEST_F(OrdTraces, FewSamplesHaveAColumnEach) {
    RandomRecordingShape shape;
    shape.packetCount = 200;
    const std::vector<PacketPlan> plans = MakeRandomPackets(3, shape);
    const TraceSet set =
        ReadOrdTraces({{Put(BuildOrdFile(Version2Header(32), plans))}, 0.02, 0.002, {7}, 1000});
    ASSERT_EQ(set.traces.size(), 1U);
    const Trace& trace = set.traces.front();
    EXPECT_EQ(trace.name, L"CSC8");
    ASSERT_EQ(trace.columns.size(), 60U);
    const auto packets =
        ReferenceProcessDataBuffer(EncodePackets(plans), ReferenceDecodeOptions{0, 20}, 10).packets;
    for (std::size_t i = 0; i < 60; ++i) {
        const auto& samples = *packets[60 + i / 10].adSamples;
        const auto sample = static_cast<std::int16_t>(samples[70 + i % 10]);
        EXPECT_EQ(trace.columns[i].smallest, sample) << i;
        EXPECT_EQ(trace.columns[i].largest, sample) << i;
        EXPECT_NEAR(trace.scale.MiddleOf(i), 0.02 + static_cast<double>(i) * kPeriod, kPeriod / 50);
    }
}

TEST_F(OrdTraces, UnknownLengthMakesColumnsWider) {
    RandomRecordingShape shape;
    shape.timestamps = false;
    shape.packetCount = 1700;
    const std::vector<PacketPlan> plans = MakeRandomPackets(4, shape);
    const TraceSet set =
        ReadOrdTraces({{Put(BuildOrdFile(Version1Header(32), plans))}, 0.0, {}, {}, 100});
    ASSERT_EQ(set.traces.size(), 32U);
    EXPECT_NEAR(set.seconds, 1700.0 / 3000.0, 1e-9);
    const auto packets =
        Timed(ReferenceProcessDataBuffer(EncodePackets(plans), ReferenceDecodeOptions{0, 10}, 10)
                  .packets);
    for (std::size_t channel = 0; channel < 32; ++channel) {
        const Trace& trace = set.traces[channel];
        EXPECT_NEAR(trace.scale.columnSeconds, 32.0 / 3000.0, 1e-12);
        ExpectCells(trace, PlainCells(packets, channel, trace.scale));
    }
}

TEST_F(OrdTraces, GapsAndTtlAreThoseOfTheStretch) {
    RandomRecordingShape shape;
    shape.packetCount = 3000;
    std::vector<PacketPlan> plans = MakeRandomPackets(5, shape);
    for (std::size_t i = 0; i < plans.size(); ++i) {
        plans[i].stateBytes = {static_cast<std::uint8_t>(i % 100 < 30 ? 0x10 : 0x00)};  // line 0
    }
    plans.erase(plans.begin() + 1010, plans.begin() + 1040);
    plans.erase(plans.begin() + 200, plans.begin() + 201);
    const std::wstring path = Put(BuildOrdFile(Version2Header(32), plans));
    const TraceSet all = ReadOrdTraces({{path}, 0.0, {}, {0}, 1000});
    ASSERT_EQ(all.gaps.size(), 2U);
    EXPECT_EQ(all.gaps[0].missingSamples, 10U);
    EXPECT_EQ(all.gaps[1].missingSamples, 300U);
    EXPECT_NEAR(all.gaps[1].fromSeconds, 1010.0 / 3000.0, 1e-5);
    EXPECT_NEAR(all.gaps[1].toSeconds, 1040.0 / 3000.0, 1e-5);
    EXPECT_NEAR(all.seconds, 1.0, 1e-5);
    ASSERT_EQ(all.ttlHigh[0].size(), 30U);
    EXPECT_NEAR(all.ttlHigh[0][1].fromSeconds, 100.0 / 3000.0, 1e-5);
    EXPECT_NEAR(all.ttlHigh[0][1].toSeconds, 130.0 / 3000.0, 1e-5);
    // The state of a line in a gap is unknown.
    EXPECT_NEAR(all.ttlHigh[0][10].toSeconds, 1010.0 / 3000.0, 1e-5);
    EXPECT_TRUE(all.ttlHigh[1].empty());
    const TraceSet part = ReadOrdTraces({{path}, 0.3372, 0.1, {0}, 1000});
    ASSERT_EQ(part.gaps.size(), 1U);
    EXPECT_NEAR(part.gaps[0].fromSeconds, 0.3372, 1e-9);
    EXPECT_NEAR(part.gaps[0].toSeconds, 1040.0 / 3000.0, 1e-5);
}

TEST_F(OrdTraces, WhatDoesNotExistIsReported) {
    RandomRecordingShape shape;
    const std::wstring path = Put(BuildOrdFile(Version2Header(32), MakeRandomPackets(6, shape)));
    EXPECT_EQ(ReadOrdTraces({{path}, 10.0, {}, {}, 100}).error.kind, TraceError::Kind::kRequest);
    EXPECT_EQ(ReadOrdTraces({{path}, 0.0, {}, {32}, 100}).error.kind, TraceError::Kind::kRequest);
    EXPECT_EQ(ReadOrdTraces({{L"no/such"}, 0.0, {}, {}, 100}).error.kind,
              TraceError::Kind::kUnreadable);
    const std::wstring empty = Put(Version2Header(32).Block());
    EXPECT_EQ(ReadOrdTraces({{empty}, 0.0, {}, {}, 100}).error.kind, TraceError::Kind::kUnreadable);
}

/** Every certain packet's place and timestamp, by reading from the beginning. */
std::map<std::uint64_t, std::uint64_t> Walk(PacketStream& stream) {
    std::map<std::uint64_t, std::uint64_t> stamps;
    ORDDataPacket packet;
    for (;;) {
        const StreamPart part = stream.Next(packet);
        if (part.kind == StreamPart::Kind::kEnd) return stamps;
        if (part.kind == StreamPart::Kind::kPacket)
            stamps[part.position] = *packet.hardwareTimestamp;
    }
}

void Damage(std::string& bytes, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    for (int i = 0; i < 6; ++i) {
        const std::size_t at = kOrdHeaderBytes + random() % (bytes.size() - 2 * kOrdHeaderBytes);
        const std::size_t count = std::size_t{1} << (random() % 15);
        if (i % 3 == 0) {
            bytes.erase(at, count);
        } else if (i % 3 == 1) {
            bytes.insert(at, std::string(count, static_cast<char>(4)));  // many type bytes
        } else {
            for (std::size_t j = at; j < at + count && j < bytes.size(); ++j) {
                bytes[j] = static_cast<char>(random());
            }
        }
    }
}

class TimeSearch : public testing::TestWithParam<int> {};

// From the position found, the packets are the same as in a sequential read, and the wanted time is
// not before it.
TEST_P(TimeSearch, FindsWhatAWalkFinds) {
    const int seed = GetParam();
    const auto code = static_cast<std::uint8_t>(seed % 3);
    std::string bytes =
        BuildOrdFile(Version2Header(ChannelCountOfCode(code)), MixedPlans(code, 6000));
    if (seed >= 3) Damage(bytes, static_cast<std::uint64_t>(seed));
    TempDirectory directory;
    const std::wstring path = directory.Path(L"rec.ord");
    WriteFile(path, bytes);
    PacketStream whole;
    ASSERT_EQ(whole.Open(path), 0);
    const auto walked = Walk(whole);
    const std::uint64_t first = walked.begin()->second;
    PacketStream stream;
    ASSERT_EQ(stream.Open(path), 0);
    const auto ends = FindTimeEnds(stream);
    ASSERT_TRUE(ends.has_value());
    EXPECT_EQ(ends->firstStampNs, first);
    EXPECT_EQ(ends->lastStampNs, walked.rbegin()->second);
    int found = 0;
    for (std::uint64_t wanted = 1'000'000; wanted < 1'990'000'000; wanted += 97'654'321) {
        if (!SkipToTime(stream, *ends, wanted)) continue;
        ++found;
        const auto rest = Walk(stream);
        ASSERT_FALSE(rest.empty());
        EXPECT_LT(rest.begin()->second - first, wanted);
        const std::map<std::uint64_t, std::uint64_t> expected(
            walked.lower_bound(rest.begin()->first), walked.end());
        EXPECT_EQ(rest, expected) << seed << ' ' << wanted;
    }
    EXPECT_GE(found, 8);
}

INSTANTIATE_TEST_SUITE_P(OnRecordings, TimeSearch, testing::Range(0, 9));

TEST_F(OrdTraces, LittleIsReadBeforeALateStretch) {
    RandomRecordingShape shape;
    shape.packet.channelCountCode = 1;
    shape.packet.width = 10;
    shape.packetCount = 20000;
    const std::string bytes = BuildOrdFile(Version2Header(64), MakeRandomPackets(8, shape));
    ASSERT_GT(bytes.size(), 12'000'000U);
    const std::wstring path = Put(bytes);
    CountingFileCalls counting;
    const TraceSet set = ReadOrdTraces({{path}, 6.0, 0.1, {0}, 1000});
    ASSERT_FALSE(set.error);
    EXPECT_LT(counting.bytes, 3'000'000U);
}

}  // namespace
}  // namespace stalwick::test
