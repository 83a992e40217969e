// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Builds `.ord` recordings as byte strings. The byte layout is described in docs/ord-format.md.

namespace stalwick::test {

inline constexpr std::size_t kOrdHeaderBytes = 16384;

/** The text in the first 16,384 bytes of a recording; starts as a complete version 2.0 header. That
 * text keeps its length, which inputs found by fuzzing depend on: use Set() for another field. */
class OrdHeaderText {
  public:
    OrdHeaderText();

    /** Replaces the value of the first line with this key, or appends a line. Give the key with its
     * "-". */
    OrdHeaderText& Set(std::string_view key, std::string_view value);
    /** Removes every line with this key. */
    OrdHeaderText& Remove(std::string_view key);
    /** Appends a line unchanged: a comment, a second line of a key, anything. */
    OrdHeaderText& AddLine(std::string_view line);
    /** CR LF unless set. */
    OrdHeaderText& SetLineEnd(std::string_view lineEnd);
    /** Appended unchanged after the last line, without a line end. */
    OrdHeaderText& SetExtraText(std::string_view text);

    std::string Text() const;
    /** The text padded with zero bytes to 16,384 bytes; a longer text is truncated there. */
    std::string Block() const;

  private:
    std::vector<std::pair<std::string, std::string>>
        lines_;  // key and value; key empty: whole line
    std::string lineEnd_ = "\r\n";
    std::string extraText_;
};

/** A complete header of format version 1.0, which needs no UTC offset. */
OrdHeaderText Version1Header(unsigned channelCount);
/** A complete header of format version 2.0 with both inertial units and the ultrasonic block. */
OrdHeaderText Version2Header(unsigned channelCount);

/** Channels for each channel-count code: 32, 64, 128, 256. */
unsigned ChannelCountOfCode(std::uint8_t channelCountCode);
/** State bytes of a packet with one state byte per sample: 10, or 5 for 256 channels. */
unsigned StateByteCountOfCode(std::uint8_t channelCountCode);

/** The contents of one bit-packed A/D block. All vectors have one entry per channel of the packet.
 */
struct AdBlockPlan {
    unsigned samplesPerChannel = 10;
    std::vector<std::uint8_t> widths;  // bits per delta, 0..15; unused for disabled channels
    std::vector<std::uint16_t> initialValues;  // 14-bit values
    std::vector<std::int32_t> deltas;          // deltas[channel * (samplesPerChannel - 1) + i]
    // The decoder reads one bit for each delta of a width-0 channel although the block's length
    // does not count them. True writes these bits, false leaves them out.
    bool writeZeroWidthBits = true;
};

/** The contents of one packet, written unchanged: the parts may contradict each other. */
struct PacketPlan {
    std::uint8_t packetType = 4;
    std::uint8_t channelCountCode = 0;
    std::uint8_t headerByte2 = 0;
    std::uint8_t headerByte3 = 0;
    std::array<std::uint8_t, 2> unreadBytes{};
    std::uint32_t headerWord = 0;
    std::optional<std::uint64_t>
        hardwareTimestamp;  // nanoseconds; has no flag, the version decides
    std::optional<std::vector<std::uint8_t>> channelMask;
    bool stateBytePerSample = false;
    std::vector<std::uint8_t> stateBytes = {0};
    std::optional<std::array<std::uint16_t, 9>> baseImu;
    std::optional<std::array<std::uint16_t, 9>> afeImu;
    std::optional<std::array<std::uint16_t, 70>> ultrasonic;
    std::optional<AdBlockPlan> adBlock;
};

/** The flags byte of the packet, formed from its parts. */
std::uint8_t PacketFlags(const PacketPlan& plan);
/** True if the mask enables the channel; an absent mask enables all. */
bool IsChannelEnabled(const std::optional<std::vector<std::uint8_t>>& mask, unsigned channel);
/** A mask of channelCount / 8 bytes in packet order with exactly these channels enabled. */
std::vector<std::uint8_t> MakeChannelMask(unsigned channelCount,
                                          const std::vector<unsigned>& enabledChannels);

std::string EncodeAdBlock(const AdBlockPlan& plan, unsigned channelCount,
                          const std::optional<std::vector<std::uint8_t>>& mask);
std::string EncodePacket(const PacketPlan& plan);
std::string EncodePackets(const std::vector<PacketPlan>& plans);
/** Header block, then the packets, then `tail` unchanged. */
std::string BuildOrdFile(const OrdHeaderText& header, const std::vector<PacketPlan>& plans,
                         std::string_view tail = {});

/**
 * Plans the block that decodes to samples[channel * samplesPerChannel + i]; the low 2 bits of a
 * sample are dropped. Without `width` each channel gets the smallest one above 0 that fits all its
 * deltas; with it, every channel gets that one, and a delta that does not fit throws
 * std::invalid_argument.
 */
AdBlockPlan PlanAdBlock(const std::vector<std::uint16_t>& samples, unsigned channelCount,
                        unsigned samplesPerChannel,
                        std::optional<std::uint8_t> width = std::nullopt);

/** Which parts a random packet has. */
struct RandomPacketShape {
    std::uint8_t channelCountCode = 0;
    std::optional<std::uint64_t> hardwareTimestamp;
    bool channelMask = false;
    bool stateBytePerSample = false;
    bool baseImu = false;
    bool afeImu = false;
    bool ultrasonic = false;
    bool adBlock = true;
    unsigned largestStep = 40;          // of the random walk, in units of the 14-bit converter
    std::optional<std::uint8_t> width;  // of all channels; the walk is kept inside it
    bool writeZeroWidthBits = true;     // matters with a width of 0
};

/** The same packets from the same generator state on every platform. */
PacketPlan MakeRandomPacket(std::mt19937_64& random, const RandomPacketShape& shape);

/** A recording of random packets of one shape. */
struct RandomRecordingShape {
    RandomPacketShape packet;
    std::size_t packetCount = 100;
    std::uint64_t firstTimestampNs = 1'000'000'000;
    std::uint64_t timestampStepNs = 333'333;  // 10 samples at 30 kHz
    bool timestamps = true;                   // false: format version 1
};

/** Sets each packet's timestamp; everything else comes from the shape. */
std::vector<PacketPlan> MakeRandomPackets(std::uint64_t seed, const RandomRecordingShape& shape);

/** Any mixture of parts, masks, widths 0 to 15 and state bytes; still a packet that decodes whole.
 */
RandomPacketShape MakeRandomShape(std::mt19937_64& random, std::uint8_t channelCountCode,
                                  std::optional<std::uint64_t> hardwareTimestamp);

}  // namespace stalwick::test
