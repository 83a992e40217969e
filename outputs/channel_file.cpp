// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/channel_file.h"

#include "outputs/output_format.h"

namespace stalwick {

RecordFileError ChannelFile::Open(const std::wstring& path) {
    constexpr std::size_t kRecordSize = sizeof(VtxDataTypes::CRRec);
    if (RecordFileError error = OpenHeader(path, {VtxDataTypes::kCSC, kRecordSize})) return error;
    return CountRecords(kRecordSize);
}

RecordFileError ChannelFile::ReadRecords(std::uint64_t first,
                                         std::span<VtxDataTypes::CRRec> records) const {
    return ReadRecordBytes(first, records.size(), records.data());
}

}  // namespace stalwick
