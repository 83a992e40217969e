// SPDX-License-Identifier: BSD-3-Clause
#include "cli/recording_line.h"

#include <algorithm>
#include <utility>

#include "engine/conversion_job.h"
#include "page/readable_figures.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

using Cause = ConversionDetail::Cause;
using Kind = ConversionDetail::Kind;

constexpr wchar_t kNotConverted[] = L"not converted";

// What the command's own options can do about it.
std::wstring Advice(const ConversionDetail& detail) {
    switch (detail.cause) {
        case Cause::kDamaged:
            return L"; --salvage keeps every whole record before the damage and what follows it";
        case Cause::kInputFailed:
            return L"; --keep-partial keeps every whole record before it";
        case Cause::kOpenFileLimit:
            return L" (ulimit -n " + std::to_wstring(detail.openFilesNeeded) + L") or fewer --jobs";
        case Cause::kOutOfMemory:
            return L"; convert it with fewer outputs or fewer --jobs";
        default:
            return {};
    }
}

std::wstring WithoutPrefix(const std::wstring& text, const std::wstring& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
}

// The detail without the recording's path, which is already in the line.
std::wstring BodyOf(const ConversionDetail& detail, const PlannedRecording& recording) {
    return WithoutPrefix(detail.text, OneLine(recording.path) + L": ") + Advice(detail);
}

std::wstring DescribeOutputs(const PlannedRecording& recording, const ConversionAccount& account) {
    return recording.shownOutputs + L" (" + Counted(account.outputFiles, L"file") + L", " +
           ReadableBytes(account.outputBytes) + L")";
}

std::wstring DescribeConversion(const PlannedRecording& recording,
                                const ConversionAccount& account) {
    return ReadableDuration(account.durationSeconds) + L", " +
           Counted(account.adChannels, L"channel") + L" -> " + DescribeOutputs(recording, account);
}

std::wstring DescribeFailure(const PlannedRecording& recording, const ConversionAccount& account) {
    if (account.outputFiles == 0) return kNotConverted;
    return L"failed after reading " + ReadableDuration(account.durationSeconds) + L" -> " +
           DescribeOutputs(recording, account);
}

// The reason in the status: without "Processing failed - ".
std::wstring ReasonIn(const std::wstring& status) {
    const std::wstring reason = WithoutPrefix(status, L"Processing failed - ");
    return reason == status ? std::wstring() : reason;
}

// The beginning of the line, and the kind of detail that gives the reason.
std::pair<std::wstring, Kind> Summarize(const PlannedRecording& recording,
                                        const RecordingOutcome& outcome) {
    const ConversionAccount& account = outcome.account;
    switch (VerdictOf(outcome)) {
        case Verdict::kFailed:
            return {DescribeFailure(recording, account), Kind::kIncomplete};
        case Verdict::kCanceled:
            return {L"canceled " + DescribeHowFar(account) + L" -> " +
                        DescribeOutputs(recording, account),
                    Kind::kLoss};
        case Verdict::kWithLosses:
            return {DescribeConversion(recording, account) + L", with losses", Kind::kLoss};
        default:
            return {DescribeConversion(recording, account), Kind::kNote};
    }
}

}  // namespace

std::wstring DescribeHowFar(const ConversionAccount& account) {
    if (account.packets == 0) return L"before its first packet";
    const std::wstring duration = L"after " + ReadableDuration(account.durationSeconds);
    if (account.inputBytes == 0) return duration;
    const double part =
        static_cast<double>(account.inputBytesRead) / static_cast<double>(account.inputBytes);
    const int percent = static_cast<int>(std::min(part, 1.0) * 100);
    return duration + L" (" + std::to_wstring(percent) + L" %)";
}

std::vector<std::wstring> DescribeRecording(const PlannedRecording& recording,
                                            const RecordingOutcome& outcome, bool quiet) {
    if (quiet && IsWhole(VerdictOf(outcome))) return {};
    if (!outcome.withoutConversion.empty()) {
        std::vector<std::wstring> only = {recording.name + L": " + outcome.withoutConversion};
        // For a refused recording, the line gives the reason.
        for (const ConversionDetail& detail : outcome.account.details) {
            if (outcome.passedOver)
                only.push_back(recording.name + L": " + BodyOf(detail, recording));
        }
        return only;
    }
    auto [line, kind] = Summarize(recording, outcome);
    std::vector<ConversionDetail> details = outcome.account.details;
    // The first detail that gives a reason becomes part of the line.
    const auto reason =
        std::find_if(details.begin(), details.end(),
                     [why = kind](const ConversionDetail& detail) { return detail.kind == why; });
    if (reason != details.end()) {
        // The detail may itself begin with "not converted".
        line += (kind == Kind::kNote ? L"; " : L": ") +
                WithoutPrefix(BodyOf(*reason, recording), kNotConverted + std::wstring(L": "));
        details.erase(reason);
    } else if (const std::wstring text = ReasonIn(outcome.status); !text.empty()) {
        line += L": " + text;
    }
    std::vector<std::wstring> lines = {recording.name + L": " + line};
    for (const ConversionDetail& detail : details) {
        if (quiet && detail.kind == Kind::kNote) continue;
        lines.push_back(recording.name + L": " + BodyOf(detail, recording));
    }
    return lines;
}

}  // namespace stalwick
