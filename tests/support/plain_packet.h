// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ord/ord_data_packet.h"
#include "tests/support/reference_decoder.h"

namespace stalwick::test {

/** A decoded packet in the reference's form, to compare the two. */
inline ReferencePacket ToReference(const ORDDataPacket& packet) {
    ReferencePacket plain;
    plain.packetType = packet.packetType;
    plain.channelCountCode = packet.channelCountCode;
    plain.headerByte3 = packet.headerByte3;
    plain.headerByte2 = packet.headerByte2;
    plain.headerWord = packet.headerWord;
    plain.hardwareTimestamp = packet.hardwareTimestamp;
    if (packet.channelMask) plain.channelMask = *packet.channelMask;
    plain.stateHigh.assign(packet.stateHigh.begin(), packet.stateHigh.end());
    plain.stateLow.assign(packet.stateLow.begin(), packet.stateLow.end());
    plain.baseIMU = packet.baseIMU;
    plain.afeIMU = packet.afeIMU;
    plain.ultrasonic = packet.ultrasonic;
    if (packet.adSamples) {
        plain.adSamples.emplace(packet.adSamples->begin(), packet.adSamples->end());
    }
    return plain;
}

}  // namespace stalwick::test
