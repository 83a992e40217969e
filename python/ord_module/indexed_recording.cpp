// SPDX-License-Identifier: BSD-3-Clause
#include "python/ord_module/indexed_recording.h"

#include <algorithm>
#include <cstring>
#include <future>
#include <stdexcept>

#include "ord/ord_file_reader.h"
#include "ord/ord_format.h"
#include "ord/packet_decoder.h"
#include "outputs/output_format.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "python/ord_module/record_clock.h"
#include "writers/sample_scaling.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

constexpr std::array<std::uint32_t, kSampleGroups> kSamplesInPacket = {kSamplesPerPacket, 1, 1,
                                                                       kUltrasonicValues};

// Number of spans decoded before their samples are copied: few enough for the cache, and enough to
// fill several cache lines in each channel's row.
constexpr std::size_t kSpansAtOnce = 4;

// Shorter requests end before a second thread has started.
constexpr std::uint64_t kLeastSamplesForThreads = 2000;

constexpr wchar_t kStaleIndex[] = L"it changed after its index was made; remove the index";

[[noreturn]] void Fail(const std::wstring& path, const std::wstring& reason) {
    throw std::runtime_error(ToUtf8(path + L": " + reason));
}

// The group's values in a packet, values[channel * samples + i]; empty if it has none.
std::span<std::uint16_t> ValuesOf(ORDDataPacket& packet, SampleGroup group) {
    switch (group) {
        case SampleGroup::kAD:
            if (packet.adSamples) return *packet.adSamples;
            break;
        case SampleGroup::kBaseImu:
            if (packet.baseIMU) return *packet.baseIMU;
            break;
        case SampleGroup::kAfeImu:
            if (packet.afeIMU) return *packet.afeIMU;
            break;
        case SampleGroup::kUltrasonic:
            if (packet.ultrasonic) return *packet.ultrasonic;
            break;
    }
    return {};
}

// Finds the same TTL changes as in the event file.
class EventFinder {
  public:
    EventFinder(const RecordingHeader& header, RecordingIndex& index)
        : index_(index),
          offset_(static_cast<std::uint64_t>(header.utcOffsetMicroseconds)),
          samplePeriod_(kMicrosecondsPerSecond / header.samplingFrequency) {}

    void Add(const ORDDataPacket& packet) {
        JoinTtlValues(packet, values_);
        if (!values_.empty() && !last_) last_ = index_.firstTtl = values_.front();
        bool saturated = false;
        std::uint64_t time = TruncateToCount(packetTime_, saturated);
        if (packet.hardwareTimestamp) {
            const auto nanoseconds = static_cast<double>(*packet.hardwareTimestamp);
            time = TruncateToCount(nanoseconds / kNanosecondsPerMicrosecond, saturated) + offset_;
        }
        for (const std::uint8_t value : values_) {
            if (value != *last_) {
                index_.eventTimes.push_back(time);
                index_.eventValues.push_back(value);
                last_ = value;
            }
            // Truncated at every sample: the event file's rule.
            time = TruncateToCount(static_cast<double>(time) + samplePeriod_, saturated);
        }
        packetTime_ += samplePeriod_ * kSamplesPerPacket;
    }

  private:
    RecordingIndex& index_;
    std::uint64_t offset_;
    double samplePeriod_;
    double packetTime_ = 0.0;
    std::optional<std::uint8_t> last_;
    std::vector<std::uint8_t> values_;
};

std::array<RecordClock, kSampleGroups> MakeClocks(const RecordingHeader& header) {
    // Without A/D channels the sensors' times have no offset: the writer's rule.
    const auto offset =
        header.numADChannels > 0 ? static_cast<std::uint64_t>(header.utcOffsetMicroseconds) : 0;
    return {RecordClock(header.samplingFrequency, offset), RecordClock(kImuFrequency, offset),
            RecordClock(kImuFrequency, offset), RecordClock(kUltrasonicFrequency, offset)};
}

// The part of the requested samples in a packet: `count` values per channel from `skipped` on,
// which go to `target` in the channel's row.
struct PacketPart {
    const std::uint16_t* values = nullptr;
    std::uint64_t skipped = 0;
    std::uint64_t count = 0;
    std::uint64_t target = 0;
};

// `first` is the number of the packet's first sample.
PacketPart PartOf(std::span<const std::uint16_t> values, std::uint64_t first,
                  const SampleRequest& request) {
    const std::uint64_t inPacket = kSamplesInPacket[static_cast<std::size_t>(request.group)];
    const std::uint64_t begin = std::max(first, request.start);
    const std::uint64_t end = std::min(first + inPacket, request.start + request.count);
    return {values.data(), begin - first, end - begin, begin - request.start};
}

// Channel by channel, so that each channel's row is visited once for many packets.
void CopySamples(std::span<const PacketPart> parts, const SampleRequest& request) {
    if (parts.empty()) return;
    const std::uint64_t inPacket = kSamplesInPacket[static_cast<std::size_t>(request.group)];
    for (std::size_t i = 0; i < request.channels.size(); ++i) {
#if defined(__GNUC__)
        // Hundreds of rows are too many streams for the processor to predict.
        if (i + 2 < request.channels.size()) {
            const std::int16_t* const next = request.rows[i + 2] + parts.front().target;
            for (std::size_t at = 0; at < parts.size() * kSamplesPerPacket; at += 32) {
                __builtin_prefetch(next + at, 1);
            }
        }
#endif
        const std::uint64_t channelStart = request.channels[i] * inPacket;
        for (const PacketPart& part : parts) {
            const std::uint16_t* from = part.values + channelStart + part.skipped;
            std::int16_t* to = request.rows[i] + part.target;
            // With a length known to the compiler, no call is needed.
            if (part.count == kSamplesPerPacket) {
                std::memcpy(to, from, kSamplesPerPacket * sizeof *from);
            } else {
                std::memcpy(to, from, part.count * sizeof *from);
            }
        }
    }
}

// Scales a packet's values in place, like the writers.
void Scale(std::span<std::uint16_t> values, SampleGroup group) {
    const std::span<std::int16_t> samples(reinterpret_cast<std::int16_t*>(values.data()),
                                          values.size());
    if (group == SampleGroup::kAD) {
        ScaleADSamples(samples);
    } else if (group != SampleGroup::kUltrasonic) {
        ScaleImuValues(samples);
    }
}

}  // namespace

IndexedRecording::IndexedRecording(const std::wstring& path) : path_(path) {
    ORDFileReader reader;
    if (reader.Open(path) != 0) Fail(path, reader.GetErrorMessage());
    header_ = reader.Header();
    if (header_.numADChannels > kMostADChannels) {
        Fail(path, L"Invalid header field -NumADChannels");
    }
    if (header_.samplingFrequency == 0) Fail(path, L"Invalid header field -SamplingFrequency");
    const SystemErrorCode code = file_.Open(path);
    if (code != 0) Fail(path, SystemErrorText(code));
}

RecordingIndex IndexedRecording::BuildIndex() const {
    ORDFileReader reader;
    if (reader.Open(path_) != 0) Fail(path_, reader.GetErrorMessage());
    RecordingIndex index;
    index.carriedChannels = header_.numADChannels;
    EventFinder events(header_, index);
    auto clocks = MakeClocks(header_);
    std::vector<ORDDataPacket> packets;
    for (bool endOfFile = false; !endOfFile;) {
        IndexedSpan span{reader.NextPacketPosition(), {}};
        for (std::size_t g = 0; g < kSampleGroups; ++g) span.first[g] = clocks[g].Samples();
        if (reader.GetData(packets, endOfFile) != 0) {
            if (reader.SystemError() != 0) Fail(path_, SystemErrorText(reader.SystemError()));
            index.endsInDamage = true;  // everything before it remains
            break;
        }
        if (!packets.empty()) index.spans.push_back(span);
        for (ORDDataPacket& packet : packets) {
            events.Add(packet);
            for (std::size_t g = 0; g < kSampleGroups; ++g) {
                const auto values = ValuesOf(packet, static_cast<SampleGroup>(g));
                if (values.empty()) continue;
                clocks[g].Add(kSamplesInPacket[g], packet.hardwareTimestamp);
                if (g != 0) continue;
                const auto carried = static_cast<std::uint32_t>(values.size() / kSamplesPerPacket);
                index.carriedChannels = std::min(index.carriedChannels, carried);
            }
        }
    }
    index.end = reader.NextPacketPosition();
    if (!index.endsInDamage && reader.UnconsumedBytes() != 0) {
        index.endsInDamage = !reader.EndsInACutPacket();
    }
    for (std::size_t g = 0; g < kSampleGroups; ++g) {
        index.recordTimes[g] = clocks[g].Times();
        index.samples[g] = clocks[g].Samples();
    }
    return index;
}

void IndexedRecording::Read(const RecordingIndex& index, const SampleRequest& request) const {
    if (request.count < kLeastSamplesForThreads) {
        ReadPart(index, request);
        return;
    }
    SampleRequest first = request;
    first.count = request.count / 2;
    SampleRequest second = request;
    second.start += first.count;
    second.count -= first.count;
    for (std::int16_t*& row : second.rows) row += first.count;
    // If no further thread is available, get() runs it on this one.
    auto rest = std::async([&] { ReadPart(index, second); });
    ReadPart(index, first);
    rest.get();
}

void IndexedRecording::ReadPart(const RecordingIndex& index, const SampleRequest& request) const {
    if (request.count == 0) return;
    const auto group = static_cast<std::size_t>(request.group);
    const std::uint64_t end = request.start + request.count;
    const auto after = std::upper_bound(index.spans.begin(), index.spans.end(), request.start,
                                        [group](std::uint64_t sample, const IndexedSpan& span) {
                                            return sample < span.first[group];
                                        });
    const auto lastChannel = *std::max_element(request.channels.begin(), request.channels.end());
    const std::size_t neededValues = (std::size_t{lastChannel} + 1) * kSamplesInPacket[group];
    std::vector<std::uint8_t> buffer(kDataBufferSize);
    std::array<std::vector<ORDDataPacket>, kSpansAtOnce> decoded;
    std::size_t spansHeld = 0;
    SpanMemory memory;
    std::vector<PacketPart> parts;
    std::uint64_t sample = request.start;
    if (after == index.spans.begin()) Fail(path_, kStaleIndex);
    const auto first = after - 1;
    for (auto span = first; span != index.spans.end() && span->first[group] < end; ++span) {
        if (span != first && span->first[group] != sample) Fail(path_, kStaleIndex);
        std::vector<ORDDataPacket>& packets = decoded[spansHeld++];
        std::size_t size = 0;
        const auto code = file_.ReadAt(span->position, buffer.data(), buffer.size(), size);
        if (code != 0) Fail(path_, SystemErrorText(code));
        ProcessDataBuffer(buffer.data(), size, packets, PacketDecodeOptions(header_),
                          kSamplesPerPacket, memory);
        sample = span->first[group];
        for (ORDDataPacket& packet : packets) {
            const auto values = ValuesOf(packet, request.group);
            if (values.empty()) continue;
            const std::uint64_t next = sample + kSamplesInPacket[group];
            if (values.size() < neededValues) break;  // reported below
            if (next > request.start && sample < end) {
                Scale(values, request.group);
                parts.push_back(PartOf(values, sample, request));
            }
            sample = next;
        }
        if (spansHeld < kSpansAtOnce) continue;
        CopySamples(parts, request);
        parts.clear();
        spansHeld = 0;
    }
    CopySamples(parts, request);
    if (sample < end) Fail(path_, kStaleIndex);
}

}  // namespace stalwick
