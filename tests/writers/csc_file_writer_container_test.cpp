#include "writers/csc_file_writer_container.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/output_failures.h"
#include "tests/support/reference_writers.h"
#include "tests/support/temp_directory.h"
#include "writers/sample_scaling.h"

namespace stalwick::test {
namespace {

using VtxDataTypes::CRRec;

constexpr ChannelOptions kADOnly = {1, 0, 0, 0};
constexpr ChannelOptions kEverything = {1, 1, 1, 1};

OutputSettings Settings(std::uint32_t recordsPerWrite = 0) {
    OutputSettings settings = QuickSettings();
    settings.recordsPerWrite = recordsPerWrite;
    return settings;
}

// Open channel files: 16 A/D channels of 30 kHz, offset 1000 µs.
struct OpenChannels {
    explicit OpenChannels(const ChannelOptions& options = kADOnly,
                          std::uint32_t recordsPerWrite = 0)
        : container(Settings(recordsPerWrite)) {
        container.numAdChannels = 16;
        container.samplingFrequency = 30000;
        container.timestampOffset = 1000;
        EXPECT_EQ(container.InitializeCscFiles(directory.Path(), options), 0);
    }

    // A block of `samplesPerChannel` equal samples for so many channels.
    std::int32_t Write(std::uint32_t samplesPerChannel, std::optional<std::uint64_t> time,
                       ChannelGroup group = ChannelGroup::kAD, std::size_t channels = 16,
                       std::int16_t value = 1000) {
        std::vector<std::int16_t> samples(channels * samplesPerChannel, value);
        return container.WriteSamples(samples, samplesPerChannel, group, time);
    }
    const CRRec& Record(std::size_t file, std::size_t record) const {
        return container.records[file].cscBuffer[record];
    }
    // A copy: the field may stand anywhere.
    std::uint64_t TimeOf(std::size_t file, std::size_t record) const {
        return Record(file, record).timestamp;
    }

    TempDirectory directory;
    CSCFileWriterContainer container;
};

// The records behind the header of a finished file.
std::vector<CRRec> RecordsOf(const std::wstring& path) {
    const std::string bytes = ReadFile(path).substr(16384);
    EXPECT_EQ(bytes.size() % sizeof(CRRec), 0U);
    std::vector<CRRec> records(bytes.size() / sizeof(CRRec));
    std::memcpy(records.data(), bytes.data(), bytes.size());
    return records;
}

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
    CSCFileWriterContainer container(Settings());
    container.numAdChannels = 2;
    container.samplingFrequency = 30000;
    EXPECT_EQ(container.InitializeCscFiles(directory.Path(), {2, 0, 0, 0}), 0);
    EXPECT_TRUE(container.records.empty());
    std::vector<std::int16_t> samples(20, 1000);
    EXPECT_EQ(container.WriteSamples(samples, 10, ChannelGroup::kAD, {}), 0);
    EXPECT_EQ(samples[0], 48);
}

TEST(CSCFileWriterContainer, SamplesOfAGroupThatIsOnWithoutFilesGoNowhere) {
    const TempDirectory directory;
    CSCFileWriterContainer container(Settings());
    EXPECT_EQ(container.InitializeCscFiles(directory.Path(), {0, 2, 2, 2}), 0);
    std::vector<std::int16_t> samples(70, 512);
    EXPECT_EQ(container.WriteSamples(samples, 1, ChannelGroup::kBaseIMU, {}), 0);
    EXPECT_EQ(container.WriteSamples(samples, 1, ChannelGroup::kAfeIMU, {}), 0);
    EXPECT_EQ(container.WriteSamples(samples, 70, ChannelGroup::kUltrasonic, {}), 0);
    EXPECT_EQ(container.FinishCscFiles(), 0);
}

TEST(CSCFileWriterContainer, GroupThatIsOffIsRefusedAndItsSamplesStay) {
    OpenChannels channels;
    std::vector<std::int16_t> samples(9, 1000);
    EXPECT_EQ(channels.container.WriteSamples(samples, 1, ChannelGroup::kBaseIMU, {}), -1);
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
        EXPECT_EQ(channels.Record(file, 1).numValidSamples, 8U);
        EXPECT_EQ(channels.TimeOf(file, 0), 1000U + 1000U);
        // Two samples behind the packet's time: 51 x 333.333 + 2 x 33.33 µs, and the offset.
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

TEST(CSCFileWriterContainer, RecordBehindMissingBaseTimestampsUsesTheLastOne) {
    OpenChannels channels;
    channels.Write(10, 9'000'000);
    for (int call = 1; call < 52; ++call) channels.Write(10, {});
    EXPECT_EQ(channels.TimeOf(0, 1), 9000U + 2 * 33 + 1000U);
}

TEST(CSCFileWriterContainer, SamplesStandFileByFile) {
    OpenChannels channels(kEverything);
    std::vector<std::int16_t> samples(9);
    for (std::size_t i = 0; i < 9; ++i) samples[i] = static_cast<std::int16_t>(256 * i);
    EXPECT_EQ(channels.container.WriteSamples(samples, 1, ChannelGroup::kAfeIMU, 1000), 0);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(channels.Record(25 + i, 0).samples[0], static_cast<std::int16_t>(i));
        EXPECT_EQ(channels.Record(16 + i, 0).numValidSamples, 0U);
    }
}

TEST(CSCFileWriterContainer, ChannelsBeyondTheBlockGetNothingAndTheirStateStays) {
    OpenChannels channels;
    EXPECT_EQ(channels.Write(10, 7777, ChannelGroup::kAD, 12), 0);
    EXPECT_EQ(channels.Record(11, 0).numValidSamples, 10U);
    EXPECT_EQ(channels.Record(12, 0).numValidSamples, 0U);
    EXPECT_EQ(channels.container.records[12].lastBaseTimestamp, 0U);
    EXPECT_EQ(channels.container.records[12].phase, 0U);
}

TEST(CSCFileWriterContainer, FinishWritesThePartialRecord) {
    OpenChannels channels;
    for (int call = 0; call < 52; ++call) channels.Write(10, 1000);
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    EXPECT_TRUE(channels.container.records.empty());
    const auto records = RecordsOf(channels.directory.Path(L"CSC16.vcs"));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1].numValidSamples, 8U);
    EXPECT_EQ(records[1].samples[7], 48);
    EXPECT_TRUE(std::all_of(records[1].samples.begin() + 8, records[1].samples.end(),
                            [](std::int16_t sample) { return sample == 0; }));
}

TEST(CSCFileWriterContainer, FinishWithNothingBufferedLeavesTheHeaderOnly) {
    OpenChannels channels;
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    EXPECT_EQ(ReadFile(channels.directory.Path(L"CSC1.vcs")).size(), 16384U);
}

TEST(CSCFileWriterContainer, FinishWithoutAnyFileSucceeds) {
    CSCFileWriterContainer container(Settings());
    EXPECT_EQ(container.FinishCscFiles(), 0);
}

TEST(CSCFileWriterContainer, FullBlockIsWrittenAtOnceAndNothingOfItComesBack) {
    // Blocks of 4 records: the fifth record begins in the first one's place.
    OpenChannels channels(kADOnly, 4);
    for (int call = 0; call < 205; ++call) channels.Write(10, 1000);
    EXPECT_EQ(channels.container.records[0].bufferedCount, 0U);
    EXPECT_EQ(ReadFile(channels.directory.Path(L"CSC1.vcs")).size(), 16384U + 4 * 1044);
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    const auto records = RecordsOf(channels.directory.Path(L"CSC1.vcs"));
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[4].numValidSamples, 2U);
    EXPECT_EQ(records[4].samples[1], 48);
    EXPECT_TRUE(std::all_of(records[4].samples.begin() + 2, records[4].samples.end(),
                            [](std::int16_t sample) { return sample == 0; }));
}

TEST(CSCFileWriterContainer, BlockThatEndsWithTheRecordingHasNothingBehindIt) {
    OpenChannels channels(kADOnly, 4);
    for (int call = 0; call < 256; ++call) channels.Write(10, 1000);  // 5 x 512 samples
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    const auto records = RecordsOf(channels.directory.Path(L"CSC1.vcs"));
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[4].numValidSamples, 512U);
}

TEST(CSCFileWriterContainer, CompleteRecordsAloneHaveNoPartialOneBehindThem) {
    OpenChannels channels(kADOnly, 4);
    for (int call = 0; call < 4; ++call) channels.Write(512, 1000 + call);
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    EXPECT_EQ(RecordsOf(channels.directory.Path(L"CSC1.vcs")).size(), 4U);
}

TEST(CSCFileWriterContainer, FileWhoseBlockCannotBeWrittenFailsAndTakesNothingMore) {
    OpenChannels channels(kADOnly, 1);
    FaultyFileCalls calls;
    calls.bytesUntilFull = 0;
    EXPECT_EQ(channels.Write(512, 1000), -1);
    EXPECT_EQ(channels.Write(10, 2000), -1);
    calls.bytesUntilFull.reset();
    EXPECT_EQ(channels.Write(512, 3000), -1);
    channels.container.LeaveUnfinished();
    EXPECT_EQ(channels.container.FinishCscFiles(), -1);
    EXPECT_EQ(ReadFile(channels.directory.Path(L"CSC1.vcs")).size(), 16384U);
}

TEST(CSCFileWriterContainer, FilesThatAreFilledSideBySideAreWrittenInTurns) {
    OpenChannels channels(kADOnly, 4);
    channels.Write(512, 1000);
    for (const auto& [name, size] :
         {std::pair(L"CSC1.vcs", 0U), std::pair(L"CSC2.vcs", 0U), std::pair(L"CSC3.vcs", 0U),
          std::pair(L"CSC4.vcs", 1044U), std::pair(L"CSC8.vcs", 1044U)}) {
        EXPECT_EQ(ReadFile(channels.directory.Path(name)).size(), 16384U + size) << name;
    }
}

// More than 5000 records in each file of two groups, through both the container and the reference.
struct LongChannels {
    explicit LongChannels(const OutputSettings& settings, WriteQueue* queue = nullptr)
        : container(settings, queue) {
        container.numAdChannels = 3;
        container.samplingFrequency = 30000;
        container.timestampOffset = 1000;
        EXPECT_EQ(container.InitializeCscFiles(directory.Path(), {1, 1, 0, 0}), 0);
        for (std::uint32_t i = 0; i < 12; ++i) {
            ReferenceChannelFile& file = reference.emplace_back();
            file.channelIndex = i < 3 ? i : i - 3;
            file.samplingFrequency = i < 3 ? 30000.0 : 3000.0;
            file.timestampOffset = 1000;
        }
        // 5007 records and a part of one for the A/D channels, 5000 and a part for the others.
        for (std::uint64_t call = 0; call < 5127; ++call) {
            Write(ChannelGroup::kAD, 3, 500, call);
            if (call < 5121) Write(ChannelGroup::kBaseIMU, 9, 500, call);
        }
    }

    void Write(ChannelGroup group, std::size_t files, std::uint32_t count, std::uint64_t call) {
        const std::size_t first = group == ChannelGroup::kAD ? 0 : 3;
        std::vector<std::int16_t> samples(files * count);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<std::int16_t>(i * 77 + call);
        }
        std::vector<std::int16_t> scaled = samples;
        group == ChannelGroup::kAD ? ScaleADSamples(scaled) : ScaleImuValues(scaled);
        const std::uint64_t time = 1'000'000 + call * 1'000'000;
        for (std::size_t i = 0; i < files; ++i) {
            reference[first + i].WriteSamples(&scaled[i * count], count, time);
        }
        EXPECT_EQ(container.WriteSamples(samples, count, group, time), 0);
    }

    std::string DataOf(std::size_t file) const {
        return ReadFile(container.records[file].filePath).substr(16384);
    }

    TempDirectory directory;
    CSCFileWriterContainer container;
    std::vector<ReferenceChannelFile> reference;
};

TEST(CSCFileWriterContainer, RecordingThatFailsLeavesTheFullBlocksOfEveryFile) {
    WriteQueue queue;
    for (WriteQueue* const used : {static_cast<WriteQueue*>(nullptr), &queue}) {
        for (const std::uint32_t recordsPerWrite : {0U, 1U, 48U, 1250U}) {
            LongChannels channels(Settings(recordsPerWrite), used);
            channels.container.LeaveUnfinished();
            EXPECT_EQ(channels.container.fileIO.CompleteWrites(), 0);
            for (std::size_t file = 0; file < 12; ++file) {
                EXPECT_EQ(channels.DataOf(file).size(), 5000U * 1044);
                EXPECT_TRUE(SameBytes(channels.DataOf(file), channels.reference[file].written));
            }
        }
    }
}

TEST(CSCFileWriterContainer, RecordingThatFailsKeepsEveryWholeRecordIfTheSettingsSaySo) {
    OutputSettings settings = Settings();
    settings.keepPartialBlocks = true;
    LongChannels channels(settings);
    channels.container.LeaveUnfinished();
    EXPECT_EQ(channels.DataOf(0).size(), 5006U * 1044);
    for (std::size_t file = 0; file < 12; ++file) {
        const ReferenceChannelFile& reference = channels.reference[file];
        EXPECT_TRUE(SameBytes(channels.DataOf(file), reference.written + reference.pending));
    }
}

TEST(CSCFileWriterContainer, FileThatCannotBeShortenedIsNamed) {
    OpenChannels channels(kADOnly, 1);
    EXPECT_EQ(channels.Write(512, 1000), 0);
    FaultyFileCalls calls;
    calls.truncateError = SystemErrorFor(SystemErrorKind::kOther);
    channels.container.LeaveUnfinished();
    ASSERT_EQ(FailuresOf(channels.container.fileIO.Files()).size(), 16U);
    EXPECT_NE(FailuresOf(channels.container.fileIO.Files())[0].find(
                  L"cannot shorten " + channels.directory.Path(L"CSC1.vcs")),
              std::wstring::npos);
}

TEST(CSCFileWriterContainer, FailedOpenEndsTheOpening) {
    const TempDirectory directory;
    MakeDirectory(directory.Path(L"CSC3.vcs"));
    CSCFileWriterContainer container(Settings());
    container.numAdChannels = 16;
    EXPECT_EQ(container.InitializeCscFiles(directory.Path(), kADOnly), -1);
    EXPECT_EQ(container.records.size(), 2U);
    EXPECT_EQ(NamesIn(directory.Path()),
              (std::set<std::string>{"CSC1.vcs", "CSC2.vcs", "CSC3.vcs"}));
    EXPECT_EQ(FailuresOf(container.fileIO.Files()).size(), 1U);
}

TEST(CSCFileWriterContainer, TimestampBeyondTheRangeIsHeldAtItsEndAndTold) {
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
