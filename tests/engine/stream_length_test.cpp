// SPDX-License-Identifier: BSD-3-Clause

// Whole conversions of streams that end anywhere.

#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// Few files, so that many conversions stay quick: events, the raw data and the ultrasonic channel.
constexpr ReferenceConvertOptions kFewOutputs{false, false, false, true, true, true};

std::string Stream(bool timestamps, std::uint8_t code, std::size_t packetCount,
                   std::optional<std::uint8_t> width = {}) {
    RandomRecordingShape shape;
    shape.packet = {code, {}, true, true, true, true, true, true, 40, width, true};
    shape.packetCount = packetCount;
    shape.timestamps = timestamps;
    return EncodePackets(MakeRandomPackets(21, shape));
}

OrdHeaderText Header(bool timestamps) {
    return timestamps ? Version2Header(32) : Version1Header(32);
}

TEST(StreamLength, StreamCutAtEveryByteOfAPacketConvertsLikeTheReference) {
    for (const bool timestamps : {true, false}) {
        const std::string stream = Stream(timestamps, 0, 2);
        for (std::size_t size = stream.size() / 2 - 20; size <= stream.size(); ++size) {
            ASSERT_TRUE(ConvertsLikeTheReference(
                Header(timestamps).Block() + stream.substr(0, size), kFewOutputs))
                << size;
        }
    }
}

TEST(StreamLength, StreamCutAnywhereConvertsLikeTheReferenceWithEveryOutput) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        const std::string stream = Stream(true, code, 4);
        for (std::size_t size = stream.size(); size > 60; size -= size / 4) {
            ASSERT_TRUE(ConvertsLikeTheReference(Header(true).Block() + stream.substr(0, size),
                                                 AllOutputs()))
                << int{code} << " " << size;
        }
    }
}

TEST(StreamLength, WidthZeroPacketsCutAtEveryByteConvertLikeTheReference) {
    const std::string stream = Stream(true, 0, 2, std::uint8_t{0});
    for (std::size_t size = stream.size() / 2; size <= stream.size(); ++size) {
        ASSERT_TRUE(
            ConvertsLikeTheReference(Header(true).Block() + stream.substr(0, size), kFewOutputs))
            << size;
    }
}

TEST(StreamLength, LengthsAroundSpansAndHalvesConvertLikeTheReference) {
    const std::string stream = Stream(true, 1, 400);
    ASSERT_GT(stream.size(), 150100U);
    for (const std::size_t middle : {25000U, 50000U, 75000U, 100000U, 125000U, 150000U}) {
        for (std::size_t size = middle - 3; size <= middle + 3; ++size) {
            ASSERT_TRUE(ConvertsLikeTheReference(Header(true).Block() + stream.substr(0, size),
                                                 kFewOutputs))
                << size;
        }
    }
}

// Packets of 11 bytes whose TTL value changes now and then.
std::string PlainPackets(std::size_t count) {
    PacketPlan plan;
    plan.stateBytes = {0x10};
    std::vector<PacketPlan> plans(count, plan);
    for (std::size_t i = 0; i < count; i += 3) plans[i].stateBytes = {0x20};
    return EncodePackets(plans);
}

// Whole packets with this many bytes in total.
std::string PacketsOfSize(std::size_t size) {
    // A base inertial block makes a packet 29 bytes long; a few of them produce the exact length.
    PacketPlan withImu;
    withImu.baseImu.emplace().fill(1);
    std::string stream;
    while ((size - stream.size()) % 11 != 0) stream += EncodePacket(withImu);
    return stream + PlainPackets((size - stream.size()) / 11);
}

// Whole packets that fill exactly half the reader's buffer: the one length that is refused.
std::string HalfABuffer() {
    return PacketsOfSize(25000);
}

TEST(StreamLength, HalfABufferOfWholePacketsFailsAsNotConsumed) {
    const std::string recording = Version1Header(32).Block() + HalfABuffer();
    ASSERT_EQ(recording.size(), 16384U + 25000U);
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing failed - Failed to process buffer. 0 bytes consumed.");
    EXPECT_TRUE(ConvertsLikeTheReference(recording, AllOutputs()));
}

TEST(StreamLength, TheAdviceForARefusedLastBlockMakesItConvertible) {
    const std::string recording = Version1Header(32).Block() + HalfABuffer();
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_NE(run.details[0].text.find(L"add one zero byte to the end of a copy"),
              std::wstring::npos);

    const TempDirectory second;
    const EngineRun followed =
        RunEngine(second, recording + std::string(1, '\0'), ReferenceConvertOptions());
    EXPECT_EQ(followed.statusText, L"Processing complete");
    EXPECT_TRUE(ConvertsLikeTheReference(recording + std::string(1, '\0'), AllOutputs()));
}

TEST(StreamLength, TheAdviceMentionsAPacketThatLacksOneByte) {
    // 25,005 bytes, of which 24,995 form packets: refused too, because both add up to a buffer.
    std::string recording = Version1Header(32).Block() + PacketsOfSize(24995) + PlainPackets(1);
    recording.pop_back();
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_NE(run.details[0].text.find(L"a packet that lacks only its last byte would use it"),
              std::wstring::npos);

    recording += '\0';
    const TempDirectory second;
    EXPECT_EQ(RunEngine(second, recording, ReferenceConvertOptions()).details.size(), 0U);
    EXPECT_TRUE(ConvertsLikeTheReference(recording, AllOutputs()));
}

TEST(StreamLength, DamageIsReportedWithItsPlaceAndItsCause) {
    const std::string recording =
        Version1Header(32).Block() + PlainPackets(3) + std::string(60000, 'x');
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    ASSERT_EQ(run.details.size(), 1U);
    const std::wstring& text = run.details[0].text;
    EXPECT_NE(text.find(L"stopped at byte " + std::to_wstring(16384 + 33)), std::wstring::npos);
    EXPECT_NE(text.find(L"the outputs keep only full blocks of 5000 records before it"),
              std::wstring::npos);
    EXPECT_EQ(run.details[0].cause, ConversionDetail::Cause::kDamaged);
}

TEST(StreamLength, DamageIsReportedAsSuchAlsoIfPartialBlocksAreKept) {
    const TempDirectory directory;
    OutputSettings settings = QuickSettings();
    settings.keepPartialBlocks = true;
    const EngineRun run =
        RunEngine(directory, Version1Header(32).Block() + PlainPackets(3) + std::string(60000, 'x'),
                  ReferenceConvertOptions(), settings);
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_NE(run.details[0].text.find(L"the outputs keep every whole record before it"),
              std::wstring::npos);
    EXPECT_EQ(run.details[0].cause, ConversionDetail::Cause::kDamaged);
}

TEST(StreamLength, EveryWholeRecordBeforeTheDamageStaysIfTheSettingsKeepThem) {
    RandomRecordingShape shape;
    shape.packet.baseImu = shape.packet.afeImu = shape.packet.ultrasonic = true;
    shape.packetCount = 700;
    shape.timestamps = false;
    const std::string good = BuildOrdFile(Version1Header(4), MakeRandomPackets(3, shape));
    const TempDirectory whole;
    const auto expected = RunReference(whole, good, AllOutputs()).files;
    const TempDirectory directory;
    OutputSettings settings = QuickSettings();
    settings.keepPartialBlocks = true;
    const EngineRun run =
        RunEngine(directory, good + std::string(60000, 'x'), AllOutputs(), settings);
    ASSERT_NE(run.statusText, L"Processing complete");
    for (const auto& [name, bytes] : expected) {
        const std::size_t record = name.ends_with(".vev") ? 184 : 1044;
        // Samples that had not filled a record are missing; no raw data are.
        const std::size_t least = name == "RawData.vrd" ? bytes.size() : bytes.size() - record;
        EXPECT_GE(run.files.at(name).size(), least) << name;
        const std::size_t count = run.files.at(name).size() - kOrdHeaderBytes;
        EXPECT_TRUE(SameBytes(run.files.at(name).substr(kOrdHeaderBytes),
                              bytes.substr(kOrdHeaderBytes, count)))
            << name;
    }
}

TEST(StreamLength, JunkAfterPacketsConvertsLikeTheReference) {
    const std::string good = PlainPackets(1000);
    for (const std::size_t junk : {1U, 11U, 28000U, 38999U, 39000U, 39001U, 50000U, 90000U}) {
        ASSERT_TRUE(ConvertsLikeTheReference(
            Version1Header(32).Block() + good + std::string(junk, 'x'), kFewOutputs))
            << junk;
    }
}

TEST(StreamLength, TrailingBytesAreNamedInTheDetails) {
    const TempDirectory directory;
    const EngineRun run =
        RunEngine(directory, Version1Header(32).Block() + PlainPackets(3) + std::string(41, 'x'),
                  ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing complete");
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_EQ(run.details[0].kind, ConversionDetail::Kind::kLoss);
    EXPECT_NE(run.details[0].text.find(L"damaged at byte 16417"), std::wstring::npos);
    EXPECT_NE(run.details[0].text.find(L"41 trailing bytes from byte 16417"), std::wstring::npos);
    EXPECT_NE(run.details[0].text.find(L"no packet begins there"), std::wstring::npos);
}

ConversionDetail DetailOfTrailing(const std::string& packets, const std::string& bytes) {
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, Version1Header(256).Block() + packets + bytes,
                                    ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(run.details.size(), 1U);
    return run.details.empty() ? ConversionDetail() : run.details[0];
}

TEST(StreamLength, PacketThatLacksItsEndIsDistinguishedFromDamage) {
    // The widest: 256 channels with a mask, every width 15, no timestamp.
    std::mt19937_64 random(1);
    const std::string whole = EncodePacket(MakeRandomPacket(
        random, {3, {}, true, true, true, true, true, true, 40, std::uint8_t{15}, true}));
    for (const std::size_t length : {std::size_t{1}, std::size_t{10}, whole.size() - 1}) {
        const ConversionDetail detail = DetailOfTrailing(whole, whole.substr(0, length));
        EXPECT_EQ(detail.kind, ConversionDetail::Kind::kNote) << length;
        EXPECT_NE(detail.text.find(L"it ends inside a packet: " + std::to_wstring(length) +
                                   L" trailing bytes from byte " +
                                   std::to_wstring(kOrdHeaderBytes + whole.size()) + L" on"),
                  std::wstring::npos)
            << length;
    }
    // Longer than any packet, though it begins like one; and packets after one extra byte.
    std::string tooLong(5133, '\xff');
    tooLong.front() = '\x04';
    for (const std::string& damage : {tooLong, std::string(1, 'x').append(PlainPackets(100))}) {
        const ConversionDetail detail = DetailOfTrailing(PlainPackets(3), damage);
        EXPECT_EQ(detail.kind, ConversionDetail::Kind::kLoss);
        EXPECT_NE(detail.text.find(L"no packet begins"), std::wstring::npos);
    }
}

TEST(StreamLength, RecordingThatEndsInItsHeaderIsReportedAsCut) {
    const TempDirectory directory;
    const EngineRun run =
        RunEngine(directory, Version1Header(4).Block().substr(0, 5000), ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing complete");
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_EQ(run.details[0].kind, ConversionDetail::Kind::kLoss);
    EXPECT_NE(run.details[0].text.find(L"it ends after 5000 bytes, inside its header"),
              std::wstring::npos);
}

TEST(StreamLength, HeaderAloneIsAWholeRecordingWithoutPackets) {
    const TempDirectory directory;
    const EngineRun run =
        RunEngine(directory, Version2Header(32).Block(), ReferenceConvertOptions());
    EXPECT_EQ(run.statusText, L"Processing complete");
    for (const ConversionDetail& detail : run.details) {
        EXPECT_EQ(detail.text.find(L"inside its header"), std::wstring::npos) << detail.text;
    }
}

}  // namespace
}  // namespace stalwick::test
