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

}  // namespace stalwick
