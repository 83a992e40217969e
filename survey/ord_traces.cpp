// SPDX-License-Identifier: BSD-3-Clause
#include "survey/ord_traces.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "ord/packet_stream.h"
#include "outputs/header_text.h"
#include "outputs/output_format.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "survey/packet_envelope.h"
#include "survey/time_line.h"
#include "survey/time_search.h"
#include "survey/time_spans.h"
#include "survey/ttl_spans.h"

namespace stalwick {

namespace {

constexpr double kMicrovoltsPerVolt = 1e6;
constexpr double kNanosecondsPerSecond = 1e9;

TraceSet Refuse(TraceError::Kind kind, const std::wstring& path, const std::wstring& why) {
    TraceSet set;
    set.error = {kind, OneLine(path) + L": " + why};
    return set;
}

// One pass over the packets of a stretch. About 200 KB: not for the stack.
class OrdTracer {
  public:
    OrdTracer(PacketStream& stream, const TraceRequest& request,
              const PacketEnvelope::Stretch& stretch)
        : stream_(stream),
          request_(request),
          stretch_(stretch),
          envelope_(stretch),
          ttl_(1.0 / stretch.samplesPerSecond),
          timeLine_(stream.Header().samplingFrequency) {
        set_.startSeconds = stretch.startSeconds;
    }

    // Call it if packets were skipped: times then count from the recording's first timestamp, not
    // from that of the first packet read.
    void CountFrom(std::uint64_t firstStampNs) { firstStampNs_ = firstStampNs; }

    void ReadAll() {
        while (ReadPart()) {
        }
    }
    [[nodiscard]] TraceSet Finish();

  private:
    bool ReadPart();
    void TakePacket(const StreamPart& part);
    void TakeDamage(const StreamPart& part);
    double EndSeconds() const;
    double PacketSeconds() const { return kSamplesPerPacket / stretch_.samplesPerSecond; }
    void AddTime();
    void AddTraces();
    std::vector<std::uint32_t> ChannelsToShow() const;
    std::wstring Name() const { return OneLine(request_.paths.front()); }

    PacketStream& stream_;
    const TraceRequest& request_;
    PacketEnvelope::Stretch stretch_;
    PacketEnvelope envelope_;
    TtlSpans ttl_;
    TimeLine timeLine_;
    std::optional<std::uint64_t> firstStampNs_;
    double offsetSeconds_ = 0.0;  // of the first packet that was read
    double seconds_ = 0.0;        // where the next packet is expected
    bool isOver_ = false;         // the recording has ended
    std::uint64_t packets_ = 0;
    std::uint32_t channelsCarried_ = 0;
    std::vector<DamagedStretch> damage_;
    std::optional<std::size_t> damageBefore_;
    ORDDataPacket packet_;
    TraceSet set_;
};

double OrdTracer::EndSeconds() const {
    return stretch_.seconds ? stretch_.startSeconds + *stretch_.seconds
                            : std::numeric_limits<double>::infinity();
}

// False if nothing more belongs to the stretch.
bool OrdTracer::ReadPart() {
    const StreamPart part = stream_.Next(packet_);
    switch (part.kind) {
        case StreamPart::Kind::kPacket:
            TakePacket(part);
            return seconds_ - PacketSeconds() < EndSeconds();
        case StreamPart::Kind::kDamage:
            TakeDamage(part);
            return true;
        case StreamPart::Kind::kEnd:
            isOver_ = true;
            break;
    }
    return false;
}

void OrdTracer::TakePacket(const StreamPart& part) {
    double seconds = static_cast<double>(packets_) * PacketSeconds();
    if (packet_.hardwareTimestamp) {
        if (packets_ == 0 && firstStampNs_) {
            offsetSeconds_ = static_cast<double>(*packet_.hardwareTimestamp - *firstStampNs_) /
                             kNanosecondsPerSecond;
        }
        const auto step = timeLine_.Take(*packet_.hardwareTimestamp, part.position, damageBefore_);
        if (step == TimeLine::Step::kOdd || damageBefore_) ttl_.Break();
        seconds =
            offsetSeconds_ + static_cast<double>(timeLine_.ElapsedNs()) / kNanosecondsPerSecond;
    } else if (damageBefore_) {
        ttl_.Break();
    }
    damageBefore_.reset();
    ++packets_;
    seconds_ = seconds + PacketSeconds();
    channelsCarried_ = std::max(channelsCarried_, 32U << packet_.channelCountCode);
    if (seconds_ <= stretch_.startSeconds || seconds >= EndSeconds()) return;
    envelope_.Take(packet_, seconds);
    ttl_.Coarsen(envelope_.Scale().columnSeconds);
    ttl_.Take(packet_, seconds);
}

void OrdTracer::TakeDamage(const StreamPart& part) {
    DamagedStretch damage{part.position, part.size, part.refusal, part.noticedAt, {}, {}};
    damage.atSeconds = seconds_ - offsetSeconds_;
    damageBefore_ = damage_.size();
    damage_.push_back(damage);
}

// Gaps and damage in the part that was read, and its length.
void OrdTracer::AddTime() {
    TimeAccount account;
    timeLine_.Finish(account, damage_);
    set_.seconds = seconds_ - stretch_.startSeconds;
    if (stretch_.seconds && (!isOver_ || *stretch_.seconds < set_.seconds)) {
        set_.seconds = *stretch_.seconds;
    }
    const ColumnScale& scale = envelope_.Scale();
    TimeSpans gaps(scale.columnSeconds);
    for (const RecordingGap& gap : account.gaps) {
        const double from = offsetSeconds_ + gap.atSeconds;
        gaps.Add({from, from + gap.seconds, 1, gap.missingSamples});
    }
    TimeSpans damage(scale.columnSeconds);
    for (const DamagedStretch& stretch : damage_) {
        const double from = offsetSeconds_ + *stretch.atSeconds;
        const auto missing = stretch.missingSamples.value_or(0);
        const double length = static_cast<double>(missing) / stretch_.samplesPerSecond;
        damage.Add({from, from + length, 1, missing});
    }
    set_.gaps = gaps.Within(set_.startSeconds, set_.EndSeconds());
    set_.damage = damage.Within(set_.startSeconds, set_.EndSeconds());
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        set_.ttlHigh[line] = ttl_.High(line).Within(set_.startSeconds, set_.EndSeconds());
    }
    if (!account.backwardTimestamps.empty()) {
        set_.warnings.push_back(Name() + L": its timestamps go back in time at byte " +
                                std::to_wstring(account.backwardTimestamps.front().position) +
                                L"; in the picture, time continues from there");
    }
}

std::vector<std::uint32_t> OrdTracer::ChannelsToShow() const {
    if (!request_.channels.empty()) return request_.channels;
    std::vector<std::uint32_t> channels;
    for (std::uint32_t channel = 0; channel < kMostADChannels; ++channel) {
        if (!envelope_.Columns(channel).empty()) channels.push_back(channel);
    }
    if (!channels.empty()) return channels;
    // If the stretch is a gap, the header determines which channels it would contain.
    for (std::uint32_t channel = 0;
         channel < std::min(stream_.Header().numADChannels, kMostADChannels); ++channel) {
        channels.push_back(channel);
    }
    return channels;
}

void OrdTracer::AddTraces() {
    const std::uint32_t carried =
        channelsCarried_ != 0 ? channelsCarried_ : stream_.Header().numADChannels;
    for (const std::uint32_t channel : ChannelsToShow()) {
        if (channel >= carried) {
            set_.error = {TraceError::Kind::kRequest,
                          Name() + L": it has no channel " + std::to_wstring(channel + 1) +
                              L"; choose channels from 1 to " + std::to_wstring(carried)};
            return;
        }
        set_.traces.push_back({kADChannelPrefix + std::to_wstring(channel + 1),
                               stream_.Header().adBitVolts * kMicrovoltsPerVolt, envelope_.Scale(),
                               envelope_.Columns(channel)});
    }
}

TraceSet OrdTracer::Finish() {
    envelope_.Finish();
    ttl_.Finish();
    if (stream_.SystemError() != 0) {
        set_.lostData = true;
        set_.warnings.push_back(Name() + L": could not be read to its end: " +
                                SystemErrorText(stream_.SystemError()) +
                                L"; look for a whole copy");
    }
    if (packets_ == 0) {
        return Refuse(TraceError::Kind::kUnreadable, request_.paths.front(),
                      L"it has no packets to draw; choose another recording");
    }
    if (seconds_ <= stretch_.startSeconds) {
        return Refuse(TraceError::Kind::kRequest, request_.paths.front(),
                      L"it ends after " + FormatDouble(seconds_, std::chars_format::fixed, 3) +
                          L" s; choose an earlier --start");
    }
    AddTime();
    AddTraces();
    return std::move(set_);
}

struct StretchPlace {
    std::unique_ptr<PacketStream> stream;
    std::optional<std::uint64_t> firstStampNs;  // none: the stream is at its beginning
    std::optional<double> secondsToEnd;         // of the recording, from the first sample
};

// Opens the recording and, if possible, moves to the start of the stretch.
StretchPlace FindStretch(const TraceRequest& request) {
    StretchPlace place{std::make_unique<PacketStream>(), {}, {}};
    PacketStream& stream = *place.stream;
    if (stream.Open(request.paths.front()) != 0) return place;
    if (!stream.PacketsCarryTimestamps() || stream.FileSize() == 0) return place;
    const auto ends = FindTimeEnds(stream);
    if (ends) {
        const double packetSeconds =
            double{kSamplesPerPacket} / std::max(stream.Header().samplingFrequency, 1U);
        place.secondsToEnd =
            static_cast<double>(ends->lastStampNs - ends->firstStampNs) / kNanosecondsPerSecond +
            packetSeconds;
        const auto startNs =
            static_cast<std::uint64_t>(request.startSeconds * kNanosecondsPerSecond);
        const auto packetNs = static_cast<std::uint64_t>(packetSeconds * kNanosecondsPerSecond);
        // The packet before the start may extend into the stretch.
        if (startNs > packetNs && SkipToTime(stream, *ends, startNs - packetNs)) {
            place.firstStampNs = ends->firstStampNs;
            return place;
        }
    }
    place.stream = std::make_unique<PacketStream>();
    // If it could be opened a moment ago and now cannot, the caller reports it.
    static_cast<void>(place.stream->Open(request.paths.front()));
    return place;
}

}  // namespace

TraceSet ReadOrdTraces(const TraceRequest& request) {
    const std::wstring& path = request.paths.front();
    const StretchPlace place = FindStretch(request);
    PacketStream& stream = *place.stream;
    if (!stream.IsOpen()) {
        const SystemErrorCode code = stream.SystemError();
        return Refuse(TraceError::Kind::kUnreadable, path,
                      (code != 0 ? SystemErrorText(code) : stream.GetErrorMessage()) +
                          L"; give a recording that can be read");
    }
    if (stream.Header().samplingFrequency == 0) {
        return Refuse(TraceError::Kind::kUnreadable, path,
                      L"its -SamplingFrequency is 0; correct it in a copy");
    }
    PacketEnvelope::Stretch stretch{request.startSeconds, request.seconds,
                                    static_cast<double>(stream.Header().samplingFrequency),
                                    request.columns};
    if (place.secondsToEnd && *place.secondsToEnd > request.startSeconds) {
        const double most = *place.secondsToEnd - request.startSeconds;
        stretch.seconds = std::min(request.seconds.value_or(most), most);
    }
    const auto tracer = std::make_unique<OrdTracer>(stream, request, stretch);
    if (place.firstStampNs) tracer->CountFrom(*place.firstStampNs);
    tracer->ReadAll();
    return tracer->Finish();
}

}  // namespace stalwick
