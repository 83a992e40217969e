// SPDX-License-Identifier: BSD-3-Clause
#include "engine/output_estimate.h"

#include <memory>
#include <vector>

#include "engine/recording_check.h"
#include "engine/recording_contents.h"
#include "ord/ord_file_reader.h"
#include "outputs/output_format.h"
#include "outputs/vtx_data_types.h"
#include "platform/file_system.h"

namespace stalwick {

namespace {

// For the records that the counted packets produce.
double RecordBytes(const ExpectedOutput& output, const RecordingContents& contents) {
    constexpr double kBytesPerSample = static_cast<double>(sizeof(VtxDataTypes::CRRec)) /
                                       static_cast<double>(VtxDataTypes::kSamplesPerRecord);
    switch (output.kind) {
        case ExpectedOutput::Kind::kEvents:
            return static_cast<double>(contents.Events() * sizeof(VtxDataTypes::EventRec));
        case ExpectedOutput::Kind::kRawData:
            return static_cast<double>(contents.RawBytes());
        case ExpectedOutput::Kind::kChannel:
            break;
    }
    return static_cast<double>(contents.Samples(output.group, output.channel)) * kBytesPerSample;
}

}  // namespace

std::uint64_t EstimateOutputBytes(const std::wstring& recordingPath, const WantedOutputs& wanted) {
    if (!IsOrdinaryFile(recordingPath)) return 0;
    const auto reader = std::make_unique<ORDFileReader>();
    if (reader->Open(recordingPath) != 0 || CheckHeader(reader->Header())) return 0;
    std::vector<ORDDataPacket> packets;
    bool endOfFile = false;
    if (reader->GetData(packets, endOfFile) != 0) return 0;
    RecordingContents contents;
    for (const ORDDataPacket& packet : packets) contents.Count(packet);

    const std::uint64_t counted = reader->BytesRead() - reader->UnconsumedBytes();
    double recordings = 0.0;  // how many times the counted part fits into the whole
    if (counted > kHeaderBlockSize) {
        recordings = static_cast<double>(reader->FileSize() - kHeaderBlockSize) /
                     static_cast<double>(counted - kHeaderBlockSize);
    }
    double bytes = 0.0;
    for (const ExpectedOutput& output : ListOutputs(wanted, reader->Header())) {
        bytes += kOutputHeaderSize + recordings * RecordBytes(output, contents);
    }
    return static_cast<std::uint64_t>(bytes);
}

}  // namespace stalwick
