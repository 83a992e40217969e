// SPDX-License-Identifier: BSD-3-Clause
#include "survey/compared_file.h"

#include <algorithm>
#include <cstring>

#include "outputs/raw_record.h"
#include "outputs/vtx_data_types.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::EventRec;

constexpr std::size_t kReadAhead = 32 * sizeof(CRRec);  // bytes for each of many files

struct Field {
    std::wstring name;
    std::size_t start;  // byte of the record
    std::size_t size;
};

Field ChannelField(std::size_t byte) {
    constexpr std::size_t kSamples = offsetof(CRRec, samples);
    if (byte >= kSamples) {
        const std::size_t sample = (byte - kSamples) / sizeof(std::int16_t);
        return {L"sample " + std::to_wstring(sample), kSamples + sample * sizeof(std::int16_t),
                sizeof(std::int16_t)};
    }
    if (byte >= offsetof(CRRec, numValidSamples)) {
        return {L"number of samples", offsetof(CRRec, numValidSamples), sizeof(std::uint32_t)};
    }
    if (byte >= offsetof(CRRec, sampleFrequency)) {
        return {L"sampling frequency", offsetof(CRRec, sampleFrequency), sizeof(std::uint32_t)};
    }
    if (byte >= offsetof(CRRec, channelNumber)) {
        return {L"channel number", offsetof(CRRec, channelNumber), sizeof(std::uint32_t)};
    }
    return {L"time", offsetof(CRRec, timestamp), sizeof(std::uint64_t)};
}

Field EventField(std::size_t byte) {
    if (byte >= offsetof(EventRec, eventString)) return {L"text", byte, 1};
    if (byte >= offsetof(EventRec, reserved2)) return {L"reserved part", byte, 1};
    if (byte >= offsetof(EventRec, ttlValue)) {
        return {L"TTL value", offsetof(EventRec, ttlValue), sizeof(std::uint16_t)};
    }
    if (byte >= offsetof(EventRec, eventId)) {
        return {L"event number", offsetof(EventRec, eventId), sizeof(std::uint16_t)};
    }
    if (byte >= offsetof(EventRec, timestamp)) {
        return {L"time", offsetof(EventRec, timestamp), sizeof(std::uint64_t)};
    }
    return {L"reserved part", byte, 1};
}

Field RawField(std::size_t byte) {
    constexpr std::size_t kWord = sizeof(std::uint32_t);
    const std::size_t word = byte / kWord;
    if (word == kRawTimestampHighWord || word == kRawTimestampLowWord) {
        return {L"time (a half of it)", word * kWord, kWord};
    }
    return {L"word " + std::to_wstring(word), word * kWord, kWord};
}

Field FieldAt(OutputName::Kind kind, std::size_t byte) {
    if (kind == OutputName::Kind::kEvents) return EventField(byte);
    return kind == OutputName::Kind::kRawData ? RawField(byte) : ChannelField(byte);
}

std::wstring Value(const Field& field, const std::uint8_t* record) {
    if (field.size == sizeof(std::int16_t) && field.name.starts_with(L"sample")) {
        std::int16_t sample = 0;
        std::memcpy(&sample, record + field.start, sizeof(sample));
        return std::to_wstring(sample);
    }
    std::uint64_t value = 0;
    std::memcpy(&value, record + field.start, field.size);
    return std::to_wstring(value);
}

}  // namespace

ComparedFile::ComparedFile(const OutputInSet& output, FindingLog log)
    : kind_(output.name.kind),
      log_(std::move(log)),
      openError_(OpenOutput(output.name.kind, output.path, file_)),
      reader_(file_, kReadAhead) {}

std::wstring ComparedFile::Describe(std::size_t differing, const std::uint8_t* actual,
                                    const std::uint8_t* expected) const {
    const Field field = FieldAt(kind_, differing);
    return L"its " + field.name + L" is " + Value(field, actual) + L", the recording gives " +
           Value(field, expected);
}

void ComparedFile::Compare(const void* record, std::size_t size) {
    const auto* expected = static_cast<const std::uint8_t*>(record);
    const std::span<const std::uint8_t> actual = reader_.Look(size);
    if (actual.size() < size) {
        ++missing_;
        return;
    }
    if (std::memcmp(actual.data(), expected, size) != 0) {
        const auto differing = static_cast<std::size_t>(
            std::mismatch(actual.begin(), actual.end(), expected).first - actual.begin());
        log_.Add({record_, reader_.Position() + differing},
                 Describe(differing, actual.data(), expected));
    }
    reader_.Skip(size);
    ++record_;
}

void ComparedFile::Finish() {
    const FindingPlace end{record_, reader_.Position()};
    if (openError_ && openError_.kind != RecordFileError::Kind::kCutRecord) {
        log_.Add({}, L"it could not be compared: " + openError_.text);
    } else if (!reader_.Error().empty()) {
        log_.Add(end, L"it could not be read further: " + reader_.Error());
    } else if (missing_ != 0) {
        log_.Add(end, L"it ends after " + std::to_wstring(record_) +
                          L" records, the recording gives " + std::to_wstring(record_ + missing_));
    } else if (reader_.Position() < reader_.End()) {
        log_.Add(end, L"it continues for " + std::to_wstring(reader_.End() - reader_.Position()) +
                          L" bytes after the last record that the recording gives");
    }
}

}  // namespace stalwick
