// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/data_processor.h"
#include "engine/output_failures.h"
#include "engine/packet_census.h"
#include "engine/packet_clock.h"
#include "engine/packet_source.h"
#include "engine/parallel_conversions.h"
#include "engine/skipped_stretches.h"
#include "engine/span_reader.h"
#include "survey/time_line.h"
#include "writers/csc_file_writer_container.h"
#include "writers/event_file_writer_container.h"
#include "writers/rdf_file_writer_container.h"

namespace stalwick {

// How to convert one recording.
struct FileConversionRequest {
    std::wstring inputPath;
    std::wstring outputDirectory;
    ChannelOptions channelOptions{};
    bool writeEvents = false;
    bool writeRawData = false;
    ParallelConversions& parallel;  // this one included
};

// The conversion of one recording: its reader, its writers, and the path of its packets. Lives
// while that file is converted and is used by one thread; helper threads read ahead of it and write
// after it.
class FileConversion {
  public:
    FileConversion(DataProcessor& processor, const FileConversionRequest& request,
                   const OutputSettings& settings);
    ~FileConversion();
    FileConversion(const FileConversion&) = delete;
    FileConversion& operator=(const FileConversion&) = delete;

    // Returns 0 if the file was converted or the job was canceled, otherwise -1. The processor's
    // error text is set only for failures that have one.
    std::int32_t Run();

    // Closes whatever is still open and reports what became of the recording, but not whether it
    // failed. Call it once, last.
    ConversionAccount TakeAccount();

  private:
    struct OpenedOutput {
        std::wstring path;
        std::uint64_t recordBytes;
    };

    std::int32_t Fail(const std::wstring& errorText);
    std::int32_t FailInput(bool inLastBlock);
    void AddDetail(ConversionDetail::Kind kind, const std::wstring& text);
    ConversionDetail& AddInputDetail(ConversionDetail::Kind kind, const std::wstring& text);

    std::int32_t PrepareOutputDirectory();
    std::int32_t OpenInput();
    void SelectChannelGroups();
    std::uint64_t CountOutputFiles() const;
    std::int32_t OpenOutputs();
    std::int32_t OpenChannelFiles();
    std::int32_t OpenEventFile();
    std::int32_t OpenRawDataFile();
    bool IsOn(ChannelGroup group) const { return switches_[static_cast<std::size_t>(group)] != 0; }

    std::int32_t ConvertSpans();
    void StartHelpers(SpanReader& spans);
    void ReportOpenFileLimit(std::uint64_t needed, std::uint64_t limit);
    void ReportWhereItStopped(bool inLastBlock);
    void ReportUnreadInput();
    void ReportTrailingBytes();
    void ReportHeader();
    void ReportAbsentGroups();
    void ReportPackets();
    void ReportChannels();
    std::vector<OutputEnd> OutputEnds() const;
    void ReportSkipped();
    void ReportOutputs();
    void ListOutputs();
    void NoteOpenOutputs();
    std::int32_t ConvertSpan(DecodedSpan& span);
    void Skip(const StreamPart& stretch);
    void FollowTime(const ORDDataPacket& packet, std::uint64_t position);
    std::int32_t ConvertPacket(ORDDataPacket& packet);
    void WriteADBlocks();
    void WriteSensorValues(const ORDDataPacket& packet);
    std::int32_t Finish();
    void LeaveOutputsUnfinished();
    void FinishEventFile();
    void SyncNames();

    DataProcessor& processor_;
    FileConversionRequest request_;
    std::wstring directory_;  // of this file's outputs
    bool madeDirectory_ = false;
    ChannelOptions switches_{};
    HelperThreads helperThreads_;
    bool hasHelpers_ = false;
    bool tookCore_ = false;
    WriteQueue queue_;
    CSCFileWriterContainer channelFiles_;
    EventFileWriterContainer eventFile_;
    RDFFileWriterContainer rawDataFile_;
    std::unique_ptr<PacketSource> source_;
    std::vector<OpenedOutput> openedOutputs_;
    bool packetsDone_ = false;  // all were converted, or the conversion was canceled
    bool inputFailed_ = false;  // the recording ended the conversion

    std::vector<SampleBlock> adBlocks_;  // of the span's packets, not yet written
    std::array<std::int16_t, kImuValues> baseImuValues_{};
    std::array<std::int16_t, kImuValues> afeImuValues_{};
    std::array<std::int16_t, kUltrasonicValues> ultrasonicValues_{};
    std::vector<std::uint8_t> ttlValues_;
    double packetTime_ = 0.0;    // microseconds, of the packet without a hardware timestamp
    double recordPeriod_ = 0.0;  // microseconds that ten samples span
    PacketClock clock_;
    std::optional<TimeLine> timeLine_;
    std::optional<std::size_t> skippedBefore_;  // the next packet: in account_.skipped
    PacketCensus census_;
    SkippedStretches skipped_;
    ConversionAccount account_;
    std::wstring syncFailure_;  // of the directories; empty if there is none
};

}  // namespace stalwick
