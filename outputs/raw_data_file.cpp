// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/raw_data_file.h"

#include "outputs/output_format.h"
#include "outputs/raw_record.h"

namespace stalwick {

RecordFileError RawDataFile::Open(const std::wstring& path) {
    if (RecordFileError error = OpenHeader(path, {VtxDataTypes::kRaw, 0})) return error;
    constexpr std::uint64_t kMostADChannels = 256;
    const std::optional<std::uint64_t> channels = Header().Number(L"-NumADChannels");
    if (!channels || *channels > kMostADChannels) {
        RecordFileError error =
            Error(RecordFileError::Kind::kHeader, L"its -NumADChannels is \"" +
                                                      Header().Value(L"-NumADChannels") +
                                                      L"\", not a number up to 256");
        *this = RawDataFile();
        return error;
    }
    adChannelCount_ = static_cast<std::uint32_t>(*channels);
    return CountRecords(RawRecordWords(adChannelCount_) * sizeof(std::uint32_t));
}

RecordFileError RawDataFile::ReadRecords(std::uint64_t first,
                                         std::span<std::uint32_t> words) const {
    return ReadRecordBytes(first, words.size() / RecordWords(), words.data());
}

}  // namespace stalwick
