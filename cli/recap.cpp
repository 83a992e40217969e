// SPDX-License-Identifier: BSD-3-Clause
#include "cli/recap.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "cli/recording_line.h"
#include "page/readable_figures.h"

namespace stalwick {

namespace {

struct VerdictName {
    Verdict verdict;
    const wchar_t* name;
};

// In the order in which they are listed.
constexpr std::array kNamedVerdicts = {
    VerdictName{Verdict::kWithLosses, L"with losses"}, VerdictName{Verdict::kFailed, L"failed"},
    VerdictName{Verdict::kCanceled, L"canceled"}, VerdictName{Verdict::kNotBegun, L"not begun"}};

std::size_t Count(const std::vector<RecordingOutcome>& outcomes, Verdict verdict) {
    return static_cast<std::size_t>(std::count_if(
        outcomes.begin(), outcomes.end(),
        [verdict](const RecordingOutcome& outcome) { return VerdictOf(outcome) == verdict; }));
}

std::wstring DescribeCounts(const std::vector<RecordingOutcome>& outcomes) {
    std::wstring text = Counted(outcomes.size(), L"recording") + L": " +
                        std::to_wstring(Count(outcomes, Verdict::kWhole)) + L" converted";
    if (const std::size_t passedOver = Count(outcomes, Verdict::kPassedOver); passedOver != 0) {
        text += L", " + std::to_wstring(passedOver) + L" skipped";
    }
    for (const VerdictName& named : kNamedVerdicts) {
        const std::size_t count = Count(outcomes, named.verdict);
        // Recordings remain only if something failed.
        if (count == 0 && named.verdict == Verdict::kNotBegun) continue;
        text += L", " + std::to_wstring(count) + L' ' + named.name;
    }
    return text;
}

}  // namespace

std::vector<std::wstring> DescribeAll(const std::vector<PlannedRecording>& recordings,
                                      const std::vector<RecordingOutcome>& outcomes, bool quiet) {
    const bool allWhole =
        std::all_of(outcomes.begin(), outcomes.end(),
                    [](const RecordingOutcome& outcome) { return IsWhole(VerdictOf(outcome)); });
    if (outcomes.size() < 2 || (quiet && allWhole)) return {};
    std::vector<std::wstring> lines = {DescribeCounts(outcomes)};
    for (const VerdictName& named : kNamedVerdicts) {
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            if (VerdictOf(outcomes[i]) != named.verdict) continue;
            std::wstring line = std::wstring(L"  ") + named.name + L": " + recordings[i].name;
            if (named.verdict == Verdict::kCanceled) {
                line += outcomes[i].withoutConversion.empty()
                            ? L' ' + DescribeHowFar(outcomes[i].account)
                            : L", not checked";
            }
            lines.push_back(line);
        }
    }
    return lines;
}

}  // namespace stalwick
