// SPDX-License-Identifier: BSD-3-Clause
#include "engine/ttl_events.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

using Values = std::vector<std::uint8_t>;

// An open event file of 30 kHz with an offset of 1000 µs.
struct OpenEventFile {
    explicit OpenEventFile(std::uint32_t frequency = 30000) : eventFile(QuickSettings()) {
        eventFile.samplingFrequency = frequency;
        eventFile.timestampOffset = 1000;
        EXPECT_EQ(eventFile.Open(directory.Path()), 0);
    }

    void Add(const Values& values, std::optional<std::uint64_t> hardwareTimestamp,
             double runningMicroseconds = 0.0) {
        EXPECT_EQ(WriteTtlEvents(eventFile, values, {hardwareTimestamp, runningMicroseconds}), 0);
    }
    std::uint32_t Count() const { return eventFile.records.front().bufferedCount; }
    const VtxDataTypes::EventRec& Event(std::size_t i) const {
        return eventFile.records.front().eventBuffer[i];
    }
    // A copy, because the field may be unaligned.
    std::uint64_t TimeOf(std::size_t i) const { return Event(i).timestamp; }

    TempDirectory directory;
    EventFileWriterContainer eventFile;
};

TEST(TtlEvents, HighNibbleCarriesBitsZeroToThree) {
    ORDDataPacket packet;
    packet.stateHigh.push_back(0x0A);
    packet.stateLow.push_back(0x05);
    Values values;
    JoinTtlValues(packet, values);
    EXPECT_EQ(values, Values{0x5A});
}

TEST(TtlEvents, ListsOfDifferentLengthLeaveTheHighNibbles) {
    ORDDataPacket packet;
    packet.stateHigh.push_back(0x0A);
    packet.stateHigh.push_back(0x0B);
    packet.stateLow.push_back(0x05);
    Values values = {1, 2, 3};
    JoinTtlValues(packet, values);
    EXPECT_EQ(values, (Values{0x0A, 0x0B}));
}

TEST(TtlEvents, FirstValueOfAFileNeverMakesAnEvent) {
    OpenEventFile file;
    file.Add({0xFF}, 1000);
    EXPECT_EQ(file.Count(), 0U);
    file.Add({0xFF}, 2000);
    EXPECT_EQ(file.Count(), 0U);
}

TEST(TtlEvents, ChangeBetweenPacketsMakesAnEvent) {
    OpenEventFile file;
    file.Add({0, 0, 7}, 1000);
    file.Add({7, 7}, 2000);
    EXPECT_EQ(file.Count(), 1U);
    file.Add({9}, 3000);
    ASSERT_EQ(file.Count(), 2U);
    EXPECT_EQ(file.Event(1).ttlValue, 9);
}

TEST(TtlEvents, EventHasItsFixedIdAndText) {
    OpenEventFile file;
    file.Add({1}, 1000);
    file.Add({0x85}, 5'000'000);
    ASSERT_EQ(file.Count(), 1U);
    EXPECT_EQ(file.Event(0).eventId, 21);
    EXPECT_EQ(file.Event(0).ttlValue, 0x85);
    EXPECT_STREQ(file.Event(0).eventString.data(), "TTL Change.");
    EXPECT_EQ(file.TimeOf(0), 5000U + 1000U);
}

TEST(TtlEvents, SampleTimesAreTruncatedAtEverySample) {
    // 33.33 µs per sample; ten of them take 330 µs, not 333.
    OpenEventFile file;
    file.Add({0}, 1'000'000);
    file.Add({0, 0, 0, 1, 0, 0, 0, 0, 0, 1}, 1'000'000);
    ASSERT_EQ(file.Count(), 3U);
    EXPECT_EQ(file.TimeOf(0), 2000U + 3 * 33);
    EXPECT_EQ(file.TimeOf(1), 2000U + 4 * 33);
    EXPECT_EQ(file.TimeOf(2), 2000U + 9 * 33);
}

TEST(TtlEvents, HardwareTimeIsTruncatedToMicroseconds) {
    OpenEventFile file;
    file.Add({0}, 1);
    file.Add({1}, 1'234'999);
    ASSERT_EQ(file.Count(), 1U);
    EXPECT_EQ(file.TimeOf(0), 1234U + 1000U);
}

TEST(TtlEvents, WithoutAHardwareTimestampTheRunningTimeCountsWithoutOffset) {
    OpenEventFile file;
    file.Add({0}, {}, 0.0);
    file.Add({0, 1}, {}, 333.9);
    ASSERT_EQ(file.Count(), 1U);
    EXPECT_EQ(file.TimeOf(0), 333U + 33U);
}

TEST(TtlEvents, TimestampOfZeroIsATimestamp) {
    OpenEventFile file;
    file.Add({0}, 5'000'000);
    file.Add({1}, 0, 777.0);
    ASSERT_EQ(file.Count(), 1U);
    EXPECT_EQ(file.TimeOf(0), 1000U);
}

TEST(TtlEvents, RepeatedTimestampStartsFromTheSameTimeAgain) {
    OpenEventFile file;
    file.Add({0, 1}, 6'000'000);
    file.Add({0, 1}, 6'000'000);
    ASSERT_EQ(file.Count(), 3U);
    EXPECT_EQ(file.TimeOf(0), 7033U);
    EXPECT_EQ(file.TimeOf(1), 7000U);
    EXPECT_EQ(file.TimeOf(2), 7033U);
}

TEST(TtlEvents, SlotKeepsWhatTheBlockBeforeLeftInIt) {
    OpenEventFile file;
    file.Add({0}, 1000);
    file.eventFile.records.front().eventBuffer[0].reserved[1] = 55;
    file.Add({1}, 2000);
    ASSERT_EQ(file.Count(), 1U);
    EXPECT_EQ(file.Event(0).reserved[1], 55);
}

TEST(TtlEvents, EmptyListMakesNothingAndSetsNoFirstValue) {
    OpenEventFile file;
    file.Add({}, 1000);
    EXPECT_TRUE(file.eventFile.ttlUnset);
    file.Add({3}, 1000);
    EXPECT_EQ(file.Count(), 0U);
}

}  // namespace
}  // namespace stalwick::test
