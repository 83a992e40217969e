// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "ord/ord_data_packet.h"
#include "ord/packet_stream.h"
#include "ord/recording_header.h"
#include "platform/system_error.h"
#include "writers/output_settings.h"

namespace stalwick {

// Bytes that a conversion leaves out because they hold no certain packets.
struct SkippedStretch {
    StreamPart part;
    std::size_t packetsBefore = 0;  // of its span
};

// The packets of one span of bytes.
struct DecodedSpan {
    std::int32_t status = 0;
    bool endOfFile = false;
    std::vector<ORDDataPacket> packets;
    std::vector<std::uint64_t> positions;  // bytes of the file where these packets begin
    std::vector<SkippedStretch> skipped;   // in order
    std::uint64_t bytesRead = 0;           // of the file so far, including the header
    bool readFailedAfter = false;          // the next span is the failure
    std::exception_ptr exception;          // what the call threw

    [[nodiscard]] bool IsLast() const { return status != 0 || endOfFile; }
};

// A recording to convert: its header, then its packets span by span. Used by one thread at a time.
class PacketSource {
  public:
    PacketSource() = default;
    virtual ~PacketSource() = default;
    PacketSource(const PacketSource&) = delete;
    PacketSource& operator=(const PacketSource&) = delete;

    // Opens the file and reads its header, once. Returns 0, or -1 with the reason in
    // GetErrorMessage() and, if the system gave one, in SystemError().
    [[nodiscard]] virtual std::int32_t Open(const std::wstring& path) = 0;
    virtual void Close() = 0;
    virtual const RecordingHeader& Header() const = 0;
    [[nodiscard]] virtual std::wstring GetErrorMessage() const = 0;
    [[nodiscard]] virtual SystemErrorCode SystemError() const = 0;

    // Reads and decodes the next span, except that it does not set `exception`. The status is -1,
    // with the reason as after Open, if the recording cannot be read or decoded further.
    virtual void Read(DecodedSpan& span) = 0;

    [[nodiscard]] virtual std::uint64_t FileSize() const = 0;   // bytes; 0: unknown
    [[nodiscard]] virtual std::uint64_t BytesRead() const = 0;  // the header block included
    // Bytes read that have not formed a packet and were not skipped; their position in the file;
    // and, after the last span, whether they can be a packet that lacks its end.
    [[nodiscard]] virtual std::uint64_t UnconsumedBytes() const = 0;
    [[nodiscard]] virtual std::uint64_t NextPacketPosition() const = 0;
    [[nodiscard]] virtual bool EndsInACutPacket() const = 0;
    // For the beginning of the stream: see PacketsContradictVersion.
    [[nodiscard]] virtual bool ContradictsVersion() const = 0;
};

// The format's own way of reading, which ends at damage, or one that skips damaged stretches.
[[nodiscard]] std::unique_ptr<PacketSource> MakePacketSource(OnDamage onDamage);

}  // namespace stalwick
