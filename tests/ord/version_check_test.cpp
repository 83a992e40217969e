// SPDX-License-Identifier: BSD-3-Clause
#include "ord/version_check.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr PacketFormat kVersion1{0, 10};
constexpr PacketFormat kVersion2{0, 20};

bool Contradicts(const std::string& stream, const DecodeOptions& options) {
    return PacketsContradictVersion(reinterpret_cast<const std::uint8_t*>(stream.data()),
                                    stream.size(), options);
}

std::string Stream(bool timestamps, std::uint8_t code, std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packet = {code, {}, code == 1, true, true, false, true, code != 2, 40, {}, true};
    shape.packetCount = packetCount;
    shape.timestamps = timestamps;
    return EncodePackets(MakeRandomPackets(71, shape));
}

TEST(VersionCheck, PacketsOfTheOtherVersionContradict) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        for (const std::size_t packets : {2U, 3U, 40U}) {
            EXPECT_TRUE(Contradicts(Stream(true, code, packets), kVersion1)) << int{code};
            EXPECT_TRUE(Contradicts(Stream(false, code, packets), kVersion2)) << int{code};
        }
    }
}

TEST(VersionCheck, PacketsOfTheStatedVersionDoNot) {
    for (std::uint8_t code = 0; code < 4; ++code) {
        for (const std::size_t packets : {1U, 2U, 15U, 16U, 40U}) {
            EXPECT_FALSE(Contradicts(Stream(true, code, packets), kVersion2)) << int{code};
            EXPECT_FALSE(Contradicts(Stream(false, code, packets), kVersion1)) << int{code};
            EXPECT_FALSE(Contradicts(Stream(false, code, packets), std::nullopt)) << int{code};
        }
    }
}

TEST(VersionCheck, DamageAndCutPacketsAreNoContradiction) {
    const std::string stream = Stream(true, 0, 4);
    for (std::size_t size = 0; size <= stream.size(); ++size) {
        ASSERT_FALSE(Contradicts(stream.substr(0, size), kVersion2)) << size;
    }
    for (std::size_t at = 0; at < stream.size(); ++at) {
        std::string damaged = stream;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        ASSERT_FALSE(Contradicts(damaged, kVersion2)) << at;
    }
    EXPECT_FALSE(Contradicts(std::string(1000, 'x'), kVersion1));
    EXPECT_FALSE(Contradicts("", kVersion1));
}

// Any few bytes after a type byte form one packet without samples.
TEST(VersionCheck, OnePacketAloneIsNoContradiction) {
    std::string lone(15, '\0');
    lone[0] = '\4';
    EXPECT_FALSE(Contradicts(lone, kVersion2));
}

// Two packets of 11 bytes, which can just as well be read as two of 19 bytes.
TEST(VersionCheck, AsManyPacketsOfTheOtherVersionAreNoContradiction) {
    std::string stream(38, '\0');
    stream[0] = stream[11] = stream[19] = 4;
    EXPECT_FALSE(Contradicts(stream, kVersion1));
    EXPECT_FALSE(Contradicts(stream, kVersion2));
}

}  // namespace
}  // namespace stalwick::test
