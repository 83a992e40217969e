// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tests/support/reference_decoder.h"
#include "tools/ord_synth/recording_synth.h"

namespace stalwick::test {

struct MadeRecording {
    SynthSummary summary;
    std::string bytes;  // header block and stream
    std::string Stream() const { return bytes.substr(16384); }
};

inline MadeRecording MakeInMemory(const SynthOptions& options) {
    MadeRecording made;
    made.summary = MakeRecording(options, [&made](std::span<const std::uint8_t> bytes) {
        made.bytes.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return true;
    });
    return made;
}

inline std::int32_t VersionNumber(const SynthOptions& options) {
    return options.hardwareTimestamps ? 20 : 10;
}

inline std::vector<ReferencePacket> DecodeAll(const SynthOptions& options,
                                              const std::string& stream) {
    return ReferenceProcessDataBuffer(stream, ReferenceDecodeOptions{0, VersionNumber(options)},
                                      10U)
        .packets;
}

// The TTL inputs in the order of the packet's state bytes.
inline std::vector<std::uint8_t> TtlValues(const ReferencePacket& packet) {
    std::vector<std::uint8_t> values;
    for (std::size_t i = 0; i < packet.stateHigh.size(); ++i) {
        values.push_back(static_cast<std::uint8_t>(packet.stateHigh[i] | packet.stateLow[i] << 4));
    }
    return values;
}

}  // namespace stalwick::test
