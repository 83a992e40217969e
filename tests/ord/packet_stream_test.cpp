// SPDX-License-Identifier: BSD-3-Clause
#include "tests/ord/streamed_recording.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace stalwick::test {
namespace {

// The returned packets are packets of the undamaged recording, in their order.
void ExpectOnlyDamageMissing(const Recording& recording, const Streamed& streamed,
                             const std::string& what) {
    std::size_t next = 0;
    for (const ReferencePacket& packet : streamed.packets) {
        const auto found = std::find(recording.packets.begin() + static_cast<std::ptrdiff_t>(next),
                                     recording.packets.end(), packet);
        ASSERT_NE(found, recording.packets.end()) << what << ": a packet that never was";
        next = static_cast<std::size_t>(found - recording.packets.begin()) + 1;
    }
}

TEST(PacketStream, ReturnsEveryPacketOfAnUndamagedRecording) {
    for (const bool timestamps : {false, true}) {
        for (std::uint8_t code = 0; code < 4; ++code) {
            RandomRecordingShape shape = Shape(timestamps, 300);
            shape.packet.channelCountCode = code;
            const Recording recording = MakeRandomRecording(code, shape);
            const Streamed streamed = Stream(recording.bytes, 70'001);
            ASSERT_EQ(streamed.parts.size(), 301U);
            EXPECT_TRUE(streamed.packets == recording.packets);
            for (std::size_t i = 0; i < 300; ++i) {
                EXPECT_EQ(streamed.parts[i].position, recording.positions[i]);
            }
            EXPECT_EQ(streamed.parts.back().refusal, PacketRefusal::kNone);
        }
    }
}

TEST(PacketStream, TakesPacketsOfAnyMixtureOfBlocksForWhole) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        std::mt19937_64 random(seed);
        std::vector<PacketPlan> plans;
        for (unsigned i = 0; i < 60; ++i) {
            RandomPacketShape shape =
                MakeRandomShape(random, static_cast<std::uint8_t>(seed % 4), 1000 + i * 333'333);
            shape.writeZeroWidthBits = true;
            plans.push_back(MakeRandomPacket(random, shape));
        }
        const Recording recording = MakeRecording(plans);
        const Streamed streamed = Stream(recording.bytes);
        EXPECT_TRUE(streamed.Damage().empty()) << seed;
        EXPECT_TRUE(streamed.packets == recording.packets) << seed;
    }
}

TEST(PacketStream, OddTimestampsAreNoDamage) {
    std::vector<PacketPlan> plans = MakeRandomPackets(3, Shape(true));
    plans[20].hardwareTimestamp = plans[19].hardwareTimestamp;       // repeated
    plans[40].hardwareTimestamp = *plans[10].hardwareTimestamp + 5;  // back in time
    for (std::size_t i = 60; i < plans.size(); ++i) *plans[i].hardwareTimestamp += 123'456'789;
    for (std::size_t i = 80; i < plans.size(); ++i) *plans[i].hardwareTimestamp += i * i * 977;
    const Recording recording = MakeRecording(plans);
    const Streamed streamed = Stream(recording.bytes);
    EXPECT_TRUE(streamed.Damage().empty());
    EXPECT_TRUE(streamed.packets == recording.packets);
}

TEST(PacketStream, PacketOfWidthZeroIsDecodedWithTheBytesAfterItAtAnyPlace) {
    RandomRecordingShape shape = Shape(true, 2000);
    shape.packet.width = 0;
    const Recording recording = MakeRandomRecording(4, shape);
    EXPECT_TRUE(Stream(recording.bytes).packets == recording.packets);
}

TEST(PacketStream, CutEndIsNoDamage) {
    const Recording recording = MakeRandomRecording(5, Shape(true, 20));
    for (std::size_t cut = 1; cut < 40; ++cut) {
        const Streamed streamed =
            Stream(recording.bytes.substr(0, recording.positions.back() + cut));
        EXPECT_TRUE(streamed.Damage().empty()) << cut;
        EXPECT_EQ(streamed.packets.size(), 19U);
        EXPECT_EQ(streamed.parts.back().size, cut);
        EXPECT_NE(streamed.parts.back().refusal, PacketRefusal::kNone);
    }
}

TEST(PacketStream, WrongTypeByteIsDamageThatEndsWithTheNextPacket) {
    for (const bool timestamps : {false, true}) {
        const Recording recording = MakeRandomRecording(6, Shape(timestamps));
        std::string bytes = recording.bytes;
        bytes[recording.positions[50]] = 5;
        const Streamed streamed = Stream(bytes);
        ASSERT_EQ(streamed.Damage().size(), 1U);
        const StreamPart damage = streamed.Damage().front();
        EXPECT_EQ(damage.noticedAt, recording.positions[50]);
        EXPECT_EQ(damage.refusal, PacketRefusal::kWrongType);
        EXPECT_EQ(damage.position, recording.positions[49]);  // its end is not certain either
        EXPECT_EQ(damage.position + damage.size, recording.positions[51]);
        ExpectOnlyDamageMissing(recording, streamed, "wrong type");
    }
}

TEST(PacketStream, FirstPacketMayBeTheDamagedOne) {
    for (const bool timestamps : {false, true}) {
        const Recording recording = MakeRandomRecording(7, Shape(timestamps, 30));
        std::string bytes = recording.bytes;
        bytes[kOrdHeaderBytes] = 0;
        const Streamed streamed = Stream(bytes);
        ASSERT_EQ(streamed.Damage().size(), 1U);
        EXPECT_EQ(streamed.packets.size(), 29U);
    }
}

TEST(PacketStream, LastPacketsAfterDamageNeedTimestampsOrEightInARow) {
    for (const bool timestamps : {false, true}) {
        const Recording recording = MakeRandomRecording(8, Shape(timestamps, 30));
        for (const std::size_t left : {std::size_t{1}, std::size_t{7}, std::size_t{8}}) {
            std::string bytes = recording.bytes;
            bytes[recording.positions[29 - left]] = 0;
            const std::size_t expected = timestamps || left == 8 ? 28 : 28 - left;
            EXPECT_EQ(Stream(bytes).packets.size(), expected) << timestamps << left;
        }
    }
}

TEST(PacketStream, PacketThatReachesBeyondTheEndOverWholePacketsIsDamage) {
    RandomRecordingShape shape = Shape(true, 30);
    shape.packet.width = 2;
    const Recording recording = MakeRandomRecording(9, shape);
    std::string bytes = recording.bytes;
    for (std::size_t i = 0; i < 16; ++i) bytes[recording.positions[27] + 19 + i] = '\xFF';
    const Streamed streamed = Stream(bytes);
    ASSERT_EQ(streamed.Damage().size(), 1U);
    EXPECT_GE(streamed.packets.size(), 28U);
    ExpectOnlyDamageMissing(recording, streamed, "widths");
}

// One way to damage a file. `sector` bytes are more than a packet has: zeros inside one packet's
// samples could have been recorded.
std::string Damage(std::string bytes, std::size_t sector, std::mt19937_64& random) {
    const std::size_t room = bytes.size() - kOrdHeaderBytes - 6000;
    const std::size_t at = kOrdHeaderBytes + random() % room;
    const std::size_t length = 1 + random() % 600;
    switch (random() % 4) {
        case 0:
            bytes.erase(at, length);
            break;
        case 1:
            for (std::size_t i = 0; i < length; ++i) {
                bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at + i),
                             static_cast<char>(random()));
            }
            break;
        case 2:
            std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at / sector * sector), sector,
                        '\0');
            break;
        default:
            bytes.resize(at);
    }
    return bytes;
}

TEST(PacketStream, FindsEveryPacketAfterDroppedInsertedAndZeroedBytes) {
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        std::mt19937_64 random(seed);
        RandomRecordingShape shape = Shape(seed % 2 == 0, 120);
        shape.packet.channelCountCode = static_cast<std::uint8_t>(seed / 2 % 3);
        shape.packet.width = 6;
        const Recording recording = MakeRandomRecording(seed, shape);
        const std::uint64_t packetSize = recording.positions[1] - recording.positions[0];
        const std::string bytes = Damage(recording.bytes, packetSize < 512 ? 512 : 4096, random);
        const Streamed streamed = Stream(bytes);
        ExpectOnlyDamageMissing(recording, streamed, std::to_string(seed));
        // At most the stretch itself, the packets that it touches and the one before; without
        // timestamps the last seven too.
        std::uint64_t bytesLost = 0;
        for (const StreamPart& part : streamed.Damage()) bytesLost += part.size;
        EXPECT_LE(bytesLost, 4096 + (shape.timestamps ? 4 : 11) * packetSize) << seed;
    }
}

TEST(PacketStream, ReadErrorEndsTheStreamAndIsReported) {
    EXPECT_EQ(Stream(std::string(Version2Header(32).Block())).parts.size(), 1U);
    PacketStream stream;
    EXPECT_EQ(stream.Open(L"no/such/file.ord"), -1);
    EXPECT_NE(stream.SystemError(), 0);
    EXPECT_NE(stream.GetErrorMessage(), L"");
}

TEST(PacketStream, SkipsToPacketsNearAnyByte) {
    const Recording recording = MakeRandomRecording(11, Shape(true, 400));
    MemoryFileCalls disk;
    disk.files[kStreamedPath] = recording.bytes;
    FileCalls* const before = SetFileCalls(&disk);
    {
        PacketStream stream;
        ORDDataPacket packet;
        ASSERT_EQ(stream.Open(kStreamedPath), 0);
        ASSERT_EQ(stream.Next(packet).kind, StreamPart::Kind::kPacket);
        ASSERT_TRUE(stream.SkipTo(recording.positions[300] + 1));
        EXPECT_EQ(stream.Next(packet).position, recording.positions[301]);
        EXPECT_TRUE(ToReference(packet) == recording.packets[301]);
        EXPECT_FALSE(stream.SkipTo(recording.positions[399]));
        EXPECT_EQ(stream.Next(packet).kind, StreamPart::Kind::kEnd);
    }
    SetFileCalls(before);
}

}  // namespace
}  // namespace stalwick::test
