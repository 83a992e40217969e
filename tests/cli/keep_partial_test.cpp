// SPDX-License-Identifier: BSD-3-Clause

// What --keep-partial keeps of a recording that is damaged in the middle. Nothing confirms where
// the packet before the damage ends, so it is kept also if the damage begins inside it.

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kChannels = 32;
constexpr std::size_t kSamples = 10;         // of a channel in a packet
constexpr std::size_t kKeptPackets = 256;    // 2560 samples: five whole records
constexpr std::size_t kDamagedBytes = 12;    // at the end of the last packet that is kept
constexpr std::uint8_t kFlippedBits = 0x55;  // of each damaged byte

constexpr std::size_t kRecordBytes = 1044;
constexpr std::size_t kRecordSamples = 512;
constexpr std::size_t kRawRecordBytes = (kChannels + 18) * 4;

// Eight bits per delta: the last byte of a packet is the last delta of the last channel, the one
// before it that of the channel before it, and so on.
std::vector<PacketPlan> Packets() {
    RandomRecordingShape shape;
    shape.packet.width = 8;
    shape.packetCount = 2 * kKeptPackets;
    return MakeRandomPackets(91, shape);
}

// The last bytes of a packet and as many of the next one, which then begins no packet.
std::string DamagedRecording(const std::vector<PacketPlan>& plans, std::size_t damagedAt) {
    std::string recording = BuildOrdFile(Version2Header(kChannels), plans);
    for (std::size_t i = damagedAt - kDamagedBytes; i < damagedAt + kDamagedBytes; ++i) {
        recording[i] = static_cast<char>(static_cast<std::uint8_t>(recording[i]) ^ kFlippedBits);
    }
    return recording;
}

// A channel's values in the packets, as signed 16-bit numbers: 14 bits, then two zero bits.
std::vector<std::int32_t> RecordedValues(const std::vector<PacketPlan>& plans,
                                         std::size_t channel) {
    std::vector<std::int32_t> values;
    for (const PacketPlan& plan : plans) {
        std::int32_t value = plan.adBlock->initialValues[channel];
        for (std::size_t i = 0; i < kSamples; ++i) {
            if (i > 0) value += plan.adBlock->deltas[channel * (kSamples - 1) + i - 1];
            values.push_back(static_cast<std::int16_t>(value << 2U));
        }
    }
    return values;
}

template <typename Value>
Value At(std::string_view bytes, std::size_t position) {
    Value value{};
    std::memcpy(&value, bytes.substr(position, sizeof value).data(), sizeof value);
    return value;
}

// A channel file stores a value × 3190/65536, truncated toward zero.
void ExpectChannelFile(const std::string& file, const std::vector<std::int32_t>& values) {
    const std::size_t records = values.size() / kRecordSamples;
    ASSERT_EQ(file.size(), kOrdHeaderBytes + records * kRecordBytes);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t record = kOrdHeaderBytes + i / kRecordSamples * kRecordBytes;
        ASSERT_EQ(At<std::uint32_t>(file, record + 16), kRecordSamples);
        ASSERT_EQ(At<std::int16_t>(file, record + 20 + i % kRecordSamples * 2),
                  values[i] * 3190 / 65536)
            << "sample " << i;
    }
}

// The raw data file stores a value × 3190/256, truncated toward zero.
void ExpectInRawFile(const std::string& file, std::size_t channel,
                     const std::vector<std::int32_t>& values) {
    ASSERT_EQ(file.size(), kOrdHeaderBytes + values.size() * kRawRecordBytes);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t record = kOrdHeaderBytes + i * kRawRecordBytes;
        ASSERT_EQ(At<std::int32_t>(file, record + (17 + channel) * 4), values[i] * 3190 / 256)
            << "record " << i;
    }
}

TEST(KeepPartial, PacketBeforeDamageIsKeptWithWrongSamplesAndAllBeforeItAreRight) {
    const std::vector<PacketPlan> plans = Packets();
    std::vector<PacketPlan> kept(plans.begin(), plans.begin() + kKeptPackets);
    const std::size_t damagedAt = kOrdHeaderBytes + EncodePackets(kept).size();
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), DamagedRecording(plans, damagedAt));

    CommandSetup setup;
    setup.workingDirectory = directory.Path();
    const CommandResult result = RunCommand({"--raw", "--keep-partial", "rec.ord"}, setup);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Processing failed - Failed to process buffer. 0 bytes consumed.\n");
    EXPECT_NE(result.error.find("stopped at byte " + std::to_string(damagedAt) + ":"),
              std::string::npos)
        << result.error;

    const auto files = FilesIn(directory.Path(L"rec"));
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        const std::string name = "CSC" + std::to_string(channel + 1) + ".vcs";
        SCOPED_TRACE(name);
        const std::vector<std::int32_t> recorded = RecordedValues(kept, channel);
        std::vector<PacketPlan> flipped = kept;
        if (channel >= kChannels - kDamagedBytes) {
            flipped.back().adBlock->deltas[(channel + 1) * (kSamples - 1) - 1] ^= kFlippedBits;
        }
        const std::vector<std::int32_t> expected = RecordedValues(flipped, channel);
        // Far enough from what was recorded to be another number in the channel file.
        ASSERT_EQ(std::abs(expected.back() - recorded.back()) > 100,
                  channel >= kChannels - kDamagedBytes);
        ExpectChannelFile(files.at(name), expected);
        ExpectInRawFile(files.at("RawData.vrd"), channel, expected);
    }
}

}  // namespace
}  // namespace stalwick::test
