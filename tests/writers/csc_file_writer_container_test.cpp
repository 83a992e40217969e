// SPDX-License-Identifier: BSD-3-Clause
#include "writers/csc_file_writer_container.h"

#include <limits>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/output_failures.h"
#include "tests/support/temp_directory.h"
#include "tests/writers/open_channels.h"
#include "writers/sample_scaling.h"

namespace stalwick::test {
namespace {

constexpr ChannelOptions kEverything = {1, 1, 1, 1};

TEST(CSCFileWriterContainer, FilesOpenInTheirOrderWithTheirNames) {
    const OpenChannels channels(kEverything);
    const auto& records = channels.container.records;
    ASSERT_EQ(records.size(), 16U + 9 + 9 + 1);
    EXPECT_EQ(records[0].acqEntName, L"CSC1");
    EXPECT_EQ(records[15].acqEntName, L"CSC16");
    EXPECT_EQ(records[15].channelIndex, 15U);
    EXPECT_EQ(channels.container.baseImuFirst, 16U);
    const wchar_t* const names[] = {L"LAX", L"LAY", L"LAZ", L"AVX", L"AVY",
                                    L"AVZ", L"MX",  L"MY",  L"MZ"};
    for (std::uint32_t i = 0; i < 9; ++i) {
        EXPECT_EQ(records[16 + i].acqEntName, std::wstring(L"Base_") + names[i]);
        EXPECT_EQ(records[25 + i].acqEntName, std::wstring(L"AFE_") + names[i]);
        EXPECT_EQ(records[25 + i].channelIndex, i);
        EXPECT_EQ(records[16 + i].samplingFrequency, 3000.0);
    }
    EXPECT_EQ(channels.container.afeImuFirst, 25U);
    EXPECT_EQ(channels.container.ultrasonicFirst, 34U);
    EXPECT_EQ(records[34].acqEntName, L"Ultrasonic");
    EXPECT_EQ(records[34].samplingFrequency, 210000.0);
    EXPECT_EQ(records[34].channelIndex, 0U);
    EXPECT_EQ(records[0].recordSize, 1044U);
}

TEST(CSCFileWriterContainer, OpeningComparesOptionsWithOneAndWritingTakesAnyForYes) {
    const TempDirectory directory;
    CSCFileWriterContainer container(ChannelSettings());
    container.numAdChannels = 2;
    container.samplingFrequency = 30000;
    EXPECT_EQ(container.InitializeCscFiles(directory.Path(), {2, 0, 0, 0}), 0);
    EXPECT_TRUE(container.records.empty());
    std::vector<std::int16_t> samples(20, 1000);
    EXPECT_EQ(WriteSamples(container, samples, 10, ChannelGroup::kAD, {}), 0);
    EXPECT_EQ(samples[0], 48);
}

TEST(CSCFileWriterContainer, SamplesOfAGroupThatIsOnWithoutFilesGoNowhere) {
    const TempDirectory directory;
    CSCFileWriterContainer container(ChannelSettings());
    EXPECT_EQ(container.InitializeCscFiles(directory.Path(), {0, 2, 2, 2}), 0);
    std::vector<std::int16_t> samples(70, 512);
    EXPECT_EQ(WriteSamples(container, samples, 1, ChannelGroup::kBaseIMU, {}), 0);
    EXPECT_EQ(WriteSamples(container, samples, 1, ChannelGroup::kAfeIMU, {}), 0);
    EXPECT_EQ(WriteSamples(container, samples, 70, ChannelGroup::kUltrasonic, {}), 0);
    EXPECT_EQ(container.FinishCscFiles(), 0);
}

TEST(CSCFileWriterContainer, FailedOpenEndsTheOpening) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"CSC3.vcs"));
    CSCFileWriterContainer container(ChannelSettings());
    container.numAdChannels = 16;
    EXPECT_EQ(container.InitializeCscFiles(directory.Path(), kADOnly), -1);
    EXPECT_EQ(container.records.size(), 2U);
    EXPECT_EQ(NamesIn(directory.Path()),
              (std::set<std::string>{"CSC1.vcs", "CSC2.vcs", "CSC3.vcs"}));
    EXPECT_EQ(FailuresOf(container.fileIO.Files()).size(), 1U);
}

TEST(CSCFileWriterContainer, GroupThatIsOffIsRefusedAndItsSamplesStay) {
    OpenChannels channels;
    std::vector<std::int16_t> samples(9, 1000);
    EXPECT_EQ(WriteSamples(channels.container, samples, 1, ChannelGroup::kBaseIMU, {}), -1);
    EXPECT_EQ(samples, std::vector<std::int16_t>(9, 1000));
}

TEST(CSCFileWriterContainer, ScalingIsTruncatedTowardZero) {
    std::vector<std::int16_t> ad = {1000, -1000, 20, 21, -20, 32767, -32768, 0};
    ScaleADSamples(ad);
    EXPECT_EQ(ad, (std::vector<std::int16_t>{48, -48, 0, 1, 0, 1594, -1595, 0}));
    std::vector<std::int16_t> imu = {-1, 255, 256, -255, -256, 32767, -32768};
    ScaleImuValues(imu);
    EXPECT_EQ(imu, (std::vector<std::int16_t>{0, 0, 1, 0, -1, 127, -128}));
}

TEST(CSCFileWriterContainer, UltrasonicSamplesAreNotScaled) {
    OpenChannels channels(kEverything);
    EXPECT_EQ(channels.Write(70, 1000, ChannelGroup::kUltrasonic, 1, -12345), 0);
    EXPECT_EQ(channels.Record(34, 0).samples[69], -12345);
}

TEST(CSCFileWriterContainer, FiftySecondCallCompletesARecordAndStartsTheNext) {
    OpenChannels channels;
    for (std::uint64_t call = 0; call < 52; ++call) channels.Write(10, 1'000'000 + call * 333'333);
    for (std::size_t file = 0; file < 16; ++file) {
        EXPECT_EQ(channels.container.records[file].bufferedCount, 1U);
        EXPECT_EQ(channels.Record(file, 0).numValidSamples, 512U);
        EXPECT_EQ(channels.FilledSamples(file), 8U);
        EXPECT_EQ(channels.TimeOf(file, 0), 1000U + 1000U);
        // Two samples after the packet's time: 51 x 333.333 + 2 x 33.33 µs, and the offset.
        EXPECT_EQ(channels.TimeOf(file, 1), 18066U + 1000U);
        EXPECT_EQ(channels.Record(file, 1).channelNumber, file);
        EXPECT_EQ(channels.Record(file, 1).sampleFrequency, 30000U);
    }
}

TEST(CSCFileWriterContainer, PhaseLagsBehindTheSamplesThatStartARecord) {
    OpenChannels channels;
    for (int call = 0; call < 52; ++call) channels.Write(10, 1'000'000);
    // 512 samples advanced the phase; the 8 that start the next record did not.
    EXPECT_EQ(channels.container.records[0].phase, 512U % 10U);
    for (int call = 52; call < 103; ++call) channels.Write(10, 1'000'000);
    EXPECT_EQ(channels.container.records[0].bufferedCount, 2U);
    // The next record starts after 4 of the packet's samples, yet its phase is 512 + 504.
    EXPECT_EQ(channels.container.records[0].phase, (512U + 504U) % 10U);
    EXPECT_EQ(channels.TimeOf(0, 2), 1000U + 6 * 33 + 2 + 1000U);
}

TEST(CSCFileWriterContainer, NewBaseTimestampResetsThePhaseAndARepeatedOneDoesNot) {
    OpenChannels channels;
    channels.Write(3, 5000);
    EXPECT_EQ(channels.container.records[0].phase, 3U);
    channels.Write(3, 5000);
    EXPECT_EQ(channels.container.records[0].phase, 6U);
    channels.Write(3, 6000);
    EXPECT_EQ(channels.container.records[0].phase, 3U);
}

TEST(CSCFileWriterContainer, PhaseWrapsAtItsModulus) {
    OpenChannels channels;
    EXPECT_EQ(channels.container.records[0].phaseModulus, 10U);
    for (int call = 0; call < 5; ++call) channels.Write(7, 5000);
    EXPECT_EQ(channels.container.records[0].phase, 5U);
}

TEST(CSCFileWriterContainer, WithoutBaseTimestampsTimeRunsFromZeroWithoutOffset) {
    OpenChannels channels;
    for (int call = 0; call < 103; ++call) channels.Write(10, {});
    EXPECT_EQ(channels.TimeOf(0, 0), 0U);
    EXPECT_EQ(channels.TimeOf(0, 1), 17066U);  // 512 / 30 kHz = 17066.67 µs
    EXPECT_EQ(channels.TimeOf(0, 2), 34133U);  // the sum is kept exact
}

TEST(CSCFileWriterContainer, BaseTimestampOfZeroCountsAsNone) {
    OpenChannels channels;
    channels.Write(10, 0);
    EXPECT_EQ(channels.TimeOf(0, 0), 0U);
}

TEST(CSCFileWriterContainer, RecordAfterMissingBaseTimestampsUsesTheLastOne) {
    OpenChannels channels;
    channels.Write(10, 9'000'000);
    for (int call = 1; call < 52; ++call) channels.Write(10, {});
    EXPECT_EQ(channels.TimeOf(0, 1), 9000U + 2 * 33 + 1000U);
}

TEST(CSCFileWriterContainer, SamplesAreFileByFile) {
    OpenChannels channels(kEverything);
    std::vector<std::int16_t> samples(9);
    for (std::size_t i = 0; i < 9; ++i) samples[i] = static_cast<std::int16_t>(256 * i);
    EXPECT_EQ(WriteSamples(channels.container, samples, 1, ChannelGroup::kAfeIMU, 1000), 0);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(channels.Record(25 + i, 0).samples[0], static_cast<std::int16_t>(i));
        EXPECT_EQ(channels.FilledSamples(16 + i), 0U);
    }
}

TEST(CSCFileWriterContainer, ChannelsBeyondTheBlockGetNothingAndTheirStateStays) {
    OpenChannels channels;
    EXPECT_EQ(channels.Write(10, 7777, ChannelGroup::kAD, 12), 0);
    EXPECT_EQ(channels.FilledSamples(11), 10U);
    EXPECT_EQ(channels.FilledSamples(12), 0U);
    EXPECT_EQ(channels.container.records[12].lastBaseTimestamp, 0U);
    EXPECT_EQ(channels.container.records[12].phase, 0U);
}

TEST(CSCFileWriterContainer, TimestampBeyondTheRangeIsClampedToItsEndAndReported) {
    OpenChannels channels;
    channels.container.records[0].interpolationFrequency = 0.0;
    channels.container.records[0].lastBaseTimestamp = 5;
    channels.container.records[0].phase = 1;
    channels.container.records[0].timestampOffset = 0;
    channels.Write(1, {});
    EXPECT_TRUE(channels.container.timestampsSaturated);
    EXPECT_EQ(channels.TimeOf(0, 0), std::numeric_limits<std::uint64_t>::max());
}

}  // namespace
}  // namespace stalwick::test
