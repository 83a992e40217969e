// SPDX-License-Identifier: BSD-3-Clause

// A recorder that was switched off inside its last packet, as opposed to damage near the end of a
// recording.

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ord/ord_file_reader.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kPackets = 20;
constexpr std::size_t kFlags = 1;        // of a packet
constexpr std::size_t kADBlock = 19;     // of a packet without a mask
constexpr std::size_t kWidthBytes = 16;  // of 32 channels

std::vector<std::string> Packets(std::uint64_t seed = 91, std::optional<std::uint8_t> width = {}) {
    RandomRecordingShape shape;
    shape.packet.width = width;
    shape.packetCount = kPackets;
    std::vector<std::string> packets;
    for (const PacketPlan& plan : MakeRandomPackets(seed, shape)) {
        packets.push_back(EncodePacket(plan));
    }
    return packets;
}

std::string Join(const std::vector<std::string>& packets) {
    std::string stream;
    for (const std::string& packet : packets) stream += packet;
    return stream;
}

// Several of them are shorter than one with wide deltas.
std::vector<std::string> ShortPackets() {
    return Packets(94, std::uint8_t{1});
}

// Every channel's deltas seem to have 15 bits: the packet extends into those after it.
void WidenDeltas(std::string& packet) {
    packet.replace(kADBlock, kWidthBytes, kWidthBytes, '\xFF');
}

struct StreamEnd {
    std::size_t packets = 0;
    std::uint64_t trailing = 0;
    bool cut = false;

    bool operator==(const StreamEnd&) const = default;
};

StreamEnd EndOf(const std::string& stream) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"rec.ord"), Version2Header(32).Block() + stream);
    ORDFileReader reader;
    EXPECT_EQ(reader.Open(directory.Path(L"rec.ord")), 0);
    StreamEnd end;
    std::vector<ORDDataPacket> packets;
    for (bool endOfFile = false; !endOfFile; end.packets += packets.size()) {
        EXPECT_EQ(reader.GetData(packets, endOfFile), 0);
    }
    end.trailing = reader.UnconsumedBytes();
    end.cut = reader.EndsInACutPacket();
    return end;
}

// The end of the stream, whose packet at this index does not decode.
StreamEnd LossFrom(const std::vector<std::string>& packets, std::size_t index) {
    std::uint64_t trailing = 0;
    for (std::size_t i = index; i < packets.size(); ++i) trailing += packets[i].size();
    return {index, trailing, false};
}

void PrintTo(const StreamEnd& end, std::ostream* out) {
    *out << end.packets << " packets, " << end.trailing << " bytes, cut: " << end.cut;
}

TEST(CutPacket, EveryBeginningOfALastPacketIsOne) {
    for (const std::uint64_t seed : {91U, 92U, 93U}) {
        const std::vector<std::string> packets = Packets(seed);
        const std::string whole = Join(packets);
        for (std::size_t length = 1; length < packets.back().size(); length += 7) {
            const std::string cut = whole.substr(0, whole.size() - packets.back().size() + length);
            EXPECT_EQ(EndOf(cut), (StreamEnd{kPackets - 1, length, true})) << seed << " " << length;
        }
    }
}

TEST(CutPacket, FirstPacketCanBeOne) {
    const std::string packet = Packets().front();
    for (std::size_t length = 1; length < packet.size(); length += 7) {
        EXPECT_EQ(EndOf(packet.substr(0, length)), (StreamEnd{0, length, true})) << length;
    }
}

TEST(CutPacket, PacketOfAKindThatNoneBeforeWasOfIsDamage) {
    for (const std::size_t index : {kPackets - 2, kPackets - 1}) {
        std::vector<std::string> packets = Packets();
        packets[index][kFlags] = static_cast<char>(packets[index][kFlags] | '\xC0');
        EXPECT_EQ(EndOf(Join(packets)), LossFrom(packets, index)) << index;
    }
}

TEST(CutPacket, OneThatWholePacketsFollowIsDamage) {
    for (const std::size_t index : {kPackets - 3, kPackets - 2}) {
        std::vector<std::string> packets = ShortPackets();
        WidenDeltas(packets[index]);
        packets.resize(index + 2);
        // One whole packet that ends with the recording.
        EXPECT_EQ(EndOf(Join(packets)), LossFrom(packets, index)) << index;
    }
}

TEST(CutPacket, OneThatTwoWholePacketsAndACutOneFollowIsDamage) {
    std::vector<std::string> packets = ShortPackets();
    packets.back().resize(packets.back().size() / 2);
    WidenDeltas(packets[kPackets - 4]);
    EXPECT_EQ(EndOf(Join(packets)), LossFrom(packets, kPackets - 4));
}

TEST(CutPacket, FirstPacketThatWholeOnesFollowIsDamage) {
    std::vector<std::string> packets = Packets();
    packets.resize(3);
    packets.front()[kFlags] = static_cast<char>(packets.front()[kFlags] | '\xC0');
    EXPECT_EQ(EndOf(Join(packets)), LossFrom(packets, 0));
}

TEST(CutPacket, MoreBytesThanThePacketsKindCanHaveAreDamage) {
    const std::vector<std::string> packets = Packets();
    std::string tail = packets.front().substr(0, kADBlock);
    tail.resize(kADBlock + 612, '\xFF');  // 32 channels of the widest deltas: a whole packet
    tail.append(1, '\xFF');
    const StreamEnd end = EndOf(packets.front() + tail);
    EXPECT_EQ(end, (StreamEnd{2, 1, false}));
    // No block of samples is announced, yet there are hundreds of bytes.
    std::string sensorOnly = packets.front();
    sensorOnly[kFlags] = '\x02';
    EXPECT_FALSE(EndOf(sensorOnly).cut);
}

}  // namespace
}  // namespace stalwick::test
