// SPDX-License-Identifier: BSD-3-Clause
#include "engine/ttl_events.h"

#include <algorithm>
#include <string_view>

#include "writers/timestamps.h"

namespace stalwick {

namespace {

constexpr std::uint16_t kTtlChangeId = 21;
constexpr std::string_view kTtlChangeText = "TTL Change.";
static_assert(kTtlChangeText.size() < VtxDataTypes::kEventStringSize);  // and its zero

// Time of the packet's first sample in microseconds.
std::uint64_t FirstSampleTime(EventFileWriterContainer& eventFile, const PacketTime& time) {
    OutputFileRecord& file = eventFile.records.front();
    // Without a hardware timestamp the offset is not added: the time counts from the file's start.
    if (!time.hardwareTimestamp) {
        return TruncateToCount(time.runningMicroseconds, eventFile.timestampsSaturated);
    }
    return TruncateToCount(static_cast<double>(file.lastBaseTimestamp) / kNanosecondsPerMicrosecond,
                           eventFile.timestampsSaturated) +
           file.timestampOffset;
}

// Only the named fields are written; the others keep the slot's previous contents.
void FillEvent(VtxDataTypes::EventRec& event, std::uint64_t timestamp, std::uint8_t ttlValue) {
    event.timestamp = timestamp;
    event.eventId = kTtlChangeId;
    event.ttlValue = ttlValue;
    *std::copy(kTtlChangeText.begin(), kTtlChangeText.end(), event.eventString.begin()) = '\0';
}

}  // namespace

std::int32_t WriteTtlEvents(EventFileWriterContainer& eventFile,
                            const std::vector<std::uint8_t>& ttlValues, const PacketTime& time) {
    OutputFileRecord& file = eventFile.records.front();
    if (time.hardwareTimestamp && *time.hardwareTimestamp != file.lastBaseTimestamp) {
        file.phase = 0;
        file.lastBaseTimestamp = *time.hardwareTimestamp;
    }
    if (ttlValues.empty()) return 0;
    if (eventFile.ttlUnset) {
        eventFile.lastTtl = ttlValues.front();
        eventFile.ttlUnset = false;
    }
    const auto differs = [&](std::uint8_t value) { return value != eventFile.lastTtl; };
    if (std::none_of(ttlValues.begin(), ttlValues.end(), differs)) return 0;

    std::uint64_t sampleTime = FirstSampleTime(eventFile, time);
    for (const std::uint8_t value : ttlValues) {
        if (differs(value)) {
            FillEvent(eventFile.NextEvent(), sampleTime, value);
            if (eventFile.CommitEvent() != 0) return -1;
            eventFile.lastTtl = value;
        }
        // Truncated at every sample, so events late in a packet are early. Do not change this
        // (pinned by TtlEvents.SampleTimesAreTruncatedAtEverySample).
        sampleTime = TruncateToCount(static_cast<double>(sampleTime) + eventFile.samplePeriod,
                                     eventFile.timestampsSaturated);
    }
    return 0;
}

}  // namespace stalwick
