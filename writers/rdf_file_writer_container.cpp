// SPDX-License-Identifier: BSD-3-Clause
#include "writers/rdf_file_writer_container.h"

#include <algorithm>
#include <array>
#include <utility>

#include "outputs/output_format.h"
#include "outputs/raw_record.h"
#include "platform/text_encoding.h"
#include "writers/file_header.h"
#include "writers/output_naming.h"
#include "writers/sample_scaling.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

constexpr std::size_t kWordsPerWrite = 65536;
constexpr std::size_t kWidestRecordWords = RawRecordWords(kMostPacketChannels);

}  // namespace

std::int32_t RDFFileWriterContainer::Open(const std::wstring& outputDirectory) {
    OpenedFile opened{0, L"", kRawDataEntity, 0, static_cast<double>(samplingFrequency)};
    const std::int32_t result = CreateUnderFreeName(
        [&] {
            return BuildOutputFilePath(outputDirectory, kRawDataEntity, L"", kRawDataFileExtension);
        },
        [&](const std::wstring& path) -> std::int32_t {
            file_ = std::make_unique<DataFile>(settings, &blocks);
            return CreationResult(file_->Create(path), path);
        },
        opened.filePath);
    if (result != 0) return -1;

    OutputFileRecord file;
    const std::size_t recordWords = RawRecordWords(adChannelCount);
    fullBlockWords_ = recordWords * kRecordsPerBlock;
    const std::size_t words =
        settings.recordsPerWrite != 0 ? recordWords * settings.recordsPerWrite : kWordsPerWrite;
    blockWords_ = std::max(words, kWidestRecordWords);
    blocks.Reserve(1, blockWords_ * sizeof(std::uint32_t));
    StartBlock(file);
    InitOutputFileRecord(*this, file, opened);
    records.push_back(std::move(file));
    return WriteHeader(false);
}

std::int32_t RDFFileWriterContainer::WriteHeader(bool fileClosed) {
    for (const OutputFileRecord& file : records) {
        const std::wstring text =
            BuildFileHeader(*this, fileClosed, file, VtxDataTypes::kRaw, kRawDataFileVersion) +
            HeaderLine(L"-SamplingFrequency",
                       FormatDouble(file.samplingFrequency, std::chars_format::general, 6)) +
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
    OutputFileRecord& file = records.front();
    if (packetTimestamp) {
        if (*packetTimestamp != file.lastBaseTimestamp) {
            file.lastBaseTimestamp = *packetTimestamp;
            file.phase = 0;
        }
        file.runningTimestamp =
            TruncateToCount(static_cast<double>(*packetTimestamp) / kNanosecondsPerMicrosecond,
                            timestampsSaturated) +
            file.timestampOffset;
    }
    std::uint8_t ttlValue = 0;
    for (std::uint32_t i = 0; i < kPacketSamples; ++i) {
        if (i < ttlValues.size()) ttlValue = ttlValues[i];
        AppendRecord(file, samples, i, ttlValue);
        // Truncated at every step, so the fraction of a microsecond is lost each time. Do not
        // change this (pinned by RDFFileWriterContainer.TimestampStepIsTruncatedAtEverySample).
        file.runningTimestamp = TruncateToCount(static_cast<double>(file.runningTimestamp) +
                                                    kMicrosecondsPerSecond / file.samplingFrequency,
                                                timestampsSaturated);
    }
    return 0;
}

void RDFFileWriterContainer::AppendRecord(OutputFileRecord& file,
                                          std::span<const std::uint16_t> samples,
                                          std::uint32_t sampleIndex, std::uint8_t ttlValue) {
    const std::size_t channels = samples.size() / kPacketSamples;
    const std::size_t words = channels + kRawWordsBesideSamples;
    if (file.bufferedCount + words > file.rawBuffer.size()) {
        SubmitBlock(file);
        StartBlock(file);
    }
    CountWords(file, words);

    std::array<std::uint32_t, kRawFirstSampleWord> head{};
    head[kRawStartMarkerWord] = kRawStartMarker;
    head[kRawRecordIdWord] = kRawRecordId;
    head[kRawSizeWord] = adChannelCount + kRawSizeBesideSamples;
    head[kRawTimestampHighWord] = static_cast<std::uint32_t>(file.runningTimestamp >> 32U);
    head[kRawTimestampLowWord] = static_cast<std::uint32_t>(file.runningTimestamp);
    head[kRawStatusWord] = kRawStatus;
    head[kRawTtlWord] = ttlValue;
    std::uint32_t* const start = file.rawBuffer.data() + file.bufferedCount;
    std::uint32_t* const values = std::copy(head.begin(), head.end(), start);
    std::uint32_t checksum = RawChecksum(head);
    const std::uint16_t* sample = samples.data() + sampleIndex;
    for (std::size_t channel = 0; channel < channels; ++channel, sample += kPacketSamples) {
        const std::int32_t value = ScaleRawSample(static_cast<std::int16_t>(*sample));
        values[channel] = static_cast<std::uint32_t>(value);
        checksum ^= static_cast<std::uint32_t>(value);
    }
    values[channels] = checksum;
    file.bufferedCount += static_cast<std::uint32_t>(words);
    // A killed program then leaves all full blocks.
    if (fullBlocksEnd_ > file.writtenCount) {
        SubmitBlock(file);
        StartBlock(file);
    }
}

// A full block ends with the record that fills it, or before one that would exceed it: packets with
// another channel count than the header's produce records of another length.
void RDFFileWriterContainer::CountWords(const OutputFileRecord& file, std::size_t words) {
    const std::uint64_t before = file.writtenCount + file.bufferedCount;
    if (wordsInBlock_ + words > fullBlockWords_) {
        fullBlocksEnd_ = before;
        wordsInBlock_ = 0;
    }
    wordsInBlock_ += words;
    if (wordsInBlock_ == fullBlockWords_) {
        fullBlocksEnd_ = before + words;
        wordsInBlock_ = 0;
    }
}

void RDFFileWriterContainer::StartBlock(OutputFileRecord& file) {
    file.rawBuffer = {reinterpret_cast<std::uint32_t*>(blocks.Acquire()), blockWords_};
}

// Hands the buffer over, to be written.
void RDFFileWriterContainer::SubmitBlock(OutputFileRecord& file) {
    auto* const block = reinterpret_cast<std::byte*>(std::exchange(file.rawBuffer, {}).data());
    const std::uint32_t words = std::exchange(file.bufferedCount, 0);
    file.writtenCount += words;
    file_->Submit(block, words * sizeof(std::uint32_t));
}

void RDFFileWriterContainer::LeaveUnfinished() {
    for (OutputFileRecord& file : records) {
        if (KeepsPartialBlocks(settings)) {
            SubmitBlock(file);
        } else {
            file_->CutTo(fullBlocksEnd_ * sizeof(std::uint32_t));
        }
    }
}

void RDFFileWriterContainer::Finish() {
    for (OutputFileRecord& file : records) SubmitBlock(file);
    if (WriteHeader(true) != 0) return;
    records.clear();
    file_->Close();
}

}  // namespace stalwick
