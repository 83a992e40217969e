// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <numeric>
#include <string>
#include <vector>

#include "tests/support/ord_builder.h"

namespace stalwick::test {

/** A recording of 32-channel packets with every sensor. Its header announces `channelCount`
 * channels; of fewer than 32 the packets' mask lets only those through. */
inline std::string MakeFullRecording(unsigned channelCount, std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, false, true, true, true, true, 40, {}, true};
    shape.packetCount = packetCount;
    std::vector<unsigned> channels(channelCount);
    std::iota(channels.begin(), channels.end(), 0U);
    std::vector<PacketPlan> packets = MakeRandomPackets(7, shape);
    if (channelCount < 32) {
        for (PacketPlan& packet : packets) packet.channelMask = MakeChannelMask(32, channels);
    }
    return BuildOrdFile(Version2Header(channelCount)
                            .Set("-BaseIMUAvailable", "1")
                            .Set("-AfeIMUAvailable", "1")
                            .Set("-UltrasonicAvailable", "1"),
                        packets);
}

}  // namespace stalwick::test
