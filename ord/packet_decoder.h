// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "ord/decode_options.h"
#include "ord/ord_data_packet.h"

namespace stalwick {

// Why bytes are not a packet: they do not begin with the packet type byte, or they end inside a
// packet, and where.
enum class PacketRefusal {
    kNone,
    kWrongType,
    kTooShort,  // for a head and a state byte
    kCutInTimestamp,
    kCutInMask,
    kCutInStates,
    kCutInBaseIMU,
    kCutInAfeIMU,
    kCutInUltrasonic,
    kCutInSamples
};

// The position after a packet; or the reason and the position where it should have begun.
struct PacketParse {
    const std::uint8_t* end = nullptr;
    PacketRefusal refusal = PacketRefusal::kNone;
};

// Decodes whole packets from `data` until one is incomplete or does not begin with the packet type
// byte; a packet must begin at the end of the previous one. `packets` is reused and afterwards
// holds exactly the packets of this call. Returns the first byte that was not consumed.
//
// `samplesOverride`: if present, with any value, every A/D block holds 10 samples per channel.
// docs/ord-format.md describes the stream.
const std::uint8_t* ProcessDataBuffer(const std::uint8_t* data, std::size_t length,
                                      std::vector<ORDDataPacket>& packets,
                                      const DecodeOptions& options,
                                      std::optional<std::uint32_t> samplesOverride);

// Memory that one call of ProcessDataBuffer leaves for the next.
struct SpanMemory {
    std::vector<ORDDataPacket> spares;       // unused packets, with their memory
    std::vector<std::uint32_t> packetSizes;  // bytes of each packet of the last call
};

// The same without an allocation per packet.
const std::uint8_t* ProcessDataBuffer(const std::uint8_t* data, std::size_t length,
                                      std::vector<ORDDataPacket>& packets,
                                      const DecodeOptions& options,
                                      std::optional<std::uint32_t> samplesOverride,
                                      SpanMemory& memory);

// Decodes the packet at the beginning of the span; `packet` is blank if it is refused.
[[nodiscard]] PacketParse TryParsePacket(std::span<const std::uint8_t> span, ORDDataPacket& packet,
                                         const DecodeOptions& options,
                                         std::optional<std::uint32_t> samplesOverride);

// The same without the reason. Returns the position after the packet; if there is no whole packet,
// returns `data` and leaves `packet` blank.
const std::uint8_t* ParseDataPacket(const std::uint8_t* data, std::size_t length,
                                    ORDDataPacket& packet, const DecodeOptions& options,
                                    std::optional<std::uint32_t> samplesOverride);

}  // namespace stalwick
