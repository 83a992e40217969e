// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>

#include "ord/ord_data_packet.h"
#include "ord/packet_decoder.h"
#include "ord/recording_header.h"
#include "ord/step_clock.h"
#include "ord/stream_window.h"
#include "platform/input_file.h"

namespace stalwick {

// A stretch of a recording's stream.
struct StreamPart {
    enum class Kind {
        kPacket,
        kDamage,  // bytes without certain packets; the bytes after them have some
        kEnd      // the end of the file, with the bytes of a packet that lacks its end
    };
    Kind kind = Kind::kEnd;
    std::uint64_t position = 0;  // of its first byte in the file
    std::uint64_t size = 0;      // bytes
    // For damage and a truncated end: why there is no packet at `noticedAt`. For damage, kNone
    // means that what begins there does not follow from what is before it; for a truncated end,
    // that it would extend past the end of the file.
    PacketRefusal refusal = PacketRefusal::kNone;
    std::uint64_t noticedAt = 0;  // byte of the file
    // For damage: the number of packets missing after the last one returned. Known if there are
    // timestamps before and after; otherwise at least as many as the bytes have room for.
    std::uint64_t packetsLost = 0;
    bool packetsLostIsKnown = false;
};

// Reads a recording's packets one by one as if the whole file were in memory, continues after
// damage, and reports the position of everything in the file.
//
// A packet is certain if the file ends with it, or if what follows it begins like a packet of this
// recording: type byte, channel code and blocks as before, timestamp whole steps later. Otherwise
// the reader looks further ahead: several packets in a row are no coincidence. Damage begins with
// the last packet that is not certain. It ends where packets plausibly follow each other: two, if
// the first of them is as many whole steps after the last certain one as the bytes in between can
// have held; otherwise at least eight, with more bytes than a disk sector has, because a shorter
// row may be a misplaced sector.
//
// ORDFileReader instead reads spans of 50,000 bytes, ends at damage, and may decode other bytes as
// the rest of a packet of width 0 that a span truncates. If a recording has neither, both return
// the same packets.
//
// Used by one thread at a time.
class PacketStream {
  public:
    PacketStream() = default;
    PacketStream(const PacketStream&) = delete;
    PacketStream& operator=(const PacketStream&) = delete;

    // Opens a recording and reads its header, once. Returns 0, or -1 with the reason in
    // GetErrorMessage() and, if the system gave one, in SystemError().
    [[nodiscard]] std::int32_t Open(const std::wstring& path);

    // Leaves out packets that a conversion might misplace: a packet whose timestamp is out of step
    // with all around it; without timestamps also a packet that only a single packet follows, and
    // the first one after damage. Call it before the first packet.
    void BeStrict() { isStrict_ = true; }

    bool IsOpen() const { return window_.has_value(); }
    const RecordingHeader& Header() const { return header_; }
    const std::wstring& HeaderText() const { return headerText_; }
    const std::wstring& GetErrorMessage() const { return errorMessage_; }
    [[nodiscard]] bool PacketsCarryTimestamps() const {
        return stalwick::PacketsCarryTimestamps(options_);
    }
    [[nodiscard]] std::uint64_t FileSize() const { return file_.Size(); }  // bytes; 0: unknown

    // For the beginning of the stream, once a part was read: see version_check.h.
    [[nodiscard]] bool ContradictsVersion() const { return contradictsVersion_; }

    // The next part of the stream; parts follow each other without a gap. `packet` holds the
    // decoded part if its kind is kPacket; otherwise its content means nothing. There is none after
    // kEnd.
    [[nodiscard]] StreamPart Next(ORDDataPacket& packet);

    // Skips everything before this byte of the file and continues where eight packets follow each
    // other. Returns false if there is no such place, or if the system refuses; only for regular
    // files.
    [[nodiscard]] bool SkipTo(std::uint64_t position);

    // The system's reason if the stream ends because a read failed; otherwise 0.
    [[nodiscard]] SystemErrorCode SystemError() const;

  private:
    // What the first bytes of a packet show.
    struct Head {
        std::uint8_t flags = 0;
        std::optional<std::uint64_t> timestamp;  // nanoseconds
    };
    // What packets in a row must have in common with those before.
    enum class Link { kType, kCode, kCodeAndStamps, kFlags, kFlagsAndStamps };
    struct Chain {
        std::size_t packets = 0;
        std::size_t lastStart = 0;  // of its last packet; bytes from the window's first one
        std::size_t end = 0;        // the same
        bool atEnd = false;         // it ends with the file, or with a packet that lacks its end
    };
    struct ChainLength {
        std::size_t packets = 1;
        std::size_t bytes = 0;  // from the first one's start to the last one's
    };

    static constexpr std::size_t kSoundChainUnstamped = 8;  // packets in a row, without timestamps
    // A packet and the chain after it are in the window together.
    static constexpr std::size_t kLookahead = (kSoundChainUnstamped + 2) * kLongestPacketSize;
    static_assert(kLookahead < StreamWindow::kMostBytes);
    static unsigned CodeOf(std::uint8_t flags) {
        return static_cast<unsigned>(flags) >> kChannelCountCodeShift;
    }

    std::optional<Head> HeadAt(std::size_t offset) const;
    bool Follows(const Head& head, const Head& next, Link link) const;
    bool IsCertain(const ORDDataPacket& packet, std::uint8_t flags, std::size_t end);
    bool IsFollowedInStep(const Head& head, std::size_t end);
    bool IsOutOfStep(std::optional<std::uint64_t> timestamp, std::size_t end);
    bool IsFromElsewhere(std::uint64_t timestamp, std::size_t end);
    bool IsOutOfStepWithNext(std::uint64_t timestamp, std::size_t end);
    bool GoesOnInStep(std::uint64_t timestamp, std::uint64_t stepsToFirst, std::size_t offset);
    Chain FollowChain(std::size_t offset, ChainLength wanted, Link link);
    bool BeginsSoundChain(std::size_t offset);
    bool BeginsUnstampedChain(std::size_t offset);
    void Trust(const Chain& chain);
    // Whether most timestamps so far were whole steps after those before them.
    bool IsRegular() const { return 2 * wholeSteps_ >= steps_; }
    bool IsNear(std::uint64_t timestamp, std::uint64_t skipped) const;
    bool IsPlaceToGoOn(std::uint64_t skipped);
    void LeaveOutChanceHead(const Head& head);
    bool FindPlaceToGoOn();
    void CheckVersion();
    void CountLostPackets(StreamPart& part) const;
    StreamPart TakePacket(const ORDDataPacket& packet, std::uint8_t flags, std::size_t size);
    StreamPart SkipDamage(PacketRefusal refusal, std::uint64_t noticedAt);
    StreamPart TakeRest(PacketRefusal refusal);

    std::wstring errorMessage_;
    InputFile file_;
    std::wstring headerText_;
    RecordingHeader header_;
    DecodeOptions options_;
    SystemErrorCode systemError_ = 0;
    std::optional<StreamWindow> window_;
    StepClock clock_;
    std::bitset<256> knownFlags_;             // of the packets so far
    std::bitset<4> knownCodes_;               // their channel count codes
    std::optional<std::uint64_t> lastStamp_;  // of the last packet
    std::uint64_t steps_ = 0;
    std::uint64_t wholeSteps_ = 0;
    std::uint64_t packetBytes_ = 0;  // of all packets so far
    std::uint64_t packetCount_ = 0;
    std::uint64_t soundUntil_ = 0;   // packets that begin before this byte were checked already
    std::uint64_t wentOnAt_ = 0;     // byte after the last damage
    std::size_t longestPacket_ = 0;  // bytes, of the packets so far
    bool isStrict_ = false;
    bool versionIsChecked_ = false;
    bool contradictsVersion_ = false;
    ORDDataPacket scratch_;
};

}  // namespace stalwick
