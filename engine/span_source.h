// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "engine/packet_source.h"
#include "ord/ord_file_reader.h"

namespace stalwick {

// A recording in the spans that the format prescribes; it ends at damage.
class SpanSource final : public PacketSource {
  public:
    std::int32_t Open(const std::wstring& path) override { return reader_.Open(path); }
    void Close() override { reader_.Close(); }
    const RecordingHeader& Header() const override { return reader_.Header(); }
    std::wstring GetErrorMessage() const override { return reader_.GetErrorMessage(); }
    SystemErrorCode SystemError() const override { return reader_.SystemError(); }

    void Read(DecodedSpan& span) override;

    std::uint64_t FileSize() const override { return reader_.FileSize(); }
    std::uint64_t BytesRead() const override { return reader_.BytesRead(); }
    std::uint64_t UnconsumedBytes() const override { return reader_.UnconsumedBytes(); }
    std::uint64_t NextPacketPosition() const override { return reader_.NextPacketPosition(); }
    bool EndsInACutPacket() const override { return reader_.EndsInACutPacket(); }
    bool ContradictsVersion() const override { return reader_.ContradictsVersion(); }

  private:
    ORDFileReader reader_;
};

}  // namespace stalwick
