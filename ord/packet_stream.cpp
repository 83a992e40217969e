// SPDX-License-Identifier: BSD-3-Clause
#include "ord/packet_stream.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "ord/read_sizes.h"
#include "ord/version_check.h"
#include "platform/text_encoding.h"

namespace stalwick {

std::int32_t PacketStream::Open(const std::wstring& path) {
    systemError_ = file_.Open(path);
    if (systemError_ != 0) {
        errorMessage_ = L"Error opening file, the file path(" + path + L") may be invalid.";
        return -1;
    }
    std::array<char, kHeaderBlockSize> block;
    std::size_t count = 0;
    systemError_ = file_.Read(block.data(), CurrentReadSizes().header, count);
    if (systemError_ != 0) {
        errorMessage_ = L"Error reading header from file.";
        return -1;
    }
    const std::string_view bytes(block.data(), count);
    headerText_ = DecodeHeaderBytes(bytes.substr(0, bytes.find('\0')));
    if (ReadRecordingHeader(headerText_, header_, errorMessage_) != 0) return -1;
    options_ = PacketDecodeOptions(header_);
    clock_ = StepClock(header_.samplingFrequency);
    window_.emplace(file_, count, StreamWindow::Access::kInOrder);
    return 0;
}

SystemErrorCode PacketStream::SystemError() const {
    return window_ ? window_->SystemError() : systemError_;
}

StreamPart PacketStream::Next(ORDDataPacket& packet) {
    window_->Fill(kLookahead);
    if (!versionIsChecked_) CheckVersion();
    const auto bytes = window_->Bytes();
    const std::uint64_t position = window_->Position();
    if (bytes.empty()) return {StreamPart::Kind::kEnd, position, 0, {}, 0};
    const PacketParse parse = TryParsePacket(bytes, packet, options_, kSamplesPerPacket);
    if (parse.refusal == PacketRefusal::kWrongType) return SkipDamage(parse.refusal, position);
    // The window has room for the longest packet: only the end of the file truncates one.
    if (parse.refusal != PacketRefusal::kNone) return TakeRest(parse.refusal);
    const auto size = static_cast<std::size_t>(parse.end - bytes.data());
    const std::uint8_t flags = bytes[1];
    if (isStrict_ && IsOutOfStep(packet.hardwareTimestamp, size)) {
        return SkipDamage(PacketRefusal::kNone, position);
    }
    if (IsCertain(packet, flags, size)) return TakePacket(packet, flags, size);
    const bool wrongType = bytes[size] != kDataPacketType;
    return SkipDamage(wrongType ? PacketRefusal::kWrongType : PacketRefusal::kNone,
                      position + size);
}

void PacketStream::CheckVersion() {
    versionIsChecked_ = true;
    const auto bytes = window_->Bytes();
    contradictsVersion_ =
        PacketsContradictVersion(bytes.data(), std::min(bytes.size(), kDataBufferSize), options_);
}

bool PacketStream::SkipTo(std::uint64_t position) {
    window_.emplace(file_, position, StreamWindow::Access::kByPosition);
    lastStamp_.reset();
    soundUntil_ = 0;
    return FindPlaceToGoOn();
}

StreamPart PacketStream::TakePacket(const ORDDataPacket& packet, std::uint8_t flags,
                                    std::size_t size) {
    const StreamPart part{StreamPart::Kind::kPacket, window_->Position(), size, {}, 0};
    if (packet.hardwareTimestamp && lastStamp_) {
        ++steps_;
        if (clock_.WholeSteps(*lastStamp_, *packet.hardwareTimestamp)) ++wholeSteps_;
        clock_.Learn(*lastStamp_, *packet.hardwareTimestamp);
    }
    lastStamp_ = packet.hardwareTimestamp;
    knownFlags_.set(flags);
    knownCodes_.set(CodeOf(flags));
    packetBytes_ += size;
    longestPacket_ = std::max(longestPacket_, size);
    ++packetCount_;
    window_->Advance(size);
    return part;
}

// Moves to where packets continue, or to the end of the file.
StreamPart PacketStream::SkipDamage(PacketRefusal refusal, std::uint64_t noticedAt) {
    StreamPart part{StreamPart::Kind::kDamage, window_->Position(), 0, refusal, noticedAt};
    window_->Advance(1);
    FindPlaceToGoOn();
    wentOnAt_ = window_->Position();
    part.size = window_->Position() - part.position;
    CountLostPackets(part);
    return part;
}

// The window begins where packets continue, or at the end of the file.
void PacketStream::CountLostPackets(StreamPart& part) const {
    const std::optional<Head> next = HeadAt(0);
    if (next && next->timestamp && lastStamp_ && clock_.StepNs() > 0.0) {
        const std::uint64_t distance = *next->timestamp - *lastStamp_;
        if (distance <= UINT64_MAX / 2) {
            const auto steps = std::llround(static_cast<double>(distance) / clock_.StepNs());
            part.packetsLost = steps > 1 ? static_cast<std::uint64_t>(steps) - 1 : 0;
            part.packetsLostIsKnown = true;
            return;
        }
    }
    const bool beginsWithPacket = part.noticedAt > part.position;
    part.packetsLost = std::max<std::uint64_t>(longestPacket_ != 0 ? part.size / longestPacket_ : 0,
                                               beginsWithPacket ? 1 : 0);
}

// A packet that extends past the end of the file: it was truncated there, unless packets continue
// inside it.
StreamPart PacketStream::TakeRest(PacketRefusal refusal) {
    const std::uint64_t start = window_->Position();
    window_->Advance(1);
    const bool goesOn = FindPlaceToGoOn();
    wentOnAt_ = window_->Position();
    const auto kind = goesOn ? StreamPart::Kind::kDamage : StreamPart::Kind::kEnd;
    StreamPart part{kind, start, window_->Position() - start, refusal, start};
    if (goesOn) CountLostPackets(part);
    return part;
}

// Moves the window to the next place where packets plausibly follow each other. If there is none,
// moves to the end of the file and returns false.
bool PacketStream::FindPlaceToGoOn() {
    const std::uint64_t start = window_->Position();
    for (;;) {
        window_->Fill(kLookahead);
        const auto bytes = window_->Bytes();
        const void* const found =
            bytes.empty() ? nullptr : std::memchr(bytes.data(), kDataPacketType, bytes.size());
        if (found == nullptr) {
            window_->Advance(bytes.size());
            if (window_->ReachesEnd()) return false;
            continue;
        }
        window_->Advance(
            static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data()));
        window_->Fill(kLookahead);
        if (IsPlaceToGoOn(window_->Position() - start)) return true;
        window_->Advance(1);
    }
}

}  // namespace stalwick
