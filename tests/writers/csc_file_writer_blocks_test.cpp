// SPDX-License-Identifier: BSD-3-Clause

// How much of the buffered records reaches the channel files: at a full block, at the end, at a
// failure.

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/case_step.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/output_failures.h"
#include "tests/support/reference_writers.h"
#include "tests/support/temp_directory.h"
#include "tests/writers/open_channels.h"
#include "writers/csc_file_writer_container.h"
#include "writers/sample_scaling.h"

namespace stalwick::test {
namespace {

TEST(CSCFileWriterBlocks, FinishWritesThePartialRecord) {
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

TEST(CSCFileWriterBlocks, FinishWithNothingBufferedLeavesTheHeaderOnly) {
    OpenChannels channels;
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    EXPECT_EQ(ReadFile(channels.directory.Path(L"CSC1.vcs")).size(), 16384U);
}

TEST(CSCFileWriterBlocks, FinishWithoutAnyFileSucceeds) {
    CSCFileWriterContainer container(ChannelSettings());
    EXPECT_EQ(container.FinishCscFiles(), 0);
}

TEST(CSCFileWriterBlocks, FullBlockIsWrittenAtOnceAndNothingOfItComesBack) {
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

TEST(CSCFileWriterBlocks, BlockThatEndsWithTheRecordingHasNothingAfterIt) {
    OpenChannels channels(kADOnly, 4);
    for (int call = 0; call < 256; ++call) channels.Write(10, 1000);  // 5 x 512 samples
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    const auto records = RecordsOf(channels.directory.Path(L"CSC1.vcs"));
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[4].numValidSamples, 512U);
}

TEST(CSCFileWriterBlocks, CompleteRecordsAloneHaveNoPartialOneAfterThem) {
    OpenChannels channels(kADOnly, 4);
    for (int call = 0; call < 4; ++call) channels.Write(512, 1000 + call);
    EXPECT_EQ(channels.container.FinishCscFiles(), 0);
    EXPECT_EQ(RecordsOf(channels.directory.Path(L"CSC1.vcs")).size(), 4U);
}

TEST(CSCFileWriterBlocks, FileWhoseBlockCannotBeWrittenFailsAndTakesNothingMore) {
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

// Two channels' packets of ten samples. With `shorter`, every third has only the first channel's.
std::vector<std::vector<std::int16_t>> PacketsOfTwoChannels(std::size_t count, bool shorter) {
    std::vector<std::vector<std::int16_t>> packets(count);
    for (std::size_t i = 0; i < count; ++i) {
        packets[i].resize(shorter && i % 3 == 2 ? 10 : 20);
        for (std::size_t k = 0; k < packets[i].size(); ++k) {
            packets[i][k] = static_cast<std::int16_t>(i * 300 + k * 50);
        }
    }
    return packets;
}

// The second of these completes a record. So do 256 packets, without samples left for the next one.
constexpr std::array<std::size_t, 5> kPacketsTogether = {40, 15, 1, 7, 237};
constexpr std::size_t kPackets = 300;

// Writes the same packets with these times once together and once one by one.
void ExpectSameTogetherAndApart(std::span<const std::optional<std::uint64_t>> times, bool shorter) {
    OpenChannels together, apart;
    auto packets = PacketsOfTwoChannels(times.size(), shorter);
    auto samePackets = packets;
    std::vector<SampleBlock> blocks;
    for (std::size_t i = 0; i < packets.size(); ++i) {
        blocks.push_back({packets[i], times[i]});
        EXPECT_EQ(WriteSamples(apart.container, samePackets[i], 10, ChannelGroup::kAD, times[i]),
                  0);
    }
    std::span<const SampleBlock> rest(blocks);
    for (const std::size_t count : kPacketsTogether) {
        EXPECT_EQ(together.container.WriteSamples(rest.first(count), 10, ChannelGroup::kAD), 0);
        rest = rest.subspan(count);
    }
    EXPECT_TRUE(rest.empty());
    EXPECT_EQ(together.container.FinishCscFiles(), 0);
    EXPECT_EQ(apart.container.FinishCscFiles(), 0);
    for (const wchar_t* const name : {L"CSC1.vcs", L"CSC2.vcs"}) {
        EXPECT_EQ(ReadFile(together.directory.Path(name)).substr(16384),
                  ReadFile(apart.directory.Path(name)).substr(16384));
    }
    EXPECT_EQ(RecordsOf(together.directory.Path(L"CSC2.vcs")).size(), shorter ? 4U : 6U);
}

TEST(CSCFileWriterBlocks, PacketsWrittenTogetherGiveWhatTheyGiveOneByOne) {
    using Time = std::optional<std::uint64_t>;
    const auto at = [](std::size_t i) { return Time(i * 333'333 + 1'000'000); };
    const std::array<std::pair<const char*, std::function<Time(std::size_t)>>, 9> cases = {{
        {"none", [](std::size_t) { return Time(); }},
        {"each its own", at},
        {"two the same", [&](std::size_t i) { return at(i / 2); }},
        {"all the same", [&](std::size_t) { return at(0); }},
        {"every fifth none", [&](std::size_t i) { return i % 5 == 3 ? Time() : at(i); }},
        {"one new time, of a packet alone", [&](std::size_t i) { return at(i < 55 ? 0 : 1); }},
        {"new times after the first of seven",
         [&](std::size_t i) { return at(std::clamp<std::size_t>(i, 56, 62)); }},
        {"seven with new times, then none",
         [&](std::size_t i) { return i > 62 ? Time() : at(i < 56 ? 0 : i); }},
        {"one without a time, then six with one, then none",
         [&](std::size_t i) { return i == 56 || i > 62 ? Time() : at(i < 56 ? 0 : i); }},
    }};
    for (const auto& [name, timeOf] : cases) {
        SCOPED_TRACE(name);
        std::vector<Time> times;
        for (std::size_t i = 0; i < kPackets; ++i) times.push_back(timeOf(i));
        for (const bool shorter : {false, true}) ExpectSameTogetherAndApart(times, shorter);
    }
}

// `count` packets of ten samples for the 16 channels, each with its own time, written together.
void WriteTogether(OpenChannels& channels, std::size_t count) {
    std::vector<std::vector<std::int16_t>> packets(count, std::vector<std::int16_t>(16 * 10, 1000));
    std::vector<SampleBlock> blocks;
    for (std::size_t i = 0; i < count; ++i) blocks.push_back({packets[i], (i + 1) * 1'000'000});
    EXPECT_EQ(channels.container.WriteSamples(blocks, 10, ChannelGroup::kAD), 0);
}

TEST(CSCFileWriterBlocks, RecordIsCompleteWithItsLastSample) {
    OpenChannels channels;
    WriteTogether(channels, 256);  // 5 x 512 samples
    EXPECT_EQ(channels.FilledSamples(0), 0U);
    EXPECT_EQ(channels.container.records[0].bufferedCount, 5U);
}

TEST(CSCFileWriterBlocks, RecordThatOneCallOverfillsIsCompletedByTheNextPacket) {
    OpenChannels channels;
    EXPECT_EQ(channels.Write(1024, 1000), 0);
    EXPECT_EQ(channels.FilledSamples(0), 512U);
    WriteTogether(channels, 3);
    EXPECT_EQ(channels.FilledSamples(0), 30U);
    EXPECT_EQ(channels.container.records[0].bufferedCount, 2U);
}

TEST(CSCFileWriterBlocks, FileThatFailsEndsThePacketAndLaterOnesForTheFilesAfterIt) {
    OpenChannels channels(kADOnly, 1);
    std::vector<std::int16_t> first(16 * 500, 1000), second(16 * 500, 1000), third(second);
    FaultyFileCalls calls;
    calls.bytesUntilFull = 2 * sizeof(VtxDataTypes::CRRec);
    const std::vector<SampleBlock> blocks = {{first, 1000}, {second, 2000}, {third, 3000}};
    EXPECT_EQ(channels.container.WriteSamples(blocks, 500, ChannelGroup::kAD), -1);
    // The first file's two records filled the space; the second file's first one fails.
    EXPECT_EQ(channels.FilledSamples(0), 1500U - 2 * 512);
    EXPECT_TRUE(channels.container.records[1].cscBuffer.empty());
    for (std::size_t file = 2; file < 16; ++file) EXPECT_EQ(channels.FilledSamples(file), 500U);
}

TEST(CSCFileWriterBlocks, FilesThatAreFilledSideBySideAreWrittenInTurns) {
    OpenChannels channels(kADOnly, 4);
    channels.Write(512, 1000);
    for (const auto& [name, size] :
         {std::pair(L"CSC1.vcs", 0U), std::pair(L"CSC2.vcs", 0U), std::pair(L"CSC3.vcs", 0U),
          std::pair(L"CSC4.vcs", 1044U), std::pair(L"CSC8.vcs", 1044U)}) {
        EXPECT_EQ(ReadFile(channels.directory.Path(name)).size(), 16384U + size) << name;
    }
}

constexpr std::array<std::uint32_t, 4> kRecordsPerWrite = {48, 0, 1, 1250};

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
        EXPECT_EQ(WriteSamples(container, samples, count, group, time), 0);
    }

    std::string DataOf(std::size_t file) const {
        return ReadFile(container.records[file].filePath).substr(16384);
    }

    TempDirectory directory;
    CSCFileWriterContainer container;
    std::vector<ReferenceChannelFile> reference;
};

TEST(CSCFileWriterBlocks, RecordingThatFailsLeavesTheFullBlocksOfEveryFile) {
    WriteQueue queue;
    queue.StartThread();
    for (WriteQueue* const used : {static_cast<WriteQueue*>(nullptr), &queue}) {
        for (std::size_t i = 0; i < kRecordsPerWrite.size(); i += kCaseStep) {
            LongChannels channels(ChannelSettings(kRecordsPerWrite[i]), used);
            channels.container.LeaveUnfinished();
            EXPECT_EQ(channels.container.fileIO.CompleteWrites(), 0);
            for (std::size_t file = 0; file < 12; ++file) {
                EXPECT_EQ(channels.DataOf(file).size(), 5000U * 1044);
                EXPECT_TRUE(SameBytes(channels.DataOf(file), channels.reference[file].written));
            }
        }
    }
}

TEST(CSCFileWriterBlocks, KillAtAnyTimeLeavesTheFullBlocksOfEveryFile) {
    for (std::size_t i = 0; i < kRecordsPerWrite.size(); i += kCaseStep) {
        const LongChannels channels{ChannelSettings(kRecordsPerWrite[i])};
        for (std::size_t file = 0; file < 12; ++file) {
            const std::string& full = channels.reference[file].written;
            EXPECT_TRUE(SameBytes(channels.DataOf(file).substr(0, full.size()), full));
        }
    }
}

TEST(CSCFileWriterBlocks, RecordingThatFailsKeepsEveryWholeRecordIfTheSettingsKeepThem) {
    OutputSettings settings = ChannelSettings();
    settings.keepPartialBlocks = true;
    LongChannels channels(settings);
    channels.container.LeaveUnfinished();
    EXPECT_EQ(channels.DataOf(0).size(), 5006U * 1044);
    for (std::size_t file = 0; file < 12; ++file) {
        const ReferenceChannelFile& reference = channels.reference[file];
        EXPECT_TRUE(SameBytes(channels.DataOf(file), reference.written + reference.pending));
    }
}

TEST(CSCFileWriterBlocks, FileThatCannotBeShortenedIsNamed) {
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

}  // namespace
}  // namespace stalwick::test
