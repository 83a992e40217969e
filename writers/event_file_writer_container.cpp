// SPDX-License-Identifier: BSD-3-Clause
#include "writers/event_file_writer_container.h"

#include "outputs/output_format.h"
#include "writers/file_header.h"
#include "writers/output_naming.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

using VtxDataTypes::EventRec;

}  // namespace

std::int32_t EventFileWriterContainer::Open(const std::wstring& outputDirectory) {
    OpenedFile opened{0, L"", kEventEntity, 0, static_cast<double>(samplingFrequency)};
    const std::int32_t result = CreateUnderFreeName(
        [&] {
            return BuildOutputFilePath(outputDirectory, kEventEntity, L"", kEventFileExtension);
        },
        [&](const std::wstring& path) -> std::int32_t {
            return fileIO.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kEvent, opened.handle, 0);
        },
        opened.filePath);
    if (result != 0) return -1;

    OutputFileRecord file;
    file.eventBuffer = std::vector<EventRec>(kRecordsPerBlock);
    file.recordSize = sizeof(EventRec);
    InitOutputFileRecord(*this, file, opened);
    records.push_back(std::move(file));
    if (SetHeader() != 0) return -1;
    lastTtl = 0;
    samplePeriod = kMicrosecondsPerSecond / samplingFrequency;
    return 0;
}

std::int32_t EventFileWriterContainer::SetHeader() {
    for (const OutputFileRecord& file : records) {
        const std::wstring text =
            BuildFileHeader(*this, false, file, VtxDataTypes::kEvent, kEventFileVersion);
        if (fileIO.SetHeader(file.handle, text.c_str()) != 0) return -1;
    }
    return 0;
}

EventRec& EventFileWriterContainer::NextEvent() {
    OutputFileRecord& file = records.front();
    return file.eventBuffer[file.bufferedCount];
}

std::int32_t EventFileWriterContainer::CommitEvent() {
    OutputFileRecord& file = records.front();
    ++file.bufferedCount;
    if (file.bufferedCount < file.eventBuffer.size()) return 0;
    const std::int32_t result = WriteBufferedEvents();
    file.bufferedCount = 0;
    return result;
}

void EventFileWriterContainer::LeaveUnfinished() {
    if (KeepsPartialBlocks(settings) && !records.empty()) WriteBufferedEvents();
}

std::int32_t EventFileWriterContainer::WriteBufferedEvents() {
    OutputFileRecord& file = records.front();
    const auto length = static_cast<int>(file.bufferedCount * sizeof(EventRec));
    const auto result = fileIO.WriteDataToFile(file.handle, file.eventBuffer.data(), length);
    return result == 0 ? 0 : -1;
}

}  // namespace stalwick
