// SPDX-License-Identifier: BSD-3-Clause
#include "cli/conversion_page.h"

#include <new>
#include <utility>

#include "engine/conversion_job.h"
#include "page/own_document.h"
#include "page/recording_page.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "survey/page_survey.h"

namespace stalwick {

namespace {

constexpr OwnDocument kPage = {kPageBeginning, L"page", L"move it away and convert again",
                               L"make it with stalwick-inspect report"};

std::wstring PagePath(const PlannedRecording& recording, const RecordingOutcome& outcome) {
    return outcome.account.outputDirectory + kPathSeparator + SplitPath(recording.path).name +
           L".html";
}

// Nothing was created next to which a page could be, or a page exists.
bool NeedsPage(const RecordingOutcome& outcome, const std::wstring& path) {
    const ConversionAccount& account = outcome.account;
    if (account.canceled || outcome.status == kStatusCanceled) return false;
    if (outcome.passedOver) {
        return QueryPath(path) == PathKind::kMissing || !RefuseName(kPage, path).empty();
    }
    return account.outputFiles != 0;
}

// Returns why there is no page; nothing if there is one, or after a cancel.
std::wstring MakePage(const PlannedRecording& recording, const std::atomic<std::uint8_t>& cancel,
                      const std::wstring& path) {
    if (!IsOrdinaryFile(recording.path)) return L"it can be read only once, from a pipe";
    if (std::wstring refusal = RefuseName(kPage, path); !refusal.empty()) return refusal;
    const PageSurvey page = SurveyForPage(recording.path, &cancel);
    if (page.canceled) return {};
    if (!page.survey.error.empty())
        return page.survey.error + L"; give a recording that can be read";
    return WriteDocument(kPage, path, FormatRecordingPage(page, {}));
}

}  // namespace

void AddPage(const PlannedRecording& recording, const std::atomic<std::uint8_t>& cancel,
             RecordingOutcome& outcome) {
    const std::wstring path = PagePath(recording, outcome);
    if (!NeedsPage(outcome, path)) return;
    std::wstring failure;
    try {
        failure = MakePage(recording, cancel, path);
    } catch (const std::bad_alloc&) {
        failure = L"not enough memory; make it with stalwick-inspect report";
    }
    if (failure.empty()) return;
    outcome.account.details.push_back(
        {ConversionDetail::Kind::kIncomplete,
         OneLine(recording.path) + L": no page, its outputs are not affected: " + failure});
}

}  // namespace stalwick
