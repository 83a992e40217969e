// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/reference_decoder.h"

#include <algorithm>
#include <utility>

namespace stalwick::test {
namespace {

std::uint8_t ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes.at(index));
}

/** Takes bits, most significant first. It never moves past the last bit, but returns it again. */
class SaturatingBitReader {
  public:
    explicit SaturatingBitReader(std::string_view bytes)
        : bytes_(bytes), bitCount_(bytes.size() * 8) {}

    unsigned ReadBit() {
        if (position_ >= bitCount_) return 0;
        const unsigned byte = ByteAt(bytes_, position_ / 8);
        const unsigned bit = (byte >> (7 - position_ % 8)) & 1U;
        position_ = std::min(bitCount_ - 1, position_ + 1);
        return bit;
    }

    unsigned ReadBits(unsigned count) {
        unsigned value = 0;
        for (unsigned i = 0; i < count; ++i) value = (value << 1) | ReadBit();
        return value;
    }

    std::size_t Position() const { return position_; }
    std::size_t BitCount() const { return bitCount_; }

  private:
    std::string_view bytes_;
    std::size_t bitCount_;
    std::size_t position_ = 0;
};

std::vector<bool> EnabledChannels(unsigned channelCount, const std::vector<std::uint8_t>& mask) {
    std::vector<bool> enabled(channelCount, true);
    if (mask.empty()) return enabled;
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        const unsigned maskByte = mask.at(mask.size() - 1 - channel / 8);
        enabled[channel] = ((maskByte >> (channel % 8)) & 1U) != 0;
    }
    return enabled;
}

bool IsComplete(const SaturatingBitReader& reader, const std::vector<bool>& enabled,
                const std::vector<unsigned>& widths, unsigned samplesPerChannel) {
    // A width of 0 counts as no bits here, although one bit is read for each of its deltas.
    std::size_t need = 0;
    for (std::size_t channel = 0; channel < enabled.size(); ++channel) {
        if (enabled[channel]) need += 14 + (samplesPerChannel - 1) * widths[channel];
    }
    const std::size_t remainder = (reader.Position() + need) % 8;
    const std::size_t pad = remainder == 0 ? 0 : 8 - remainder;
    return reader.BitCount() - reader.Position() >= need + pad;
}

std::uint16_t ReadDelta(SaturatingBitReader& reader, unsigned width) {
    const unsigned firstBit = reader.ReadBit();
    unsigned delta = firstBit == 1 ? 0xFFFF : 0;
    if (width > 0) {
        delta = ((delta << 1) | firstBit) & 0xFFFF;
        for (unsigned i = 1; i < width; ++i) delta = ((delta << 1) | reader.ReadBit()) & 0xFFFF;
    }
    return static_cast<std::uint16_t>(delta);
}

/** Walks over the blocks of one packet. Every read fails if too few bytes remain. */
class ByteCursor {
  public:
    explicit ByteCursor(std::string_view bytes) : bytes_(bytes) {}

    bool Has(std::size_t count) const { return bytes_.size() - position_ >= count; }

    std::uint64_t TakeBigEndian(unsigned byteCount) {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < byteCount; ++i) value = (value << 8) | ByteAt(bytes_, position_++);
        return value;
    }

    template <std::size_t Count>
    bool TakeWords(std::optional<std::array<std::uint16_t, Count>>& words) {
        if (!Has(Count * 2)) return false;
        words.emplace();
        for (std::uint16_t& word : *words) word = static_cast<std::uint16_t>(TakeBigEndian(2));
        return true;
    }

    void Skip(std::size_t count) { position_ += count; }
    std::size_t Position() const { return position_; }
    std::string_view Rest() const { return bytes_.substr(position_); }

  private:
    std::string_view bytes_;
    std::size_t position_ = 0;
};

bool TakeState(ByteCursor& cursor, unsigned count, ReferencePacket& packet) {
    if (!cursor.Has(count)) return false;
    for (unsigned i = 0; i < count; ++i) {
        const auto state = static_cast<unsigned>(cursor.TakeBigEndian(1));
        packet.stateHigh.push_back(static_cast<std::uint8_t>(state >> 4));
        packet.stateLow.push_back(static_cast<std::uint8_t>(state & 0x0F));
    }
    return true;
}

bool TakeMask(ByteCursor& cursor, unsigned count, ReferencePacket& packet) {
    if (!cursor.Has(count)) return false;
    packet.channelMask.emplace();
    for (unsigned i = 0; i < count; ++i) {
        packet.channelMask->push_back(static_cast<std::uint8_t>(cursor.TakeBigEndian(1)));
    }
    return true;
}

bool TakeAdSamples(ByteCursor& cursor, unsigned channelCount, unsigned samplesPerChannel,
                   ReferencePacket& packet) {
    if (!packet.channelMask) packet.channelMask.emplace();
    ReferenceAdBlock block =
        ReferenceDecodeADBlock(cursor.Rest(), channelCount, samplesPerChannel, *packet.channelMask);
    if (block.samples.empty()) return false;
    packet.adSamples = std::move(block.samples);
    cursor.Skip(block.consumedBytes);
    return true;
}

bool CarriesTimestamp(const std::optional<ReferenceDecodeOptions>& options) {
    return options && (options->first >= 240 || options->second >= 20);
}

/** Everything after the length check of the first 11 bytes; false: the packet is rejected. */
bool TakePacket(ByteCursor& cursor, const std::optional<ReferenceDecodeOptions>& options,
                const std::optional<std::uint32_t>& samplesOverride, ReferencePacket& packet) {
    packet.packetType = static_cast<std::uint8_t>(cursor.TakeBigEndian(1));
    if (packet.packetType != 4) return false;
    const auto flags = static_cast<unsigned>(cursor.TakeBigEndian(1));
    packet.headerByte2 = static_cast<std::uint8_t>(cursor.TakeBigEndian(1));
    packet.headerByte3 = static_cast<std::uint8_t>(cursor.TakeBigEndian(1));
    cursor.Skip(2);
    packet.headerWord = static_cast<std::uint32_t>(cursor.TakeBigEndian(4));
    if (CarriesTimestamp(options)) {
        if (!cursor.Has(8)) return false;
        packet.hardwareTimestamp = cursor.TakeBigEndian(8);
    }
    packet.channelCountCode = static_cast<std::uint8_t>(flags >> 6);
    const unsigned channelCount = 32U << packet.channelCountCode;
    const unsigned stateCount = packet.channelCountCode == 3 ? 5 : 10;
    if ((flags & 0x20U) != 0 && !TakeMask(cursor, channelCount / 8, packet)) return false;
    if (!TakeState(cursor, (flags & 0x10U) != 0 ? stateCount : 1, packet)) return false;
    if ((flags & 0x02U) != 0 && !cursor.TakeWords(packet.baseIMU)) return false;
    if ((flags & 0x04U) != 0 && !cursor.TakeWords(packet.afeIMU)) return false;
    if ((flags & 0x08U) != 0 && !cursor.TakeWords(packet.ultrasonic)) return false;
    if ((flags & 0x01U) == 0) return true;
    // Only whether the override is engaged counts, not its value.
    return TakeAdSamples(cursor, channelCount, samplesOverride ? 10 : stateCount, packet);
}

}  // namespace

ReferenceAdBlock ReferenceDecodeADBlock(std::string_view bytes, unsigned channelCount,
                                        unsigned samplesPerChannel,
                                        const std::vector<std::uint8_t>& channelMask) {
    if (bytes.size() * 8 < 16) return {};
    SaturatingBitReader reader(bytes);
    const std::vector<bool> enabled = EnabledChannels(channelCount, channelMask);
    std::vector<unsigned> widths(channelCount, 0);
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        if (enabled[channel]) widths[channel] = reader.ReadBits(4);
    }
    if (!IsComplete(reader, enabled, widths, samplesPerChannel)) return {};

    ReferenceAdBlock block;
    block.samples.assign(std::size_t{channelCount} * samplesPerChannel, 0);
    std::vector<std::uint16_t> last(channelCount, 0);
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        if (!enabled[channel]) continue;
        last[channel] = static_cast<std::uint16_t>(reader.ReadBits(14) << 2);
        block.samples[channel * samplesPerChannel] = last[channel];
    }
    for (std::size_t i = 1; i < samplesPerChannel; ++i) {
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            if (!enabled[channel]) continue;
            const unsigned step = unsigned{ReadDelta(reader, widths[channel])} << 2;
            last[channel] = static_cast<std::uint16_t>(last[channel] + step);
            block.samples[channel * samplesPerChannel + i] = last[channel];
        }
    }
    block.consumedBytes = bytes.size() - (reader.BitCount() - reader.Position()) / 8;
    return block;
}

ReferenceParsedPacket ReferenceParsePacket(std::string_view bytes,
                                           const std::optional<ReferenceDecodeOptions>& options,
                                           const std::optional<std::uint32_t>& samplesOverride) {
    ReferenceParsedPacket parsed;
    if (bytes.size() < 11) return parsed;
    ByteCursor cursor(bytes);
    if (TakePacket(cursor, options, samplesOverride, parsed.packet)) {
        parsed.consumedBytes = cursor.Position();
    } else {
        parsed.packet = ReferencePacket();
    }
    return parsed;
}

ReferenceSpan ReferenceProcessDataBuffer(std::string_view bytes,
                                         const std::optional<ReferenceDecodeOptions>& options,
                                         const std::optional<std::uint32_t>& samplesOverride) {
    ReferenceSpan span;
    for (;;) {
        ReferenceParsedPacket parsed =
            ReferenceParsePacket(bytes.substr(span.consumedBytes), options, samplesOverride);
        if (parsed.consumedBytes == 0) return span;
        span.packets.push_back(std::move(parsed.packet));
        span.consumedBytes += parsed.consumedBytes;
    }
}

ReferenceSpanReader::ReferenceSpanReader(std::string stream, std::int32_t versionNumber,
                                         std::size_t spanBytes)
    : stream_(std::move(stream)), versionNumber_(versionNumber), spanBytes_(spanBytes) {}

ReferenceSpanReader::Result ReferenceSpanReader::GetData() {
    Result result;
    const std::size_t wanted = spanBytes_ - held_.size();
    const std::string read = stream_.substr(position_, wanted);
    position_ += read.size();
    // The end shows only when a read returns less than requested.
    result.endOfFile = read.size() < wanted;
    const std::string span = held_ + read;
    ReferenceSpan processed =
        ReferenceProcessDataBuffer(span, ReferenceDecodeOptions{0, versionNumber_}, 10);
    result.packets = std::move(processed.packets);
    // Counted to the end of the buffer, not of the data: a last, short span fails if its bytes and
    // the consumed ones add up to the buffer's size, and does not fail if nothing was consumed.
    const std::size_t leftoverCount = spanBytes_ - processed.consumedBytes;
    result.failed = span.size() == leftoverCount;
    if (!result.failed) held_ = span.substr(processed.consumedBytes);
    return result;
}

std::vector<ReferencePacket> ReferenceReadAll(const std::string& stream, std::int32_t versionNumber,
                                              bool* failed) {
    ReferenceSpanReader reader(stream, versionNumber);
    std::vector<ReferencePacket> packets;
    for (;;) {
        ReferenceSpanReader::Result result = reader.GetData();
        if (failed != nullptr) *failed = result.failed;
        // A span that fails passes no packet to the conversion.
        if (result.failed) return packets;
        for (ReferencePacket& packet : result.packets) packets.push_back(std::move(packet));
        if (result.endOfFile) return packets;
    }
}

}  // namespace stalwick::test
