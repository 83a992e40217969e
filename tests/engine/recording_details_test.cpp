// SPDX-License-Identifier: BSD-3-Clause

// Reports about contradictions between a recording's header, its packets and the requested outputs.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

using Kind = ConversionDetail::Kind;

constexpr ReferenceConvertOptions kChannelsOnly{true, false, false, false, true, false};
constexpr ReferenceConvertOptions kRawOnly{false, false, false, false, false, true};
constexpr ReferenceConvertOptions kEventsOnly{false, false, false, false, true, false};

std::vector<ConversionDetail> DetailsOf(const std::string& recording,
                                        const ReferenceConvertOptions& options) {
    const TempDirectory directory;
    return RunEngine(directory, recording, options).details;
}

testing::AssertionResult Says(const std::vector<ConversionDetail>& details, Kind kind,
                              const std::wstring& text) {
    for (const ConversionDetail& detail : details) {
        if (detail.kind == kind && detail.text.find(text) != std::wstring::npos) {
            return testing::AssertionSuccess();
        }
    }
    auto failure = testing::AssertionFailure() << details.size() << " details:";
    for (const ConversionDetail& detail : details) {
        failure << "\n" << int(detail.kind) << " " << testing::PrintToString(detail.text);
    }
    return failure;
}

std::vector<PacketPlan> Packets(bool timestamps,
                                const std::optional<std::vector<std::uint8_t>>& mask = {}) {
    RandomRecordingShape shape;
    shape.packetCount = 30;
    shape.timestamps = timestamps;
    std::vector<PacketPlan> packets = MakeRandomPackets(81, shape);
    for (PacketPlan& packet : packets) packet.channelMask = mask;
    return packets;
}

TEST(RecordingDetails, RecordingThatAgreesHasNone) {
    EXPECT_TRUE(DetailsOf(BuildOrdFile(Version2Header(32), Packets(true)), kChannelsOnly).empty());
}

TEST(RecordingDetails, ChannelsBeyondTheHeadersNumberAreALoss) {
    const std::string recording = BuildOrdFile(Version2Header(20), Packets(true));
    const std::wstring text = L"announces 20 A/D channels, its packets carry 32: channels 21 to 32";
    EXPECT_TRUE(Says(DetailsOf(recording, kChannelsOnly), Kind::kLoss, text));
    EXPECT_TRUE(Says(DetailsOf(recording, kRawOnly), Kind::kLoss, L"longer records"));
    // Samples were not requested.
    EXPECT_TRUE(DetailsOf(recording, kEventsOnly).empty());
    EXPECT_TRUE(Says(DetailsOf(BuildOrdFile(Version2Header(0), Packets(true)), kChannelsOnly),
                     Kind::kLoss, L"announces 0 A/D channels, its packets carry 32: channels 1"));
}

TEST(RecordingDetails, ChannelsThatAMaskLeavesOutAreNotLost) {
    const auto upTo = [](unsigned last) {
        const auto mask = MakeChannelMask(32, {0, 3, last});
        return DetailsOf(BuildOrdFile(Version2Header(20), Packets(true, mask)), kChannelsOnly);
    };
    EXPECT_TRUE(upTo(19).empty());
    EXPECT_TRUE(Says(upTo(20), Kind::kLoss, L"its packets carry 21: channel 21 "));
    EXPECT_TRUE(Says(upTo(31), Kind::kLoss, L"its packets carry 32: channels 21 to 32 "));
}

TEST(RecordingDetails, ChannelsThatNoPacketCarriedAreNoted) {
    const std::string recording = BuildOrdFile(Version2Header(50), Packets(true));
    EXPECT_TRUE(Says(DetailsOf(recording, kChannelsOnly), Kind::kNote,
                     L"its packets carry 32: the files of channels 33 to 50 are empty"));
    EXPECT_TRUE(DetailsOf(recording, kEventsOnly).empty());
}

TEST(RecordingDetails, RawRecordsShorterThanTheHeaderSaysAreNoted) {
    const std::string recording = BuildOrdFile(Version2Header(50), Packets(true));
    EXPECT_TRUE(Says(DetailsOf(recording, kRawOnly), Kind::kNote,
                     L"announces 50 A/D channels, its packets carry 32: the raw data file has "
                     L"shorter records than its header says"));
    ReferenceConvertOptions both = kChannelsOnly;
    both.raw = true;
    EXPECT_TRUE(Says(DetailsOf(recording, both), Kind::kNote,
                     L"the files of channels 33 to 50 are empty, and the raw data file has "
                     L"shorter records than its header says"));
}

TEST(RecordingDetails, VersionThatThePacketsContradictIsALoss) {
    EXPECT_TRUE(Says(DetailsOf(BuildOrdFile(Version1Header(32), Packets(true)), kEventsOnly),
                     Kind::kLoss, L"contradict its header's -FileVersion 1.0: they carry time"));
    EXPECT_TRUE(Says(DetailsOf(BuildOrdFile(Version2Header(32), Packets(false)), kEventsOnly),
                     Kind::kLoss, L"contradict its header's -FileVersion 2.0: they carry no "));
}

TEST(RecordingDetails, NumberThatCannotBeReadIsNotedWithWhatItCountsAs) {
    OrdHeaderText header = Version2Header(32);
    header.Set("-ADMaxValue", "many").Set("-ADBitVolts", "x").Set("-UTCOffsetMicroseconds", "-");
    const auto details = DetailsOf(BuildOrdFile(header, Packets(true)), kChannelsOnly);
    EXPECT_EQ(details.size(), 3U);
    for (const std::wstring key : {L"-ADMaxValue", L"-ADBitVolts", L"-UTCOffsetMicroseconds"}) {
        EXPECT_TRUE(
            Says(details, Kind::kNote, key + L" cannot be read as a number and counts as 0"));
    }
    header.Set("-ADMaxValue", "99999999999")
        .Set("-ADBitVolts", "1")
        .Set("-UTCOffsetMicroseconds", "0");
    EXPECT_TRUE(Says(DetailsOf(header.Block(), kChannelsOnly), Kind::kNote,
                     L"-ADMaxValue cannot be read as a number and counts as 4294967295"));
}

TEST(RecordingDetails, VersionTextThatCannotBeReadIsNoted) {
    EXPECT_TRUE(
        Says(DetailsOf(Version1Header(32).Set("-FileVersion", "v\x1b[1m").Block(), kChannelsOnly),
             Kind::kNote, L"-FileVersion \"v\\x1b[1m\" cannot be read"));
}

TEST(RecordingDetails, SensorsThatTheHeaderDoesNotAnnounceAreNoted) {
    OrdHeaderText header = Version2Header(32);
    header.Set("-BaseIMUAvailable", "1")
        .Set("-AfeIMUAvailable", "0")
        .Set("-UltrasonicAvailable", "0");
    const auto details = DetailsOf(header.Block(), AllOutputs());
    ASSERT_EQ(details.size(), 1U);
    EXPECT_TRUE(Says(details, Kind::kNote, L"have no files: AFE IMU, ultrasonic sensor"));
    EXPECT_TRUE(DetailsOf(header.Block(), kChannelsOnly).empty());
}

TEST(RecordingDetails, SensorsThatOnlyThePacketsHaveAreALoss) {
    RandomRecordingShape shape;
    shape.packetCount = 30;
    shape.packet.baseImu = shape.packet.ultrasonic = true;
    OrdHeaderText header = Version2Header(32);
    header.Set("-BaseIMUAvailable", "0")
        .Set("-AfeIMUAvailable", "0")
        .Set("-UltrasonicAvailable", "0 1");
    const std::string recording = BuildOrdFile(header, MakeRandomPackets(82, shape));
    const auto details = DetailsOf(recording, AllOutputs());
    EXPECT_EQ(details.size(), 2U);
    EXPECT_TRUE(Says(details, Kind::kNote, L"so they have no files: AFE IMU"));
    EXPECT_TRUE(
        Says(details, Kind::kLoss,
             L"its packets carry data that its header does not announce, so these were left out: "
             L"base IMU, ultrasonic sensor; set -BaseIMUAvailable 1, "
             L"-UltrasonicAvailable 1 in a copy and convert the copy"));
    // They were not requested.
    EXPECT_TRUE(DetailsOf(recording, kChannelsOnly).empty());
}

TEST(RecordingDetails, HeaderWithoutChannelsIsNotedIfTheyWereRequested) {
    const auto details = DetailsOf(Version2Header(0).Block(), kChannelsOnly);
    EXPECT_TRUE(Says(details, Kind::kNote, L"have no files: A/D channels"));
}

}  // namespace
}  // namespace stalwick::test
