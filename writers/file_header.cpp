// SPDX-License-Identifier: BSD-3-Clause
#include "writers/file_header.h"

#include "platform/program_version.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

std::wstring ApplicationAndVersion() {
    return std::wstring(L"\"Veltrosyn Stalwick\" \"") + kWideVersion + L'"';
}

}  // namespace

std::wstring BuildFileHeader(const FileWriterContainer& container, bool fileClosed,
                             const OutputFileRecord& file, std::uint8_t fileType,
                             const std::wstring& fileVersion) {
    return std::wstring(kHeaderTitle) + L"\r\n" + HeaderLine(L"-FileType", DataTypeName(fileType)) +
           HeaderLine(L"-FileVersion", fileVersion) +
           HeaderLine(L"-FileUUID", FormatUuid(file.fileUuid)) +
           HeaderLine(L"-SessionUUID", container.sessionUuid) +
           HeaderLine(L"-OriginalFileName", QuoteFileName(OneLine(file.filePath))) +
           HeaderLine(L"-TimeCreated", file.timeCreated) +
           HeaderLine(L"-TimeClosed", fileClosed ? FormatLocalTime() : kNotClosed) + L"\r\n" +
           HeaderLine(L"-RecordSize", std::to_wstring(file.recordSize)) +
           HeaderLine(L"-ApplicationName", ApplicationAndVersion()) +
           HeaderLine(L"-AcquisitionSystem", L"Unknown " + container.acquisitionSystem) +
           HeaderLine(L"-AcqEntName", file.acqEntName);
}

}  // namespace stalwick
