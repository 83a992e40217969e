// SPDX-License-Identifier: BSD-3-Clause

// Which outputs a conversion opens, and the values that they get from the recording's header.

#include <algorithm>

#include "engine/file_conversion.h"
#include "platform/open_file_limit.h"

namespace stalwick {

namespace {

// Other files that a process has open: the streams, those of a window.
constexpr std::uint64_t kReservedDescriptors = 64;

void TakeTiming(const RecordingHeader& header, FileWriterContainer& files) {
    files.samplingFrequency = header.samplingFrequency;
    files.phaseModulus = kPacketSamples;
    files.timestampOffset = static_cast<std::uint64_t>(header.utcOffsetMicroseconds);
}

void TakeSession(const RecordingHeader& header, FileWriterContainer& files) {
    files.sessionUuid = header.sessionUuid;
    files.acquisitionSystem = header.acquisitionSystem;
}

}  // namespace

std::uint64_t FileConversion::CountOutputFiles() const {
    std::uint64_t count = (request_.writeEvents ? 1U : 0U) + (request_.writeRawData ? 1U : 0U);
    if (IsOn(ChannelGroup::kAD)) count += source_->Header().numADChannels;
    if (IsOn(ChannelGroup::kBaseIMU)) count += kImuChannelNames.size();
    if (IsOn(ChannelGroup::kAfeIMU)) count += kImuChannelNames.size();
    if (IsOn(ChannelGroup::kUltrasonic)) ++count;
    return count;
}

std::int32_t FileConversion::OpenOutputs() {
    SelectChannelGroups();
    const std::uint64_t needed =
        (CountOutputFiles() + 1) * request_.parallel.MostAtOnce() + kReservedDescriptors;
    const std::uint64_t limit = RaiseOpenFileLimit(needed);
    if (OpenChannelFiles() == 0 && (!request_.writeEvents || OpenEventFile() == 0) &&
        (!request_.writeRawData || OpenRawDataFile() == 0)) {
        return 0;
    }
    if (limit < needed) ReportOpenFileLimit(needed, limit);
    return -1;
}

void FileConversion::SelectChannelGroups() {
    const std::array<bool, 4> present = {
        source_->Header().numADChannels > 0, source_->Header().baseImuAvailable,
        source_->Header().afeImuAvailable, source_->Header().ultrasonicAvailable};
    for (std::size_t i = 0; i < present.size(); ++i) {
        switches_[i] = request_.channelOptions[i] != 0 && present[i] ? 1 : 0;
    }
}

std::int32_t FileConversion::OpenChannelFiles() {
    // Without A/D channels these keep their defaults, also for the sensors' files. Do not change
    // this (pinned by FileConversion.SensorFilesWithoutADChannelsHaveNoTimestampOffset).
    if (IsOn(ChannelGroup::kAD)) {
        channelFiles_.numAdChannels = source_->Header().numADChannels;
        TakeTiming(source_->Header(), channelFiles_);
    }
    if (std::all_of(switches_.begin(), switches_.end(), [](auto on) { return on == 0; })) return 0;
    channelFiles_.adMaxValue = source_->Header().adMaxValue;
    TakeSession(source_->Header(), channelFiles_);
    return channelFiles_.InitializeCscFiles(directory_, switches_);
}

std::int32_t FileConversion::OpenEventFile() {
    TakeTiming(source_->Header(), eventFile_);
    TakeSession(source_->Header(), eventFile_);
    return eventFile_.Open(directory_);
}

std::int32_t FileConversion::OpenRawDataFile() {
    rawDataFile_.adChannelCount = source_->Header().numADChannels;
    TakeTiming(source_->Header(), rawDataFile_);
    TakeSession(source_->Header(), rawDataFile_);
    return rawDataFile_.Open(directory_);
}

}  // namespace stalwick
