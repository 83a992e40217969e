// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ord/packet_stream.h"
#include "platform/file_calls.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/plain_packet.h"
#include "tests/support/reference_decoder.h"

namespace stalwick::test {

inline constexpr wchar_t kStreamedPath[] = L"rec.ord";

/** A recording in memory, and where its packets are. */
struct Recording {
    std::string bytes;
    std::vector<std::uint64_t> positions;  // of each packet, in the undamaged file
    std::vector<ReferencePacket> packets;
};

inline Recording MakeRecording(const std::vector<PacketPlan>& plans, bool timestamps = true,
                               unsigned channels = 32) {
    const OrdHeaderText header = timestamps ? Version2Header(channels) : Version1Header(channels);
    Recording recording{header.Block(), {}, {}};
    for (const PacketPlan& plan : plans) {
        recording.positions.push_back(recording.bytes.size());
        recording.bytes += EncodePacket(plan);
    }
    const ReferenceDecodeOptions options{0, timestamps ? 20 : 10};
    recording.packets = ReferenceProcessDataBuffer(
                            std::string_view(recording.bytes).substr(kOrdHeaderBytes), options, 10)
                            .packets;
    return recording;
}

inline Recording MakeRandomRecording(std::uint64_t seed, const RandomRecordingShape& shape) {
    return MakeRecording(MakeRandomPackets(seed, shape), shape.timestamps,
                         ChannelCountOfCode(shape.packet.channelCountCode));
}

struct Streamed {
    std::vector<StreamPart> parts;
    std::vector<ReferencePacket> packets;  // of the parts of kind kPacket, in order

    std::vector<StreamPart> Damage() const {
        std::vector<StreamPart> damage;
        std::copy_if(parts.begin(), parts.end(), std::back_inserter(damage),
                     [](const auto& part) { return part.kind == StreamPart::Kind::kDamage; });
        return damage;
    }
};

/** All parts of a recording; fails if they do not follow one another. */
inline Streamed Stream(const std::string& bytes, std::size_t mostBytesPerRead = SIZE_MAX,
                       bool isStrict = false) {
    MemoryFileCalls disk;
    disk.mostBytesPerRead = mostBytesPerRead;
    disk.files[kStreamedPath] = bytes;
    Streamed streamed;
    FileCalls* const before = SetFileCalls(&disk);
    {
        PacketStream stream;
        if (isStrict) stream.BeStrict();
        EXPECT_EQ(stream.Open(kStreamedPath), 0);
        std::uint64_t position = std::min(bytes.size(), kOrdHeaderBytes);
        ORDDataPacket packet;
        do {
            streamed.parts.push_back(stream.Next(packet));
            const StreamPart& part = streamed.parts.back();
            EXPECT_EQ(part.position, position);
            position += part.size;
            if (part.kind == StreamPart::Kind::kPacket) {
                streamed.packets.push_back(ToReference(packet));
            }
        } while (streamed.parts.back().kind != StreamPart::Kind::kEnd);
        EXPECT_EQ(position, bytes.size());
    }
    SetFileCalls(before);
    return streamed;
}

inline RandomRecordingShape Shape(bool timestamps, std::size_t packetCount = 100) {
    RandomRecordingShape shape;
    shape.timestamps = timestamps;
    shape.packetCount = packetCount;
    if (timestamps) shape.packet.hardwareTimestamp = 0;
    return shape;
}

/** The same, by the rules for damaged recordings. */
inline Streamed StreamStrictly(const std::string& bytes) {
    return Stream(bytes, SIZE_MAX, true);
}

}  // namespace stalwick::test
