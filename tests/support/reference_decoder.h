// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A second, bit-at-a-time decoder of the packet stream (docs/ord-format.md), as plain as possible.
// It shares no code with the program's decoder, so that the two can be compared.

namespace stalwick::test {

struct ReferencePacket {
    std::uint8_t packetType = 0;
    std::uint8_t channelCountCode = 0;  // 32 << code channels
    std::uint8_t headerByte3 = 0;
    std::uint8_t headerByte2 = 0;
    std::uint32_t headerWord = 0;
    std::optional<std::uint64_t> hardwareTimestamp;        // nanoseconds
    std::optional<std::vector<std::uint8_t>> channelMask;  // engaged but empty: samples, no mask
    std::vector<std::uint8_t> stateHigh;                   // high nibbles of the state bytes
    std::vector<std::uint8_t> stateLow;
    std::optional<std::array<std::uint16_t, 9>> baseIMU;
    std::optional<std::array<std::uint16_t, 9>> afeIMU;
    std::optional<std::array<std::uint16_t, 70>> ultrasonic;
    std::optional<std::vector<std::uint16_t>> adSamples;  // samples[channel * N + i]

    bool operator==(const ReferencePacket&) const = default;
};

struct ReferenceDecodeOptions {
    std::int32_t first = 0;
    std::int32_t second = 0;  // the file version number
};

struct ReferenceAdBlock {
    std::vector<std::uint16_t> samples;  // samples[channel * N + i]; empty: nothing was decoded
    std::size_t consumedBytes = 0;
};

/** `bytes` is the rest of the span, from the block's first byte on. */
ReferenceAdBlock ReferenceDecodeADBlock(std::string_view bytes, unsigned channelCount,
                                        unsigned samplesPerChannel,
                                        const std::vector<std::uint8_t>& channelMask);

struct ReferenceParsedPacket {
    ReferencePacket packet;         // blank if nothing was consumed
    std::size_t consumedBytes = 0;  // 0: no whole packet at the start of the span
};

ReferenceParsedPacket ReferenceParsePacket(std::string_view bytes,
                                           const std::optional<ReferenceDecodeOptions>& options,
                                           const std::optional<std::uint32_t>& samplesOverride);

struct ReferenceSpan {
    std::vector<ReferencePacket> packets;
    std::size_t consumedBytes = 0;
};

/** All whole packets from the start of the span on. */
ReferenceSpan ReferenceProcessDataBuffer(std::string_view bytes,
                                         const std::optional<ReferenceDecodeOptions>& options,
                                         const std::optional<std::uint32_t>& samplesOverride);

inline constexpr std::size_t kReferenceSpanBytes = 50000;

/** Reads a packet stream in the spans that decide what becomes of a damaged packet. */
class ReferenceSpanReader {
  public:
    /** `stream`: the bytes of the recording after its header block. */
    ReferenceSpanReader(std::string stream, std::int32_t versionNumber,
                        std::size_t spanBytes = kReferenceSpanBytes);

    struct Result {
        bool failed = false;  // "Failed to process buffer. 0 bytes consumed."
        bool endOfFile = false;
        std::vector<ReferencePacket> packets;
    };
    /** The packets of the next span. Do not call it again after endOfFile or a failure. */
    Result GetData();

  private:
    std::string stream_;
    std::size_t position_ = 0;
    std::int32_t versionNumber_;
    std::size_t spanBytes_;
    std::string held_;
};

/** Every packet of the stream up to its end or to the failure, as the spans return them. */
std::vector<ReferencePacket> ReferenceReadAll(const std::string& stream, std::int32_t versionNumber,
                                              bool* failed = nullptr);

}  // namespace stalwick::test
