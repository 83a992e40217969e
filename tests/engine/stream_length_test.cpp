// Whole conversions of streams that end anywhere.

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

// Whole packets of so many bytes.
std::string PacketsOfSize(std::size_t size) {
    // A base inertial block makes a packet 29 bytes; a few of them make the length come out.
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

TEST(StreamLength, TheAdviceTellsOfAPacketThatLacksOneByte) {
    // 25,005 bytes, of which 24,995 make packets: refused too, since both add up to a buffer.
    std::string recording = Version1Header(32).Block() + PacketsOfSize(24995) + PlainPackets(1);
    recording.pop_back();
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_NE(run.details[0].text.find(L"a packet that lacks just its last byte would take it"),
              std::wstring::npos);

    recording += '\0';
    const TempDirectory second;
    EXPECT_EQ(RunEngine(second, recording, ReferenceConvertOptions()).details.size(), 0U);
    EXPECT_TRUE(ConvertsLikeTheReference(recording, AllOutputs()));
}

TEST(StreamLength, DamageIsToldWithItsPlaceAndHowToKeepTheMostOfIt) {
    const std::string recording =
        Version1Header(32).Block() + PlainPackets(3) + std::string(60000, 'x');
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, ReferenceConvertOptions());
    ASSERT_EQ(run.details.size(), 1U);
    const std::wstring& text = run.details[0].text;
    EXPECT_NE(text.find(L"stopped at byte " + std::to_wstring(16384 + 33)), std::wstring::npos);
    EXPECT_NE(text.find(L"--block-records 1"), std::wstring::npos);
}

TEST(StreamLength, JunkBehindPacketsConvertsLikeTheReference) {
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
    EXPECT_EQ(run.details[0].kind, ConversionDetail::Kind::kNote);
    EXPECT_NE(run.details[0].text.find(L"41 trailing bytes from byte 16417"), std::wstring::npos);
}

}  // namespace
}  // namespace stalwick::test
