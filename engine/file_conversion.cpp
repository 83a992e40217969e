// SPDX-License-Identifier: BSD-3-Clause
#include "engine/file_conversion.h"

#include <algorithm>
#include <memory>
#include <span>

#include "engine/output_directory.h"
#include "engine/recording_check.h"
#include "engine/ttl_events.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "writers/data_file.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

constexpr std::uint32_t kImuSamplesPerPacket = 1;
// Packets whose A/D samples are sorted into their files together.
constexpr std::size_t kPacketsAtOnce = 16;

// The writers accept the packets that the reader returns.
static_assert(kPacketSamples == kSamplesPerPacket && kMostPacketChannels == kMostADChannels);

// The packet's samples, which are really signed; the writer scales them in place.
std::span<std::int16_t> AsSigned(std::vector<std::uint16_t>& samples) {
    return {reinterpret_cast<std::int16_t*>(samples.data()), samples.size()};
}

template <typename Values, typename Target>
void CopyAsSigned(const Values& values, Target& target) {
    std::transform(values.begin(), values.end(), target.begin(),
                   [](std::uint16_t value) { return static_cast<std::int16_t>(value); });
}

}  // namespace

FileConversion::FileConversion(DataProcessor& processor, const FileConversionRequest& request,
                               const OutputSettings& settings)
    : processor_(processor),
      request_(request),
      directory_(OutputDirectoryOf(request.inputPath, request.outputDirectory)),
      helperThreads_(settings.helperThreads),
      channelFiles_(settings, &queue_),
      eventFile_(settings),  // few and small blocks, whose failures end the conversion at once
      rawDataFile_(settings, &queue_),
      source_(MakePacketSource(settings.onDamage)) {
    account_.recording = request.inputPath;
    account_.outputDirectory = directory_;
}

FileConversion::~FileConversion() {
    queue_.StopThread();  // it uses the core, and the files after an exception
    if (tookCore_) request_.parallel.ReleaseCore();
}

std::int32_t FileConversion::Run() {
    if (PrepareOutputDirectory() != 0 || OpenInput() != 0) return -1;
    const std::int32_t opened = OpenOutputs();
    NoteOpenOutputs();
    if (opened != 0) return -1;
    recordPeriod_ = kMicrosecondsPerSecond / source_->Header().samplingFrequency * 10.0;
    if (processor_.FollowsTime()) timeLine_.emplace(source_->Header().samplingFrequency);
    ReportHeader();
    packetsDone_ = ConvertSpans() == 0;
    ReportSkipped();
    ReportPackets();
    // Only Finish gives headers a closing time: after a cancel too, but not after damage or a kill
    // (Durability, KillTest and KillInSmallBlocks test this).
    return packetsDone_ ? Finish() : -1;
}

std::int32_t FileConversion::Fail(const std::wstring& errorText) {
    processor_.SetErrorMessage(errorText);
    return -1;
}

std::int32_t FileConversion::FailInput(bool inLastBlock) {
    inputFailed_ = true;
    ReportWhereItStopped(inLastBlock);
    const std::wstring reason = source_->GetErrorMessage();
    return Fail(reason.empty() ? L"Failed to process input file" : reason);
}

std::int32_t FileConversion::PrepareOutputDirectory() {
    const SystemErrorCode code = EnsureOutputDirectory(directory_, &madeDirectory_);
    if (code == 0) return 0;
    // The processor's error text does not change; only the detail gives the reason.
    AddDetail(ConversionDetail::Kind::kIncomplete,
              DescribeFailure(L"create directory", directory_, code));
    return -1;
}

std::int32_t FileConversion::OpenInput() {
    if (source_->Open(request_.inputPath) != 0) {
        const SystemErrorCode code = source_->SystemError();
        AddInputDetail(ConversionDetail::Kind::kIncomplete,
                       L"not converted: " +
                           (code != 0 ? SystemErrorText(code) : source_->GetErrorMessage()) +
                           L"; choose a recording that can be read");
        return Fail(source_->GetErrorMessage());
    }
    account_.inputBytes = source_->FileSize();
    account_.adChannels = source_->Header().numADChannels;
    processor_.bytesTotal.store(account_.inputBytes, std::memory_order_relaxed);
    const RecordingRefusal refusal = CheckHeader(source_->Header());
    if (!refusal) return 0;
    // Refused before an output file is made.
    AddInputDetail(ConversionDetail::Kind::kIncomplete, refusal.reason);
    return Fail(refusal.errorText);
}

std::int32_t FileConversion::ConvertSpans() {
    SpanReader spans(*source_);
    for (bool endOfFile = false; !endOfFile;) {
        if (processor_.cancelRequested.load(std::memory_order_relaxed) != 0) {
            account_.canceled = true;
            return 0;
        }
        StartHelpers(spans);
        DecodedSpan& span = spans.Next();
        endOfFile = span.endOfFile;
        if (span.status != 0) {
            LeaveOutputsUnfinished();
            return FailInput(endOfFile);
        }
        if (ConvertSpan(span) != 0) {
            // The disk of the recording had failed before; this is the last chance to report it.
            return span.readFailedAfter ? FailInput(spans.Next().endOfFile) : -1;
        }
        account_.inputBytesRead = span.bytesRead;
        processor_.bytesProcessed.store(span.bytesRead, std::memory_order_relaxed);
    }
    ReportUnreadInput();
    return 0;
}

// Before the first span, or before the next one once another conversion has released a core.
void FileConversion::StartHelpers(SpanReader& spans) {
    if (hasHelpers_ || helperThreads_ == HelperThreads::kOff) return;
    if (helperThreads_ == HelperThreads::kWhenThereAreCores) {
        tookCore_ = request_.parallel.TryTakeCore();
        if (!tookCore_) return;
    }
    hasHelpers_ = true;
    queue_.StartThread();
    spans.ReadAhead();
}

// What fails here is reported with the outputs, by TakeAccount.
void FileConversion::LeaveOutputsUnfinished() {
    channelFiles_.LeaveUnfinished();
    eventFile_.LeaveUnfinished();
    rawDataFile_.LeaveUnfinished();
}

std::int32_t FileConversion::ConvertSpan(DecodedSpan& span) {
    auto stretch = span.skipped.begin();
    std::int32_t result = 0;
    for (std::size_t i = 0; i < span.packets.size() && result == 0; ++i) {
        if (stretch != span.skipped.end() && stretch->packetsBefore == i) Skip((stretch++)->part);
        result = ConvertPacket(span.packets[i]);
        if (result == 0 && timeLine_) FollowTime(span.packets[i], span.positions[i]);
        if (adBlocks_.size() == kPacketsAtOnce) WriteADBlocks();
    }
    WriteADBlocks();
    if (result == 0 && stretch != span.skipped.end()) Skip(stretch->part);
    return result;
}

// A failure is reported when the files are finished.
void FileConversion::WriteADBlocks() {
    channelFiles_.WriteSamples(adBlocks_, kSamplesPerPacket, ChannelGroup::kAD);
    adBlocks_.clear();
}

void FileConversion::Skip(const StreamPart& stretch) {
    WriteADBlocks();
    // A failure is reported when the files are finished.
    channelFiles_.EndRecords(PacketsCarryTimestamps(PacketDecodeOptions(source_->Header())));
    const double atSeconds = clock_.Seconds(recordPeriod_ / kMicrosecondsPerSecond);
    skipped_.Add(stretch, atSeconds);
    if (!timeLine_) return;
    skippedBefore_ = account_.skipped.size();
    account_.skipped.push_back({stretch.position, stretch.size, stretch.refusal, stretch.noticedAt,
                                clock_.Packets() != 0 ? std::optional(atSeconds) : std::nullopt,
                                std::nullopt});
}

void FileConversion::FollowTime(const ORDDataPacket& packet, std::uint64_t position) {
    if (packet.hardwareTimestamp) {
        timeLine_->Take(*packet.hardwareTimestamp, position, skippedBefore_);
    }
    skippedBefore_.reset();
}

std::int32_t FileConversion::ConvertPacket(ORDDataPacket& packet) {
    if (request_.writeEvents || request_.writeRawData) JoinTtlValues(packet, ttlValues_);
    if (packet.adSamples) {
        // The raw data first: the channel files' scaling changes the samples.
        if (request_.writeRawData) {
            rawDataFile_.WriteRawRecords(*packet.adSamples, 0, ttlValues_,
                                         packet.hardwareTimestamp);
        }
        if (IsOn(ChannelGroup::kAD)) {
            adBlocks_.push_back({AsSigned(*packet.adSamples), packet.hardwareTimestamp});
        }
    }
    WriteSensorValues(packet);
    if (request_.writeEvents &&
        WriteTtlEvents(eventFile_, ttlValues_, {packet.hardwareTimestamp, packetTime_}) != 0) {
        return -1;
    }
    // The time of ten samples, even for a packet without samples. Do not change this (pinned by
    // FileConversion.RunningTimeCountsPacketsWithoutSamples).
    packetTime_ += recordPeriod_;
    clock_.Count(packet.hardwareTimestamp);
    census_.Count(packet);
    processor_.recordsProcessed.fetch_add(1, std::memory_order_relaxed);
    return 0;
}

void FileConversion::WriteSensorValues(const ORDDataPacket& packet) {
    const auto write = [&](const auto& values, auto& signedValues, ChannelGroup group,
                           std::uint32_t samplesPerChannel) {
        if (!IsOn(group) || !values) return;
        CopyAsSigned(*values, signedValues);
        const SampleBlock block{signedValues, packet.hardwareTimestamp};
        channelFiles_.WriteSamples({&block, 1}, samplesPerChannel, group);
    };
    write(packet.baseIMU, baseImuValues_, ChannelGroup::kBaseIMU, kImuSamplesPerPacket);
    write(packet.afeIMU, afeImuValues_, ChannelGroup::kAfeIMU, kImuSamplesPerPacket);
    write(packet.ultrasonic, ultrasonicValues_, ChannelGroup::kUltrasonic, kUltrasonicValues);
}

std::int32_t FileConversion::Finish() {
    if (channelFiles_.FinishCscFiles() != 0) return -1;
    // What fails from here on changes no status text; TakeAccount reports it.
    if (request_.writeEvents) FinishEventFile();
    if (request_.writeRawData) rawDataFile_.Finish();
    SyncNames();
    source_->Close();
    return 0;
}

void FileConversion::FinishEventFile() {
    if (eventFile_.WriteBufferedEvents() != 0) return;
    eventFile_.records.front().bufferedCount = 0;
    eventFile_.fileIO.CloseAllOutputFiles();
}

// So that the outputs' names, and with them their contents, survive a power cut.
void FileConversion::SyncNames() {
    if (!channelFiles_.settings.syncBeforeFinalHeader) return;
    std::vector<std::wstring> directories = {directory_};
    if (madeDirectory_) {
        directories.push_back(request_.outputDirectory);
        // The caller may just have created that one too.
        directories.push_back(ParentDirectory(request_.outputDirectory));
    }
    for (const std::wstring& directory : directories) {
        const SystemErrorCode code = SyncDirectory(directory);
        // A directory that was moved away took its names along.
        if (code == 0 || ClassifySystemError(code) == SystemErrorKind::kNotFound) continue;
        if (syncFailure_.empty()) {
            syncFailure_ = DescribeFailure(L"sync directory", directory, code);
        }
    }
}

}  // namespace stalwick
