// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ord_data_packet.h"

namespace stalwick {

void ORDDataPacket::Reset() {
    packetType = 0;
    channelCountCode = 0;
    headerByte3 = 0;
    headerByte2 = 0;
    headerWord = 0;
    hardwareTimestamp.reset();
    channelMask.reset();
    stateHigh.clear();
    stateLow.clear();
    baseIMU.reset();
    afeIMU.reset();
    ultrasonic.reset();
    adSamples.reset();
}

void JoinTtlValues(const ORDDataPacket& packet, std::vector<std::uint8_t>& ttlValues) {
    ttlValues.assign(packet.stateHigh.begin(), packet.stateHigh.end());
    if (packet.stateLow.size() != ttlValues.size()) return;
    for (std::size_t i = 0; i < ttlValues.size(); ++i) {
        ttlValues[i] = static_cast<std::uint8_t>(packet.stateHigh[i] | (packet.stateLow[i] << 4U));
    }
}

}  // namespace stalwick
