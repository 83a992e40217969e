// SPDX-License-Identifier: BSD-3-Clause
#include "cli/recording_outcome.h"

#include <algorithm>

#include "platform/file_system.h"

namespace stalwick {

namespace {

bool Has(const RecordingOutcome& outcome, ConversionDetail::Kind kind) {
    const auto& details = outcome.account.details;
    return std::any_of(details.begin(), details.end(),
                       [kind](const ConversionDetail& detail) { return detail.kind == kind; });
}

}  // namespace

RecordingFile QueryRecordingFile(const std::wstring& path) {
    return {QueryFileSize(path), QueryModificationTime(path)};
}

Verdict VerdictOf(const RecordingOutcome& outcome) {
    if (outcome.status.empty()) return Verdict::kNotBegun;
    if (!outcome.converted || Has(outcome, ConversionDetail::Kind::kIncomplete)) {
        return Verdict::kFailed;
    }
    if (outcome.passedOver) return Verdict::kPassedOver;
    if (outcome.account.canceled) return Verdict::kCanceled;
    return Has(outcome, ConversionDetail::Kind::kLoss) ? Verdict::kWithLosses : Verdict::kWhole;
}

}  // namespace stalwick
