// SPDX-License-Identifier: BSD-3-Clause
#include "writers/csc_file_writer_container.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "outputs/output_format.h"
#include "writers/file_header.h"
#include "writers/sample_scaling.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::kSamplesPerRecord;

constexpr int kADBitVoltsDigits = 24;
constexpr std::size_t kPrefetchDistance = 6;  // files
constexpr std::size_t kCacheLine = 64;        // bytes
constexpr std::uint32_t kRecordsPerWrite = 64;

bool IsOn(const ChannelOptions& options, ChannelGroup group) {
    return options[static_cast<std::size_t>(group)] == 1;
}

std::wstring FormatGeneral(double value) {
    return FormatDouble(value, std::chars_format::general, 6);
}

// A whole packet's samples leave the phase as it was, without a division.
inline void AdvancePhase(OutputFileRecord& file, std::uint32_t count) {
    if (count != file.phaseModulus) file.phase = (file.phase + count) % file.phaseModulus;
}

// Hundreds of files are filled at the same time, too many for the processor to foresee.
inline void PrefetchForWriting(const std::int16_t* first, std::size_t count) {
    const auto* const address = reinterpret_cast<const char*>(first);
    for (std::size_t i = 0; i <= count * sizeof *first; i += kCacheLine) {
        __builtin_prefetch(address + i, 1);
    }
}

// Remains of an earlier use of the block after the record's samples become 0.
void ClearUnusedSamples(const OutputFileRecord& file) {
    std::fill_n(file.nextSample, kSamplesPerRecord - file.filledSamples, std::int16_t{0});
}

void ScaleSamples(std::span<std::int16_t> samples, ChannelGroup group) {
    if (group == ChannelGroup::kAD) {
        ScaleADSamples(samples);
    } else if (group != ChannelGroup::kUltrasonic) {
        ScaleImuValues(samples);
    }
}

// A packet's samples are copied by a few fixed moves.
inline void CopySamples(std::span<const std::int16_t> samples, OutputFileRecord& file) {
    if (samples.size() == kPacketSamples) {
        std::memcpy(file.nextSample, samples.data(), kPacketSamples * sizeof samples[0]);
    } else {
        std::copy(samples.begin(), samples.end(), file.nextSample);
    }
    file.nextSample += samples.size();
    file.filledSamples += static_cast<std::uint32_t>(samples.size());
}

// Whether the blocks are whole packets that only add to the file's record in progress.
inline bool FitIntoRecord(const OutputFileRecord& file, std::span<const SampleBlock> sampleBlocks,
                          std::uint32_t samplesPerChannel, std::size_t position) {
    return samplesPerChannel == kPacketSamples && file.phaseModulus == kPacketSamples &&
           file.filledSamples != 0 && !file.cscBuffer.empty() &&
           file.filledSamples + sampleBlocks.size() * kPacketSamples < kSamplesPerRecord &&
           std::all_of(sampleBlocks.begin(), sampleBlocks.end(), [&](const SampleBlock& block) {
               return block.samples.size() >= position + kPacketSamples;
           });
}

// The common case of AppendSamples without its checks: whole packets do not change the phase.
inline void AppendPackets(OutputFileRecord& file, std::span<const SampleBlock> sampleBlocks,
                          std::size_t position) {
    std::int16_t* target = file.nextSample;
    for (const SampleBlock& block : sampleBlocks) {
        if (block.baseTimestamp && *block.baseTimestamp != file.lastBaseTimestamp) {
            file.phase = 0;
            file.lastBaseTimestamp = *block.baseTimestamp;
        }
        std::memcpy(target, block.samples.data() + position, kPacketSamples * sizeof *target);
        target += kPacketSamples;
    }
    file.filledSamples += static_cast<std::uint32_t>(target - file.nextSample);
    file.nextSample = target;
}

}  // namespace

std::wstring ChannelHeaderLines(const CSCFileWriterContainer& container, double samplingFrequency,
                                std::uint32_t channelIndex) {
    return HeaderLine(L"-ProbeName", L"Unknown") +
           HeaderLine(L"-ReferenceChannel", L"\"External Hardware Reference\"") +
           HeaderLine(L"-SamplingFrequency", FormatGeneral(samplingFrequency)) +
           HeaderLine(L"-ADMaxValue", std::to_wstring(container.adMaxValue)) +
           HeaderLine(L"-ADBitVolts", FormatDouble(kChannelADBitVolts, std::chars_format::fixed,
                                                   kADBitVoltsDigits)) +
           HeaderLine(L"-NumADChannels", L"1") +
           HeaderLine(L"-ADChannel", std::to_wstring(channelIndex)) +
           HeaderLine(L"-InputRange", FormatGeneral(kChannelInputRange));
}

std::int32_t CSCFileWriterContainer::OpenChannelFile(const std::wstring& directory,
                                                     const std::wstring& namePart1,
                                                     const std::wstring& namePart2,
                                                     std::uint32_t channelIndex, double frequency) {
    OpenedFile opened{0, L"", namePart1 + namePart2, channelIndex, frequency};
    const std::int32_t result = CreateUnderFreeName(
        [&] { return BuildOutputFilePath(directory, namePart1, namePart2, kChannelFileExtension); },
        [&](const std::wstring& path) -> std::int32_t {
            return fileIO.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, opened.handle, 0);
        },
        opened.filePath);
    if (result != 0) return -1;

    OutputFileRecord file;
    file.recordSize = sizeof(CRRec);
    InitOutputFileRecord(*this, file, opened);
    StartBlock(file);
    records.push_back(std::move(file));
    return 0;
}

std::int32_t CSCFileWriterContainer::OpenInertialFiles(const std::wstring& directory,
                                                       const std::wstring& prefix) {
    for (std::uint32_t i = 0; i < kImuChannelNames.size(); ++i) {
        if (OpenChannelFile(directory, prefix, kImuChannelNames[i], i, kImuFrequency) != 0) {
            return -1;
        }
    }
    return 0;
}

std::size_t CSCFileWriterContainer::CountFiles(const ChannelOptions& options) const {
    std::size_t files = IsOn(options, ChannelGroup::kAD) ? numAdChannels : 0;
    if (IsOn(options, ChannelGroup::kBaseIMU)) files += kImuChannelNames.size();
    if (IsOn(options, ChannelGroup::kAfeIMU)) files += kImuChannelNames.size();
    if (IsOn(options, ChannelGroup::kUltrasonic)) ++files;
    return files;
}

void CSCFileWriterContainer::ReserveBlocks(std::size_t files) {
    recordsPerWrite_ = settings.recordsPerWrite != 0 ? settings.recordsPerWrite : kRecordsPerWrite;
    if (files > 0) blocks.Reserve(files, recordsPerWrite_ * sizeof(CRRec));
}

std::int32_t CSCFileWriterContainer::InitializeCscFiles(const std::wstring& outputDirectory,
                                                        const ChannelOptions& options) {
    ReserveBlocks(CountFiles(options));
    const auto position = [this] { return static_cast<std::uint32_t>(records.size()); };
    if (IsOn(options, ChannelGroup::kAD)) {
        for (std::uint32_t n = 1; n <= numAdChannels; ++n) {
            const std::wstring number = std::to_wstring(n);
            if (OpenChannelFile(outputDirectory, kADChannelPrefix, number, n - 1,
                                samplingFrequency) != 0) {
                return -1;
            }
        }
    }
    if (IsOn(options, ChannelGroup::kBaseIMU)) {
        baseImuFirst = position();
        if (OpenInertialFiles(outputDirectory, kBaseImuPrefix) != 0) return -1;
    }
    if (IsOn(options, ChannelGroup::kAfeIMU)) {
        afeImuFirst = position();
        if (OpenInertialFiles(outputDirectory, kAfeImuPrefix) != 0) return -1;
    }
    if (IsOn(options, ChannelGroup::kUltrasonic)) {
        ultrasonicFirst = position();
        if (OpenChannelFile(outputDirectory, kUltrasonicEntity, L"", 0, kUltrasonicFrequency) !=
            0) {
            return -1;
        }
    }
    channelOptions = options;
    return SetHeaders(false);
}

std::int32_t CSCFileWriterContainer::SetHeaders(bool fileClosed) {
    for (const OutputFileRecord& file : records) {
        const std::wstring text =
            BuildFileHeader(*this, fileClosed, file, VtxDataTypes::kCSC, kChannelFileVersion) +
            ChannelHeaderLines(*this, file.samplingFrequency, file.channelIndex);
        if (fileIO.SetHeader(file.handle, text.c_str()) != 0) return -1;
    }
    return 0;
}

std::span<OutputFileRecord> CSCFileWriterContainer::FilesOf(ChannelGroup group) {
    const std::span<OutputFileRecord> all(records);
    // A group can be on for writing and have no files: see ChannelOptions.
    const auto part = [all](std::size_t first, std::size_t count) {
        const std::span<OutputFileRecord> rest = all.subspan(std::min(first, all.size()));
        return rest.first(std::min(count, rest.size()));
    };
    switch (group) {
        case ChannelGroup::kAD:
            return part(0, numAdChannels);
        case ChannelGroup::kBaseIMU:
            return part(baseImuFirst, kImuChannelNames.size());
        case ChannelGroup::kAfeIMU:
            return part(afeImuFirst, kImuChannelNames.size());
        case ChannelGroup::kUltrasonic:
            return part(ultrasonicFirst, 1);
    }
    return {};
}

// File by file: the values in a file's record then stay in the nearest cache for all blocks.
std::int32_t CSCFileWriterContainer::WriteSamples(std::span<const SampleBlock> sampleBlocks,
                                                  std::uint32_t samplesPerChannel,
                                                  ChannelGroup group) {
    if (channelOptions[static_cast<std::size_t>(group)] == 0) return -1;
    for (const SampleBlock& block : sampleBlocks) ScaleSamples(block.samples, group);
    std::int32_t result = 0;
    const std::span<OutputFileRecord> files = FilesOf(group);
    for (std::size_t f = 0; f < files.size(); ++f) {
        if (f + kPrefetchDistance < files.size()) {
            PrefetchForWriting(files[f + kPrefetchDistance].nextSample,
                               sampleBlocks.size() * samplesPerChannel);
        }
        const std::size_t position = f * samplesPerChannel;
        if (FitIntoRecord(files[f], sampleBlocks, samplesPerChannel, position)) {
            AppendPackets(files[f], sampleBlocks, position);
            continue;
        }
        for (std::size_t i = 0; i < sampleBlocks.size(); ++i) {
            const SampleBlock& block = sampleBlocks[i];
            if (block.samples.size() < position + samplesPerChannel) continue;
            if (AppendSamples(files[f], block.samples.subspan(position, samplesPerChannel),
                              block.baseTimestamp) != 0) {
                result = -1;
                sampleBlocks = sampleBlocks.first(i);
            }
        }
    }
    return result;
}

inline std::int32_t CSCFileWriterContainer::AppendSamples(
    OutputFileRecord& file, std::span<const std::int16_t> samples,
    std::optional<std::uint64_t> baseTimestamp) {
    // A file whose block could not be written has no block and receives nothing more.
    if (file.cscBuffer.empty()) return -1;
    if (baseTimestamp && *baseTimestamp != file.lastBaseTimestamp) {
        file.phase = 0;
        file.lastBaseTimestamp = *baseTimestamp;
    }
    if (file.filledSamples == 0) StartRecord(file);
    if (file.filledSamples + samples.size() >= kSamplesPerRecord) {
        return AppendAcrossRecords(file, samples, baseTimestamp.has_value());
    }
    AdvancePhase(file, static_cast<std::uint32_t>(samples.size()));
    CopySamples(samples, file);
    return 0;
}

// The samples that complete the current record, and those that start the next one.
std::int32_t CSCFileWriterContainer::AppendAcrossRecords(OutputFileRecord& file,
                                                         std::span<const std::int16_t> samples,
                                                         bool hasBaseTimestamp) {
    const std::size_t count = kSamplesPerRecord - file.filledSamples;
    AdvancePhase(file, static_cast<std::uint32_t>(count));
    CopySamples(samples.first(count), file);
    if (CompleteRecord(file, hasBaseTimestamp) != 0) return -1;
    if (count == samples.size()) return 0;

    StartRecord(file);
    // The phase does not advance for these samples. Do not change this (pinned by
    // CSCFileWriterContainer.PhaseLagsBehindTheSamplesThatStartARecord).
    CopySamples(samples.subspan(count), file);
    return 0;
}

// Blocks end with each full block of 5000 records, so that a killed program leaves all of those.
// Files that are filled in parallel would then all be full in the same packet: the block after such
// a place is shorter, by a different length in each file.
void CSCFileWriterContainer::StartBlock(OutputFileRecord& file) {
    const std::uint64_t done = file.writtenCount % kRecordsPerBlock;
    const std::uint64_t length =
        done == 0 ? recordsPerWrite_ - file.channelIndex % recordsPerWrite_ : recordsPerWrite_;
    file.cscBuffer = {reinterpret_cast<CRRec*>(blocks.Acquire()),
                      std::min(length, kRecordsPerBlock - done)};
    file.nextSample = file.cscBuffer.front().samples.data();
}

void CSCFileWriterContainer::StartRecord(OutputFileRecord& file) {
    CRRec& current = file.cscBuffer[file.bufferedCount];
    if (file.lastBaseTimestamp != 0) {
        const double nanoseconds =
            file.phase * (kNanosecondsPerSecond / file.interpolationFrequency) +
            static_cast<double>(file.lastBaseTimestamp);
        current.timestamp =
            TruncateToCount(nanoseconds / kNanosecondsPerMicrosecond, timestampsSaturated) +
            file.timestampOffset;
    } else {
        // Without base timestamps the offset is not added: the time counts from the start.
        current.timestamp = file.runningTimestamp;
    }
    current.sampleFrequency = static_cast<std::uint32_t>(file.samplingFrequency);
    current.channelNumber = file.channelIndex;
}

std::int32_t CSCFileWriterContainer::CompleteRecord(OutputFileRecord& file, bool hasBaseTimestamp) {
    const std::uint32_t sampleCount = std::exchange(file.filledSamples, 0);
    file.cscBuffer[file.bufferedCount].numValidSamples = sampleCount;
    ++file.bufferedCount;
    if (file.bufferedCount == file.cscBuffer.size()) {
        if (WriteRecords(file, file.bufferedCount) != 0) return -1;
        StartBlock(file);
    } else {
        file.nextSample = file.cscBuffer[file.bufferedCount].samples.data();
    }
    if (!hasBaseTimestamp) {
        file.accumulatedTimestamp +=
            (kMicrosecondsPerSecond / file.samplingFrequency) * sampleCount;
        file.runningTimestamp = TruncateToCount(file.accumulatedTimestamp, timestampsSaturated);
    }
    return 0;
}

// Hands the block over, with its first records.
std::int32_t CSCFileWriterContainer::WriteRecords(OutputFileRecord& file, std::uint64_t count) {
    CRRec* const block = std::exchange(file.cscBuffer, {}).data();
    file.writtenCount += count;
    file.bufferedCount = 0;
    const auto length = static_cast<int>(count * sizeof(CRRec));
    return fileIO.WriteDataToFile(file.handle, block, length) == 0 ? 0 : -1;
}

std::int32_t CSCFileWriterContainer::EndRecords(bool hasBaseTimestamps) {
    std::int32_t result = 0;
    for (OutputFileRecord& file : records) {
        if (file.cscBuffer.empty()) continue;  // its block could not be written
        if (file.filledSamples == 0) continue;
        ClearUnusedSamples(file);
        if (CompleteRecord(file, hasBaseTimestamps) != 0) result = -1;
    }
    return result;
}

// Writes the complete records and the one in progress, whose unused samples are 0.
std::int32_t CSCFileWriterContainer::WriteRest(OutputFileRecord& file) {
    if (file.cscBuffer.empty()) return -1;
    std::uint32_t count = file.bufferedCount;
    if (file.filledSamples > 0) {
        file.cscBuffer[count].numValidSamples = file.filledSamples;
        ClearUnusedSamples(file);
        ++count;
    }
    return WriteRecords(file, count);
}

void CSCFileWriterContainer::LeaveUnfinished() {
    for (OutputFileRecord& file : records) {
        if (file.cscBuffer.empty()) continue;
        if (KeepsPartialBlocks(settings)) {
            WriteRecords(file, file.bufferedCount);
        } else {
            const std::uint64_t kept = file.writtenCount - file.writtenCount % kRecordsPerBlock;
            fileIO.CutDataTo(file.handle, kept * sizeof(CRRec));
        }
    }
}

std::int32_t CSCFileWriterContainer::FinishCscFiles() {
    for (OutputFileRecord& file : records) {
        if (WriteRest(file) != 0) return -1;
    }
    // No header says that a file was closed before all files are whole.
    if (fileIO.CompleteWrites() != 0 || fileIO.SyncFiles() != 0) return -1;
    if (SetHeaders(true) != 0) return -1;
    records.clear();
    return fileIO.CloseAllOutputFiles() == 0 ? 0 : -1;
}

}  // namespace stalwick
