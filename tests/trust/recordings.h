#pragma once

#include <string>

#include "tests/support/ord_builder.h"

namespace stalwick::test {

/** A recording of 32-channel packets with every sensor, `channelCount` of them in its header. */
inline std::string MakeFullRecording(unsigned channelCount, std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, false, true, true, true, true, 40, {}, true};
    shape.packetCount = packetCount;
    return BuildOrdFile(Version2Header(channelCount)
                            .Set("-BaseIMUAvailable", "1")
                            .Set("-AfeIMUAvailable", "1")
                            .Set("-UltrasonicAvailable", "1"),
                        MakeRandomPackets(7, shape));
}

}  // namespace stalwick::test
