// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/damaged_recording.h"

#include <algorithm>
#include <numeric>

namespace stalwick::test {

namespace {

constexpr std::size_t kDifferentPackets = 300;
constexpr std::uint64_t kFirstTimestampNs = 1'000'000'000;
constexpr std::uint64_t kTimestampStepNs = 333'333;

RandomPacketShape ShapeOf(std::size_t index, const WholeRecordingShape& shape) {
    RandomPacketShape packet;
    packet.channelCountCode = shape.channelCountCode;
    packet.width = shape.width;
    packet.stateBytePerSample = true;
    packet.baseImu = index % 3 != 0;
    packet.ultrasonic = index % 3 == 2;
    if (shape.timestamps) packet.hardwareTimestamp = 0;
    return packet;
}

void SetTimestamp(std::string& packet, std::uint64_t timestamp) {
    for (std::size_t i = 0; i < 8; ++i) {
        packet[10 + i] = static_cast<char>(timestamp >> (56 - 8 * i));
    }
}

}  // namespace

std::int64_t WholeRecording::PacketAt(std::uint32_t position) const {
    const auto found = std::lower_bound(positions.begin(), positions.end() - 1, position);
    if (found == positions.end() - 1 || *found != position) return -1;
    return found - positions.begin();
}

WholeRecording MakeWholeRecording(std::uint64_t seed, const WholeRecordingShape& shape) {
    std::mt19937_64 random(seed);
    std::vector<std::string> different;
    std::string stream;
    for (std::size_t i = 0; i < kDifferentPackets; ++i) {
        different.push_back(EncodePacket(MakeRandomPacket(random, ShapeOf(i, shape))));
        stream += different.back();
    }
    const ReferenceDecodeOptions options{0, shape.timestamps ? 20 : 10};
    const ReferenceSpan decoded = ReferenceProcessDataBuffer(stream, options, 10);

    const unsigned channels = ChannelCountOfCode(shape.channelCountCode);
    WholeRecording whole;
    whole.timestamps = shape.timestamps;
    whole.bytes = (shape.timestamps ? Version2Header(channels) : Version1Header(channels)).Block();
    for (std::size_t i = 0; i < shape.packetCount; ++i) {
        std::string packet = different[i % kDifferentPackets];
        whole.packets.push_back(decoded.packets.at(i % kDifferentPackets));
        if (shape.timestamps) {
            const std::uint64_t timestamp = kFirstTimestampNs + i * kTimestampStepNs;
            SetTimestamp(packet, timestamp);
            whole.packets.back().hardwareTimestamp = timestamp;
        }
        whole.positions.push_back(static_cast<std::uint32_t>(whole.bytes.size()));
        whole.bytes += packet;
    }
    whole.positions.push_back(static_cast<std::uint32_t>(whole.bytes.size()));
    return whole;
}

DamagedRecording::DamagedRecording(const WholeRecording& whole)
    : bytes(whole.bytes), source(bytes.size()), moved(bytes.size(), 0) {
    std::iota(source.begin(), source.end(), 0U);
}

bool DamagedRecording::IsIntact(std::size_t position, std::size_t size) const {
    if (position + size > source.size() || source[position] == kNew) return false;
    for (std::size_t i = 1; i < size; ++i) {
        if (source[position + i] != source[position] + i) return false;
    }
    return true;
}

namespace {

void FlipBit(DamagedRecording& recording, std::size_t at, std::mt19937_64& random) {
    recording.bytes[at] = static_cast<char>(recording.bytes[at] ^ (1 << random() % 8));
    recording.source[at] = DamagedRecording::kNew;
}

void Cut(DamagedRecording& recording, std::size_t at, std::size_t length) {
    const auto erase = [&](auto& values) {
        const auto from = values.begin() + static_cast<std::ptrdiff_t>(at);
        values.erase(from, from + static_cast<std::ptrdiff_t>(length));
    };
    erase(recording.bytes);
    erase(recording.source);
    erase(recording.moved);
}

void Insert(DamagedRecording& recording, std::size_t at, std::size_t length,
            std::mt19937_64& random) {
    const auto offset = static_cast<std::ptrdiff_t>(at);
    std::string junk(length, '\0');
    for (char& value : junk) value = static_cast<char>(random());
    recording.bytes.insert(at, junk);
    recording.source.insert(recording.source.begin() + offset, length, DamagedRecording::kNew);
    recording.moved.insert(recording.moved.begin() + offset, length, 0);
}

void ZeroSector(DamagedRecording& recording, std::size_t at, std::size_t sector) {
    const auto start = static_cast<std::ptrdiff_t>(at / sector * sector);
    const auto length = static_cast<std::ptrdiff_t>(sector);
    std::fill_n(recording.bytes.begin() + start, length, '\0');
    std::fill_n(recording.source.begin() + start, length, DamagedRecording::kNew);
}

void SwapSectors(DamagedRecording& recording, std::size_t at, std::size_t other,
                 std::size_t sector) {
    const auto one = static_cast<std::ptrdiff_t>(at / sector * sector);
    const auto two = static_cast<std::ptrdiff_t>(other / sector * sector);
    const auto length = static_cast<std::ptrdiff_t>(sector);
    if (one == two) return;
    const auto swap = [&](auto& values) {
        std::swap_ranges(values.begin() + one, values.begin() + one + length, values.begin() + two);
    };
    swap(recording.bytes);
    swap(recording.source);
    std::fill_n(recording.moved.begin() + one, length, 1);
    std::fill_n(recording.moved.begin() + two, length, 1);
}

}  // namespace

void DamageOnePlace(DamagedRecording& recording, std::mt19937_64& random) {
    constexpr std::size_t kMargin = 8192;  // at the end, so that every kind has room
    const std::size_t room = recording.bytes.size() - kOrdHeaderBytes - kMargin;
    const auto place = [&] { return kOrdHeaderBytes + random() % room; };
    const std::size_t at = place();
    const std::size_t length = 1 + random() % (random() % 4 == 0 ? 6000 : 200);
    const std::size_t sector = random() % 2 == 0 ? 512 : 4096;
    switch (random() % 5) {
        case 0:
            return FlipBit(recording, at, random);
        case 1:
            return Cut(recording, at, length);
        case 2:
            return Insert(recording, at, length, random);
        case 3:
            return ZeroSector(recording, at, sector);
        default:
            return SwapSectors(recording, at, place(), sector);
    }
}

}  // namespace stalwick::test
