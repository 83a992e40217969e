// SPDX-License-Identifier: BSD-3-Clause

// What makes a packet certain, and a place after damage one where packets continue.

#include <algorithm>
#include <cmath>

#include "ord/packet_stream.h"

namespace stalwick {

namespace {

constexpr std::size_t kSoundChain = 3;  // packets in a row, with timestamps
constexpr std::size_t kFewestAfterUnstamped = 2;
constexpr std::size_t kNearChain = 2;
constexpr std::size_t kSectorSize = 4096;  // bytes that a disk misplaces together
constexpr std::uint64_t kPacketsToKnowFlags = 100;
// With many more, a drifting clock makes any number of nanoseconds look like whole steps.
constexpr std::uint64_t kMostStepsInARow = 250;
constexpr std::size_t kStampsAround = 4;
constexpr std::size_t kFewestStampsInStep = 2;

constexpr std::size_t kStampEnd = kPacketHeadSize + kHardwareTimestampSize;

std::uint64_t ReadBigEndian64(const std::uint8_t* data) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) value = (value << 8U) | data[i];
    return value;
}

}  // namespace

std::optional<PacketStream::Head> PacketStream::HeadAt(std::size_t offset) const {
    const auto bytes = window_->Bytes();
    if (offset + kStampEnd > bytes.size()) return std::nullopt;
    Head head{bytes[offset + 1], std::nullopt};
    if (PacketsCarryTimestamps()) {
        head.timestamp = ReadBigEndian64(bytes.data() + offset + kPacketHeadSize);
    }
    return head;
}

bool PacketStream::Follows(const Head& head, const Head& next, Link link) const {
    if (link == Link::kType) return true;
    if (CodeOf(next.flags) != CodeOf(head.flags)) return false;
    const bool flagsCount = link == Link::kFlags || link == Link::kFlagsAndStamps;
    if (flagsCount && next.flags != head.flags && !knownFlags_.test(next.flags)) return false;
    const bool stampsCount = link == Link::kCodeAndStamps || link == Link::kFlagsAndStamps;
    if (!stampsCount || !head.timestamp || !next.timestamp) return true;
    const auto steps = clock_.WholeSteps(*head.timestamp, *next.timestamp);
    return steps && *steps <= kMostStepsInARow;
}

// Whether the packet at the window's beginning, which ends at `end`, is what it seems to be.
bool PacketStream::IsCertain(const ORDDataPacket& packet, std::uint8_t flags, std::size_t end) {
    const auto bytes = window_->Bytes();
    if (end == bytes.size()) return true;
    if (window_->Position() + end < soundUntil_) return true;
    const std::optional<Head> next = HeadAt(end);
    if (!next) return bytes[end] == kDataPacketType;  // a packet that lacks its end
    const Head head{flags, packet.hardwareTimestamp};
    if (head.timestamp) return IsFollowedInStep(head, end);
    if (bytes[end] != kDataPacketType) return false;
    if (isStrict_) return BeginsUnstampedChain(end);
    return Follows(head, *next, Link::kFlags) || BeginsSoundChain(end);
}

// The same with timestamps, the best evidence. Damage after the packet may extend back into it, so
// its type byte counts too.
bool PacketStream::IsFollowedInStep(const Head& head, std::size_t end) {
    const Head next = *HeadAt(end);
    if (window_->Bytes()[end] != kDataPacketType) return false;
    if (clock_.WholeSteps(*head.timestamp, *next.timestamp) == 1U) return true;
    return Follows(head, next, Link::kFlagsAndStamps) || BeginsSoundChain(end) ||
           GoesOnInStep(*head.timestamp, 1, end);
}

// Whether the packets before and after the one at the window's beginning agree on another time for
// it. Recorders may repeat a timestamp and write 0 for none.
bool PacketStream::IsOutOfStep(std::optional<std::uint64_t> timestamp, std::size_t end) {
    constexpr double kHalfASample = 0.5 / kSamplesPerPacket;  // of a step
    if (!timestamp || *timestamp == 0 || timestamp == lastStamp_) return false;
    if (!lastStamp_) return IsOutOfStepWithNext(*timestamp, end);
    if (clock_.WholeSteps(*lastStamp_, *timestamp) == 1U) return false;
    const auto distance = static_cast<double>(*timestamp - *lastStamp_);
    if (std::abs(distance - clock_.StepNs()) < kHalfASample * clock_.StepNs()) return false;
    const std::optional<Head> next = HeadAt(end);
    if (next && next->timestamp == timestamp) return false;
    return GoesOnInStep(*lastStamp_, 2, end) || IsFromElsewhere(*timestamp, end);
}

// Whether the packet at the window's beginning is in a misplaced disk sector: packets soon continue
// in step with the last one, and it does not fit in between; or its row ends in damage within a
// sector.
bool PacketStream::IsFromElsewhere(std::uint64_t timestamp, std::size_t end) {
    const std::uint64_t ahead = timestamp - *lastStamp_;
    for (std::size_t offset = end; offset <= end + kSectorSize;) {
        const std::optional<Head> head = HeadAt(offset);
        const Chain chain = FollowChain(offset, {}, Link::kType);
        if (!head) return false;
        if (chain.packets == 0) return !chain.atEnd && window_->Position() != wentOnAt_;
        // A timestamp before the last one wraps around, so it does not fit in between either.
        const bool isBetween = ahead < *head->timestamp - *lastStamp_;
        if (!isBetween && IsNear(*head->timestamp, offset) &&
            GoesOnInStep(*head->timestamp, 1, chain.end)) {
            return true;
        }
        offset = chain.end;
    }
    return false;
}

// The same for a first packet: those after it are in step with each other.
bool PacketStream::IsOutOfStepWithNext(std::uint64_t timestamp, std::size_t end) {
    const std::optional<Head> next = HeadAt(end);
    if (!next || *next->timestamp == timestamp || clock_.WholeSteps(timestamp, *next->timestamp)) {
        return false;
    }
    const Chain chain = FollowChain(end, {kSoundChain}, Link::kFlagsAndStamps);
    return chain.packets == kSoundChain && *next->timestamp != 0 &&
           GoesOnInStep(*next->timestamp, 1, FollowChain(end, {}, Link::kType).end);
}

// Whether packets from `offset` on have the timestamps that follow `timestamp`; the first of these
// packets is `stepsToFirst` steps later. One of them may be damaged.
bool PacketStream::GoesOnInStep(std::uint64_t timestamp, std::uint64_t stepsToFirst,
                                std::size_t offset) {
    std::size_t inStep = 0;
    std::size_t count = 0;
    for (; count < kStampsAround; ++count) {
        const Chain chain = FollowChain(offset, {}, Link::kType);
        if (chain.packets == 0) break;
        const std::optional<Head> head = HeadAt(offset);
        if (!head) break;
        if (clock_.WholeSteps(timestamp, *head->timestamp) == stepsToFirst + count) ++inStep;
        offset = chain.end;
    }
    return inStep != 0 && inStep >= std::min(count, kFewestStampsInStep);
}

// Parses the packets from `offset` on while they follow each other, until there are as many as
// wanted and the last one begins at least that many bytes after the first.
PacketStream::Chain PacketStream::FollowChain(std::size_t offset, ChainLength wanted, Link link) {
    const auto bytes = window_->Bytes();
    Chain chain{0, offset, offset, false};
    std::optional<Head> last;
    while (chain.packets < wanted.packets || chain.lastStart - offset < wanted.bytes) {
        if (chain.end == bytes.size()) {
            chain.atEnd = window_->ReachesEnd();
            break;
        }
        const std::optional<Head> head = HeadAt(chain.end);
        if (last && head && !Follows(*last, *head, link)) break;
        const PacketParse parse =
            TryParsePacket(bytes.subspan(chain.end), scratch_, options_, kSamplesPerPacket);
        if (parse.refusal != PacketRefusal::kNone) {
            chain.atEnd = parse.refusal != PacketRefusal::kWrongType && window_->ReachesEnd();
            break;
        }
        chain.lastStart = chain.end;
        chain.end = static_cast<std::size_t>(parse.end - bytes.data());
        ++chain.packets;
        last = head;
    }
    return chain;
}

// If another packet of the chain follows a packet, it needs no further check. With timestamps the
// last one begins as it should; without them it may be a coincidence.
void PacketStream::Trust(const Chain& chain) {
    const bool toItsEnd = PacketsCarryTimestamps() || chain.atEnd;
    soundUntil_ = window_->Position() + (toItsEnd ? chain.end : chain.lastStart);
}

// Whether packets continue from `offset` on although the first of them does not follow from the
// packet before it.
bool PacketStream::BeginsSoundChain(std::size_t offset) {
    const std::size_t wanted = PacketsCarryTimestamps() ? kSoundChain : kSoundChainUnstamped;
    Chain chain = FollowChain(offset, {wanted}, Link::kFlagsAndStamps);
    if (chain.packets < wanted && !chain.atEnd) {
        const bool knowsFlags = packetCount_ >= kPacketsToKnowFlags;
        const Link link = !isStrict_ ? Link::kType : knowsFlags ? Link::kFlags : Link::kCode;
        chain = FollowChain(offset, {kSoundChainUnstamped}, link);
        if (chain.packets < kSoundChainUnstamped && !chain.atEnd) return false;
    }
    Trust(chain);
    return true;
}

// Whether enough packets follow from `offset` on to conclude that a packet without a timestamp
// ended there: the bytes after a packet with a damaged length look like one packet by coincidence,
// but not like two.
bool PacketStream::BeginsUnstampedChain(std::size_t offset) {
    const Head head = *HeadAt(offset);
    if (packetCount_ != 0 && !knownFlags_.test(head.flags)) return BeginsSoundChain(offset);
    const Chain chain = FollowChain(offset, {kSoundChainUnstamped}, Link::kFlags);
    if (chain.packets < kFewestAfterUnstamped && !chain.atEnd) return BeginsSoundChain(offset);
    Trust(chain);
    return true;
}

// Whether a packet with this time can follow after that many skipped bytes: whole steps after the
// last certain one, and no more of them than the bytes can have held.
bool PacketStream::IsNear(std::uint64_t timestamp, std::uint64_t skipped) const {
    if (!lastStamp_) return false;
    const auto steps = clock_.WholeSteps(*lastStamp_, timestamp);
    const std::uint64_t shortest = std::max<std::uint64_t>(packetBytes_ / packetCount_ / 2, 1);
    return steps && *steps <= skipped / shortest + 2;
}

// Whether packets continue at the window's beginning, `skipped` bytes after the last certain one.
bool PacketStream::IsPlaceToGoOn(std::uint64_t skipped) {
    const std::optional<Head> head = HeadAt(0);
    if (!head || (packetCount_ != 0 && !knownCodes_.test(CodeOf(head->flags)))) return false;
    if (head->timestamp && IsNear(*head->timestamp, skipped)) {
        const Chain chain = FollowChain(0, {kNearChain}, Link::kCodeAndStamps);
        if (chain.packets < kNearChain && !(chain.atEnd && chain.packets != 0)) return false;
        Trust(chain);
        return true;
    }
    ChainLength wanted{kSoundChainUnstamped, kSectorSize};
    // The first one, which will be left out, may precede a misplaced sector.
    if (isStrict_ && !head->timestamp) wanted.bytes += FollowChain(0, {}, Link::kType).end;
    const Chain chain = FollowChain(0, wanted, IsRegular() ? Link::kCodeAndStamps : Link::kCode);
    if (chain.packets < wanted.packets) return false;
    if (chain.lastStart < wanted.bytes && !chain.atEnd) return false;
    Trust(chain);
    if (isStrict_) LeaveOutChanceHead(*head);
    return true;
}

// Bytes inside a damaged packet may look like a head and end with that packet by coincidence. If no
// timestamps link it to the next one, the first packet of a row is left out.
void PacketStream::LeaveOutChanceHead(const Head& head) {
    const std::size_t end = FollowChain(0, {}, Link::kType).end;
    const std::optional<Head> next = HeadAt(end);
    const bool isLinked = head.timestamp && next && Follows(head, *next, Link::kCodeAndStamps);
    if (!isLinked) window_->Advance(end);
}

}  // namespace stalwick
