// SPDX-License-Identifier: BSD-3-Clause
#include "survey/output_comparison.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>

#include "platform/open_file_limit.h"
#include "platform/system_error.h"
#include "survey/compared_file.h"
#include "survey/expected_records.h"

namespace stalwick {

namespace {

// A channel file, and the construction of its expected records.
struct ComparedChannel {
    ExpectedChannel expected;
    std::unique_ptr<ComparedFile> file;
    std::uint32_t channel;  // from 0 within its group

    void Take(std::span<const std::int16_t> samples, std::optional<std::uint64_t> timestamp) {
        if (const auto* record = expected.Take(samples, timestamp)) {
            file->Compare(record, sizeof(*record));
        }
    }
    void EndRecord(bool hasTimestamps) {
        if (const auto* record = expected.End(hasTimestamps)) {
            file->Compare(record, sizeof(*record));
        }
    }
    void Finish() {
        if (const auto* record = expected.Rest()) file->Compare(record, sizeof(*record));
        file->Finish();
    }
};

class Comparison {
  public:
    Comparison(const RecordingHeader& header, const std::vector<OutputInSet>& outputs,
               std::size_t mostFindingsPerFile, VerifiedSet& set)
        : header_(header),
          offset_(static_cast<std::uint64_t>(header.utcOffsetMicroseconds)),
          events_(header.samplingFrequency, offset_),
          rawRecords_(
              {header.numADChannels, static_cast<double>(header.samplingFrequency), offset_}) {
        hasADFiles_ = std::any_of(outputs.begin(), outputs.end(), [](const OutputInSet& output) {
            return output.name.IsChannelOf(ChannelGroup::kAD);
        });
        for (const OutputInSet& output : outputs) {
            if (!output.HasHeader()) continue;
            Add(output, std::make_unique<ComparedFile>(
                            output, FindingLog(set, output.path, mostFindingsPerFile)));
        }
    }

    void Take(const ORDDataPacket& packet);
    // Packets were left out here.
    void EndRecords(bool hasTimestamps);
    void Finish();

  private:
    std::vector<ComparedChannel>& Group(ChannelGroup group) {
        return channels_[static_cast<std::size_t>(group)];
    }
    void Add(const OutputInSet& output, std::unique_ptr<ComparedFile> file);
    void TakeADSamples(const ORDDataPacket& packet);
    void TakeImuValues(ChannelGroup group, const std::optional<ImuValues>& values,
                       std::optional<std::uint64_t> timestamp);
    void TakeUltrasonic(const ORDDataPacket& packet);
    void TakeTtlValues(std::optional<std::uint64_t> timestamp);

    const RecordingHeader& header_;
    std::uint64_t offset_;
    bool hasADFiles_ = false;
    std::array<std::vector<ComparedChannel>, 4> channels_;  // by group
    ExpectedEvents events_;
    ExpectedRawRecords rawRecords_;
    std::unique_ptr<ComparedFile> eventFile_;
    std::unique_ptr<ComparedFile> rawFile_;
    std::vector<std::uint8_t> ttlValues_;
    std::vector<VtxDataTypes::EventRec> newEvents_;
    std::vector<std::uint32_t> rawWords_;
};

void Comparison::Add(const OutputInSet& output, std::unique_ptr<ComparedFile> file) {
    if (output.name.kind == OutputName::Kind::kEvents) {
        eventFile_ = std::move(file);
        return;
    }
    if (output.name.kind == OutputName::Kind::kRawData) {
        rawFile_ = std::move(file);
        return;
    }
    constexpr double kImuRate = 3000.0;
    constexpr double kUltrasonicRate = 210000.0;
    ExpectedChannel::Source source{output.name.channel, kImuRate, 0};
    if (output.name.group == ChannelGroup::kAD) source.samplesPerSecond = header_.samplingFrequency;
    if (output.name.group == ChannelGroup::kUltrasonic) source.samplesPerSecond = kUltrasonicRate;
    // Files of the sensors get the offset only together with those of A/D channels.
    if (hasADFiles_) source.offset = offset_;
    Group(output.name.group)
        .push_back({ExpectedChannel(source), std::move(file), output.name.channel});
}

void Comparison::Take(const ORDDataPacket& packet) {
    JoinTtlValues(packet, ttlValues_);
    if (packet.adSamples) TakeADSamples(packet);
    TakeImuValues(ChannelGroup::kBaseIMU, packet.baseIMU, packet.hardwareTimestamp);
    TakeImuValues(ChannelGroup::kAfeIMU, packet.afeIMU, packet.hardwareTimestamp);
    if (packet.ultrasonic) TakeUltrasonic(packet);
    if (eventFile_) TakeTtlValues(packet.hardwareTimestamp);
}

void Comparison::TakeADSamples(const ORDDataPacket& packet) {
    const std::span<const std::uint16_t> all(*packet.adSamples);
    if (rawFile_) {
        rawRecords_.Take({all, ttlValues_, packet.hardwareTimestamp}, rawWords_);
        const std::size_t recordWords = rawWords_.size() / kSamplesPerPacket;
        for (std::size_t i = 0; i < kSamplesPerPacket; ++i) {
            rawFile_->Compare(rawWords_.data() + i * recordWords,
                              recordWords * sizeof(std::uint32_t));
        }
    }
    std::array<std::int16_t, kSamplesPerPacket> samples{};
    for (ComparedChannel& channel : Group(ChannelGroup::kAD)) {
        // Channels that the packet does not have get nothing from it.
        const std::size_t first = std::size_t{channel.channel} * kSamplesPerPacket;
        if (first + kSamplesPerPacket > all.size()) continue;
        const auto own = all.subspan(first, kSamplesPerPacket);
        std::transform(own.begin(), own.end(), samples.begin(), ExpectedADSample);
        channel.Take(samples, packet.hardwareTimestamp);
    }
}

void Comparison::TakeImuValues(ChannelGroup group, const std::optional<ImuValues>& values,
                               std::optional<std::uint64_t> timestamp) {
    if (!values) return;
    for (ComparedChannel& channel : Group(group)) {
        const std::int16_t sample = ExpectedImuSample((*values)[channel.channel]);
        channel.Take({&sample, 1}, timestamp);
    }
}

void Comparison::TakeUltrasonic(const ORDDataPacket& packet) {
    std::array<std::int16_t, kUltrasonicValues> samples{};
    std::transform(packet.ultrasonic->begin(), packet.ultrasonic->end(), samples.begin(),
                   [](std::uint16_t value) { return static_cast<std::int16_t>(value); });
    for (ComparedChannel& channel : Group(ChannelGroup::kUltrasonic)) {
        channel.Take(samples, packet.hardwareTimestamp);
    }
}

void Comparison::TakeTtlValues(std::optional<std::uint64_t> timestamp) {
    newEvents_.clear();
    events_.Take(ttlValues_, timestamp, newEvents_);
    for (const auto& event : newEvents_) eventFile_->Compare(&event, sizeof(event));
}

void Comparison::EndRecords(bool hasTimestamps) {
    for (auto& group : channels_) {
        for (ComparedChannel& channel : group) channel.EndRecord(hasTimestamps);
    }
}

void Comparison::Finish() {
    for (auto& group : channels_) {
        for (ComparedChannel& channel : group) channel.Finish();
    }
    if (eventFile_) eventFile_->Finish();
    if (rawFile_) rawFile_->Finish();
}

void AllowToOpen(const std::vector<OutputInSet>& outputs) {
    constexpr std::uint64_t kReservedDescriptors = 64;
    RaiseOpenFileLimit(outputs.size() + kReservedDescriptors);
}

void ReportEnd(std::uint64_t position, const std::wstring& reason, VerifiedSet& set) {
    ++set.findingCount;
    set.findings.push_back({L"", std::nullopt, position,
                            L"the recording could not be decoded from here on, so its outputs were "
                            L"compared only with what comes before: " +
                                reason});
}

}  // namespace

void CompareRecords(ORDFileReader& recording, const std::vector<OutputInSet>& outputs,
                    std::size_t mostFindingsPerFile, VerifiedSet& set) {
    AllowToOpen(outputs);
    Comparison comparison(recording.Header(), outputs, mostFindingsPerFile, set);
    std::vector<ORDDataPacket> packets;
    for (bool endOfFile = false; !endOfFile;) {
        if (recording.GetData(packets, endOfFile) != 0) {
            ReportEnd(recording.NextPacketPosition(), recording.GetErrorMessage(), set);
            break;
        }
        for (const ORDDataPacket& packet : packets) comparison.Take(packet);
    }
    comparison.Finish();
}

void CompareRecords(PacketStream& recording, const std::vector<OutputInSet>& outputs,
                    std::size_t mostFindingsPerFile, VerifiedSet& set) {
    AllowToOpen(outputs);
    Comparison comparison(recording.Header(), outputs, mostFindingsPerFile, set);
    ORDDataPacket packet;
    StreamPart part = recording.Next(packet);
    for (; part.kind != StreamPart::Kind::kEnd; part = recording.Next(packet)) {
        if (part.kind == StreamPart::Kind::kPacket) {
            comparison.Take(packet);
        } else {
            comparison.EndRecords(recording.PacketsCarryTimestamps());
        }
    }
    if (const SystemErrorCode code = recording.SystemError(); code != 0) {
        ReportEnd(part.position, SystemErrorText(code), set);
    }
    comparison.Finish();
}

}  // namespace stalwick
