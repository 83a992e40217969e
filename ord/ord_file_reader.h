// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "ord/cut_packet.h"
#include "ord/ord_data_packet.h"
#include "ord/ord_format.h"
#include "ord/packet_decoder.h"
#include "ord/read_sizes.h"
#include "ord/recording_header.h"
#include "platform/input_file.h"

namespace stalwick {

// Reads one wireless raw data file (.ord): its header text and fields, then its packets block by
// block. docs/ord-format.md describes the file.
//
// Order of calls: Open, GetData until it reports the end of the file or fails, Close; then Open
// again. Used by one thread at a time. Operations return 0, or -1 with the reason in
// GetErrorMessage(). An object holds its 50,000-byte buffer inside itself: about 50 KB.
class ORDFileReader {
  public:
    ORDFileReader() = default;
    virtual ~ORDFileReader() = default;
    ORDFileReader(const ORDFileReader&) = delete;
    ORDFileReader& operator=(const ORDFileReader&) = delete;

    // Opens the file and reads its header. If anything after the opening itself fails, the file is
    // still open.
    [[nodiscard]] std::int32_t Open(const std::wstring& path);

    // Returns to the state after construction, except for FileVersion and UTCOffsetMicroseconds,
    // which keep the values of the last file.
    std::int32_t Close();

    // Reads the next block and decodes its whole packets into `records`, which is reused.
    // `endOfFile` becomes true with the last block; the records of that call still count. If a read
    // fails, packets that were read whole before are returned first, and the next call fails.
    [[nodiscard]] std::int32_t GetData(std::vector<ORDDataPacket>& records, bool& endOfFile);

    [[nodiscard]] std::wstring GetHeaderText() const { return headerText_; }
    [[nodiscard]] std::wstring GetErrorMessage() const { return errorMessage_; }
    void SetErrorMessage(const std::wstring& message) { errorMessage_ = message; }

    // The header's fields as one value. The functions for single fields are kept for existing
    // callers; a new field needs none.
    const RecordingHeader& Header() const { return header_; }
    [[nodiscard]] std::uint32_t NumADChannels() const { return header_.numADChannels; }
    [[nodiscard]] std::uint32_t SamplingFrequency() const {
        return header_.samplingFrequency;
    }  // samples per second
    [[nodiscard]] std::uint32_t ADMaxValue() const { return header_.adMaxValue; }
    [[nodiscard]] double ADBitVolts() const { return header_.adBitVolts; }
    [[nodiscard]] std::uint32_t InputRange() const { return header_.inputRange; }
    const std::wstring& FileVersion() const { return header_.fileVersion; }
    std::int64_t UTCOffsetMicroseconds() const { return header_.utcOffsetMicroseconds; }
    const std::wstring& SessionUUID() const { return header_.sessionUuid; }
    const std::wstring& AcquisitionSystem() const { return header_.acquisitionSystem; }
    [[nodiscard]] bool BaseIMUAvailable() const { return header_.baseImuAvailable; }
    [[nodiscard]] bool AfeIMUAvailable() const { return header_.afeImuAvailable; }
    [[nodiscard]] bool UltrasonicAvailable() const { return header_.ultrasonicAvailable; }

    // Bytes in the open file; 0 if unknown.
    [[nodiscard]] std::uint64_t FileSize() const { return file_.Size(); }
    // Bytes read from the file so far, the header block included.
    [[nodiscard]] std::uint64_t BytesRead() const { return bytesRead_; }
    // Bytes read that have not formed a whole packet yet.
    [[nodiscard]] std::uint64_t UnconsumedBytes() const { return unconsumedBytes_; }
    // The size in bytes of each packet of the last block. These packets are contiguous; the next
    // packet follows them at once.
    const std::vector<std::uint32_t>& PacketSizes() const { return spanMemory_.packetSizes; }
    // The position in the file where the next packet begins.
    [[nodiscard]] std::uint64_t NextPacketPosition() const { return bytesRead_ - unconsumedBytes_; }
    // After the last block: whether the unconsumed bytes are a packet that lacks its end; see
    // IsCutPacket.
    [[nodiscard]] bool EndsInACutPacket() const;
    // Whether a read failed after the bytes of the last block: then the next call of GetData fails.
    [[nodiscard]] bool ReadHasFailed() const { return readError_ != 0; }
    // For the first block of the stream: see PacketsContradictVersion.
    [[nodiscard]] bool ContradictsVersion() const { return contradictsVersion_; }
    // The operating system's reason when a read failed; 0 otherwise.
    [[nodiscard]] SystemErrorCode SystemError() const { return systemError_; }

  private:
    std::int32_t Fail(const std::wstring& message);
    std::int32_t ReadHeader();
    void Reset();
    std::int32_t DecodeBeforeFailure(std::size_t count, std::vector<ORDDataPacket>& records);
    std::uint32_t Decode(std::uint32_t validBytes, std::vector<ORDDataPacket>& records);
    std::int32_t DecodeBuffer(std::uint32_t validBytes, std::vector<ORDDataPacket>& records);

    const ReadSizes sizes_ = CurrentReadSizes();
    std::wstring errorMessage_;
    InputFile file_;
    std::wstring headerText_;
    RecordingHeader header_;
    std::array<std::uint8_t, kDataBufferSize> buffer_{};
    std::uint32_t bytesHeld_ = 0;
    SpanMemory spanMemory_;
    std::uint64_t bytesRead_ = 0;
    std::uint64_t unconsumedBytes_ = 0;
    bool endedInHeader_ = false;  // the file was shorter than its header block
    PacketKinds kinds_;
    bool contradictsVersion_ = false;
    SystemErrorCode readError_ = 0;  // every further call of GetData fails with it
    SystemErrorCode systemError_ = 0;
};

}  // namespace stalwick
