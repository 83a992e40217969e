// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "survey/page_survey.h"

namespace stalwick {

// The wording of pages, as plain UTF-8 text: not escaped for HTML.

[[nodiscard]] std::string Narrow(const std::wstring& text);    // on one line
[[nodiscard]] std::string ChannelName(std::uint32_t channel);  // "CSC1" for 0
// "no gaps", "2 gaps of 0.3 s in total"; "gaps unknown" without timestamps.
[[nodiscard]] std::string GapsInWords(const RecordingSurvey& survey);
// "no damage", "1 damaged place of 71 bytes in total".
[[nodiscard]] std::string DamageInWords(const RecordingSurvey& survey);

// A line at the top of a page; `mood` is a class of the style.
struct PageFinding {
    std::string mood;  // good, warn or bad
    std::string text;
};
[[nodiscard]] std::vector<PageFinding> FindingsOf(const PageSurvey& page);

// The names of the channels for which a rule holds: "CSC1, CSC4 and CSC9"; empty if there are none.
[[nodiscard]] std::string NamesBy(const PageSurvey& page, bool ChannelVerdict::*rule);

// The verdict on a channel: "flat", "clipped, noisy"; empty for a healthy one.
[[nodiscard]] std::string VerdictInWords(const ChannelVerdict& verdict);

// The rules by which channels are named.
[[nodiscard]] std::string FlatRule(const SignalRules& rules);
[[nodiscard]] std::string ClippedRule(const SignalRules& rules);
[[nodiscard]] std::string NoisyRule(const SignalRules& rules);

}  // namespace stalwick
