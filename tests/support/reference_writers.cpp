// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/reference_writers.h"

#include <algorithm>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

namespace stalwick::test {
namespace {

constexpr std::size_t kHeaderBytes = 16384;
constexpr std::size_t kSamplesPerRecord = 512;

void AppendLittleEndian(std::string& bytes, std::uint64_t value, unsigned byteCount) {
    for (unsigned i = 0; i < byteCount; ++i) {
        bytes.push_back(static_cast<char>((value >> (i * 8)) & 0xFF));
    }
}

std::ostringstream TextStream() {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    return text;
}

std::string Quoted(std::string text) {
    if (text.empty() || text.front() != '"') text.insert(text.begin(), '"');
    if (text.back() != '"') text.push_back('"');
    return text;
}

std::vector<std::uint32_t> RawRecord(const std::vector<std::uint16_t>& samples, std::size_t instant,
                                     std::uint32_t adChannelCount, std::uint64_t timestamp,
                                     std::uint8_t ttl) {
    std::vector<std::uint32_t> words = {2048, 1, adChannelCount + 10};
    words.push_back(static_cast<std::uint32_t>(timestamp >> 32));
    words.push_back(static_cast<std::uint32_t>(timestamp & 0xFFFFFFFF));
    words.push_back(0);
    words.push_back(ttl);
    for (int i = 0; i < 10; ++i) words.push_back(0);
    for (std::size_t i = instant; i < samples.size(); i += 10) {
        const double value = static_cast<std::int16_t>(samples[i]) * 12.4609375;
        words.push_back(static_cast<std::uint32_t>(static_cast<std::int32_t>(value)));
    }
    std::uint32_t checksum = 0;
    for (const std::uint32_t word : words) checksum ^= word;
    words.push_back(checksum);
    return words;
}

}  // namespace

std::uint64_t SaturatedUnsigned(double value) {
    if (!(value >= 0.0)) return 0;
    if (value >= 18446744073709551616.0) return std::numeric_limits<std::uint64_t>::max();
    return static_cast<std::uint64_t>(value);
}

std::string ReferenceCommonHeader(const ReferenceHeaderLines& lines) {
    std::ostringstream text = TextStream();
    text << "######## Veltrosyn Data File Header\r\n"
         << "-FileType " << lines.fileType << "\r\n"
         << "-FileVersion " << lines.fileVersion << "\r\n"
         << "-FileUUID " << lines.fileUuid << "\r\n"
         << "-SessionUUID " << lines.sessionUuid << "\r\n"
         << "-OriginalFileName " << Quoted(lines.path) << "\r\n"
         << "-TimeCreated " << lines.timeCreated << "\r\n"
         << "-TimeClosed " << lines.timeClosed.value_or("File was not closed properly") << "\r\n"
         << "\r\n"
         << "-RecordSize " << lines.recordSize << "\r\n"
         << "-ApplicationName \"Veltrosyn Stalwick\" \"1.2.0.1941\"\r\n"
         << "-AcquisitionSystem Unknown " << lines.acquisitionSystem << "\r\n"
         << "-AcqEntName " << lines.acqEntName << "\r\n";
    return text.str();
}

std::string ReferenceChannelLines(double samplingFrequency, std::uint32_t adMaxValue,
                                  std::uint32_t channelIndex) {
    std::ostringstream text = TextStream();
    text << "-ProbeName Unknown\r\n"
         << "-ReferenceChannel \"External Hardware Reference\"\r\n"
         << "-SamplingFrequency " << samplingFrequency << "\r\n"
         << "-ADMaxValue " << adMaxValue << "\r\n"
         << "-ADBitVolts 0.000003999999999999999819\r\n"
         << "-NumADChannels 1\r\n"
         << "-ADChannel " << channelIndex << "\r\n"
         << "-InputRange 131072\r\n";
    return text.str();
}

std::string ReferenceRawLines(double samplingFrequency, std::uint32_t adChannelCount) {
    std::ostringstream text = TextStream();
    text << "-SamplingFrequency " << samplingFrequency << "\r\n"
         << "-ADMaxValue 8388608\r\n"
         << "-ADBitVolts 1.562500e-08\r\n"
         << "-NumADChannels " << adChannelCount << "\r\n";
    return text.str();
}

void ReferenceOutputFile::WritePending() {
    written += pending;
    pending.clear();
}

std::string ReferenceOutputFile::Bytes() const {
    if (headerText.empty()) return {};
    std::string block = headerText;
    block.resize(kHeaderBytes, '\0');
    return block + written;
}

void ReferenceChannelFile::StartRecord() {
    if (lastBaseTimestamp == 0) {
        recordTimestamp = runningTimestamp;
        return;
    }
    const double nanosecondsPerSample = 1e9 / samplingFrequency;
    const double nanoseconds =
        phase * nanosecondsPerSample + static_cast<double>(lastBaseTimestamp);
    recordTimestamp = SaturatedUnsigned(nanoseconds / 1000) + timestampOffset;
}

std::string ReferenceChannelFile::RecordBytes() const {
    std::string bytes;
    AppendLittleEndian(bytes, recordTimestamp, 8);
    AppendLittleEndian(bytes, channelIndex, 4);
    AppendLittleEndian(bytes, static_cast<std::uint32_t>(samplingFrequency), 4);
    AppendLittleEndian(bytes, recordSamples.size(), 4);
    for (const std::int16_t sample : recordSamples) {
        AppendLittleEndian(bytes, static_cast<std::uint16_t>(sample), 2);
    }
    bytes.resize(1044, '\0');
    return bytes;
}

void ReferenceChannelFile::CompleteRecord(bool hasBaseTimestamp) {
    pending += RecordBytes();
    recordSamples.clear();
    ++completeCount;
    if (completeCount == recordsPerWrite) {
        WritePending();
        completeCount = 0;
    }
    if (!hasBaseTimestamp) {
        accumulatedTimestamp += (1000000 / samplingFrequency) * 512;
        runningTimestamp = SaturatedUnsigned(accumulatedTimestamp);
    }
}

void ReferenceChannelFile::WriteSamples(const std::int16_t* samples, std::size_t count,
                                        const std::optional<std::uint64_t>& baseTimestamp) {
    if (baseTimestamp && *baseTimestamp != lastBaseTimestamp) {
        phase = 0;
        lastBaseTimestamp = *baseTimestamp;
    }
    if (recordSamples.empty()) StartRecord();
    const std::size_t fitting = std::min(count, kSamplesPerRecord - recordSamples.size());
    for (std::size_t i = 0; i < fitting; ++i) {
        phase = (phase + 1) % phaseModulus;
        recordSamples.push_back(samples[i]);
    }
    if (recordSamples.size() == kSamplesPerRecord) CompleteRecord(baseTimestamp.has_value());
    if (fitting == count) return;
    // The phase does not advance for the samples that open the next record; do not change this.
    StartRecord();
    for (std::size_t i = fitting; i < count; ++i) recordSamples.push_back(samples[i]);
}

void ReferenceChannelFile::WriteRest() {
    if (!recordSamples.empty()) pending += RecordBytes();
    recordSamples.clear();
    WritePending();
}

void ReferenceEventFile::WriteTtlValues(const std::vector<std::uint8_t>& ttlValues,
                                        const std::optional<std::uint64_t>& hardwareTimestamp,
                                        double packetTime) {
    std::uint64_t time = SaturatedUnsigned(packetTime);
    if (hardwareTimestamp) {
        time =
            SaturatedUnsigned(static_cast<double>(*hardwareTimestamp) / 1000.0) + timestampOffset;
    }
    for (const std::uint8_t ttl : ttlValues) {
        if (!lastTtl) lastTtl = ttl;
        if (ttl != *lastTtl) {
            std::string record(6, '\0');
            AppendLittleEndian(record, time, 8);
            AppendLittleEndian(record, 21, 2);
            AppendLittleEndian(record, ttl, 2);
            record.resize(56, '\0');
            record += "TTL Change.";
            record.resize(184, '\0');
            pending += record;
            if (++pendingCount == recordsPerWrite) {
                WritePending();
                pendingCount = 0;
            }
            lastTtl = ttl;
        }
        // Truncated at every sample: the fraction is lost each time, on purpose.
        time = SaturatedUnsigned(static_cast<double>(time) + samplePeriod);
    }
}

void ReferenceRawFile::WriteRecords(const std::vector<std::uint16_t>& samples,
                                    const std::vector<std::uint8_t>& ttlValues,
                                    const std::optional<std::uint64_t>& packetTimestamp) {
    if (packetTimestamp) {
        const double microseconds = static_cast<double>(*packetTimestamp) / 1000.0;
        runningTimestamp = SaturatedUnsigned(microseconds) + timestampOffset;
    }
    const std::size_t bufferBytes = (std::size_t{adChannelCount} + 18) * recordsPerWrite * 4;
    std::uint8_t ttl = 0;
    for (std::size_t instant = 0; instant < 10; ++instant) {
        if (instant < ttlValues.size()) ttl = ttlValues[instant];
        const auto words = RawRecord(samples, instant, adChannelCount, runningTimestamp, ttl);
        const double next = static_cast<double>(runningTimestamp) + 1000000 / samplingFrequency;
        runningTimestamp = SaturatedUnsigned(next);
        if (pending.size() + words.size() * 4 > bufferBytes) WritePending();
        for (const std::uint32_t word : words) AppendLittleEndian(pending, word, 4);
        if (pending.size() == bufferBytes) WritePending();
    }
}

}  // namespace stalwick::test
