// SPDX-License-Identifier: BSD-3-Clause

// The packet stream on a whole file: its parts follow one another up to the end of the file, and
// every packet equals the reference's packet at that place of the whole file.

#include "ord/header_fields.h"
#include "ord/packet_stream.h"

#include "fuzz/recording_input.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/plain_packet.h"
#include "tests/support/reference_decoder.h"

namespace stalwick::fuzz {

namespace {

constexpr wchar_t kPath[] = L"in.ord";

void ComparePacket(const StreamPart& part, const ORDDataPacket& packet, std::int32_t version,
                   const std::string& recording) {
    const auto expected = test::ReferenceParsePacket(
        std::string_view(recording).substr(static_cast<std::size_t>(part.position)),
        test::ReferenceDecodeOptions{0, version}, 10);
    Require(expected.consumedBytes == part.size, "a packet of another size");
    Require(test::ToReference(packet) == expected.packet, "another packet");
}

void FollowStream(PacketStream& stream, const RecordingInput& input) {
    const std::int32_t version = VersionStringToNumber(stream.Header().fileVersion);
    std::uint64_t position = std::min(input.recording.size(), input.sizes.header);
    ORDDataPacket packet;
    for (;;) {
        const StreamPart part = stream.Next(packet);
        Require(part.position == position, "a part at another place");
        position += part.size;
        if (part.kind == StreamPart::Kind::kEnd) break;
        Require(part.size != 0, "a part without bytes");
        if (part.kind == StreamPart::Kind::kPacket) {
            ComparePacket(part, packet, version, input.recording);
        }
    }
    Require(position == input.recording.size(), "the file was not read to its end");
    Require(stream.Next(packet).kind == StreamPart::Kind::kEnd, "something after the end");
}

}  // namespace

std::vector<std::string> MakeSeeds() {
    std::vector<std::string> seeds;
    for (const int options : {0, 3}) {
        const auto more = MakeRecordingSeeds(static_cast<std::uint8_t>(options));
        seeds.insert(seeds.end(), more.begin(), more.end());
    }
    // And with a damaged place in the middle.
    for (std::size_t i = 0, whole = seeds.size(); i < whole; ++i) {
        std::string damaged = seeds[i];
        damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 0x55);
        seeds.push_back(damaged.erase(damaged.size() * 3 / 4, 5));
    }
    return seeds;
}

}  // namespace stalwick::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stalwick;
    const fuzz::RecordingInput input = fuzz::ReadRecordingInput(data, size);
    test::MemoryFileCalls disk;
    disk.files[fuzz::kPath] = input.recording;
    SetReadSizes(input.sizes);
    {
        PacketStream stream;
        if (stream.Open(fuzz::kPath) == 0) fuzz::FollowStream(stream, input);
    }
    fuzz::Require(disk.openCount == 0, "a file was left open");
    return 0;
}
