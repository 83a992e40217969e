// SPDX-License-Identifier: BSD-3-Clause
#include "survey/survey_recording.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <optional>

#include "ord/packet_stream.h"
#include "platform/system_error.h"
#include "survey/channel_collector.h"
#include "survey/output_sizes.h"
#include "survey/time_line.h"

namespace stalwick {

namespace {

constexpr double kMicrovoltsPerVolt = 1e6;
constexpr std::uint64_t kQuickPackets = 64;        // at the beginning
constexpr std::uint64_t kQuickEndBytes = 131'072;  // more than ten of the longest packets

// A survey in progress. About 100 KB: not for the stack.
class Surveyor {
  public:
    Surveyor(PacketStream& stream, RecordingSurvey& survey, SurveyWatcher* watcher)
        : stream_(stream),
          survey_(survey),
          watcher_(watcher),
          timeLine_(stream.Header().samplingFrequency),
          channels_(stream.Header().samplingFrequency) {}

    void ReadAll() {
        while (ReadPart()) {
        }
    }
    void ReadBothEnds(std::uint64_t fileSize);
    void Finish();

  private:
    bool ReadPart();
    bool TakePacket(const StreamPart& part);
    void TakeTtl(WatchedPacket& watched);
    void TakeDamage(const StreamPart& part);
    void CountBlocks();
    void FindMaskedChannels();
    double SamplesSeconds() const;

    PacketStream& stream_;
    RecordingSurvey& survey_;
    SurveyWatcher* watcher_;  // or null
    ORDDataPacket packet_;
    TimeLine timeLine_;
    ChannelCollector channels_;
    OutputCounter outputs_;
    std::vector<std::uint8_t> ttlValues_;
    std::optional<std::uint8_t> lastTtl_;
    std::optional<std::size_t> damageBefore_;  // the next packet: index in survey_.damage
};

// False if the recording ends, or if the watcher wants no more packets.
bool Surveyor::ReadPart() {
    const StreamPart part = stream_.Next(packet_);
    switch (part.kind) {
        case StreamPart::Kind::kPacket:
            return TakePacket(part);
        case StreamPart::Kind::kDamage:
            TakeDamage(part);
            return true;
        case StreamPart::Kind::kEnd:
            survey_.cutEndBytes = part.size;
            survey_.cutEndRefusal = part.refusal;
            break;
    }
    return false;
}

bool Surveyor::TakePacket(const StreamPart& part) {
    WatchedPacket watched{packet_, part.position};
    if (!survey_.hasTimestamps) watched.seconds = SamplesSeconds();
    ++survey_.packets;
    survey_.packetBytes += part.size;
    ++survey_.packetsByChannelCode[packet_.channelCountCode];
    CountBlocks();
    const bool follows = !damageBefore_.has_value();
    bool isRegular = follows;
    if (packet_.hardwareTimestamp) {
        const auto step = timeLine_.Take(*packet_.hardwareTimestamp, part.position, damageBefore_);
        isRegular = follows && step == TimeLine::Step::kRegular;
    }
    damageBefore_.reset();
    if (!isRegular) channels_.BreakRuns();
    // A conversion ends at the first damage.
    if (survey_.damage.empty()) outputs_.Take(packet_);
    TakeTtl(watched);
    if (survey_.hasTimestamps) watched.seconds = static_cast<double>(timeLine_.ElapsedNs()) / 1e9;
    watched.follows = isRegular;
    const bool goOn = watcher_ == nullptr || watcher_->Take(watched);
    // Last: it takes the packet's samples away.
    if (packet_.adSamples) channels_.Take(packet_);
    return goOn;
}

void Surveyor::CountBlocks() {
    BlockCounts& blocks = survey_.blocks;
    if (packet_.adSamples) ++blocks.adSamples;
    if (packet_.baseIMU) ++blocks.baseImu;
    if (packet_.afeIMU) ++blocks.afeImu;
    if (packet_.ultrasonic) ++blocks.ultrasonic;
    if (packet_.channelMask && !packet_.channelMask->empty()) ++blocks.channelMask;
    if (packet_.stateHigh.size() > 1) ++blocks.statePerSample;
    if (packet_.hardwareTimestamp) ++blocks.hardwareTimestamp;
}

void Surveyor::TakeTtl(WatchedPacket& watched) {
    JoinTtlValues(packet_, ttlValues_);
    std::uint64_t& events = watched.ttlEvents;
    for (const std::uint8_t value : ttlValues_) {
        const unsigned changed = static_cast<unsigned>(value ^ lastTtl_.value_or(value));
        lastTtl_ = value;
        if (changed == 0) continue;
        ++events;
        watched.ttlChanged = static_cast<std::uint8_t>(watched.ttlChanged | changed);
        for (unsigned bits = changed; bits != 0; bits &= bits - 1) {
            ++survey_.ttlChanges[static_cast<std::size_t>(std::countr_zero(bits))];
        }
    }
    survey_.ttlEvents += events;
    if (survey_.damage.empty()) outputs_.TakeEvents(events);
}

void Surveyor::TakeDamage(const StreamPart& part) {
    DamagedStretch damage{part.position, part.size, part.refusal, part.noticedAt, {}, {}};
    if (survey_.packets > 0) {
        damage.atSeconds = survey_.hasTimestamps ? static_cast<double>(timeLine_.ElapsedNs()) / 1e9
                                                 : SamplesSeconds();
    }
    survey_.damagedBytes += part.size;
    damageBefore_ = survey_.damage.size();
    survey_.damage.push_back(damage);
}

double Surveyor::SamplesSeconds() const {
    const std::uint32_t frequency = survey_.header.samplingFrequency;
    if (frequency == 0) return 0.0;
    return static_cast<double>(survey_.packets) * kSamplesPerPacket / frequency;
}

// Only a few packets at each end of a long file; everything in between counts as not read.
void Surveyor::ReadBothEnds(std::uint64_t fileSize) {
    const std::uint64_t head = kQuickPackets * kLongestPacketSize;
    if (fileSize < kHeaderBlockSize + head + 2 * kQuickEndBytes) return ReadAll();
    survey_.quick = true;
    for (std::uint64_t i = 0; i < kQuickPackets; ++i) {
        if (!ReadPart()) return;
    }
    if (!stream_.SkipTo(fileSize - kQuickEndBytes)) return;
    ReadAll();
}

void Surveyor::FindMaskedChannels() {
    for (std::size_t code = 0; code < survey_.packetsByChannelCode.size(); ++code) {
        if (survey_.packetsByChannelCode[code] != 0) survey_.channelsCarried = 32U << code;
    }
    if (survey_.blocks.adSamples == 0) survey_.channelsCarried = 0;
    const auto recorded = static_cast<std::uint32_t>(survey_.channelStatistics.size());
    survey_.channelsMasked = survey_.channelsCarried - std::min(recorded, survey_.channelsCarried);
}

void Surveyor::Finish() {
    survey_.durationSeconds = SamplesSeconds();
    if (survey_.quick && survey_.packetBytes != 0) {
        // As if the packets in between were like these; timestamps are more exact.
        survey_.durationSeconds *= static_cast<double>(survey_.fileSize - kHeaderBlockSize) /
                                   static_cast<double>(survey_.packetBytes);
    }
    timeLine_.Finish(survey_, survey_.damage);
    survey_.channelStatistics = channels_.Finish(survey_.header.adBitVolts * kMicrovoltsPerVolt);
    survey_.outputs = outputs_.Finish(survey_.header);
    FindMaskedChannels();
    if (stream_.SystemError() != 0) survey_.readError = SystemErrorText(stream_.SystemError());
    if (!survey_.quick) return;
    // The step from one end to the other is not a gap, and these are not the recording's.
    survey_.gaps.clear();
    survey_.missingSamples = 0;
    survey_.gapSeconds = 0.0;
    survey_.outputs.clear();
    survey_.channelStatistics.clear();
}

}  // namespace

RecordingSurvey SurveyRecording(const std::wstring& path, SurveyDepth depth,
                                SurveyWatcher* watcher) {
    RecordingSurvey survey;
    survey.path = path;
    PacketStream stream;
    if (stream.Open(path) != 0) {
        const SystemErrorCode code = stream.SystemError();
        survey.error = code != 0 ? SystemErrorText(code) : stream.GetErrorMessage();
        return survey;
    }
    survey.fileSize = stream.FileSize();
    survey.header = stream.Header();
    survey.hasTimestamps = stream.PacketsCarryTimestamps();
    const auto surveyor = std::make_unique<Surveyor>(stream, survey, watcher);
    if (watcher != nullptr) watcher->Begin(survey.header, survey.fileSize);
    if (depth == SurveyDepth::kQuick) {
        surveyor->ReadBothEnds(survey.fileSize);
    } else {
        surveyor->ReadAll();
    }
    surveyor->Finish();
    return survey;
}

}  // namespace stalwick
