// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/ord_builder.h"

#include <algorithm>

#include "tests/support/bit_writer.h"

namespace stalwick::test {
namespace {

void AppendBigEndian(std::string& bytes, std::uint64_t value, unsigned byteCount) {
    for (unsigned i = byteCount; i > 0; --i) {
        bytes.push_back(static_cast<char>((value >> ((i - 1) * 8)) & 0xFF));
    }
}

void AppendBytes(std::string& bytes, const std::vector<std::uint8_t>& values) {
    for (const std::uint8_t value : values) bytes.push_back(static_cast<char>(value));
}

template <std::size_t Count>
void AppendWords(std::string& bytes, const std::optional<std::array<std::uint16_t, Count>>& words) {
    if (!words) return;
    for (const std::uint16_t word : *words) AppendBigEndian(bytes, word, 2);
}

}  // namespace

OrdHeaderText::OrdHeaderText() {
    AddLine("######## Recording header");
    Set("-FileVersion", "2.0");
    Set("-NumADChannels", "32");
    Set("-SamplingFrequency", "30000");
    Set("-ADMaxValue", "32767");
    Set("-ADBitVolts", "0.00000012 0.00000012");
    Set("-InputRange", "1000 2000");
    Set("-UTCOffsetMicroseconds", "1600000000000000");
    Set("-SessionUUID", "6f0e4c52-98d1-4a37-b2c6-1d5e7a90f384");
    Set("-AcquisitionSystem", "\"Wireless Recorder\" Unit3");
    Set("-BaseIMUAvailable", "1");
    Set("-AfeIMUAvailable", "1");
    Set("-UltrasonicAvailable", "1");
}

OrdHeaderText& OrdHeaderText::Set(std::string_view key, std::string_view value) {
    const auto line = std::find_if(lines_.begin(), lines_.end(),
                                   [key](const auto& candidate) { return candidate.first == key; });
    if (line != lines_.end()) {
        line->second = value;
    } else {
        lines_.emplace_back(key, value);
    }
    return *this;
}

OrdHeaderText& OrdHeaderText::Remove(std::string_view key) {
    std::erase_if(lines_, [key](const auto& candidate) { return candidate.first == key; });
    return *this;
}

OrdHeaderText& OrdHeaderText::AddLine(std::string_view line) {
    lines_.emplace_back(std::string(), line);
    return *this;
}

OrdHeaderText& OrdHeaderText::SetLineEnd(std::string_view lineEnd) {
    lineEnd_ = lineEnd;
    return *this;
}

OrdHeaderText& OrdHeaderText::SetExtraText(std::string_view text) {
    extraText_ = text;
    return *this;
}

std::string OrdHeaderText::Text() const {
    std::string text;
    for (const auto& [key, value] : lines_) {
        text += key.empty() ? value : key + " " + value;
        text += lineEnd_;
    }
    return text + extraText_;
}

std::string OrdHeaderText::Block() const {
    std::string block = Text();
    block.resize(kOrdHeaderBytes, '\0');
    return block;
}

OrdHeaderText Version1Header(unsigned channelCount) {
    OrdHeaderText header = Version2Header(channelCount);
    header.Set("-FileVersion", "1.0").Remove("-UTCOffsetMicroseconds");
    return header;
}

OrdHeaderText Version2Header(unsigned channelCount) {
    OrdHeaderText header;
    header.Set("-NumADChannels", std::to_string(channelCount));
    return header;
}

unsigned ChannelCountOfCode(std::uint8_t channelCountCode) {
    return 32U << (channelCountCode & 3U);
}

unsigned StateByteCountOfCode(std::uint8_t channelCountCode) {
    return (channelCountCode & 3U) == 3U ? 5 : 10;
}

std::uint8_t PacketFlags(const PacketPlan& plan) {
    unsigned flags = (plan.channelCountCode & 3U) << 6;
    if (plan.channelMask) flags |= 0x20U;
    if (plan.stateBytePerSample) flags |= 0x10U;
    if (plan.ultrasonic) flags |= 0x08U;
    if (plan.afeImu) flags |= 0x04U;
    if (plan.baseImu) flags |= 0x02U;
    if (plan.adBlock) flags |= 0x01U;
    return static_cast<std::uint8_t>(flags);
}

bool IsChannelEnabled(const std::optional<std::vector<std::uint8_t>>& mask, unsigned channel) {
    if (!mask) return true;
    // Channel 0 is the lowest bit of the last mask byte.
    const unsigned maskByte = mask->at(mask->size() - 1 - channel / 8);
    return ((maskByte >> (channel % 8)) & 1U) != 0;
}

std::vector<std::uint8_t> MakeChannelMask(unsigned channelCount,
                                          const std::vector<unsigned>& enabledChannels) {
    std::vector<std::uint8_t> mask(channelCount / 8, 0);
    for (const unsigned channel : enabledChannels) {
        std::uint8_t& maskByte = mask.at(mask.size() - 1 - channel / 8);
        maskByte = static_cast<std::uint8_t>(maskByte | (1U << (channel % 8)));
    }
    return mask;
}

std::string EncodeAdBlock(const AdBlockPlan& plan, unsigned channelCount,
                          const std::optional<std::vector<std::uint8_t>>& mask) {
    BitWriter bits;
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        if (IsChannelEnabled(mask, channel)) bits.WriteBits(plan.widths.at(channel), 4);
    }
    for (unsigned channel = 0; channel < channelCount; ++channel) {
        if (IsChannelEnabled(mask, channel)) bits.WriteBits(plan.initialValues.at(channel), 14);
    }
    const std::size_t deltasPerChannel = plan.samplesPerChannel - 1;
    for (std::size_t i = 0; i < deltasPerChannel; ++i) {
        for (unsigned channel = 0; channel < channelCount; ++channel) {
            if (!IsChannelEnabled(mask, channel)) continue;
            const unsigned width = plan.widths[channel];
            const std::int32_t delta = plan.deltas.at(channel * deltasPerChannel + i);
            if (width > 0 || plan.writeZeroWidthBits) {
                bits.WriteBits(static_cast<std::uint32_t>(delta), std::max(width, 1U));
            }
        }
    }
    return bits.Bytes();
}

std::string EncodePacket(const PacketPlan& plan) {
    std::string bytes;
    AppendBigEndian(bytes, plan.packetType, 1);
    AppendBigEndian(bytes, PacketFlags(plan), 1);
    AppendBigEndian(bytes, plan.headerByte2, 1);
    AppendBigEndian(bytes, plan.headerByte3, 1);
    AppendBigEndian(bytes, plan.unreadBytes[0], 1);
    AppendBigEndian(bytes, plan.unreadBytes[1], 1);
    AppendBigEndian(bytes, plan.headerWord, 4);
    if (plan.hardwareTimestamp) AppendBigEndian(bytes, *plan.hardwareTimestamp, 8);
    if (plan.channelMask) AppendBytes(bytes, *plan.channelMask);
    AppendBytes(bytes, plan.stateBytes);
    AppendWords(bytes, plan.baseImu);
    AppendWords(bytes, plan.afeImu);
    AppendWords(bytes, plan.ultrasonic);
    if (plan.adBlock) {
        bytes += EncodeAdBlock(*plan.adBlock, ChannelCountOfCode(plan.channelCountCode),
                               plan.channelMask);
    }
    return bytes;
}

std::string EncodePackets(const std::vector<PacketPlan>& plans) {
    std::string bytes;
    for (const PacketPlan& plan : plans) bytes += EncodePacket(plan);
    return bytes;
}

std::string BuildOrdFile(const OrdHeaderText& header, const std::vector<PacketPlan>& plans,
                         std::string_view tail) {
    return header.Block() + EncodePackets(plans) + std::string(tail);
}

}  // namespace stalwick::test
