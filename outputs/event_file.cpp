// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/event_file.h"

#include "outputs/output_format.h"

namespace stalwick {

RecordFileError EventFile::Open(const std::wstring& path) {
    constexpr std::size_t kRecordSize = sizeof(VtxDataTypes::EventRec);
    if (RecordFileError error = OpenHeader(path, {VtxDataTypes::kEvent, kRecordSize})) return error;
    return CountRecords(kRecordSize);
}

RecordFileError EventFile::ReadRecords(std::uint64_t first,
                                       std::span<VtxDataTypes::EventRec> records) const {
    return ReadRecordBytes(first, records.size(), records.data());
}

}  // namespace stalwick
