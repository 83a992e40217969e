// SPDX-License-Identifier: BSD-3-Clause

// Recordings that end in damage or cannot be read to their end: each output keeps exactly the full
// blocks of 5000 records filled by then, regardless of the pieces in which its data were written.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr ReferenceConvertOptions kRawOnly{false, false, false, false, false, true};
constexpr std::size_t kChannelBlockBytes = std::size_t{5000} * 1044;

std::string Junk() {
    return std::string(60000, 'x');
}

testing::AssertionResult FailsLikeTheReference(const std::string& recording,
                                               const ReferenceConvertOptions& options) {
    for (const HelperThreads helperThreads : {HelperThreads::kOff, HelperThreads::kOn}) {
        OutputSettings settings = QuickSettings();
        settings.helperThreads = helperThreads;
        const auto result = ConvertsLikeTheReference(recording, options, settings);
        if (!result) return result;
    }
    const TempDirectory nowhere;
    if (RunReference(nowhere, recording, options).status == 0) {
        return testing::AssertionFailure() << "the recording is whole";
    }
    return testing::AssertionSuccess();
}

// Ultrasonic blocks fill records fastest, 512 samples in 7.3 packets; the inertial units' values
// slowest, one sample per packet.
std::vector<PacketPlan> SensorPackets(std::size_t count) {
    std::vector<PacketPlan> plans(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto value = static_cast<std::uint16_t>(i * 13);
        plans[i].hardwareTimestamp = 1'000'000'000 + i * 333'333;
        plans[i].ultrasonic.emplace().fill(value);
        plans[i].baseImu.emplace().fill(value);
        plans[i].afeImu.emplace().fill(static_cast<std::uint16_t>(~value));
    }
    return plans;
}

TEST(DamagedRecording, ChannelFileKeepsItsFullBlocks) {
    // 36,572 packets are 5000 records and 40 samples, 36,571 end 30 samples before them.
    for (const std::size_t packetCount : {36571U, 36572U, 37000U}) {
        EXPECT_TRUE(FailsLikeTheReference(
            BuildOrdFile(Version2Header(0), SensorPackets(packetCount), Junk()),
            {false, true, true, true, true, false}))
            << packetCount;
    }
}

TEST(DamagedRecording, EachOfSeveralChannelsWithoutAFullBlockKeepsNothing) {
    // 4000 packets are 78 records of each of 32 channels.
    RandomRecordingShape shape;
    shape.packet.baseImu = true;
    shape.packet.largestStep = 3;
    shape.packetCount = 4000;
    EXPECT_TRUE(FailsLikeTheReference(
        BuildOrdFile(Version2Header(32), MakeRandomPackets(61, shape), Junk()), AllOutputs()));
}

TEST(DamagedRecording, RawDataKeepTheirFullBlocks) {
    RandomRecordingShape shape;
    shape.packet.largestStep = 3;
    for (const std::size_t packetCount : {499U, 500U, 501U, 1100U}) {
        shape.packetCount = packetCount;
        EXPECT_TRUE(FailsLikeTheReference(
            BuildOrdFile(Version2Header(32), MakeRandomPackets(62, shape), Junk()), kRawOnly))
            << packetCount;
    }
}

// Packets of other channel counts than the header's, so that records have other lengths.
std::string RecordingOfWidths(const std::vector<std::uint8_t>& channelCountCodes,
                              std::size_t packetCount) {
    std::vector<std::vector<PacketPlan>> plans;
    for (const std::uint8_t code : channelCountCodes) {
        RandomRecordingShape shape;
        shape.packet.channelCountCode = code;
        shape.packet.largestStep = 3;
        shape.packetCount = packetCount;
        plans.push_back(MakeRandomPackets(63, shape));
    }
    std::vector<PacketPlan> mixed;
    for (std::size_t i = 0; i < packetCount; ++i) mixed.push_back(plans[i % plans.size()][i]);
    return BuildOrdFile(Version2Header(32), mixed, Junk());
}

TEST(DamagedRecording, RawDataOfOtherWidthsKeepTheBlocksThatTheirRecordsFilled) {
    const std::uint8_t k32 = 0;
    const std::uint8_t k64 = 1;
    const std::uint8_t k256 = 3;
    // Blocks that a record would exceed, and blocks that records fill exactly.
    EXPECT_TRUE(FailsLikeTheReference(RecordingOfWidths({k64}, 700), kRawOnly));
    EXPECT_TRUE(FailsLikeTheReference(RecordingOfWidths({k32, k64}, 1000), kRawOnly));
    EXPECT_TRUE(FailsLikeTheReference(RecordingOfWidths({k64, k32, k32, k256}, 700), kRawOnly));
}

// What the reference leaves of the packets converted before the read failed.
std::map<std::string, std::string> FilesOfPackets(const TempDirectory& directory, std::size_t count,
                                                  const ReferenceConvertOptions& options) {
    const std::string damaged = BuildOrdFile(Version2Header(0), SensorPackets(count), Junk());
    return RunReference(directory, damaged, options).files;
}

TEST(DamagedRecording, FailedReadLeavesTheSameAsDamage) {
    const ReferenceConvertOptions options{false, true, false, true, true, true};
    const std::string recording = BuildOrdFile(Version2Header(0), SensorPackets(37'500));
    for (const HelperThreads helperThreads : {HelperThreads::kOff, HelperThreads::kOn}) {
        const TempDirectory directory;
        OutputSettings settings = QuickSettings();
        settings.helperThreads = helperThreads;
        FaultyFileCalls calls;
        calls.readError = 5;
        calls.readsUntilError = 146;  // shortly before the end
        const EngineRun run = RunEngine(directory, recording, options, settings);
        EXPECT_EQ(run.statusText, L"Processing failed - Failed to process input file");
        ASSERT_GT(run.recordsProcessed, 36'572U);
        EXPECT_EQ(run.files.at("Ultrasonic.vcs").size(), kOrdHeaderBytes + kChannelBlockBytes);
        EXPECT_TRUE(SameFiles(run.files, FilesOfPackets(directory, run.recordsProcessed, options)));
    }
}

TEST(DamagedRecording, FailedReadIsReportedWithWhatTheSettingsKeep) {
    const std::string recording = BuildOrdFile(Version2Header(0), SensorPackets(2'000));
    for (const OnDamage onDamage : {OnDamage::kStop, OnDamage::kSkip}) {
        const TempDirectory directory;
        OutputSettings settings = QuickSettings();
        settings.onDamage = onDamage;
        FaultyFileCalls calls;
        calls.readError = 5;
        calls.readsUntilError = 3;
        const EngineRun run =
            RunEngine(directory, recording, {false, false, false, true, false, false}, settings);
        ASSERT_EQ(run.details.size(), 1U);
        const bool keepsAll = onDamage == OnDamage::kSkip;
        EXPECT_EQ(run.details[0].text.find(L"every whole record before it") != std::wstring::npos,
                  keepsAll);
        EXPECT_EQ(run.details[0].cause, keepsAll ? ConversionDetail::Cause::kOther
                                                 : ConversionDetail::Cause::kInputFailed);
    }
}

TEST(DamagedRecording, CanceledOneKeepsEverythingBeforeTheCancel) {
    const ReferenceConvertOptions options{false, false, false, true, true, false};
    const std::string recording = BuildOrdFile(Version2Header(0), SensorPackets(37'000), Junk());
    const TempDirectory directory;
    DataProcessor processor(QuickSettings());
    FaultyFileCalls calls;
    calls.beforeRead = [&](unsigned readCount) {
        if (readCount == 130) processor.cancelRequested.store(1);
    };
    std::wstring status;
    const std::wstring input = PutRecording(directory, recording);
    RunConversionJob(MakeJob(directory, {input}, options, processor, status));
    EXPECT_EQ(status, L"Data processing canceled.");
    const std::uint64_t samples = processor.recordsProcessed.load() * 70;
    const std::uint64_t records = (samples + 511) / 512;
    EXPECT_NE(records % 5000, 0U);
    EXPECT_EQ(ReadFile(directory.Path(L"out/rec/Ultrasonic.vcs")).size(),
              kOrdHeaderBytes + records * 1044);
}

// 1300 samples per channel, partly written in small blocks when the damage comes.
std::string ShortDamagedRecording() {
    RandomRecordingShape shape;
    shape.packet.ultrasonic = true;
    shape.packetCount = 130;
    return BuildOrdFile(Version2Header(2), MakeRandomPackets(64, shape), Junk());
}

OutputSettings OneRecordAtATime() {
    OutputSettings settings = QuickSettings();
    settings.recordsPerWrite = 1;
    settings.helperThreads = HelperThreads::kOff;  // writing does not lag
    return settings;
}

TEST(DamagedRecording, FileThatCannotBeShortenedIsADetailAndTheRestIsUnchanged) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.truncateError = SystemErrorFor(SystemErrorKind::kOther);
    const EngineRun run =
        RunEngine(directory, ShortDamagedRecording(), AllOutputs(), OneRecordAtATime());
    EXPECT_EQ(run.statusText, L"Processing failed - Failed to process buffer. 0 bytes consumed.");
    std::wstring details;
    for (const ConversionDetail& detail : run.details) {
        if (detail.kind == ConversionDetail::Kind::kIncomplete) details += detail.text + L'\n';
    }
    const std::wstring rec = directory.Path(L"out") + kPathSeparator + L"rec" + kPathSeparator;
    for (const wchar_t* names : {L"CSC1.vcs to CSC2.vcs", L"RawData.vrd: "}) {
        EXPECT_NE(details.find(L"cannot shorten " + rec + names), std::wstring::npos) << details;
    }
    EXPECT_NE(details.find(L" and Ultrasonic.vcs: "), std::wstring::npos) << details;
    for (const wchar_t* name : {L"CSC1.vcs", L"CSC2.vcs", L"Ultrasonic.vcs", L"RawData.vrd"}) {
        EXPECT_NE(ReadFile(rec + name).find("File was not closed properly"), std::string::npos);
    }
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(DamagedRecording, NothingIsShortenedIfPartialBlocksAreKept) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    OutputSettings settings = OneRecordAtATime();
    settings.keepPartialBlocks = true;
    const EngineRun run = RunEngine(directory, ShortDamagedRecording(), AllOutputs(), settings);
    EXPECT_EQ(calls.truncateCount, 0U);
    EXPECT_EQ(run.files.at("CSC1.vcs").size(), kOrdHeaderBytes + 2 * 1044);
    EXPECT_EQ(run.files.at("Ultrasonic.vcs").size(), kOrdHeaderBytes + 130 * 70 / 512 * 1044);
    EXPECT_EQ(run.files.at("RawData.vrd").size(), kOrdHeaderBytes + 1300 * (2 + 18 + 30) * 4);
}

TEST(DamagedRecording, FailedOutputLeavesTheOthersUnshortened) {
    // More than 5000 changes of the TTL input: a full block of events that cannot be written.
    std::vector<PacketPlan> plans = SensorPackets(5200);
    for (std::size_t i = 0; i < plans.size(); ++i) {
        plans[i].stateBytes = {static_cast<std::uint8_t>(i % 2 == 0 ? 0x10 : 0x20)};
    }
    const TempDirectory directory;
    FaultyFileCalls calls;
    calls.bytesUntilFull = 800'000;  // room for the ultrasonic records, not for the events
    const EngineRun run = RunEngine(directory, BuildOrdFile(Version2Header(0), plans),
                                    {false, false, false, true, true, false}, OneRecordAtATime());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_EQ(calls.truncateCount, 0U);
    EXPECT_GT(run.files.at("Ultrasonic.vcs").size(), kOrdHeaderBytes + 600'000);
}

}  // namespace
}  // namespace stalwick::test
