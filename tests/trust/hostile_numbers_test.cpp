// SPDX-License-Identifier: BSD-3-Clause

// Properties that hold for any numbers in headers and packets. The sanitizer builds of this program
// also detect undefined behaviour (make test-asan).

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "ord/packet_decoder.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/plain_packet.h"
#include "writers/timestamps.h"

namespace stalwick::test {
namespace {

constexpr double kTwoTo64 = 18446744073709551616.0;

// The same cases each time, unless the environment selects others (make soak).
[[maybe_unused]] const int kParameters = ::setenv("RC_PARAMS", "seed=1 max_success=150", 0);

// All sizes equally often, and the ends of the range often.
rc::Gen<std::uint64_t> AnyUnsigned() {
    return rc::gen::map(rc::gen::pair(rc::gen::arbitrary<std::uint64_t>(), rc::gen::inRange(0, 66)),
                        [](const std::pair<std::uint64_t, int>& drawn) -> std::uint64_t {
                            if (drawn.second == 65) return UINT64_MAX - drawn.first % 4;
                            if (drawn.second == 64) return 0;
                            return (drawn.first * 0x9E3779B97F4A7C15U) >> drawn.second;
                        });
}

rc::Gen<std::int64_t> AnySigned() {
    return rc::gen::map(AnyUnsigned(),
                        [](std::uint64_t bits) { return static_cast<std::int64_t>(bits); });
}

rc::Gen<double> AnyDouble() {
    return rc::gen::map(AnyUnsigned(), [](std::uint64_t bits) {
        double value = 0.0;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        return value;
    });
}

// A number as somebody might have written it into a header, readable or not.
rc::Gen<std::string> AnyNumberText() {
    return rc::gen::oneOf(
        rc::gen::map(AnyUnsigned(), [](std::uint64_t n) { return std::to_string(n); }),
        rc::gen::map(AnySigned(), [](std::int64_t n) { return std::to_string(n); }),
        rc::gen::map(AnyDouble(), [](double value) { return std::to_string(value).substr(0, 40); }),
        rc::gen::element<std::string>(
            "0", "1", "-1", "4294967295", "4294967296", "1e308", "-1e-308", "1e99999", "nan",
            "-inf", "0x10", "007", "+5", "3.", ".5", "18446744073709551616", "-9223372036854775809",
            "\"\"", "1,5", "--2", "e", "99999999999999999999999999999999"));
}

struct Outcome {
    std::string status;
    std::vector<ConversionDetail> details;
};

// Converts in memory and compares every byte with the reference.
Outcome ConvertAndCompare(const std::string& recording, const ReferenceConvertOptions& options) {
    static const TempDirectory directory;
    const FixedIdentity identity;
    DataProcessor processor(QuickSettings());
    std::wstring status;
    const ConversionJob job = MakeJob(directory, {L"rec.ord"}, options, processor, status);
    MemoryFileCalls disk;
    disk.files[L"rec.ord"] = recording;
    RunConversionJob(job);
    const ReferenceConvertResult expected = RunReference(directory, recording, options);
    RC_ASSERT(ToUtf8(status) == expected.statusText);
    const std::wstring out = directory.Path(L"out") + kPathSeparator + L"rec" + kPathSeparator;
    RC_ASSERT(disk.files.size() == expected.files.size() + 1);
    for (const auto& [name, bytes] : expected.files) {
        if (disk.files[out + FromUtf8(name)] != bytes) RC_FAIL(name + " differs");
    }
    return {ToUtf8(status), processor.Details()};
}

bool TellsOfSaturation(const Outcome& outcome) {
    for (const ConversionDetail& detail : outcome.details) {
        if (detail.text.find(L"beyond the 64-bit range") != std::wstring::npos) return true;
    }
    return false;
}

// A few packets of four channels, timestamps as drawn.
std::vector<PacketPlan> AnyPackets(const std::vector<std::uint64_t>& timestamps) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, true, true, true, true, true, true, 40, {}, true};
    shape.packetCount = timestamps.size();
    std::vector<PacketPlan> packets = MakeRandomPackets(3, shape);
    for (std::size_t i = 0; i < packets.size(); ++i) packets[i].hardwareTimestamp = timestamps[i];
    return packets;
}

OrdHeaderText HeaderWithEverySensor(unsigned channelCount) {
    return Version2Header(channelCount)
        .Set("-BaseIMUAvailable", "1")
        .Set("-AfeIMUAvailable", "1")
        .Set("-UltrasonicAvailable", "1");
}

RC_GTEST_PROP(HostileNumbers, AnyTimestampsOffsetAndRateConvertLikeTheReference, ()) {
    const auto timestamps = *rc::gen::container<std::vector<std::uint64_t>>(60, AnyUnsigned());
    const auto offset = *AnySigned();
    const auto rate = static_cast<std::uint32_t>(std::max<std::uint64_t>(1, *AnyUnsigned() >> 32U));
    const std::string recording =
        BuildOrdFile(HeaderWithEverySensor(4)
                         .Set("-UTCOffsetMicroseconds", std::to_string(offset))
                         .Set("-SamplingFrequency", std::to_string(rate)),
                     AnyPackets(timestamps));
    ConvertAndCompare(recording, AllOutputs());
}

RC_GTEST_PROP(HostileNumbers, AnyHeaderValuesConvertOrAreRefusedLikeTheReference, ()) {
    OrdHeaderText header = HeaderWithEverySensor(4);
    for (const char* key :
         {"-SamplingFrequency", "-ADMaxValue", "-ADBitVolts", "-InputRange",
          "-UTCOffsetMicroseconds", "-UltrasonicAvailable", "-BaseIMUAvailable"}) {
        if (*rc::gen::inRange(0, 3) == 0) header.Set(key, *AnyNumberText());
    }
    if (*rc::gen::inRange(0, 4) == 0) header.Set("-NumADChannels", *AnyNumberText());
    ConvertAndCompare(BuildOrdFile(header, AnyPackets({1, 2, 3})), AllOutputs());
}

RC_GTEST_PROP(HostileNumbers, AnyRateWithoutHardwareTimestampsConvertsLikeTheReference, ()) {
    const auto rate = static_cast<std::uint32_t>(std::max<std::uint64_t>(1, *AnyUnsigned() >> 32U));
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, false, false, false, true, 40, {}, true};
    shape.packetCount = 120;
    shape.timestamps = false;
    ConvertAndCompare(
        BuildOrdFile(Version1Header(2).Set("-SamplingFrequency", std::to_string(rate)),
                     MakeRandomPackets(3, shape)),
        AllOutputs());
}

RC_GTEST_PROP(HostileNumbers, AnyBytesDecodeLikeTheReference, ()) {
    auto bytes = *rc::gen::arbitrary<std::string>();
    bytes.resize(std::max<std::size_t>(bytes.size(), 11));
    bytes[0] = 4;  // otherwise nearly nothing is a packet
    for (int i = *rc::gen::inRange(0, 200); i > 0; --i) bytes += *rc::gen::arbitrary<char>();
    const std::vector<std::uint8_t> span(bytes.begin(), bytes.end());
    for (const std::int32_t version : {10, 20}) {
        std::vector<ORDDataPacket> packets;
        const std::uint8_t* end =
            ProcessDataBuffer(span.data(), span.size(), packets, PacketFormat{0, version}, 10U);
        const ReferenceSpan expected =
            ReferenceProcessDataBuffer(bytes, ReferenceDecodeOptions{0, version}, 10U);
        RC_ASSERT(end == span.data() + expected.consumedBytes);
        RC_ASSERT(packets.size() == expected.packets.size());
        for (std::size_t i = 0; i < packets.size(); ++i) {
            RC_ASSERT(ToReference(packets[i]) == expected.packets[i]);
        }
    }
}

RC_GTEST_PROP(HostileNumbers, AnyDoubleBecomesTheNearestCount, ()) {
    const double value = *AnyDouble();
    bool saturated = false;
    const std::uint64_t count = TruncateToCount(value, saturated);
    if (std::isnan(value) || value < 0.0) {
        RC_ASSERT(saturated && count == 0U);
    } else if (value >= kTwoTo64) {
        RC_ASSERT(saturated && count == UINT64_MAX);
    } else {
        RC_ASSERT(!saturated);
        RC_ASSERT(static_cast<long double>(count) == std::trunc(static_cast<long double>(value)));
    }
}

// The offset takes the times to the end of their range; the steps within a packet leave it.
TEST(HostileNumbers, TimestampsClampedToTheEndOfTheirRangeAreReported) {
    const std::string recording = BuildOrdFile(
        HeaderWithEverySensor(4).Set("-UTCOffsetMicroseconds", "-1"), AnyPackets({0, 0, 0}));
    const Outcome outcome = ConvertAndCompare(recording, AllOutputs());
    EXPECT_EQ(outcome.status, "Processing complete");
    EXPECT_TRUE(TellsOfSaturation(outcome));
}

TEST(HostileNumbers, UsualTimestampsAreNotReportedAsClamped) {
    const Outcome outcome = ConvertAndCompare(
        BuildOrdFile(HeaderWithEverySensor(4), AnyPackets({1000, 2000, 3000})), AllOutputs());
    EXPECT_FALSE(TellsOfSaturation(outcome));
}

}  // namespace
}  // namespace stalwick::test
