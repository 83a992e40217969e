// SPDX-License-Identifier: BSD-3-Clause
#include "survey/record_check.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "outputs/header_text.h"
#include "survey/forward_reader.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::EventRec;
using VtxDataTypes::kSamplesPerRecord;

constexpr std::size_t kRecordsAhead = 256;
constexpr std::uint16_t kTtlChangeId = 21;
constexpr std::string_view kTtlChangeText = "TTL Change.";
constexpr std::uint32_t kLargestTtlValue = 255;

// Calls `take(record, place, isLast)` for each whole record.
template <typename Record, typename Take>
void ReadRecords(const RecordFile& file, FindingLog& log, const Take& take) {
    ForwardReader reader(file, kRecordsAhead * sizeof(Record));
    for (std::uint64_t i = 0; i < file.RecordCount(); ++i) {
        const FindingPlace place{i, reader.Position()};
        const std::span<const std::uint8_t> bytes = reader.Look(sizeof(Record));
        if (bytes.size() < sizeof(Record)) break;
        Record record;
        std::memcpy(&record, bytes.data(), sizeof(Record));
        take(record, place, i + 1 == file.RecordCount());
        reader.Skip(sizeof(Record));
    }
    if (!reader.Error().empty()) {
        log.Add({std::nullopt, reader.Position()},
                L"it could not be read further: " + reader.Error());
    }
}

std::wstring IsNot(const wchar_t* what, std::uint64_t value, std::uint64_t wanted) {
    return std::wstring(L"its ") + what + L" is " + std::to_wstring(value) + L", not " +
           std::to_wstring(wanted);
}

class ChannelRecordCheck {
  public:
    ChannelRecordCheck(const OutputInSet& output, const ChannelCheckContext& context)
        : channel_(output.name.channel),
          frequency_(output.header.Value(L"-SamplingFrequency")),
          mayEndEarly_(context.mayEndEarly),
          log_(context.log) {}

    void Check(const CRRec& record, const FindingPlace& place, bool isLast) {
        if (record.channelNumber != channel_) {
            log_.Add(place, IsNot(L"channel number", record.channelNumber, channel_));
        }
        CheckFrequency(record, place);
        const std::uint32_t valid = record.numValidSamples;
        if (valid == 0 || valid > kSamplesPerRecord) {
            log_.Add(place, L"it says that it has " + std::to_wstring(valid) + L" samples");
            return;
        }
        if (!isLast && !mayEndEarly_ && valid != kSamplesPerRecord) {
            log_.Add(place, L"it has only " + std::to_wstring(valid) +
                                L" samples, which no record but the last may have");
        }
        const auto unused = record.samples.begin() + valid;
        if (std::any_of(unused, record.samples.end(),
                        [](std::int16_t value) { return value != 0; })) {
            log_.Add(place, L"samples after its " + std::to_wstring(valid) + L" are not 0");
        }
    }

  private:
    // The header prints six digits of it.
    void CheckFrequency(const CRRec& record, const FindingPlace& place) {
        if (sound_ && *sound_ == record.sampleFrequency) return;
        constexpr int kDigits = 6;
        if (FormatDouble(record.sampleFrequency, std::chars_format::general, kDigits) ==
                frequency_ &&
            !sound_) {
            sound_ = record.sampleFrequency;
            return;
        }
        log_.Add(place, L"its sampling frequency is " + std::to_wstring(record.sampleFrequency) +
                            L", not " + frequency_);
    }

    std::uint32_t channel_;
    std::wstring frequency_;
    std::optional<std::uint32_t> sound_;
    bool mayEndEarly_;
    FindingLog& log_;
};

std::uint64_t AddToDigest(std::uint64_t digest, std::uint64_t value) {
    constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15U;  // odd, its bits evenly spread
    constexpr unsigned kHalf = 32;
    digest = (digest ^ value) * kMultiplier;
    return digest ^ digest >> kHalf;
}

void CheckEvent(const EventRec& event, const FindingPlace& place, FindingLog& log) {
    if (event.eventId != kTtlChangeId) {
        log.Add(place, IsNot(L"event number", event.eventId, kTtlChangeId));
    }
    if (event.ttlValue > kLargestTtlValue) {
        log.Add(place, L"its TTL value is " + std::to_wstring(event.ttlValue) + L", above 255");
    }
    EventRec plain{};
    plain.timestamp = event.timestamp;
    plain.eventId = event.eventId;
    plain.ttlValue = event.ttlValue;
    std::copy(kTtlChangeText.begin(), kTtlChangeText.end(), plain.eventString.begin());
    if (plain.eventString != event.eventString) {
        log.Add(place, L"its text is not \"TTL Change.\"");
    }
    if (plain.reserved != event.reserved || plain.reserved2 != event.reserved2) {
        log.Add(place, L"reserved bytes of it are not 0");
    }
}

}  // namespace

ChannelTotals CheckChannelRecords(const OutputInSet& output, const RecordFile& file,
                                  const ChannelCheckContext& context) {
    ChannelRecordCheck check(output, context);
    ChannelTotals totals;
    std::uint64_t samplesBefore = kSamplesPerRecord;
    const auto take = [&](const CRRec& record, const FindingPlace& place, bool isLast) {
        check.Check(record, place, isLast);
        context.steps.CheckOrder(record.timestamp, place);
        context.steps.CheckGap(record.timestamp, samplesBefore, place);
        if (context.mayEndEarly) samplesBefore = record.numValidSamples;
        ++totals.records;
        totals.samples += record.numValidSamples;
        totals.timesDigest = AddToDigest(totals.timesDigest, record.timestamp);
    };
    ReadRecords<CRRec>(file, context.log, take);
    return totals;
}

void CheckEventRecords(const RecordFile& file, TimeSteps& steps, FindingLog& log) {
    std::optional<std::uint16_t> lastTtl;
    const auto take = [&](const EventRec& event, const FindingPlace& place, bool /*isLast*/) {
        CheckEvent(event, place, log);
        steps.CheckOrder(event.timestamp, place);
        if (lastTtl == event.ttlValue) {
            log.Add(place, L"its TTL value equals that of the previous event, so nothing changed");
        }
        lastTtl = event.ttlValue;
    };
    ReadRecords<EventRec>(file, log, take);
}

}  // namespace stalwick
