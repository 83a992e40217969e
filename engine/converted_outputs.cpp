// SPDX-License-Identifier: BSD-3-Clause
#include "engine/converted_outputs.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "engine/recording_check.h"
#include "engine/recording_contents.h"
#include "outputs/channel_file.h"
#include "outputs/event_file.h"
#include "outputs/output_format.h"
#include "outputs/output_names.h"
#include "outputs/raw_data_file.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

using VtxDataTypes::kSamplesPerRecord;

std::wstring CountsDiffer(const RecordFile& file, std::uint64_t expected) {
    return OneLine(file.Path()) + L" has " + std::to_wstring(file.RecordCount()) +
           L" records, but the recording gives " + std::to_wstring(expected);
}

// Compares the outputs of one directory with a recording. Checks return what is wrong, or nothing.
class OutputSetCheck {
  public:
    OutputSetCheck(std::wstring directory, std::wstring sessionUuid)
        : directory_(std::move(directory)), sessionUuid_(std::move(sessionUuid)) {}

    // Without contents, checks only the headers.
    std::wstring Check(const std::vector<ExpectedOutput>& outputs,
                       const RecordingContents* contents) {
        contents_ = contents;
        found_.clear();
        for (const ExpectedOutput& output : outputs) {
            if (const std::wstring fault = FindWhole(output); !fault.empty()) return fault;
        }
        return {};
    }

    // If the set was whole: its files, in the order of the outputs.
    const std::vector<OutputAccount>& Found() const { return found_; }

  private:
    // One of the files with the output's name must be whole.
    std::wstring FindWhole(const ExpectedOutput& output) {
        const std::wstring stem = directory_ + kPathSeparator + output.entity;
        std::wstring fault = OneLine(stem + output.extension) + L" is missing";
        for (std::int32_t number = 0;; ++number) {
            const std::wstring path =
                stem + (number == 0 ? L"" : NumberSuffix(number)) + output.extension;
            if (!IsOrdinaryFile(path)) {
                if (number == 0) continue;
                return fault;
            }
            fault = CheckFile(path, output);
            if (!fault.empty()) continue;
            found_.push_back({path, QueryFileSize(path), records_});
            return {};
        }
    }

    std::wstring CheckFile(const std::wstring& path, const ExpectedOutput& output) {
        switch (output.kind) {
            case ExpectedOutput::Kind::kEvents:
                return CheckEventFile(path, output);
            case ExpectedOutput::Kind::kRawData:
                return CheckRawDataFile(path, output);
            case ExpectedOutput::Kind::kChannel:
                break;
        }
        return CheckChannelFile(path, output);
    }

    std::wstring CheckChannelFile(const std::wstring& path, const ExpectedOutput& output) {
        ChannelFile file;
        if (const RecordFileError error = file.Open(path)) return error.text;
        records_ = file.RecordCount();
        if (!file.IsClosed()) return OneLine(path) + L" was not closed";
        if (const std::wstring fault = CheckOrigin(file, output); !fault.empty()) return fault;
        if (contents_ == nullptr) return {};
        const std::uint64_t samples = contents_->Samples(output.group, output.channel);
        const std::uint64_t records = (samples + kSamplesPerRecord - 1) / kSamplesPerRecord;
        if (file.RecordCount() != records) return CountsDiffer(file, records);
        return records == 0 ? std::wstring() : CheckLastRecord(file, samples);
    }

    static std::wstring CheckLastRecord(const ChannelFile& file, std::uint64_t samples) {
        VtxDataTypes::CRRec last{};
        if (const RecordFileError error = file.ReadRecords(file.RecordCount() - 1, {&last, 1})) {
            return error.text;
        }
        const std::uint64_t expected = samples - (file.RecordCount() - 1) * kSamplesPerRecord;
        if (last.numValidSamples == expected) return {};
        return OneLine(file.Path()) + L" has " + std::to_wstring(last.numValidSamples) +
               L" samples in its last record, but the recording gives " + std::to_wstring(expected);
    }

    std::wstring CheckEventFile(const std::wstring& path, const ExpectedOutput& output) {
        EventFile file;
        if (const RecordFileError error = file.Open(path)) return error.text;
        records_ = file.RecordCount();
        if (const std::wstring fault = CheckOrigin(file, output); !fault.empty()) return fault;
        if (contents_ == nullptr || file.RecordCount() == contents_->Events()) return {};
        return CountsDiffer(file, contents_->Events());
    }

    std::wstring CheckRawDataFile(const std::wstring& path, const ExpectedOutput& output) {
        RawDataFile file;
        // Packets of another width than the header's leave records that do not fill the file
        // evenly.
        const RecordFileError error = file.Open(path);
        if (error && error.kind != RecordFileError::Kind::kCutRecord) return error.text;
        records_ = file.RecordCount();
        if (!file.IsClosed()) return OneLine(path) + L" was not closed";
        if (const std::wstring fault = CheckOrigin(file, output); !fault.empty()) return fault;
        const std::uint64_t bytes = file.RecordCount() * file.RecordSize() + file.CutBytes();
        if (contents_ == nullptr || bytes == contents_->RawBytes()) return {};
        return OneLine(path) + L" has " + std::to_wstring(bytes) +
               L" bytes of records, but the recording gives " +
               std::to_wstring(contents_->RawBytes());
    }

    std::wstring CheckOrigin(const RecordFile& file, const ExpectedOutput& output) const {
        if (file.Header().Value(L"-SessionUUID") != sessionUuid_) {
            return OneLine(file.Path()) + L" belongs to another session";
        }
        if (file.Header().Value(L"-AcqEntName") != output.entity) {
            return OneLine(file.Path()) + L" belongs to another channel";
        }
        return {};
    }

    std::wstring directory_;
    std::wstring sessionUuid_;
    const RecordingContents* contents_ = nullptr;
    std::vector<OutputAccount> found_;
    std::uint64_t records_ = 0;  // of the last file checked
};

// What the packets contain although the header does not announce it, so that no output has it;
// empty if there is nothing.
std::wstring FindLeftOut(const WantedOutputs& wanted, const RecordingHeader& header,
                         const RecordingContents& contents) {
    if (contents.MostADChannels() > header.numADChannels) {
        return L"has packets of more channels than its header announces";
    }
    const std::array<std::pair<ChannelGroup, bool>, 3> sensors = {
        {{ChannelGroup::kBaseIMU, header.baseImuAvailable},
         {ChannelGroup::kAfeIMU, header.afeImuAvailable},
         {ChannelGroup::kUltrasonic, header.ultrasonicAvailable}}};
    for (const auto& [sensor, announced] : sensors) {
        const bool asked = wanted.channelOptions[static_cast<std::size_t>(sensor)] != 0;
        if (asked && !announced && contents.Carries(sensor)) {
            return L"has packets with sensors that its header does not announce";
        }
    }
    return {};
}

bool AreKnown(const std::vector<OutputAccount>& found, const std::vector<OutputAccount>& known) {
    return !known.empty() &&
           std::all_of(found.begin(), found.end(), [&](const OutputAccount& output) {
               return std::find(known.begin(), known.end(), output) != known.end();
           });
}

ConvertedOutputs Whole(const std::vector<OutputAccount>& outputs) {
    ConvertedOutputs found{true, {}, outputs.size(), 0, outputs, false};
    for (const OutputAccount& output : outputs) found.bytes += output.bytes;
    return found;
}

ConvertedOutputs NotWhole(const std::wstring& reason) {
    ConvertedOutputs found;
    found.reason = reason;
    return found;
}

}  // namespace

ConvertedOutputs FindConvertedOutputs(const ConvertedOutputsRequest& request,
                                      const std::atomic<std::uint8_t>& cancelRequested) {
    if (!IsOrdinaryFile(request.recordingPath))
        return NotWhole(L"the recording is not a regular file");
    const auto reader = std::make_unique<ORDFileReader>();
    if (reader->Open(request.recordingPath) != 0) return NotWhole(reader->GetErrorMessage());
    const RecordingHeader& header = reader->Header();
    if (const RecordingRefusal refusal = CheckHeader(header)) return NotWhole(refusal.reason);
    if (header.sessionUuid.empty()) return NotWhole(L"the recording has no -SessionUUID");

    const std::vector<ExpectedOutput> outputs = ListOutputs(request.wanted, header);
    OutputSetCheck check(request.directory, header.sessionUuid);
    // Most sets that are not whole show it in a header, so the recording need not be read.
    if (const std::wstring fault = check.Check(outputs, nullptr); !fault.empty()) {
        return NotWhole(fault);
    }
    if (AreKnown(check.Found(), request.known)) {
        ConvertedOutputs found = Whole(check.Found());
        found.areAsKnown = true;
        return found;
    }
    RecordingContents contents;
    std::wstring fault = CountRecording(*reader, cancelRequested, contents);
    if (fault.empty()) fault = FindLeftOut(request.wanted, header, contents);
    if (!fault.empty()) return NotWhole(L"the recording " + fault);
    fault = check.Check(outputs, &contents);
    return fault.empty() ? Whole(check.Found()) : NotWhole(fault);
}

}  // namespace stalwick
