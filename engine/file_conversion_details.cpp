// What a conversion says beside its status.

#include "engine/file_conversion.h"

#include <utility>

#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

void FileConversion::AddDetail(ConversionDetail::Kind kind, const std::wstring& text) {
    details_.push_back({kind, text});
}

void FileConversion::AddInputDetail(ConversionDetail::Kind kind, const std::wstring& text) {
    AddDetail(kind, OneLine(request_.inputPath) + L": " + text);
}

void FileConversion::ReportOpenFileLimit(std::uint64_t needed, std::uint64_t limit) {
    const bool besideOthers = conversionsAtOnce_ > 1;
    AddInputDetail(ConversionDetail::Kind::kIncomplete,
                   L"not converted: its " + std::to_wstring(CountOutputFiles()) +
                       L" outputs are open at once" +
                       (besideOthers ? L" beside those of the other jobs" : L"") +
                       L", and this process may have " + std::to_wstring(limit) +
                       L" files open; raise the limit (ulimit -n " + std::to_wstring(needed) +
                       L") or choose fewer outputs" + (besideOthers ? L" or --jobs" : L""));
}

void FileConversion::ReportWhereItStopped(bool inLastBlock) {
    const std::wstring reason = reader_.SystemError() != 0 ? SystemErrorText(reader_.SystemError())
                                                           : reader_.GetErrorMessage();
    std::wstring advice =
        L"; the outputs end with what had been written before and say that they were not closed; "
        L"stalwick-convert --block-records 1 writes every whole record before it";
    if (inLastBlock && reader_.SystemError() == 0) {
        // Nothing is damaged: the last block has the one length that is refused.
        advice =
            L"; the recording ends there in a block of a length that is always refused: add one "
            L"zero byte to the end of a copy and convert the copy; a packet that lacks just its "
            L"last byte would take it for that";
    }
    AddInputDetail(ConversionDetail::Kind::kIncomplete,
                   L"conversion stopped at byte " + std::to_wstring(reader_.NextPacketPosition()) +
                       L": " + reason + advice);
}

void FileConversion::ReportUnreadInput() {
    const std::uint64_t bytesRead = reader_.BytesRead();
    if (bytesRead < inputSize_) {
        AddInputDetail(ConversionDetail::Kind::kIncomplete,
                       L"it had " + std::to_wstring(inputSize_) + L" bytes and ended after " +
                           std::to_wstring(bytesRead) +
                           L": it was cut while it was read; convert it again from a whole copy");
    } else if (reader_.FileSize() > bytesRead) {
        AddInputDetail(ConversionDetail::Kind::kIncomplete,
                       L"it has grown while it was read, what came behind byte " +
                           std::to_wstring(bytesRead) +
                           L" is missing; convert it again when the recorder has finished it");
    } else if (bytesRead < kHeaderBlockSize) {
        AddInputDetail(ConversionDetail::Kind::kNote,
                       L"it ends after " + std::to_wstring(bytesRead) +
                           L" bytes, inside its header, and holds no data: the recording was cut "
                           L"short; look for a whole copy");
    }
    ReportTrailingBytes();
}

// No output is less than it should be: nobody can tell what these bytes were. The status stays.
void FileConversion::ReportTrailingBytes() {
    if (reader_.UnconsumedBytes() == 0) return;
    const wchar_t* const cause =
        reader_.EndsInACutPacket()
            ? L"the recording was cut short or is damaged there"
            : L"no packet begins there: the recording is damaged, unless something else stands "
              L"behind its end, and packets behind the damage are lost; look for a whole copy";
    AddInputDetail(ConversionDetail::Kind::kNote,
                   std::to_wstring(reader_.UnconsumedBytes()) + L" trailing bytes from byte " +
                       std::to_wstring(reader_.NextPacketPosition()) +
                       L" on were not a whole packet and were left out; " + cause);
}

std::vector<ConversionDetail> FileConversion::TakeDetails() {
    channelFiles_.fileIO.CloseAllOutputFiles();
    eventFile_.fileIO.CloseAllOutputFiles();
    for (const auto* fileIO : {&channelFiles_.fileIO, &eventFile_.fileIO}) {
        for (const std::wstring& failure : fileIO->Failures()) {
            AddDetail(ConversionDetail::Kind::kIncomplete, failure);
        }
    }
    if (!rawDataFile_.Failure().empty()) {
        AddDetail(ConversionDetail::Kind::kIncomplete,
                  L"RawData.vrd is incomplete: " + rawDataFile_.Failure());
    }
    if (outputFailed_) {
        // The files named above are not the only ones: nothing more was written to any.
        AddInputDetail(ConversionDetail::Kind::kIncomplete,
                       std::wstring(L"not converted whole: ") + kOutputsMayLackTheirEnd +
                           L"; convert it again when the cause is removed");
    }
    if (channelFiles_.timestampsSaturated || eventFile_.timestampsSaturated ||
        rawDataFile_.timestampsSaturated) {
        AddInputDetail(ConversionDetail::Kind::kNote,
                       L"timestamps beyond the 64-bit range were held at its end; check "
                       L"-UTCOffsetMicroseconds and -SamplingFrequency in its header");
    }
    return std::move(details_);
}

}  // namespace stalwick
