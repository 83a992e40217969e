#include "writers/csc_file_writer_container.h"

#include <algorithm>
#include <cstring>

#include "writers/file_header.h"
#include "writers/sample_scaling.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::kSamplesPerRecord;

constexpr wchar_t kExtension[] = L".vcs";
constexpr wchar_t kFileVersion[] = L"3.4";
constexpr double kImuFrequency = 3000.0;           // samples per second
constexpr double kUltrasonicFrequency = 210000.0;  // samples per second
constexpr double kADBitVolts = 4e-06;              // printed for every file
constexpr int kADBitVoltsDigits = 24;
constexpr double kInputRange = 131072.0;  // printed for every file

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
           HeaderLine(L"-ADBitVolts",
                      FormatDouble(kADBitVolts, std::chars_format::fixed, kADBitVoltsDigits)) +
           HeaderLine(L"-NumADChannels", L"1") +
           HeaderLine(L"-ADChannel", std::to_wstring(channelIndex)) +
           HeaderLine(L"-InputRange", FormatGeneral(kInputRange));
}

std::int32_t CSCFileWriterContainer::OpenChannelFile(const std::wstring& directory,
                                                     const std::wstring& namePart1,
                                                     const std::wstring& namePart2,
                                                     std::uint32_t channelIndex, double frequency) {
    OpenedFile opened{0, L"", namePart1 + namePart2, channelIndex, frequency};
    const std::int32_t result = CreateUnderFreeName(
        [&] { return BuildOutputFilePath(directory, namePart1, namePart2, kExtension); },
        [&](const std::wstring& path) -> std::int32_t {
            return fileIO.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, opened.handle, 0);
        },
        opened.filePath);
    if (result != 0) return -1;

    OutputFileRecord record;
    record.recordSize = sizeof(CRRec);
    record.cscBuffer = RecordBuffer<CRRec>(settings.recordsPerBlock);
    InitOutputFileRecord(*this, record, opened);
    records.push_back(std::move(record));
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

std::int32_t CSCFileWriterContainer::InitializeCscFiles(const std::wstring& outputDirectory,
                                                        const ChannelOptions& options) {
    const auto position = [this] { return static_cast<std::uint32_t>(records.size()); };
    if (IsOn(options, ChannelGroup::kAD)) {
        for (std::uint32_t n = 1; n <= numAdChannels; ++n) {
            const std::wstring number = std::to_wstring(n);
            if (OpenChannelFile(outputDirectory, L"CSC", number, n - 1, samplingFrequency) != 0) {
                return -1;
            }
        }
    }
    if (IsOn(options, ChannelGroup::kBaseIMU)) {
        baseImuFirst = position();
        if (OpenInertialFiles(outputDirectory, L"Base_") != 0) return -1;
    }
    if (IsOn(options, ChannelGroup::kAfeIMU)) {
        afeImuFirst = position();
        if (OpenInertialFiles(outputDirectory, L"AFE_") != 0) return -1;
    }
    if (IsOn(options, ChannelGroup::kUltrasonic)) {
        ultrasonicFirst = position();
        if (OpenChannelFile(outputDirectory, L"Ultrasonic", L"", 0, kUltrasonicFrequency) != 0) {
            return -1;
        }
    }
    channelOptions = options;
    return SetHeaders(false);
}

std::int32_t CSCFileWriterContainer::SetHeaders(bool fileClosed) {
    for (const OutputFileRecord& record : records) {
        const std::wstring text =
            BuildFileHeader(*this, fileClosed, record, VtxDataTypes::kCSC, kFileVersion) +
            ChannelHeaderLines(*this, record.samplingFrequency, record.channelIndex);
        if (fileIO.SetHeader(record.handle, text.c_str()) != 0) return -1;
    }
    return 0;
}

std::span<OutputFileRecord> CSCFileWriterContainer::FilesOf(ChannelGroup group) {
    const std::span<OutputFileRecord> all(records);
    switch (group) {
        case ChannelGroup::kAD:
            return all.first(std::min<std::size_t>(numAdChannels, all.size()));
        case ChannelGroup::kBaseIMU:
            return all.subspan(baseImuFirst, kImuChannelNames.size());
        case ChannelGroup::kAfeIMU:
            return all.subspan(afeImuFirst, kImuChannelNames.size());
        case ChannelGroup::kUltrasonic:
            return all.subspan(ultrasonicFirst, 1);
    }
    return {};
}

std::int32_t CSCFileWriterContainer::WriteSamples(std::span<std::int16_t> samples,
                                                  std::uint32_t samplesPerChannel,
                                                  ChannelGroup group,
                                                  std::optional<std::uint64_t> baseTimestamp) {
    if (channelOptions[static_cast<std::size_t>(group)] == 0) return -1;
    if (group == ChannelGroup::kAD) {
        ScaleADSamples(samples);
    } else if (group != ChannelGroup::kUltrasonic) {
        ScaleImuValues(samples);
    }
    std::size_t position = 0;
    for (OutputFileRecord& record : FilesOf(group)) {
        if (samples.size() - position < samplesPerChannel) break;
        if (AppendSamples(record, samples.subspan(position, samplesPerChannel), baseTimestamp) !=
            0) {
            return -1;
        }
        position += samplesPerChannel;
    }
    return 0;
}

std::int32_t CSCFileWriterContainer::AppendSamples(OutputFileRecord& record,
                                                   std::span<const std::int16_t> samples,
                                                   std::optional<std::uint64_t> baseTimestamp) {
    // A full buffer that could not be written stays full: this file gets nothing more.
    if (record.bufferedCount == record.cscBuffer.size()) return -1;
    if (baseTimestamp && *baseTimestamp != record.lastBaseTimestamp) {
        record.phase = 0;
        record.lastBaseTimestamp = *baseTimestamp;
    }
    CRRec* current = &record.cscBuffer[record.bufferedCount];
    if (current->numValidSamples == 0) StartRecord(record);

    const auto room = static_cast<std::uint32_t>(kSamplesPerRecord) - current->numValidSamples;
    const auto count = std::min(static_cast<std::uint32_t>(samples.size()), room);
    record.phase = (record.phase + count) % record.phaseModulus;
    std::copy_n(samples.data(), count, current->samples.data() + current->numValidSamples);
    current->numValidSamples += count;
    if (current->numValidSamples == kSamplesPerRecord &&
        CompleteRecord(record, baseTimestamp.has_value()) != 0) {
        return -1;
    }
    if (count == samples.size()) return 0;

    StartRecord(record);
    current = &record.cscBuffer[record.bufferedCount];
    // The phase is not advanced for these samples. Kept (pinned by
    // CSCFileWriterContainer.PhaseLagsBehindTheSamplesThatStartARecord).
    std::copy(samples.begin() + count, samples.end(), current->samples.data());
    current->numValidSamples = static_cast<std::uint32_t>(samples.size()) - count;
    return 0;
}

void CSCFileWriterContainer::StartRecord(OutputFileRecord& record) {
    CRRec& current = record.cscBuffer[record.bufferedCount];
    if (record.lastBaseTimestamp != 0) {
        const double nanoseconds =
            record.phase * (kNanosecondsPerSecond / record.interpolationFrequency) +
            static_cast<double>(record.lastBaseTimestamp);
        current.timestamp =
            TruncateToCount(nanoseconds / kNanosecondsPerMicrosecond, timestampsSaturated) +
            record.timestampOffset;
    } else {
        // Without base timestamps the offset is not added: the time counts from the start.
        current.timestamp = record.runningTimestamp;
    }
    current.sampleFrequency = static_cast<std::uint32_t>(record.samplingFrequency);
    current.channelNumber = record.channelIndex;
}

std::int32_t CSCFileWriterContainer::CompleteRecord(OutputFileRecord& record,
                                                    bool hasBaseTimestamp) {
    ++record.bufferedCount;
    if (record.bufferedCount == record.cscBuffer.size()) {
        if (WriteRecords(record, record.bufferedCount) != 0) return -1;
        record.bufferedCount = 0;
        std::memset(record.cscBuffer.data(), 0, record.cscBuffer.size() * sizeof(CRRec));
    }
    if (!hasBaseTimestamp) {
        record.accumulatedTimestamp +=
            (kMicrosecondsPerSecond / record.samplingFrequency) * kSamplesPerRecord;
        record.runningTimestamp = TruncateToCount(record.accumulatedTimestamp, timestampsSaturated);
    }
    return 0;
}

std::int32_t CSCFileWriterContainer::WriteRecords(OutputFileRecord& record, std::uint32_t count) {
    const auto length = static_cast<int>(count * sizeof(CRRec));
    return fileIO.WriteDataToFile(record.handle, record.cscBuffer.data(), length) == 0 ? 0 : -1;
}

std::int32_t CSCFileWriterContainer::FinishCscFiles() {
    for (OutputFileRecord& record : records) {
        std::uint32_t count = record.bufferedCount;
        if (count < record.cscBuffer.size() && record.cscBuffer[count].numValidSamples > 0) {
            ++count;
        }
        if (WriteRecords(record, count) != 0) return -1;
    }
    if (SetHeaders(true) != 0) return -1;
    records.clear();
    return fileIO.CloseAllOutputFiles() == 0 ? 0 : -1;
}

}  // namespace stalwick
