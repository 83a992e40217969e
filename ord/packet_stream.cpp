#include "ord/packet_stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include "ord/read_sizes.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr std::size_t kSoundChain = 3;           // packets in a row, with timestamps
constexpr std::size_t kSoundChainUnstamped = 8;  // without
// A packet and a chain after it are in the window together.
constexpr std::size_t kLookahead = (kSoundChainUnstamped + 2) * kLongestPacketSize;
static_assert(kLookahead < StreamWindow::kMostBytes);

constexpr std::size_t kStampEnd = kPacketHeadSize + kHardwareTimestampSize;

std::uint64_t ReadBigEndian64(const std::uint8_t* data) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) value = (value << 8U) | data[i];
    return value;
}

}  // namespace

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
    const auto bytes = window_->Bytes();
    if (bytes.empty()) return {StreamPart::Kind::kEnd, window_->Position(), 0, {}, 0};
    const PacketParse parse = TryParsePacket(bytes, packet, options_, kSamplesPerPacket);
    if (parse.refusal == PacketRefusal::kWrongType) {
        return SkipDamage(parse.refusal, window_->Position());
    }
    // The window has room for the longest packet: only the end of the file cuts one.
    if (parse.refusal != PacketRefusal::kNone) return TakeRest(parse.refusal);
    const auto size = static_cast<std::size_t>(parse.end - bytes.data());
    const std::uint8_t flags = bytes[1];
    if (IsCertain(packet, flags, size)) return TakePacket(packet, flags, size);
    const bool wrongType = bytes[size] != kDataPacketType;
    return SkipDamage(wrongType ? PacketRefusal::kWrongType : PacketRefusal::kNone,
                      window_->Position() + size);
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
    if (packet.hardwareTimestamp && lastStamp_)
        clock_.Learn(*lastStamp_, *packet.hardwareTimestamp);
    lastStamp_ = packet.hardwareTimestamp;
    knownFlags_.set(flags);
    packetBytes_ += size;
    ++packetCount_;
    window_->Advance(size);
    return part;
}

// Moves to where packets go on, or to the end of the file.
StreamPart PacketStream::SkipDamage(PacketRefusal refusal, std::uint64_t noticedAt) {
    StreamPart part{StreamPart::Kind::kDamage, window_->Position(), 0, refusal, noticedAt};
    window_->Advance(1);
    FindPlaceToGoOn();
    part.size = window_->Position() - part.position;
    return part;
}

// A packet that reaches beyond the end of the file: it was cut there, unless packets go on inside.
StreamPart PacketStream::TakeRest(PacketRefusal refusal) {
    const std::uint64_t start = window_->Position();
    window_->Advance(1);
    const bool goesOn = FindPlaceToGoOn();
    const auto kind = goesOn ? StreamPart::Kind::kDamage : StreamPart::Kind::kEnd;
    return {kind, start, window_->Position() - start, refusal, start};
}

std::optional<PacketStream::Head> PacketStream::HeadAt(std::size_t offset) const {
    const auto bytes = window_->Bytes();
    if (offset + kStampEnd > bytes.size()) return std::nullopt;
    Head head{bytes[offset + 1], std::nullopt};
    if (PacketsCarryTimestamps()) {
        head.timestamp = ReadBigEndian64(bytes.data() + offset + kPacketHeadSize);
    }
    return head;
}

bool PacketStream::FollowsPlausibly(const Head& head, const Head& next) const {
    if (next.flags != head.flags && !knownFlags_.test(next.flags)) return false;
    return !head.timestamp || !next.timestamp ||
           clock_.WholeSteps(*head.timestamp, *next.timestamp).has_value();
}

// Whether the packet at the window's beginning, which ends at `end`, is what it seems to be.
bool PacketStream::IsCertain(const ORDDataPacket& packet, std::uint8_t flags, std::size_t end) {
    const auto bytes = window_->Bytes();
    if (end == bytes.size()) return true;
    if (bytes[end] != kDataPacketType) return false;
    const std::optional<Head> next = HeadAt(end);
    if (!next) return true;  // a packet that lacks its end
    if (window_->Position() + end < soundUntil_) return true;
    return FollowsPlausibly({flags, packet.hardwareTimestamp}, *next) || BeginsSoundChain(end);
}

// Parses the packets from `offset` on, as long as they follow each other.
PacketStream::Chain PacketStream::FollowChain(std::size_t offset, std::size_t wanted,
                                              bool plausiblyOnly) {
    const auto bytes = window_->Bytes();
    Chain chain{0, offset, false};
    std::optional<Head> last;
    while (chain.packets < wanted) {
        if (chain.end == bytes.size()) {
            chain.atEnd = window_->ReachesEnd();
            break;
        }
        const std::optional<Head> head = HeadAt(chain.end);
        if (plausiblyOnly && last && head && !FollowsPlausibly(*last, *head)) break;
        const PacketParse parse =
            TryParsePacket(bytes.subspan(chain.end), scratch_, options_, kSamplesPerPacket);
        if (parse.refusal != PacketRefusal::kNone) {
            chain.atEnd = parse.refusal != PacketRefusal::kWrongType && window_->ReachesEnd();
            break;
        }
        chain.end = static_cast<std::size_t>(parse.end - bytes.data());
        ++chain.packets;
        last = head;
    }
    return chain;
}

// Whether packets go on from `offset` although the first of them does not follow what was before.
bool PacketStream::BeginsSoundChain(std::size_t offset) {
    const std::size_t wanted = PacketsCarryTimestamps() ? kSoundChain : kSoundChainUnstamped;
    Chain chain = FollowChain(offset, wanted, true);
    if (chain.packets < wanted && !chain.atEnd) {
        chain = FollowChain(offset, kSoundChainUnstamped, false);
        if (chain.packets < kSoundChainUnstamped && !chain.atEnd) return false;
    }
    soundUntil_ = window_->Position() + chain.end;
    return true;
}

// Whether packets go on at `offset` of the window, `skipped` bytes after the last certain one.
bool PacketStream::IsPlaceToGoOn(std::size_t offset, std::uint64_t skipped) {
    const std::optional<Head> head = HeadAt(offset);
    if (!head || (packetCount_ != 0 && !knownFlags_.test(head->flags))) return false;
    std::size_t wanted = kSoundChainUnstamped;
    bool endsSoon = false;  // fewer packets are enough where the file ends
    if (head->timestamp && lastStamp_) {
        if (*head->timestamp - *lastStamp_ > UINT64_MAX / 2) return false;  // back in time
        const auto steps = clock_.WholeSteps(*lastStamp_, *head->timestamp);
        // Far ahead of what the bytes between can have held, it may be a sector out of its place.
        const std::uint64_t shortest = std::max<std::uint64_t>(packetBytes_ / packetCount_ / 2, 1);
        if (steps && *steps <= skipped / shortest + 2) {
            wanted = kSoundChain;
            endsSoon = true;
        }
    }
    const Chain chain = FollowChain(offset, wanted, true);
    const bool sound = chain.packets >= wanted || (endsSoon && chain.atEnd && chain.packets > 0);
    if (sound) soundUntil_ = window_->Position() + chain.end;
    return sound;
}

// Moves the window to the next place where packets follow each other plausibly; to the end of the
// file, with false, when there is none.
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
        if (IsPlaceToGoOn(0, window_->Position() - start)) return true;
        window_->Advance(1);
    }
}

}  // namespace stalwick
