// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

#include "engine/packet_source.h"

namespace stalwick {

// A recording read packet by packet, skipping its damaged stretches. Stretches without a packet in
// between count as one.
class StreamSource final : public PacketSource {
  public:
    std::int32_t Open(const std::wstring& path) override;
    void Close() override {}
    const RecordingHeader& Header() const override { return stream_.Header(); }
    std::wstring GetErrorMessage() const override;
    SystemErrorCode SystemError() const override { return stream_.SystemError(); }

    void Read(DecodedSpan& span) override;

    std::uint64_t FileSize() const override { return stream_.FileSize(); }
    std::uint64_t BytesRead() const override { return end_.position + end_.size; }
    std::uint64_t UnconsumedBytes() const override { return end_.size; }
    std::uint64_t NextPacketPosition() const override { return end_.position; }
    bool EndsInACutPacket() const override { return end_.size != 0; }
    bool ContradictsVersion() const override { return stream_.ContradictsVersion(); }

  private:
    void ReadParts(DecodedSpan& span, std::size_t& count);

    PacketStream stream_;
    StreamPart end_;                     // what is left after the last packet or stretch
    bool readFailed_ = false;            // every further call of Read fails
    std::vector<ORDDataPacket> spares_;  // memory for spans of more packets
};

}  // namespace stalwick
