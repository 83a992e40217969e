// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/packet_encoder.h"

#include <bit>
#include <cstring>

namespace stalwick {

namespace {

constexpr std::uint8_t kPacketType = 4;
constexpr std::size_t kHeadBytes = 10;
constexpr std::size_t kTimestampBytes = 8;
constexpr std::uint32_t kInitialValueBits = 14;
constexpr std::uint32_t kWidthBits = 4;
constexpr std::uint32_t kMaxWidth = 15;
constexpr std::size_t kStoreSlack = 8;

enum Flag : std::uint8_t {
    kHasSamples = 0x01,
    kHasBaseImu = 0x02,
    kHasAfeImu = 0x04,
    kHasUltrasonic = 0x08,
    kHasStatePerSample = 0x10,
    kHasMask = 0x20,
};

template <typename T>
std::uint8_t* PutBigEndian(T value, std::uint8_t* out) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        out[i] = static_cast<std::uint8_t>(value >> (8 * (sizeof(T) - 1 - i)));
    }
    return out + sizeof(T);
}

// Most significant bit first. Every Put stores eight bytes and advances by the whole ones, which is
// cheaper than checking whether a byte is full.
class BitWriter {
  public:
    explicit BitWriter(std::uint8_t* out) : out_(out) {}

    // 1 to 56 bits; value has no bit above them.
    void Put(std::uint64_t value, std::uint32_t bits) {
        used_ += bits;
        pending_ |= value << (64 - used_);
        PutBigEndian(pending_, out_);
        out_ += used_ >> 3;
        pending_ <<= used_ & ~7u;
        used_ &= 7u;
    }

    // The position after the last byte begun; the bits left in it are 0.
    std::uint8_t* End() const { return out_ + (used_ != 0 ? 1 : 0); }

  private:
    std::uint8_t* out_;
    std::uint64_t pending_ = 0;  // left-aligned
    std::uint32_t used_ = 0;     // 0 to 7 between calls
};

std::uint8_t ChannelCountCode(std::uint32_t channelCount) {
    return static_cast<std::uint8_t>(std::countr_zero(channelCount) - 5);
}

std::uint8_t Flags(const SynthOptions& options) {
    std::uint32_t flags = std::uint32_t{ChannelCountCode(options.channelCount)} << 6 | kHasSamples;
    if (options.baseImu) flags |= kHasBaseImu;
    if (options.afeImu) flags |= kHasAfeImu;
    if (options.ultrasonic) flags |= kHasUltrasonic;
    if (options.perSampleStates) flags |= kHasStatePerSample;
    if (!options.enabledChannels.empty()) flags |= kHasMask;
    return static_cast<std::uint8_t>(flags);
}

// The high nibble carries TTL bits 0 to 3, the low one bits 4 to 7.
std::uint8_t StateByte(std::uint8_t ttlValue) {
    return static_cast<std::uint8_t>(ttlValue << 4 | ttlValue >> 4);
}

}  // namespace

PacketEncoder::PacketEncoder(const SynthOptions& options)
    : options_(options), flags_(Flags(options)), enabledChannels_(options.enabledChannels) {
    if (!enabledChannels_.empty()) channelMask_.assign(options.channelCount / 8, 0);
    for (const std::uint32_t channel : enabledChannels_) {
        // Channel 0 is the lowest bit of the mask's last byte.
        std::uint8_t& byte = channelMask_[channelMask_.size() - 1 - channel / 8];
        byte = static_cast<std::uint8_t>(byte | 1u << (channel % 8));
    }
    enabledCount_ = enabledChannels_.empty() ? options.channelCount : enabledChannels_.size();
    rowStride_ = (enabledCount_ + 1) / 2 * 2;
    enabledRows_.assign(rowStride_ * kSynthSamplesPerPacket, 0);
    changedBits_.resize(rowStride_);
    valueMasks_.assign(rowStride_, 0);
    widths_.assign(rowStride_, 0);
}

std::size_t PacketEncoder::MaxPacketBytes() const {
    constexpr std::size_t kBitsPerChannel =
        kWidthBits + kInitialValueBits + (kSynthSamplesPerPacket - 1) * kMaxWidth;
    return kHeadBytes + kTimestampBytes + channelMask_.size() + kSynthSamplesPerPacket +
           2 * sizeof(ImuValues) + sizeof(UltrasonicValues) +
           (enabledCount_ * kBitsPerChannel + 7) / 8 + kStoreSlack;
}

std::uint8_t* PacketEncoder::EncodeHead(const SynthPacket& packet, std::uint8_t* out) const {
    const std::uint8_t head[] = {kPacketType, flags_, 0, 0, 0, 0};
    std::memcpy(out, head, sizeof(head));
    out = PutBigEndian(packet.packetNumber, out + sizeof(head));
    return options_.hardwareTimestamps ? PutBigEndian(packet.hardwareTimestampNs, out) : out;
}

std::uint8_t* PacketEncoder::EncodeBlocks(const SynthPacket& packet, std::uint8_t* out) const {
    for (const std::uint8_t byte : channelMask_) *out++ = byte;
    const std::uint32_t states = StateBytesPerPacket(options_);
    for (std::uint32_t s = 0; s < states; ++s) *out++ = StateByte(packet.ttlValues[s]);
    if (options_.baseImu) {
        for (const std::uint16_t value : packet.baseImu) out = PutBigEndian(value, out);
    }
    if (options_.afeImu) {
        for (const std::uint16_t value : packet.afeImu) out = PutBigEndian(value, out);
    }
    if (options_.ultrasonic) {
        for (const std::uint16_t value : packet.ultrasonic) out = PutBigEndian(value, out);
    }
    return out;
}

// Rows of rowStride_ samples without the disabled channels.
const std::int16_t* PacketEncoder::EnabledRows(const SynthPacket& packet) {
    if (enabledChannels_.empty()) return packet.samples.data();
    for (std::size_t s = 0; s < kSynthSamplesPerPacket; ++s) {
        const std::int16_t* from = packet.samples.data() + s * options_.channelCount;
        std::int16_t* to = enabledRows_.data() + s * rowStride_;
        for (std::size_t e = 0; e < enabledCount_; ++e) to[e] = from[enabledChannels_[e]];
    }
    return enabledRows_.data();
}

void PacketEncoder::ChooseWidths(const std::int16_t* rows) {
    std::uint16_t* changed = changedBits_.data();
    const std::size_t stride = rowStride_;
    std::memset(changed, 0, stride * sizeof(*changed));
    for (std::size_t s = 1; s < kSynthSamplesPerPacket; ++s) {
        const std::int16_t* row = rows + s * stride;
        for (std::size_t e = 0; e < stride; ++e) {
            const auto delta = static_cast<std::int16_t>(row[e] - (row - stride)[e]);
            changed[e] = static_cast<std::uint16_t>(changed[e] | (delta ^ (delta >> 15)));
        }
    }
    for (std::size_t e = 0; e < enabledCount_; ++e) {
        // At least 1, for the sign. A reader counts no bits for a width of 0, but reads one.
        const auto width = static_cast<std::uint32_t>(std::bit_width(changed[e])) + 1;
        widths_[e] = static_cast<std::uint8_t>(width);
        valueMasks_[e] = static_cast<std::uint16_t>((1u << width) - 1);
        ++widthCounts_[width];
    }
}

std::uint8_t* PacketEncoder::EncodeSamples(const SynthPacket& packet, std::uint8_t* out) {
    const std::int16_t* rows = EnabledRows(packet);
    const std::size_t stride = rowStride_;
    ChooseWidths(rows);
    BitWriter bits(out);
    for (std::size_t e = 0; e < enabledCount_; ++e) bits.Put(widths_[e], kWidthBits);
    for (std::size_t e = 0; e < enabledCount_; ++e) bits.Put(rows[e] & 0x3FFF, kInitialValueBits);
    const std::uint8_t* widths = widths_.data();
    const std::uint16_t* masks = valueMasks_.data();
    for (std::size_t s = 1; s < kSynthSamplesPerPacket; ++s) {
        const std::int16_t* row = rows + s * stride;
        const std::int16_t* before = row - stride;
        // Two channels at a time; the partner of an odd last one has width 0.
        for (std::size_t e = 0; e < stride; e += 2) {
            const auto first = static_cast<std::uint32_t>(row[e] - before[e]) & masks[e];
            const auto second =
                static_cast<std::uint32_t>(row[e + 1] - before[e + 1]) & masks[e + 1];
            bits.Put(first << widths[e + 1] | second, std::uint32_t{widths[e]} + widths[e + 1]);
        }
    }
    return bits.End();
}

std::size_t PacketEncoder::Encode(const SynthPacket& packet, std::uint8_t* out) {
    std::uint8_t* end = EncodeHead(packet, out);
    end = EncodeBlocks(packet, end);
    end = EncodeSamples(packet, end);
    return static_cast<std::size_t>(end - out);
}

}  // namespace stalwick
