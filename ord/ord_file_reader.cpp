#include "ord/ord_file_reader.h"

#include <cstring>
#include <new>
#include <string_view>

#include "ord/header_fields.h"
#include "ord/packet_decoder.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

// Text that failed conversions report in place of the system's own.
constexpr wchar_t kReadFailed[] = L"Failed to process input file";

bool ReadsAsOne(const std::wstring& token, std::int32_t& scratch) {
    ConvertToken(token, scratch);
    return scratch == 1;
}

}  // namespace

std::int32_t ORDFileReader::Fail(const std::wstring& message) {
    SetErrorMessage(message);
    return -1;
}

std::int32_t ORDFileReader::Open(std::wstring path) {
    systemError_ = file_.Open(path);
    if (systemError_ != 0) {
        return Fail(L"Error opening file, the file path(" + path + L") may be invalid.");
    }
    bytesRead_ = 0;
    unconsumedBytes_ = 0;
    endedInHeader_ = false;
    if (ReadHeader() != 0) return -1;
    return ReadHeaderFields();
}

std::int32_t ORDFileReader::ReadHeader() {
    std::array<char, kHeaderBlockSize> block;
    std::size_t count = 0;
    systemError_ = file_.Read(block.data(), block.size(), count);
    if (systemError_ != 0) return Fail(L"Error reading header from file.");
    bytesRead_ += count;
    endedInHeader_ = count < block.size();

    headerText_.clear();
    const std::string_view bytes(block.data(), count);
    try {
        headerText_ = DecodeHeaderBytes(bytes.substr(0, bytes.find('\0')));
    } catch (const std::bad_alloc&) {
        return Fail(L"Error converting file header character format.");
    }
    return 0;
}

template <typename Target>
std::int32_t ORDFileReader::GetHeaderField(const std::wstring& headerText, const std::wstring& key,
                                           Target& target) {
    const std::vector<HeaderTokens> lines = GetHeaderFieldValues(headerText, key);
    if (lines.empty() || lines.front().empty()) {
        return Fail(L"Error retrieving header field " + key);
    }
    // A value that cannot be read is not an error: the field is there.
    ConvertToken(lines.front().front(), target);
    return 0;
}

std::int32_t ORDFileReader::ReadHeaderFields() {
    if (GetHeaderField(headerText_, L"-NumADChannels", numADChannels_) != 0 ||
        GetHeaderField(headerText_, L"-SamplingFrequency", samplingFrequency_) != 0 ||
        GetHeaderField(headerText_, L"-ADMaxValue", adMaxValue_) != 0 ||
        GetHeaderField(headerText_, L"-ADBitVolts", adBitVolts_) != 0 ||
        GetHeaderField(headerText_, L"-InputRange", inputRange_) != 0 ||
        GetHeaderField(headerText_, L"-FileVersion", fileVersion_) != 0) {
        return -1;
    }
    if (VersionStringToNumber(fileVersion_) >= kFirstTimestampVersion &&
        GetHeaderField(headerText_, L"-UTCOffsetMicroseconds", utcOffsetMicroseconds_) != 0) {
        return -1;
    }
    // Optional, yet a missing one leaves its message behind; callers look only after a failure.
    sessionUuid_.clear();
    GetHeaderField(headerText_, L"-SessionUUID", sessionUuid_);
    ReadAcquisitionSystem();
    ReadAvailabilityFlags();
    return 0;
}

void ORDFileReader::ReadAcquisitionSystem() {
    const auto lines = GetHeaderFieldValues(headerText_, L"-AcquisitionSystem");
    if (!lines.empty() && lines.front().size() > 1) acquisitionSystem_ = lines.front()[1];
}

// The ultrasonic flag takes the first of any number of values, the inertial ones need exactly
// one; and the number is not reset between them. Both are kept (pinned by
// ORDFileReader.TwoValuesLeaveAnInertialFlagAsItWas).
void ORDFileReader::ReadAvailabilityFlags() {
    std::int32_t scratch = 0;
    const auto ultrasonic = GetHeaderFieldValues(headerText_, L"-UltrasonicAvailable");
    if (!ultrasonic.empty() && !ultrasonic.front().empty()) {
        ultrasonicAvailable_ = ReadsAsOne(ultrasonic.front().front(), scratch);
    }
    const auto base = GetHeaderFieldValues(headerText_, L"-BaseIMUAvailable");
    if (!base.empty() && base.front().size() == 1) {
        baseImuAvailable_ = ReadsAsOne(base.front().front(), scratch);
    }
    const auto afe = GetHeaderFieldValues(headerText_, L"-AfeIMUAvailable");
    if (!afe.empty() && afe.front().size() == 1) {
        afeImuAvailable_ = ReadsAsOne(afe.front().front(), scratch);
    }
}

DecodeOptions ORDFileReader::BuildDecodeOptions() const {
    return std::pair<std::int32_t, std::int32_t>(0, VersionStringToNumber(fileVersion_));
}

std::int32_t ORDFileReader::GetData(std::vector<ORDDataPacket>& records, bool& endOfFile) {
    endOfFile = false;
    if (!file_.IsOpen()) return Fail(L"Error getting ORD data, a ORD file is not open.");

    const std::size_t wanted = kDataBufferSize - bytesHeld_;
    std::size_t count = 0;
    // What a short file grows by would be out of place: its packets begin behind a whole header.
    if (!endedInHeader_) systemError_ = file_.Read(buffer_.data() + bytesHeld_, wanted, count);
    if (systemError_ != 0) return Fail(kReadFailed);
    bytesRead_ += count;
    unconsumedBytes_ += count;
    endOfFile = count < wanted;
    return DecodeBuffer(bytesHeld_ + static_cast<std::uint32_t>(count), records);
}

std::int32_t ORDFileReader::DecodeBuffer(std::uint32_t validBytes,
                                         std::vector<ORDDataPacket>& records) {
    const std::uint8_t* const next =
        ProcessDataBuffer(buffer_.data(), validBytes, records, BuildDecodeOptions(),
                          kSamplesPerPacket, sparePackets_);
    const auto consumed = static_cast<std::uint32_t>(next - buffer_.data());
    // The rest is counted to the end of the buffer, not of the valid bytes. The two differ only in
    // the last, short block: one of which nothing is consumed is no error, and one whose valid and
    // consumed bytes add up to the buffer's size is an error. Kept (pinned by
    // ORDFileReader.LastBlockOfHalfTheBufferIsReportedAsNotConsumed).
    const auto leftover = static_cast<std::uint32_t>(kDataBufferSize - consumed);
    if (validBytes == leftover) return Fail(L"Failed to process buffer. 0 bytes consumed.");
    unconsumedBytes_ = validBytes - consumed;
    std::memmove(buffer_.data(), next, leftover);
    bytesHeld_ = leftover;
    return 0;
}

bool ORDFileReader::EndsInACutPacket() const {
    return unconsumedBytes_ != 0 && unconsumedBytes_ < kLongestPacketSize &&
           buffer_.front() == kDataPacketType;
}

std::int32_t ORDFileReader::Close() {
    if (!file_.IsOpen()) return Fail(L"Error closing ORD file.");
    file_.Close();
    headerText_.clear();
    ultrasonicAvailable_ = baseImuAvailable_ = afeImuAvailable_ = false;
    numADChannels_ = samplingFrequency_ = adMaxValue_ = inputRange_ = 0;
    adBitVolts_ = 0.0;
    bytesHeld_ = 0;
    acquisitionSystem_.clear();
    sessionUuid_.clear();
    return 0;
}

}  // namespace stalwick
