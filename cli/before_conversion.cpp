// SPDX-License-Identifier: BSD-3-Clause
#include "cli/before_conversion.h"

#include <algorithm>

#include "engine/conversion_job.h"
#include "engine/converted_outputs.h"
#include "engine/output_directory.h"
#include "engine/recording_check.h"
#include "page/readable_figures.h"
#include "platform/file_system.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

std::wstring OutputsOf(const PlannedRecording& recording) {
    return OutputDirectoryOf(recording.path, recording.parentDirectory);
}

ConversionAccount AccountOf(const PlannedRecording& recording) {
    ConversionAccount account;
    account.recording = recording.path;
    account.outputDirectory = OutputsOf(recording);
    return account;
}

void Refuse(const PlannedRecording& recording, const RecordingRefusal& refusal,
            RecordingOutcome& outcome) {
    outcome.status = FailureStatus(refusal.errorText);
    outcome.withoutConversion = refusal.reason;
    outcome.account = AccountOf(recording);
    outcome.account.failed = true;
    outcome.account.details.push_back(
        {ConversionDetail::Kind::kIncomplete, OneLine(recording.path) + L": " + refusal.reason});
}

void PassOver(const PlannedRecording& recording, const ConvertedOutputs& found,
              DataProcessor& processor, RecordingOutcome& outcome) {
    outcome.converted = true;
    outcome.passedOver = true;
    outcome.status = kStatusComplete;
    outcome.account = AccountOf(recording);
    outcome.account.outputs = found.outputs;
    outcome.account.outputFiles = found.files;
    outcome.account.outputBytes = found.bytes;
    outcome.withoutConversion =
        std::wstring(L"skipped, ") +
        (found.areAsKnown ? L"it and its outputs match the report" : L"its outputs are whole") +
        L" -> " + recording.shownOutputs + L" (" + Counted(found.files, L"file") + L", " +
        ReadableBytes(found.bytes) + L")";
    processor.bytesProcessed.store(QueryFileSize(recording.path), std::memory_order_relaxed);
}

// After a cancel: a conversion would create outputs without data, perhaps next to whole ones.
void LeaveAlone(const PlannedRecording& recording, RecordingOutcome& outcome) {
    outcome.converted = true;
    outcome.status = kStatusCanceled;
    outcome.withoutConversion = L"canceled, not checked";
    outcome.account = AccountOf(recording);
    outcome.account.canceled = true;
}

}  // namespace

bool NeedsConversion(const PlannedRecording& recording, const CommandLine& commandLine,
                     DataProcessor& processor, RecordingOutcome& outcome) {
    const RecordingRefusal refusal = CheckRecording(recording.path, recording.parentDirectory);
    if (refusal) {
        Refuse(recording, refusal, outcome);
        return false;
    }
    if (!commandLine.skipConverted) return true;
    const ConvertedOutputsRequest request = {
        recording.path,
        OutputsOf(recording),
        {commandLine.channelOptions, true, commandLine.writeRawData},
        recording.knownOutputs};
    const auto canceled = [&] { return processor.cancelRequested.load() != 0; };
    ConvertedOutputs found;
    if (!canceled()) found = FindConvertedOutputs(request, processor.cancelRequested);
    if (found.whole) {
        PassOver(recording, found, processor, outcome);
    } else if (canceled()) {
        LeaveAlone(recording, outcome);
    } else {
        return true;
    }
    return false;
}

bool AnyCanBeConverted(const std::vector<PlannedRecording>& recordings) {
    return std::any_of(recordings.begin(), recordings.end(), [](const PlannedRecording& recording) {
        return !CheckRecording(recording.path, recording.parentDirectory);
    });
}

}  // namespace stalwick
