// SPDX-License-Identifier: BSD-3-Clause

// The rules by which a stream distinguishes packets from damage, each where it decides.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/ord/streamed_recording.h"

namespace stalwick::test {
namespace {

constexpr std::uint64_t kStepNs = 333'333;

// Packets of equal size.
RandomRecordingShape EqualShape(bool timestamps, std::size_t packetCount) {
    RandomRecordingShape shape = Shape(timestamps, packetCount);
    shape.packet.width = 6;
    return shape;
}

TEST(PacketStreamRules, LostPacketsAreCountedByTimeElseByTheirBytes) {
    for (const bool timestamps : {false, true}) {
        const Recording recording = MakeRandomRecording(1, EqualShape(timestamps, 100));
        std::string bytes = recording.bytes;
        bytes[recording.positions[50]] = 5;
        const Streamed streamed = Stream(bytes);
        ASSERT_EQ(streamed.Damage().size(), 1U);
        EXPECT_EQ(streamed.Damage()[0].packetsLost, 2U);
        EXPECT_EQ(streamed.Damage()[0].packetsLostIsKnown, timestamps);
    }
}

TEST(PacketStreamRules, LossBeforeTheFirstPacketIsNotKnown) {
    const Recording recording = MakeRandomRecording(2, EqualShape(true, 30));
    std::string bytes = recording.bytes;
    bytes[kOrdHeaderBytes] = 0;
    const Streamed streamed = Stream(bytes);
    ASSERT_EQ(streamed.Damage().size(), 1U);
    EXPECT_FALSE(streamed.Damage()[0].packetsLostIsKnown);
    EXPECT_EQ(streamed.packets.size(), 29U);
}

// A recording of 26 packets; the damaged one is the 21st, and the time after it jumps.
std::size_t PacketsWithJumpAfterDamage(std::uint64_t steps) {
    std::vector<PacketPlan> plans = MakeRandomPackets(3, EqualShape(true, 26));
    for (std::size_t i = 21; i < plans.size(); ++i) *plans[i].hardwareTimestamp += steps * kStepNs;
    const Recording recording = MakeRecording(plans);
    std::string bytes = recording.bytes;
    bytes[recording.positions[20]] = 0;
    return Stream(bytes).packets.size();
}

// One byte less than two packets is skipped. Packets may be half as long as those before (153 of
// 307 bytes): four of them, and two more.
TEST(PacketStreamRules, TimeAfterDamageIsNotBeyondWhatTheBytesCanHaveHeld) {
    EXPECT_EQ(PacketsWithJumpAfterDamage(0), 19U + 5);
    EXPECT_EQ(PacketsWithJumpAfterDamage(3), 19U + 5);
    EXPECT_EQ(PacketsWithJumpAfterDamage(4), 19U + 4) << "enough bytes are a packet later";
}

TEST(PacketStreamRules, HeadInTheDamageThatNoPacketFollowsIsNoPlaceToContinue) {
    const Recording recording = MakeRandomRecording(4, EqualShape(true, 40));
    std::string bytes = recording.bytes;
    const std::size_t damaged = recording.positions[20];
    // The head of the next packet, with its time, is also inside the damaged one.
    bytes.replace(damaged + 30, 18, bytes.substr(recording.positions[21], 18));
    bytes[damaged] = 0;
    const std::size_t packetSize = recording.positions[1] - recording.positions[0];
    ASSERT_NE(bytes[damaged + 30 + packetSize], 4);
    const Streamed streamed = Stream(bytes);
    EXPECT_EQ(streamed.Damage().size(), 1U);
    EXPECT_EQ(streamed.packets.size(), 38U);
}

TEST(PacketStreamRules, PacketsOfAnotherChannelCountAreNoPlaceToContinue) {
    const Recording recording = MakeRandomRecording(5, EqualShape(false, 20));
    RandomRecordingShape wider = EqualShape(false, 20);
    wider.packet.channelCountCode = 1;
    const Recording other = MakeRandomRecording(6, wider);
    const Streamed streamed = Stream(recording.bytes + '\0' + other.bytes.substr(kOrdHeaderBytes));
    EXPECT_LE(streamed.packets.size(), 20U);
    ASSERT_EQ(streamed.Damage().size(), 1U);
    EXPECT_GE(streamed.Damage()[0].size, other.bytes.size() - kOrdHeaderBytes);
}

TEST(PacketStreamRules, CutPacketEndsARowAsTheFilesEndDoes) {
    const Recording recording = MakeRandomRecording(7, EqualShape(false, 30));
    std::string bytes = recording.bytes.substr(0, recording.bytes.size() - 10);
    bytes[recording.positions[15]] = 0;
    const Streamed streamed = Stream(bytes);
    EXPECT_EQ(streamed.Damage().size(), 1U);
    EXPECT_EQ(streamed.packets.size(), 14U + 13);
}

// Eight of the longest packets in a row take 40 KB, which must be in memory wherever damage ends.
TEST(PacketStreamRules, EightOfTheLongestPacketsAreSeenAnywhere) {
    RandomRecordingShape shape = Shape(false, 80);
    shape.packet.channelCountCode = 3;
    shape.packet.width = 15;
    shape.packet.stateBytePerSample = true;
    shape.packet.baseImu = shape.packet.afeImu = shape.packet.ultrasonic = true;
    const Recording recording = MakeRandomRecording(8, shape);
    for (std::size_t damaged = 10; damaged < 60; ++damaged) {
        std::string bytes = recording.bytes;
        bytes[recording.positions[damaged]] = 0;
        ASSERT_EQ(Stream(bytes).packets.size(), 78U) << damaged;
    }
}

// Eight are checked together, and damage comes after any of them.
TEST(PacketStreamRules, TwoPacketsFollowOneThatHasNoTimeToBeSureOfIt) {
    const Recording recording = MakeRandomRecording(9, EqualShape(false, 100));
    for (std::size_t damaged = 50; damaged < 58; ++damaged) {
        std::string bytes = recording.bytes;
        bytes[recording.positions[damaged]] = 5;
        const Streamed streamed = StreamStrictly(bytes);
        ASSERT_FALSE(streamed.Damage().empty());
        EXPECT_EQ(streamed.Damage()[0].position, recording.positions[damaged - 2]);
    }
}

TEST(PacketStreamRules, FewPacketsThatAreNotInStepMakeNoneBeforeThemCertain) {
    std::vector<PacketPlan> plans = MakeRandomPackets(13, EqualShape(true, 150));
    for (std::size_t i = 100; i < 105; ++i) *plans[i].hardwareTimestamp += (i * i % 7 + 1) * 99'999;
    const Recording recording = MakeRecording(plans);
    std::string bytes = recording.bytes;
    bytes[recording.positions[105]] = 5;
    const Streamed streamed = Stream(bytes);
    ASSERT_FALSE(streamed.Damage().empty());
    EXPECT_EQ(streamed.Damage()[0].position, recording.positions[99]);
}

// Where the damage begins if the packet after those has another type byte.
std::size_t FirstDamagedPacket(const Recording& recording, std::size_t wrongType) {
    std::string bytes = recording.bytes;
    bytes[recording.positions[wrongType]] = 5;
    const Streamed streamed = Stream(bytes);
    if (streamed.Damage().empty()) return recording.positions.size();
    const auto found = std::find(recording.positions.begin(), recording.positions.end(),
                                 streamed.Damage()[0].position);
    return static_cast<std::size_t>(found - recording.positions.begin());
}

TEST(PacketStreamRules, OffTimeBetweenPacketsInStepMakesNoneBeforeItUncertain) {
    std::vector<PacketPlan> plans = MakeRandomPackets(16, EqualShape(true, 150));
    *plans[101].hardwareTimestamp += kStepNs * 3 / 10;
    EXPECT_EQ(FirstDamagedPacket(MakeRecording(plans), 105), 104U);
}

TEST(PacketStreamRules, ThreePacketsInStepAfterAnotherTimeMakeThePacketBeforeThemCertain) {
    std::vector<PacketPlan> plans = MakeRandomPackets(17, EqualShape(true, 150));
    for (std::size_t i = 101; i < 150; ++i) *plans[i].hardwareTimestamp += 123'456'789;
    EXPECT_EQ(FirstDamagedPacket(MakeRecording(plans), 105), 104U);
}

TEST(PacketStreamRules, FewPacketsOfBlocksNeverSeenMakeNoneBeforeThemCertain) {
    std::vector<PacketPlan> plans = MakeRandomPackets(18, EqualShape(false, 150));
    for (std::size_t i = 101; i < 150; ++i) plans[i].baseImu.emplace().fill(1);
    EXPECT_EQ(FirstDamagedPacket(MakeRecording(plans, false), 105), 100U);
}

TEST(PacketStreamRules, PacketsMayContinueWithTheNextByteAfterDamage) {
    const Recording recording = MakeRandomRecording(19, EqualShape(true, 50));
    std::string bytes = recording.bytes;
    bytes.insert(recording.positions[0], 1, '\5');
    const Streamed streamed = Stream(bytes);
    ASSERT_EQ(streamed.Damage().size(), 1U);
    EXPECT_EQ(streamed.Damage()[0].size, 1U);
    EXPECT_EQ(streamed.packets.size(), 50U);
}

// Most steps so far were not whole ones, so whole steps say nothing about what follows.
TEST(PacketStreamRules, RecorderWithoutAClockNeedsNoWholeStepsAfterDamage) {
    std::vector<PacketPlan> plans = MakeRandomPackets(20, EqualShape(true, 200));
    for (std::size_t i = 10; i < plans.size(); ++i) {
        *plans[i].hardwareTimestamp += i * i * 977 % 300'000;
    }
    const Recording recording = MakeRecording(plans);
    std::string bytes = recording.bytes;
    bytes[recording.positions[100]] = 5;
    EXPECT_GE(Stream(bytes).packets.size(), 196U);
}

TEST(PacketStreamRules, PacketsWithOtherBlocksThanBeforeMayFollowDamage) {
    std::vector<PacketPlan> plans = MakeRandomPackets(14, EqualShape(true, 60));
    for (std::size_t i = 22; i < plans.size(); i += 2) plans[i].baseImu.emplace().fill(1);
    const Recording recording = MakeRecording(plans);
    std::string bytes = recording.bytes;
    bytes[recording.positions[20]] = 5;
    const Streamed streamed = Stream(bytes);
    ASSERT_EQ(streamed.Damage().size(), 1U);
    const StreamPart damage = streamed.Damage()[0];
    EXPECT_EQ(damage.position + damage.size, recording.positions[21]);
}

// Packets with nothing unusual except the time.
void ExpectAllAreKept(const std::vector<PacketPlan>& plans) {
    const Recording recording = MakeRecording(plans);
    const Streamed streamed = StreamStrictly(recording.bytes);
    EXPECT_TRUE(streamed.Damage().empty());
    EXPECT_TRUE(streamed.packets == recording.packets);
}

TEST(PacketStreamRules, OffTimeThatIsRepeatedIsTheRecorders) {
    std::vector<PacketPlan> plans = MakeRandomPackets(10, EqualShape(true, 200));
    *plans[150].hardwareTimestamp += kStepNs * 7 / 10;
    plans[151].hardwareTimestamp = plans[150].hardwareTimestamp;
    ExpectAllAreKept(plans);
}

TEST(PacketStreamRules, TimeOfZeroAndRepeatedTimeAreTheRecorders) {
    std::vector<PacketPlan> plans = MakeRandomPackets(15, EqualShape(true, 200));
    plans[120].hardwareTimestamp = 0;
    plans[150].hardwareTimestamp = plans[149].hardwareTimestamp;
    ExpectAllAreKept(plans);
}

TEST(PacketStreamRules, TimeWithinHalfASampleIsTheRecorders) {
    std::vector<PacketPlan> plans = MakeRandomPackets(11, EqualShape(true, 200));
    *plans[150].hardwareTimestamp += 16'000;  // of 33,333 ns
    ExpectAllAreKept(plans);
    *plans[150].hardwareTimestamp += 1'000;
    EXPECT_EQ(StreamStrictly(MakeRecording(plans).bytes).Damage().size(), 1U);
}

TEST(PacketStreamRules, OffTimeOfTheLastPacketHasNothingAgainstIt) {
    std::vector<PacketPlan> plans = MakeRandomPackets(12, EqualShape(true, 200));
    *plans[199].hardwareTimestamp += kStepNs / 2;
    ExpectAllAreKept(plans);
}

}  // namespace
}  // namespace stalwick::test
