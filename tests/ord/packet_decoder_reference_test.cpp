// SPDX-License-Identifier: BSD-3-Clause

// Compares the decoder with the plain bit-at-a-time one, on packets of every shape and on damaged
// ones.

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ord/packet_decoder.h"
#include "tests/support/ord_builder.h"
#include "tests/support/plain_packet.h"

namespace stalwick::test {
namespace {

testing::AssertionResult DecodesLikeTheReference(const std::string& bytes, std::int32_t version,
                                                 std::vector<ORDDataPacket>& packets,
                                                 std::optional<std::uint32_t> samplesOverride) {
    const std::vector<std::uint8_t> span(bytes.begin(), bytes.end());
    const std::uint8_t* end = ProcessDataBuffer(span.data(), span.size(), packets,
                                                PacketFormat{0, version}, samplesOverride);
    const auto consumed = static_cast<std::size_t>(end - span.data());
    const ReferenceSpan expected =
        ReferenceProcessDataBuffer(bytes, ReferenceDecodeOptions{0, version}, samplesOverride);
    if (consumed != expected.consumedBytes) {
        return testing::AssertionFailure()
               << consumed << " bytes consumed for " << expected.consumedBytes;
    }
    if (packets.size() != expected.packets.size()) {
        return testing::AssertionFailure()
               << packets.size() << " packets for " << expected.packets.size();
    }
    for (std::size_t i = 0; i < packets.size(); ++i) {
        if (ToReference(packets[i]) != expected.packets[i]) {
            return testing::AssertionFailure() << "packet " << i << " differs";
        }
    }
    return testing::AssertionSuccess();
}

// A few packets of any shape, encoded.
std::string RandomSpan(std::mt19937_64& random, std::int32_t version) {
    std::string bytes;
    for (std::uint64_t left = 1 + random() % 3; left > 0; --left) {
        std::optional<std::uint64_t> timestamp;
        if (version >= 20) timestamp = random();
        RandomPacketShape shape =
            MakeRandomShape(random, static_cast<std::uint8_t>(random() % 4), timestamp);
        shape.writeZeroWidthBits = random() % 2 == 0;
        bytes += EncodePacket(MakeRandomPacket(random, shape));
    }
    return bytes;
}

std::int32_t RandomVersion(std::mt19937_64& random) {
    return random() % 2 == 0 ? 10 : 20;
}

TEST(PacketDecoderReference, PacketsOfEveryShapeDecodeTheSame) {
    std::mt19937_64 random(1);
    std::vector<ORDDataPacket> packets;
    for (int i = 0; i < 400; ++i) {
        const std::int32_t version = RandomVersion(random);
        ASSERT_TRUE(DecodesLikeTheReference(RandomSpan(random, version), version, packets, 10))
            << "span " << i;
    }
}

TEST(PacketDecoderReference, SpansCutAtAnyByteDecodeTheSame) {
    std::mt19937_64 random(2);
    std::vector<ORDDataPacket> packets;
    for (int i = 0; i < 400; ++i) {
        const std::int32_t version = RandomVersion(random);
        const std::string bytes = RandomSpan(random, version);
        const std::string cut = bytes.substr(0, random() % (bytes.size() + 1));
        ASSERT_TRUE(DecodesLikeTheReference(cut, version, packets, 10)) << "span " << i;
    }
}

TEST(PacketDecoderReference, DamagedBytesDecodeTheSame) {
    std::mt19937_64 random(3);
    std::vector<ORDDataPacket> packets;
    for (int i = 0; i < 600; ++i) {
        const std::int32_t version = RandomVersion(random);
        std::string bytes = RandomSpan(random, version);
        for (std::uint64_t left = 1 + random() % 4; left > 0; --left) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        ASSERT_TRUE(DecodesLikeTheReference(bytes, version, packets, 10)) << "span " << i;
    }
}

TEST(PacketDecoderReference, JunkAfterAPacketHeadDecodesTheSame) {
    std::mt19937_64 random(4);
    std::vector<ORDDataPacket> packets;
    for (int i = 0; i < 600; ++i) {
        std::string bytes(2 + random() % 3000, '\0');
        // Few bits set: small widths, so that blocks are complete.
        for (char& byte : bytes) byte = static_cast<char>(random() & random() & random());
        bytes[0] = 4;
        bytes[1] = static_cast<char>(random());
        ASSERT_TRUE(DecodesLikeTheReference(bytes, RandomVersion(random), packets, 10))
            << "span " << i;
    }
}

TEST(PacketDecoderReference, WithoutTheOverrideTheCodeGivesTheSampleCount) {
    std::mt19937_64 random(5);
    std::vector<ORDDataPacket> packets;
    for (int i = 0; i < 200; ++i) {
        const std::int32_t version = RandomVersion(random);
        const std::string bytes = RandomSpan(random, version);
        ASSERT_TRUE(DecodesLikeTheReference(bytes, version, packets, std::nullopt)) << "span " << i;
    }
}

}  // namespace
}  // namespace stalwick::test
