// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ord/recording_header.h"
#include "outputs/channel_options.h"

namespace stalwick {

// Which outputs of a recording are requested.
struct WantedOutputs {
    ChannelOptions channelOptions{};
    bool writeEvents = true;
    bool writeRawData = false;
};

// One output that a conversion makes, with its name in an empty directory.
struct ExpectedOutput {
    enum class Kind { kChannel, kEvents, kRawData };
    Kind kind = Kind::kChannel;
    ChannelGroup group = ChannelGroup::kAD;  // of a channel file
    std::uint32_t channel = 0;               // from 0 within its group
    std::wstring entity;                     // CSC1, Base_LAX, Events ...
    const wchar_t* extension = nullptr;
};

// The outputs of a recording with this header, in the order in which they are created.
[[nodiscard]] std::vector<ExpectedOutput> ListOutputs(const WantedOutputs& wanted,
                                                      const RecordingHeader& header);

}  // namespace stalwick
