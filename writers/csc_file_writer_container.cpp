// SPDX-License-Identifier: BSD-3-Clause
#include "writers/csc_file_writer_container.h"

#include <algorithm>
#include <utility>

#include "outputs/output_format.h"
#include "writers/file_header.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;

constexpr int kADBitVoltsDigits = 24;
constexpr std::uint32_t kRecordsPerWrite = 64;

bool IsOn(const ChannelOptions& options, ChannelGroup group) {
    return options[static_cast<std::size_t>(group)] == 1;
}

std::wstring FormatGeneral(double value) {
    return FormatDouble(value, std::chars_format::general, 6);
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

// Blocks end at each multiple of 5000 records, so that a killed program leaves all records before
// the last multiple. The blocks of all files would then become full at the same packet: the first
// block after each multiple is shorter, by a different length in each file.
void CSCFileWriterContainer::StartBlock(OutputFileRecord& file) {
    const std::uint64_t done = file.writtenCount % kRecordsPerBlock;
    const std::uint64_t length =
        done == 0 ? recordsPerWrite_ - file.channelIndex % recordsPerWrite_ : recordsPerWrite_;
    file.cscBuffer = {reinterpret_cast<CRRec*>(blocks.Acquire()),
                      std::min(length, kRecordsPerBlock - done)};
    file.nextSample = file.cscBuffer.front().samples.data();
}

// Hands the block over; its first `count` records are written.
std::int32_t CSCFileWriterContainer::WriteRecords(OutputFileRecord& file, std::uint64_t count) {
    CRRec* const block = std::exchange(file.cscBuffer, {}).data();
    file.writtenCount += count;
    file.bufferedCount = 0;
    const auto length = static_cast<int>(count * sizeof(CRRec));
    return fileIO.WriteDataToFile(file.handle, block, length) == 0 ? 0 : -1;
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
