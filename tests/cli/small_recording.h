// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/ord_builder.h"

namespace stalwick::test {

/** A recording of 32 channels without sensors; 60 packets are 20 ms. */
inline std::string SmallRecording(std::uint64_t seed = 71, std::size_t packetCount = 60) {
    RandomRecordingShape shape;
    shape.packetCount = packetCount;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(seed, shape));
}

}  // namespace stalwick::test
