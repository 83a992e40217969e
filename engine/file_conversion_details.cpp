// SPDX-License-Identifier: BSD-3-Clause

// What a conversion reports in addition to its status.

#include "engine/file_conversion.h"

#include <algorithm>
#include <span>
#include <utility>

#include "outputs/raw_record.h"
#include "platform/file_system.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "writers/timestamps.h"

namespace stalwick {

using Cause = ConversionDetail::Cause;
using Kind = ConversionDetail::Kind;

namespace {
constexpr std::uint32_t kHeadersOfAClosedFile = 2;  // the provisional one and the final one
}  // namespace

void FileConversion::AddDetail(Kind kind, const std::wstring& text) {
    account_.details.push_back({kind, text});
}

ConversionDetail& FileConversion::AddInputDetail(Kind kind, const std::wstring& text) {
    AddDetail(kind, OneLine(request_.inputPath) + L": " + text);
    return account_.details.back();
}

void FileConversion::ReportOpenFileLimit(std::uint64_t needed, std::uint64_t limit) {
    const wchar_t* const besideOthers =
        request_.parallel.MostAtOnce() > 1 ? L" as those of the other recordings" : L"";
    ConversionDetail& detail = AddInputDetail(
        Kind::kIncomplete, L"not converted: its " + std::to_wstring(CountOutputFiles()) +
                               L" outputs are open at the same time" + besideOthers +
                               L", and this process may have " + std::to_wstring(limit) +
                               L" files open; raise the limit to " + std::to_wstring(needed) +
                               L" or choose fewer outputs");
    detail.cause = Cause::kOpenFileLimit;
    detail.openFilesNeeded = needed;
}

void FileConversion::ReportWhereItStopped(bool inLastBlock) {
    const std::wstring reason = source_->SystemError() != 0
                                    ? SystemErrorText(source_->SystemError())
                                    : source_->GetErrorMessage();
    const std::wstring place = L"conversion stopped at byte " +
                               std::to_wstring(source_->NextPacketPosition()) + L": " + reason;
    if (inLastBlock && source_->SystemError() == 0) {
        // Nothing is damaged: the last block has the one length that is refused.
        AddInputDetail(
            Kind::kIncomplete,
            place +
                L"; the recording ends there in a block of a length that is always refused: "
                L"add one zero byte to the end of a copy and convert the copy; a packet that "
                L"lacks only its last byte would use it as that byte");
        return;
    }
    const bool keepsAll = KeepsPartialBlocks(channelFiles_.settings);
    ConversionDetail& detail = AddInputDetail(
        Kind::kIncomplete,
        place + L"; the outputs keep " +
            (keepsAll ? L"every whole record before it"
                      : L"only full blocks of 5000 records before it, often none,") +
            L" and say that they were not closed; look for a whole copy of the recording");
    if (source_->SystemError() == 0) {
        detail.cause = Cause::kDamaged;
    } else if (!keepsAll) {
        detail.cause = Cause::kInputFailed;
    }
}

void FileConversion::ReportUnreadInput() {
    const std::uint64_t bytesRead = source_->BytesRead();
    if (bytesRead < account_.inputBytes) {
        AddInputDetail(
            Kind::kIncomplete,
            L"it had " + std::to_wstring(account_.inputBytes) + L" bytes and ended after " +
                std::to_wstring(bytesRead) +
                L": it was cut short while it was being read; convert it again from a whole copy");
    } else if (source_->FileSize() > bytesRead) {
        AddInputDetail(Kind::kIncomplete,
                       L"it grew while it was being read, so everything after byte " +
                           std::to_wstring(bytesRead) +
                           L" is missing; convert it again when the recorder has finished");
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
    if (source_->UnconsumedBytes() == 0) return;
    const std::wstring position = std::to_wstring(source_->NextPacketPosition());
    const std::wstring trailing = std::to_wstring(source_->UnconsumedBytes()) +
                                  L" trailing bytes from byte " + position + L" on were left out";
    if (source_->EndsInACutPacket()) {
        AddInputDetail(Kind::kNote, L"it ends inside a packet: " + trailing +
                                        L"; that is normal if the recorder was switched off, "
                                        L"otherwise look for a whole copy");
    } else {
        AddInputDetail(Kind::kLoss,
                       L"damaged at byte " + position + L", no packet begins there: " + trailing +
                           L" and the packets in them are lost; look for a whole copy, unless "
                           L"other data follows the end of the recording");
    }
}

// How all outputs were left; the raw data file comes last.
std::vector<OutputEnd> FileConversion::OutputEnds() const {
    std::vector<OutputEnd> ends;
    for (const OutputFileState& file : channelFiles_.fileIO.Files()) {
        ends.push_back({file, file.headers == kHeadersOfAClosedFile, sizeof(VtxDataTypes::CRRec)});
    }
    for (const OutputFileState& file : eventFile_.fileIO.Files()) {
        // Its only header always says that it was not closed.
        const auto isFlushed = [](const OutputFileRecord& events) {
            return events.bufferedCount == 0;
        };
        const bool whole = packetsDone_ && std::ranges::all_of(eventFile_.records, isFlushed);
        ends.push_back({file, whole, sizeof(VtxDataTypes::EventRec)});
    }
    const OutputFileState rawData = rawDataFile_.File();
    if (!rawData.path.empty()) {
        ends.push_back({rawData, rawData.headers == kHeadersOfAClosedFile, 0});
    }
    for (OutputEnd& end : ends) end.whole = end.whole && !end.file.failure;
    return ends;
}

void FileConversion::ReportOutputs() {
    const std::vector<OutputEnd> ends = OutputEnds();
    const bool hasRawData = !rawDataFile_.File().path.empty();
    const std::span<const OutputEnd> all(ends);
    for (const std::wstring& text : DescribeFailedOutputs(all.first(all.size() - hasRawData))) {
        AddDetail(Kind::kIncomplete, text);
    }
    for (const std::wstring& text : DescribeFailedOutputs(all.last(hasRawData))) {
        AddDetail(Kind::kIncomplete, L"RawData.vrd is incomplete: " + text);
    }
    // If the recording failed, the detail about it covers all outputs.
    const std::wstring unfinished = inputFailed_ ? std::wstring() : NameUnfinishedOutputs(all);
    if (!unfinished.empty()) {
        AddInputDetail(Kind::kIncomplete, L"not completely converted: also unfinished in " +
                                              OneLine(directory_) + L": " + unfinished +
                                              L"; remove the cause and convert it again");
    }
    if (!syncFailure_.empty()) {
        AddInputDetail(Kind::kIncomplete,
                       L"its outputs may be lost after a power cut: " + syncFailure_);
    }
    if (channelFiles_.timestampsSaturated || eventFile_.timestampsSaturated ||
        rawDataFile_.timestampsSaturated) {
        AddInputDetail(Kind::kNote,
                       L"timestamps beyond the 64-bit range were clamped to its end; "
                       L"check -UTCOffsetMicroseconds and -SamplingFrequency in its "
                       L"header");
    }
}

// Keeps the paths for ListOutputs, because the writers forget a file when they finish it.
void FileConversion::NoteOpenOutputs() {
    for (const FileWriterContainer* files : {static_cast<FileWriterContainer*>(&channelFiles_),
                                             static_cast<FileWriterContainer*>(&eventFile_)}) {
        for (const OutputFileRecord& file : files->records) {
            openedOutputs_.push_back({file.filePath, file.recordSize});
        }
    }
    for (const OutputFileRecord& file : rawDataFile_.records) {
        const std::size_t words = RawRecordWords(rawDataFile_.adChannelCount);
        openedOutputs_.push_back({file.filePath, words * sizeof(std::uint32_t)});
    }
}

// Reads the sizes, so all files must be closed.
void FileConversion::ListOutputs() {
    for (const OpenedOutput& output : openedOutputs_) {
        const std::uint64_t bytes = QueryFileSize(output.path);
        const std::uint64_t data = bytes - std::min<std::uint64_t>(bytes, kOutputHeaderSize);
        account_.outputs.push_back({output.path, bytes, data / output.recordBytes});
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
    ListOutputs();
    account_.packets = clock_.Packets();
    if (timeLine_ && clock_.HasTimestamps()) {
        timeLine_->Finish(account_.time.emplace(), account_.skipped);
    }
    account_.durationSeconds = clock_.Seconds(recordPeriod_ / kMicrosecondsPerSecond);
    return std::move(account_);
}

}  // namespace stalwick
