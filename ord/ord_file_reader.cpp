// SPDX-License-Identifier: BSD-3-Clause
#include "ord/ord_file_reader.h"

#include <cstring>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "ord/packet_decoder.h"
#include "ord/version_check.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

// The text that failed conversions report instead of the system's own.
constexpr wchar_t kReadFailed[] = L"Failed to process input file";

}  // namespace

std::int32_t ORDFileReader::Fail(const std::wstring& message) {
    SetErrorMessage(message);
    return -1;
}

std::int32_t ORDFileReader::Open(const std::wstring& path) {
    systemError_ = file_.Open(path);
    if (systemError_ != 0) {
        return Fail(L"Error opening file, the file path(" + path + L") may be invalid.");
    }
    Reset();
    if (ReadHeader() != 0) return -1;
    return ReadRecordingHeader(headerText_, header_, errorMessage_);
}

std::int32_t ORDFileReader::ReadHeader() {
    std::array<char, kHeaderBlockSize> block;
    std::size_t count = 0;
    systemError_ = file_.Read(block.data(), sizes_.header, count);
    if (systemError_ != 0) return Fail(L"Error reading header from file.");
    bytesRead_ += count;
    endedInHeader_ = count < sizes_.header;

    headerText_.clear();
    const std::string_view bytes(block.data(), count);
    try {
        headerText_ = DecodeHeaderBytes(bytes.substr(0, bytes.find('\0')));
    } catch (const std::bad_alloc&) {
        return Fail(L"Error converting file header character format.");
    }
    return 0;
}

std::int32_t ORDFileReader::GetData(std::vector<ORDDataPacket>& records, bool& endOfFile) {
    endOfFile = false;
    if (!file_.IsOpen()) return Fail(L"Error getting ORD data, a ORD file is not open.");

    systemError_ = readError_;
    if (readError_ != 0) return Fail(kReadFailed);

    const std::size_t wanted = sizes_.span - bytesHeld_;
    std::size_t count = 0;
    // Bytes appended to a short file would be misplaced: its packets begin after a whole header.
    if (!endedInHeader_) readError_ = file_.Read(buffer_.data() + bytesHeld_, wanted, count);
    bytesRead_ += count;
    unconsumedBytes_ += count;
    if (readError_ != 0) return DecodeBeforeFailure(count, records);
    endOfFile = count < wanted;
    return DecodeBuffer(bytesHeld_ + static_cast<std::uint32_t>(count), records);
}

// Packets that were read whole before a read failed are returned first; the next call reports the
// failure.
std::int32_t ORDFileReader::DecodeBeforeFailure(std::size_t count,
                                                std::vector<ORDDataPacket>& records) {
    if (count == 0) {
        systemError_ = readError_;
        return Fail(kReadFailed);
    }
    const std::uint32_t validBytes = bytesHeld_ + static_cast<std::uint32_t>(count);
    unconsumedBytes_ = validBytes - Decode(validBytes, records);
    return 0;
}

// Returns how many bytes of the buffer formed whole packets.
std::uint32_t ORDFileReader::Decode(std::uint32_t validBytes, std::vector<ORDDataPacket>& records) {
    const bool isFirstBlock = bytesRead_ == kHeaderBlockSize + validBytes;
    if (isFirstBlock) {
        contradictsVersion_ =
            PacketsContradictVersion(buffer_.data(), validBytes, PacketDecodeOptions(header_));
    }
    const std::uint8_t* const next =
        ProcessDataBuffer(buffer_.data(), validBytes, records, PacketDecodeOptions(header_),
                          kSamplesPerPacket, spanMemory_);
    for (const ORDDataPacket& packet : records) kinds_.Count(packet);
    return static_cast<std::uint32_t>(next - buffer_.data());
}

std::int32_t ORDFileReader::DecodeBuffer(std::uint32_t validBytes,
                                         std::vector<ORDDataPacket>& records) {
    const std::uint32_t consumed = Decode(validBytes, records);
    // The rest is counted to the end of the buffer, not of the valid bytes. The two differ only in
    // the last, short block: if nothing of it is consumed, that is not an error; if its valid and
    // consumed bytes add up to the size of the buffer, it is an error. Do not change this (pinned
    // by ORDFileReader.LastBlockOfHalfTheBufferIsReportedAsNotConsumed).
    const auto leftover = static_cast<std::uint32_t>(sizes_.span - consumed);
    if (validBytes == leftover) return Fail(L"Failed to process buffer. 0 bytes consumed.");
    unconsumedBytes_ = validBytes - consumed;
    std::memmove(buffer_.data(), buffer_.data() + consumed, leftover);
    bytesHeld_ = leftover;
    return 0;
}

bool ORDFileReader::EndsInACutPacket() const {
    const std::span<const std::uint8_t> held(buffer_);
    return IsCutPacket(held.first(static_cast<std::size_t>(unconsumedBytes_)), kinds_,
                       PacketDecodeOptions(header_));
}

std::int32_t ORDFileReader::Close() {
    if (!file_.IsOpen()) return Fail(L"Error closing ORD file.");
    file_.Close();
    Reset();
    return 0;
}

void ORDFileReader::Reset() {
    headerText_.clear();
    bytesHeld_ = 0;
    bytesRead_ = 0;
    unconsumedBytes_ = 0;
    endedInHeader_ = false;
    kinds_ = {};
    contradictsVersion_ = false;
    readError_ = 0;
    RecordingHeader blank;
    blank.fileVersion = std::move(header_.fileVersion);
    blank.utcOffsetMicroseconds = header_.utcOffsetMicroseconds;
    header_ = std::move(blank);
}

}  // namespace stalwick
