#include "writers/rdf_file_writer_container.h"

#include <algorithm>
#include <array>

#include "outputs/output_format.h"
#include "outputs/raw_record.h"
#include "platform/text_encoding.h"
#include "writers/file_header.h"
#include "writers/output_naming.h"
#include "writers/sample_scaling.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

constexpr std::size_t kSpareBuffers = 2;  // filled while another one is written
constexpr std::size_t kWidestRecordWords = RawRecordWords(kMostPacketChannels);

}  // namespace

std::int32_t RDFFileWriterContainer::Open(const std::wstring& outputDirectory) {
    OpenedFile opened{0, L"", kRawDataEntity, 0, static_cast<double>(samplingFrequency)};
    const std::int32_t result = CreateUnderFreeName(
        [&] {
            return BuildOutputFilePath(outputDirectory, kRawDataEntity, L"", kRawDataFileExtension);
        },
        [&](const std::wstring& path) -> std::int32_t {
            file_ = std::make_unique<DataFile>(settings, queue_);
            return CreationResult(file_->Create(path), path);
        },
        opened.filePath);
    if (result != 0) return -1;

    OutputFileRecord record;
    const std::size_t recordWords = RawRecordWords(adChannelCount);
    blockWords_ = recordWords * settings.recordsPerBlock;
    const std::size_t words = std::max(blockWords_, kWidestRecordWords);
    record.rawBuffer = RecordBuffer<std::uint32_t>(words);
    if (queue_ != nullptr) spares_.resize(kSpareBuffers);
    for (auto& spare : spares_) spare = RecordBuffer<std::uint32_t>(words);
    InitOutputFileRecord(*this, record, opened);
    records.push_back(std::move(record));
    return WriteHeader(false);
}

std::int32_t RDFFileWriterContainer::WriteHeader(bool closing) {
    for (const OutputFileRecord& record : records) {
        const std::wstring text =
            BuildFileHeader(*this, closing, record, VtxDataTypes::kRaw, kRawDataFileVersion) +
            HeaderLine(L"-SamplingFrequency",
                       FormatDouble(record.samplingFrequency, std::chars_format::general, 6)) +
            HeaderLine(L"-ADMaxValue", std::to_wstring(kRawADMaxValue)) +
            HeaderLine(L"-ADBitVolts",
                       FormatDouble(kRawADBitVolts, std::chars_format::scientific, 6)) +
            HeaderLine(L"-NumADChannels", std::to_wstring(adChannelCount));
        // The terminating zero counts: the block always ends in one.
        if (!file_->SetHeader(ToUtf8(text), kOutputHeaderSize - 1)) return -1;
    }
    return 0;
}

std::int32_t RDFFileWriterContainer::WriteRawRecords(std::span<const std::uint16_t> samples,
                                                     std::int32_t /*flag*/,
                                                     const std::vector<std::uint8_t>& ttlValues,
                                                     std::optional<std::uint64_t> packetTimestamp) {
    OutputFileRecord& record = records.front();
    if (packetTimestamp) {
        if (*packetTimestamp != record.lastBaseTimestamp) {
            record.lastBaseTimestamp = *packetTimestamp;
            record.phase = 0;
        }
        record.runningTimestamp =
            TruncateToCount(static_cast<double>(*packetTimestamp) / kNanosecondsPerMicrosecond,
                            timestampsSaturated) +
            record.timestampOffset;
    }
    std::uint8_t ttlValue = 0;
    for (std::uint32_t i = 0; i < kPacketSamples; ++i) {
        if (i < ttlValues.size()) ttlValue = ttlValues[i];
        AppendRecord(record, samples, i, ttlValue);
        // Truncated at every step, so the fraction of a microsecond is lost each time. Kept
        // (pinned by RDFFileWriterContainer.TimestampStepIsTruncatedAtEverySample).
        record.runningTimestamp =
            TruncateToCount(static_cast<double>(record.runningTimestamp) +
                                kMicrosecondsPerSecond / record.samplingFrequency,
                            timestampsSaturated);
    }
    return 0;
}

void RDFFileWriterContainer::AppendRecord(OutputFileRecord& record,
                                          std::span<const std::uint16_t> samples,
                                          std::uint32_t sampleIndex, std::uint8_t ttlValue) {
    const std::size_t channels = samples.size() / kPacketSamples;
    const std::size_t words = channels + kRawWordsBesideSamples;
    // Packets with another channel count than the header's give records of another length.
    if (record.bufferedCount + words > record.rawBuffer.size()) FlushBuffer(record);

    std::array<std::uint32_t, kRawFirstSampleWord> head{};
    head[kRawStartMarkerWord] = kRawStartMarker;
    head[kRawRecordIdWord] = kRawRecordId;
    head[kRawSizeWord] = adChannelCount + kRawSizeBesideSamples;
    head[kRawTimestampHighWord] = static_cast<std::uint32_t>(record.runningTimestamp >> 32U);
    head[kRawTimestampLowWord] = static_cast<std::uint32_t>(record.runningTimestamp);
    head[kRawStatusWord] = kRawStatus;
    head[kRawTtlWord] = ttlValue;
    std::uint32_t* const start = record.rawBuffer.data() + record.bufferedCount;
    std::uint32_t* const values = std::copy(head.begin(), head.end(), start);
    std::uint32_t checksum = RawChecksum(head);
    const std::uint16_t* sample = samples.data() + sampleIndex;
    for (std::size_t channel = 0; channel < channels; ++channel, sample += kPacketSamples) {
        const std::int32_t value = ScaleRawSample(static_cast<std::int16_t>(*sample));
        values[channel] = static_cast<std::uint32_t>(value);
        checksum ^= static_cast<std::uint32_t>(value);
    }
    values[channels] = checksum;
    record.bufferedCount += static_cast<std::uint32_t>(words);
    if (record.bufferedCount >= blockWords_) FlushBuffer(record);
}

void RDFFileWriterContainer::FlushBuffer(OutputFileRecord& record) {
    file_->Append(record.rawBuffer.data(), record.bufferedCount * sizeof(std::uint32_t));
    record.bufferedCount = 0;
    if (queue_ == nullptr) return;
    // The buffer now belongs to the queue: the one that it has had longest is filled next.
    std::swap(record.rawBuffer, spares_.front());
    std::rotate(spares_.begin(), spares_.begin() + 1, spares_.end());
    queue_->WaitForData(record.rawBuffer.data());
}

void RDFFileWriterContainer::Finish() {
    for (OutputFileRecord& record : records) FlushBuffer(record);
    if (WriteHeader(true) != 0) return;
    records.clear();
    file_->Close();
}

}  // namespace stalwick
