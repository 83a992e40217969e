// SPDX-License-Identifier: BSD-3-Clause
#include "engine/wanted_outputs.h"

#include "outputs/output_format.h"

namespace stalwick {

namespace {

using Kind = ExpectedOutput::Kind;

void AddChannels(std::vector<ExpectedOutput>& outputs, ChannelGroup group,
                 const std::vector<std::wstring>& entities) {
    for (std::uint32_t i = 0; i < entities.size(); ++i) {
        outputs.push_back({Kind::kChannel, group, i, entities[i], kChannelFileExtension});
    }
}

std::vector<std::wstring> ADEntities(std::uint32_t channels) {
    std::vector<std::wstring> entities;
    for (std::uint32_t n = 1; n <= channels; ++n) {
        entities.push_back(kADChannelPrefix + std::to_wstring(n));
    }
    return entities;
}

std::vector<std::wstring> ImuEntities(const std::wstring& prefix) {
    std::vector<std::wstring> entities;
    for (const wchar_t* name : kImuChannelNames) entities.push_back(prefix + name);
    return entities;
}

}  // namespace

std::vector<ExpectedOutput> ListOutputs(const WantedOutputs& wanted,
                                        const RecordingHeader& header) {
    const auto isOn = [&](ChannelGroup group) {
        return wanted.channelOptions[static_cast<std::size_t>(group)] != 0;
    };
    std::vector<ExpectedOutput> outputs;
    if (isOn(ChannelGroup::kAD)) {
        AddChannels(outputs, ChannelGroup::kAD, ADEntities(header.numADChannels));
    }
    if (isOn(ChannelGroup::kBaseIMU) && header.baseImuAvailable) {
        AddChannels(outputs, ChannelGroup::kBaseIMU, ImuEntities(kBaseImuPrefix));
    }
    if (isOn(ChannelGroup::kAfeIMU) && header.afeImuAvailable) {
        AddChannels(outputs, ChannelGroup::kAfeIMU, ImuEntities(kAfeImuPrefix));
    }
    if (isOn(ChannelGroup::kUltrasonic) && header.ultrasonicAvailable) {
        AddChannels(outputs, ChannelGroup::kUltrasonic, {kUltrasonicEntity});
    }
    if (wanted.writeEvents) {
        outputs.push_back({Kind::kEvents, {}, 0, kEventEntity, kEventFileExtension});
    }
    if (wanted.writeRawData) {
        outputs.push_back({Kind::kRawData, {}, 0, kRawDataEntity, kRawDataFileExtension});
    }
    return outputs;
}

}  // namespace stalwick
