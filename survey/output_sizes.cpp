// SPDX-License-Identifier: BSD-3-Clause
#include "survey/output_sizes.h"

#include <string>

#include "ord/ord_format.h"
#include "outputs/channel_options.h"
#include "outputs/output_format.h"
#include "outputs/raw_record.h"
#include "outputs/vtx_data_types.h"

namespace stalwick {

namespace {

std::uint32_t ChannelsOfCode(std::size_t code) {
    return 32U << code;
}

OutputSize ChannelFileSize(const std::wstring& name, std::uint64_t samples) {
    // All records but the last are full.
    const std::uint64_t records =
        (samples + VtxDataTypes::kSamplesPerRecord - 1) / VtxDataTypes::kSamplesPerRecord;
    return {name + kChannelFileExtension, records,
            kOutputHeaderSize + records * sizeof(VtxDataTypes::CRRec)};
}

void AddImuFiles(const std::wstring& prefix, std::uint64_t samples,
                 std::vector<OutputSize>& outputs) {
    for (const wchar_t* const axis : kImuChannelNames) {
        outputs.push_back(ChannelFileSize(prefix + axis, samples));
    }
}

}  // namespace

void OutputCounter::Take(const ORDDataPacket& packet) {
    if (packet.adSamples) ++adPackets_[packet.channelCountCode];
    if (packet.baseIMU) ++baseImuPackets_;
    if (packet.afeIMU) ++afeImuPackets_;
    if (packet.ultrasonic) ++ultrasonicPackets_;
}

std::vector<OutputSize> OutputCounter::Finish(const RecordingHeader& header) const {
    std::vector<OutputSize> outputs;
    for (std::uint32_t n = 1; n <= header.numADChannels && n <= kMostADChannels; ++n) {
        std::uint64_t packets = 0;  // that have this channel
        for (std::size_t code = 0; code < adPackets_.size(); ++code) {
            if (n <= ChannelsOfCode(code)) packets += adPackets_[code];
        }
        outputs.push_back(
            ChannelFileSize(kADChannelPrefix + std::to_wstring(n), packets * kSamplesPerPacket));
    }
    if (header.baseImuAvailable) AddImuFiles(kBaseImuPrefix, baseImuPackets_, outputs);
    if (header.afeImuAvailable) AddImuFiles(kAfeImuPrefix, afeImuPackets_, outputs);
    if (header.ultrasonicAvailable) {
        outputs.push_back(
            ChannelFileSize(kUltrasonicEntity, ultrasonicPackets_ * kUltrasonicValues));
    }
    outputs.push_back({std::wstring(kEventEntity) + kEventFileExtension, events_,
                       kOutputHeaderSize + events_ * sizeof(VtxDataTypes::EventRec)});
    OutputSize raw{std::wstring(kRawDataEntity) + kRawDataFileExtension, 0, kOutputHeaderSize};
    for (std::size_t code = 0; code < adPackets_.size(); ++code) {
        const std::uint64_t records = adPackets_[code] * kSamplesPerPacket;
        raw.records += records;
        raw.bytes += records * RawRecordWords(ChannelsOfCode(code)) * sizeof(std::uint32_t);
    }
    outputs.push_back(raw);
    return outputs;
}

}  // namespace stalwick
