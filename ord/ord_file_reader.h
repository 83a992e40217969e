#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "ord/decode_options.h"
#include "ord/ord_data_packet.h"
#include "ord/ord_format.h"
#include "platform/input_file.h"

namespace stalwick {

// Reads one wireless raw data file (.ord): its header text and fields, then its packets a block
// at a time. docs/ord-format.md describes the file.
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

    // Opens the file and reads its header. After a failure behind the opening itself the file is
    // still open.
    std::int32_t Open(std::wstring path);

    // Back to the state after construction, but for FileVersion and UTCOffsetMicroseconds, which
    // keep the last file's values.
    std::int32_t Close();

    // Reads the next block and decodes its whole packets into `records`, which is reused.
    // `endOfFile` becomes true with the last block; the records of that call still count.
    std::int32_t GetData(std::vector<ORDDataPacket>& records, bool& endOfFile);

    std::wstring GetHeaderText() const { return headerText_; }
    std::wstring GetErrorMessage() const { return errorMessage_; }
    void SetErrorMessage(const std::wstring& message) { errorMessage_ = message; }

    std::uint32_t NumADChannels() const { return numADChannels_; }
    std::uint32_t SamplingFrequency() const { return samplingFrequency_; }  // samples per second
    std::uint32_t ADMaxValue() const { return adMaxValue_; }
    double ADBitVolts() const { return adBitVolts_; }
    std::uint32_t InputRange() const { return inputRange_; }
    const std::wstring& FileVersion() const { return fileVersion_; }
    std::int64_t UTCOffsetMicroseconds() const { return utcOffsetMicroseconds_; }
    const std::wstring& SessionUUID() const { return sessionUuid_; }
    const std::wstring& AcquisitionSystem() const { return acquisitionSystem_; }
    bool BaseIMUAvailable() const { return baseImuAvailable_; }
    bool AfeIMUAvailable() const { return afeImuAvailable_; }
    bool UltrasonicAvailable() const { return ultrasonicAvailable_; }

    // Bytes in the open file; 0 where that is not known.
    std::uint64_t FileSize() const { return file_.Size(); }
    // Bytes read from the file so far, the header block included.
    std::uint64_t BytesRead() const { return bytesRead_; }
    // Bytes read that made no whole packet yet.
    std::uint64_t UnconsumedBytes() const { return unconsumedBytes_; }
    // Where in the file the next packet begins.
    std::uint64_t NextPacketPosition() const { return bytesRead_ - unconsumedBytes_; }
    // Behind the last block: whether the unconsumed bytes can be a packet that lacks its end.
    bool EndsInACutPacket() const;
    // The operating system's reason when a read failed; 0 otherwise.
    SystemErrorCode SystemError() const { return systemError_; }

  private:
    std::int32_t Fail(const std::wstring& message);
    std::int32_t ReadHeader();
    std::int32_t ReadHeaderFields();
    template <typename Target>
    std::int32_t GetHeaderField(const std::wstring& headerText, const std::wstring& key,
                                Target& target);
    void ReadAcquisitionSystem();
    void ReadAvailabilityFlags();
    DecodeOptions BuildDecodeOptions() const;
    std::int32_t DecodeBuffer(std::uint32_t validBytes, std::vector<ORDDataPacket>& records);

    std::wstring errorMessage_;
    InputFile file_;
    std::wstring headerText_;
    bool baseImuAvailable_ = false;
    bool afeImuAvailable_ = false;
    bool ultrasonicAvailable_ = false;
    std::uint32_t numADChannels_ = 0;
    std::uint32_t samplingFrequency_ = 0;
    std::uint32_t adMaxValue_ = 0;
    double adBitVolts_ = 0.0;
    std::uint32_t inputRange_ = 0;
    std::wstring acquisitionSystem_;
    std::wstring sessionUuid_;
    std::array<std::uint8_t, kDataBufferSize> buffer_{};
    std::uint32_t bytesHeld_ = 0;
    std::wstring fileVersion_ = L"1.0";
    std::int64_t utcOffsetMicroseconds_ = 0;
    std::vector<ORDDataPacket> sparePackets_;  // memory for blocks of more packets
    std::uint64_t bytesRead_ = 0;
    std::uint64_t unconsumedBytes_ = 0;
    bool endedInHeader_ = false;  // the file was shorter than its header block
    SystemErrorCode systemError_ = 0;
};

}  // namespace stalwick
