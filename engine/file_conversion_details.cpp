// What a conversion says beside its status.

#include "engine/file_conversion.h"

#include <utility>

#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "writers/timestamps.h"

namespace stalwick {

using Cause = ConversionDetail::Cause;
using Kind = ConversionDetail::Kind;

void FileConversion::AddDetail(Kind kind, const std::wstring& text) {
    account_.details.push_back({kind, text});
}

ConversionDetail& FileConversion::AddInputDetail(Kind kind, const std::wstring& text) {
    AddDetail(kind, OneLine(request_.inputPath) + L": " + text);
    return account_.details.back();
}

void FileConversion::ReportOpenFileLimit(std::uint64_t needed, std::uint64_t limit) {
    const wchar_t* const besideOthers =
        request_.conversionsAtOnce > 1 ? L" beside those of the other recordings" : L"";
    ConversionDetail& detail = AddInputDetail(
        Kind::kIncomplete, L"not converted: its " + std::to_wstring(CountOutputFiles()) +
                               L" outputs are open at once" + besideOthers +
                               L", and this process may have " + std::to_wstring(limit) +
                               L" files open; raise the limit to " + std::to_wstring(needed) +
                               L" or choose fewer outputs");
    detail.cause = Cause::kOpenFileLimit;
    detail.openFilesNeeded = needed;
}

void FileConversion::ReportWhereItStopped(bool inLastBlock) {
    const std::wstring reason = reader_.SystemError() != 0 ? SystemErrorText(reader_.SystemError())
                                                           : reader_.GetErrorMessage();
    const std::wstring place = L"conversion stopped at byte " +
                               std::to_wstring(reader_.NextPacketPosition()) + L": " + reason;
    if (inLastBlock && reader_.SystemError() == 0) {
        // Nothing is damaged: the last block has the one length that is refused.
        AddInputDetail(
            Kind::kIncomplete,
            place +
                L"; the recording ends there in a block of a length that is always refused: "
                L"add one zero byte to the end of a copy and convert the copy; a packet that "
                L"lacks just its last byte would take it for that");
        return;
    }
    AddInputDetail(Kind::kIncomplete,
                   place +
                       L"; the outputs end with what had been written before and say that "
                       L"they were not closed; look for a whole copy of the recording")
        .cause = Cause::kStoppedInTheMiddle;
}

void FileConversion::ReportUnreadInput() {
    const std::uint64_t bytesRead = reader_.BytesRead();
    if (bytesRead < account_.inputBytes) {
        AddInputDetail(Kind::kIncomplete,
                       L"it had " + std::to_wstring(account_.inputBytes) +
                           L" bytes and ended after " + std::to_wstring(bytesRead) +
                           L": it was cut while it was read; convert it again from a whole copy");
    } else if (reader_.FileSize() > bytesRead) {
        AddInputDetail(Kind::kIncomplete,
                       L"it has grown while it was read, what came after byte " +
                           std::to_wstring(bytesRead) +
                           L" is missing; convert it again when the recorder has finished it");
    } else if (bytesRead < kHeaderBlockSize) {
        // No recorder leaves that: every recording begins with a whole header block.
        AddInputDetail(Kind::kLoss,
                       L"it ends after " + std::to_wstring(bytesRead) +
                           L" bytes, inside its header, and holds no data: the recording was cut "
                           L"short; look for a whole copy");
    }
    ReportTrailingBytes();
}

void FileConversion::ReportTrailingBytes() {
    if (reader_.UnconsumedBytes() == 0) return;
    const std::wstring position = std::to_wstring(reader_.NextPacketPosition());
    const std::wstring trailing = std::to_wstring(reader_.UnconsumedBytes()) +
                                  L" trailing bytes from byte " + position + L" on were left out";
    if (reader_.EndsInACutPacket()) {
        AddInputDetail(Kind::kNote, L"it ends inside a packet: " + trailing +
                                        L"; that is all right if the recorder was switched off, "
                                        L"else look for a whole copy");
    } else {
        AddInputDetail(Kind::kLoss,
                       L"damaged at byte " + position + L", no packet begins there: " + trailing +
                           L" and the packets in them are lost; look for a whole copy, unless "
                           L"something else stands after the recording's end");
    }
}

void FileConversion::ReportOutputs() {
    for (const auto* fileIO : {&channelFiles_.fileIO, &eventFile_.fileIO}) {
        for (const std::wstring& failure : fileIO->Failures()) {
            AddDetail(Kind::kIncomplete, failure);
        }
    }
    if (!rawDataFile_.Failure().empty()) {
        AddDetail(Kind::kIncomplete, L"RawData.vrd is incomplete: " + rawDataFile_.Failure());
    }
    if (outputFailed_) {
        // The files named above are not the only ones: nothing more was written to any.
        AddInputDetail(Kind::kIncomplete, std::wstring(L"not converted whole: ") +
                                              kOutputsMayLackTheirEnd +
                                              L"; convert it again when the cause is removed");
    }
    if (channelFiles_.timestampsSaturated || eventFile_.timestampsSaturated ||
        rawDataFile_.timestampsSaturated) {
        AddInputDetail(Kind::kNote,
                       L"timestamps beyond the 64-bit range were held at its end; "
                       L"check -UTCOffsetMicroseconds and -SamplingFrequency in its "
                       L"header");
    }
}

ConversionAccount FileConversion::TakeAccount() {
    channelFiles_.fileIO.CloseAllOutputFiles();
    eventFile_.fileIO.CloseAllOutputFiles();
    rawDataFile_.Close();
    ReportOutputs();
    OutputTotals totals = channelFiles_.fileIO.Totals();
    totals += eventFile_.fileIO.Totals();
    totals += rawDataFile_.Totals();
    account_.outputFiles = totals.files;
    account_.outputBytes = totals.bytes;
    account_.packets = clock_.Packets();
    account_.durationSeconds = clock_.Seconds(recordPeriod_ / kMicrosecondsPerSecond);
    return std::move(account_);
}

}  // namespace stalwick
