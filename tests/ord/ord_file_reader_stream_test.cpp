// SPDX-License-Identifier: BSD-3-Clause

// How the stream is split into spans of 50,000 bytes, which decides what becomes of a damaged one.

#include <string>

#include <gtest/gtest.h>

#include "ord/ord_file_reader.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_decoder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr wchar_t kNothingConsumed[] = L"Failed to process buffer. 0 bytes consumed.";

struct StreamRead {
    bool failed = false;
    std::wstring errorText;
    std::vector<std::size_t> packetsPerBlock;
    std::size_t packetCount = 0;
    std::uint32_t headerWordSum = 0;
};

StreamRead ReadStream(const std::string& stream, const OrdHeaderText& header = Version1Header(32)) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), header.Block() + stream);
    ORDFileReader reader;
    EXPECT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    StreamRead result;
    std::vector<ORDDataPacket> records;
    for (bool endOfFile = false; !endOfFile;) {
        if (reader.GetData(records, endOfFile) != 0) {
            result.failed = true;
            result.errorText = reader.GetErrorMessage();
            return result;
        }
        result.packetsPerBlock.push_back(records.size());
        result.packetCount += records.size();
        for (const ORDDataPacket& packet : records) result.headerWordSum += packet.headerWord;
    }
    return result;
}

// Whole packets of 11 and 29 bytes with exactly this total length; from 300 bytes on there are
// always some.
std::string StreamOfLength(std::size_t length) {
    std::size_t longCount = 0;
    while ((length - longCount * 29) % 11 != 0) ++longCount;
    std::vector<PacketPlan> plans((length - longCount * 29) / 11 + longCount);
    for (std::size_t i = 0; i < plans.size(); ++i) {
        plans[i].headerWord = static_cast<std::uint32_t>(i * i);
        if (i < longCount) plans[i].baseImu.emplace().fill(static_cast<std::uint16_t>(i));
    }
    return EncodePackets(plans);
}

testing::AssertionResult ReadsLikeTheReference(const std::string& stream) {
    const StreamRead read = ReadStream(stream);
    bool failed = false;
    const auto expected = ReferenceReadAll(stream, 10, &failed);
    if (read.failed != failed) return testing::AssertionFailure() << "failed: " << read.failed;
    std::uint32_t sum = 0;
    for (const ReferencePacket& packet : expected) sum += packet.headerWord;
    if (read.packetCount != expected.size() || read.headerWordSum != sum) {
        return testing::AssertionFailure()
               << read.packetCount << " packets for " << expected.size();
    }
    return testing::AssertionSuccess();
}

TEST(ORDFileReader, SpanIsFiftyThousandBytesWithTheHeldOnes) {
    const StreamRead read = ReadStream(EncodePackets(std::vector<PacketPlan>(10000)));
    EXPECT_FALSE(read.failed);
    // 50,000 = 4545 x 11 + 5; the five bytes are held, and so are the next ones.
    EXPECT_EQ(read.packetsPerBlock, (std::vector<std::size_t>{4545, 4545, 910}));
}

TEST(ORDFileReader, StreamOfExactlyOneSpanNeedsAnotherCallForItsEnd) {
    const StreamRead read = ReadStream(StreamOfLength(50000));
    EXPECT_FALSE(read.failed);
    ASSERT_EQ(read.packetsPerBlock.size(), 2U);
    EXPECT_EQ(read.packetsPerBlock[1], 0U);
}

TEST(ORDFileReader, LastBlockOfHalfTheBufferIsReportedAsNotConsumed) {
    const StreamRead read = ReadStream(StreamOfLength(25000));
    EXPECT_TRUE(read.failed);
    EXPECT_EQ(read.errorText, kNothingConsumed);
    EXPECT_FALSE(ReadStream(StreamOfLength(24999)).failed);
    EXPECT_FALSE(ReadStream(StreamOfLength(25001)).failed);
}

TEST(ORDFileReader, LastBlockWhoseValidAndConsumedBytesMakeTheBufferFails) {
    // 20,000 bytes of packets and 10,000 of something else: 30,000 valid, 20,000 consumed.
    EXPECT_TRUE(ReadStream(StreamOfLength(20000) + std::string(10000, 'x')).failed);
    EXPECT_FALSE(ReadStream(StreamOfLength(20000) + std::string(9999, 'x')).failed);
}

TEST(ORDFileReader, WrongTypeByteAtTheStartOfAFullSpanIsAnError) {
    const StreamRead read = ReadStream(std::string(50000, '\5'));
    EXPECT_TRUE(read.failed);
    EXPECT_EQ(read.errorText, kNothingConsumed);
}

TEST(ORDFileReader, WrongTypeByteInAShortStreamIsNoError) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{11}, std::size_t{49999}}) {
        const StreamRead read = ReadStream(std::string(size, '\5'));
        EXPECT_FALSE(read.failed) << size;
        EXPECT_EQ(read.packetCount, 0U) << size;
    }
}

TEST(ORDFileReader, WrongTypeByteAfterGoodPacketsFailsOnlyWhenItFillsASpan) {
    const std::string good = StreamOfLength(20000);
    // First span: the good ones; second: 50,000 bytes that begin with the wrong one.
    const StreamRead longTail = ReadStream(good + std::string(60000, 'x'));
    EXPECT_TRUE(longTail.failed);
    EXPECT_EQ(longTail.packetsPerBlock.size(), 1U);
    const StreamRead shortTail = ReadStream(good + std::string(100, 'x'));
    EXPECT_FALSE(shortTail.failed);
    EXPECT_GT(shortTail.packetCount, 600U);
}

TEST(ORDFileReader, IncompletePacketAtTheEndIsDropped) {
    const std::string packet = EncodePacket(PacketPlan());
    for (std::size_t size = 0; size < packet.size(); ++size) {
        const StreamRead read = ReadStream(packet + packet + packet.substr(0, size));
        EXPECT_FALSE(read.failed);
        EXPECT_EQ(read.packetCount, 2U);
    }
}

TEST(ORDFileReader, StreamsOfLengthsAroundSpansAndHalvesReadTheSame) {
    for (const std::size_t middle : {25000U, 50000U, 75000U, 100000U, 125000U}) {
        for (std::size_t length = middle - 12; length <= middle + 12; ++length) {
            ASSERT_TRUE(ReadsLikeTheReference(StreamOfLength(length))) << length;
        }
    }
}

TEST(ORDFileReader, StreamsWithJunkAfterThemReadTheSame) {
    std::mt19937_64 random(6);
    for (int i = 0; i < 60; ++i) {
        const std::size_t good = 300 + random() % 60000;
        const std::size_t junk = random() % 2 == 0 ? random() % 60000
                                 : good < 50000    ? 50000 - good
                                                   : 100000 - good;
        const std::string stream = StreamOfLength(good) + std::string(junk, 'x');
        ASSERT_TRUE(ReadsLikeTheReference(stream)) << good << " and " << junk;
    }
    for (const std::size_t good : {1000U, 12345U, 24999U}) {
        // Valid and consumed bytes add up to 50,000: 2 x good + junk.
        ASSERT_TRUE(
            ReadsLikeTheReference(StreamOfLength(good) + std::string(50000 - 2 * good, 'x')));
    }
}

TEST(ORDFileReader, WidthZeroPacketsDependOnWhereTheSpanEnds) {
    RandomRecordingShape shape;
    shape.timestamps = false;
    shape.packet.width = std::uint8_t{0};
    shape.packetCount = 900;
    for (const bool written : {true, false}) {
        shape.packet.writeZeroWidthBits = written;
        ASSERT_TRUE(ReadsLikeTheReference(EncodePackets(MakeRandomPackets(8, shape))));
    }
}

TEST(ORDFileReader, PositionsShowWhereTheNextPacketBegins) {
    const TempDirectory directory;
    const std::string recording =
        BuildOrdFile(Version1Header(32), std::vector<PacketPlan>(3), "tail");
    WriteFile(directory.Path(L"rec.ord"), recording);
    ORDFileReader reader;
    ASSERT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    EXPECT_EQ(reader.FileSize(), recording.size());
    EXPECT_EQ(reader.BytesRead(), 16384U);
    std::vector<ORDDataPacket> records;
    bool endOfFile = false;
    ASSERT_EQ(reader.GetData(records, endOfFile), 0);
    EXPECT_EQ(reader.BytesRead(), recording.size());
    EXPECT_EQ(reader.UnconsumedBytes(), 4U);
    EXPECT_EQ(reader.NextPacketPosition(), 16384U + 33);
}

// A packet with every block: 256 channels, and 15 bits for each of their steps.
std::string LongestPacket() {
    PacketPlan plan;
    plan.channelCountCode = 3;
    plan.hardwareTimestamp = 1;
    plan.channelMask.emplace(32, std::uint8_t{0xFF});
    plan.stateBytePerSample = true;
    plan.stateBytes.assign(5, 0);
    plan.baseImu.emplace();
    plan.afeImu.emplace();
    plan.ultrasonic.emplace();
    plan.adBlock = PlanAdBlock(std::vector<std::uint16_t>(2560, 8), 256, 10, 15);
    return EncodePacket(plan);
}

TEST(ORDFileReader, LongestPacketThatLacksItsLastByteIsACutOne) {
    const TempDirectory directory;
    const std::string longest = LongestPacket();
    ASSERT_EQ(longest.size(), kLongestPacketSize);
    WriteFile(directory.Path(L"rec.ord"),
              Version2Header(256).Block() + longest + longest.substr(0, longest.size() - 1));
    ORDFileReader reader;
    ASSERT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    std::vector<ORDDataPacket> records;
    bool endOfFile = false;
    ASSERT_EQ(reader.GetData(records, endOfFile), 0);
    EXPECT_EQ(records.size(), 1U);
    EXPECT_EQ(reader.UnconsumedBytes(), kLongestPacketSize - 1);
    EXPECT_TRUE(reader.EndsInACutPacket());
}

TEST(ORDFileReader, SmallerReadSizesCutTheSameRecordingIntoMoreSpans) {
    const TempDirectory directory;
    const std::string header = Version1Header(32).Text() + std::string(30, '\0');
    const std::string stream = EncodePackets(std::vector<PacketPlan>(100));  // 11 bytes each
    WriteFile(directory.Path(L"rec.ord"), header + stream);
    SetReadSizes({header.size(), 110});
    ORDFileReader reader;
    SetReadSizes({});
    ASSERT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    std::vector<ORDDataPacket> records;
    bool endOfFile = false;
    for (int span = 0; span < 10; ++span) {
        EXPECT_FALSE(endOfFile);
        ASSERT_EQ(reader.GetData(records, endOfFile), 0);
        EXPECT_EQ(records.size(), 10U);
    }
    ASSERT_EQ(reader.GetData(records, endOfFile), 0);
    EXPECT_TRUE(endOfFile && records.empty());
}

}  // namespace
}  // namespace stalwick::test
