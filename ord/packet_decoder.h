#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "ord/decode_options.h"
#include "ord/ord_data_packet.h"

namespace stalwick {

// Why bytes were not taken as a packet: they do not begin with the packet type byte, or they end
// inside a packet, and where.
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

// The position after a packet; or, with the reason, the position where it should have begun.
struct PacketParse {
    const std::uint8_t* end = nullptr;
    PacketRefusal refusal = PacketRefusal::kNone;
};

// Decodes whole packets from `data` until one is incomplete or does not begin with the packet
// type byte; a packet must begin where the one before it ended. `packets` is reused: it ends with
// exactly the packets of this call. Returns the first byte that was not consumed.
//
// `samplesOverride`: when present, whatever its value, every A/D block holds 10 samples a channel.
// The stream is described in docs/ord-format.md.
const std::uint8_t* ProcessDataBuffer(const std::uint8_t* data, std::size_t length,
                                      std::vector<ORDDataPacket>& packets,
                                      const DecodeOptions& options,
                                      std::optional<std::uint32_t> samplesOverride);

// What calls of ProcessDataBuffer leave for the next one.
struct SpanMemory {
    std::vector<ORDDataPacket> spares;       // packets that were not needed, with their memory
    std::vector<std::uint32_t> packetSizes;  // bytes of each packet of the last call
};

// The same without an allocation a packet.
const std::uint8_t* ProcessDataBuffer(const std::uint8_t* data, std::size_t length,
                                      std::vector<ORDDataPacket>& packets,
                                      const DecodeOptions& options,
                                      std::optional<std::uint32_t> samplesOverride,
                                      SpanMemory& memory);

// Decodes the packet that begins with the span; `packet` is blank when it was refused.
[[nodiscard]] PacketParse TryParsePacket(std::span<const std::uint8_t> span, ORDDataPacket& packet,
                                         const DecodeOptions& options,
                                         std::optional<std::uint32_t> samplesOverride);

// The same without the reason: returns the position after the packet; `data`, with `packet` blank,
// when there is no whole packet.
const std::uint8_t* ParseDataPacket(const std::uint8_t* data, std::size_t length,
                                    ORDDataPacket& packet, const DecodeOptions& options,
                                    std::optional<std::uint32_t> samplesOverride);

}  // namespace stalwick
