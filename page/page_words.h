#pragma once

#include <string>
#include <vector>

#include "survey/page_survey.h"

namespace stalwick {

// What pages say in words, as plain UTF-8 text: not escaped for HTML.

[[nodiscard]] std::string Narrow(const std::wstring& text);    // on one line
[[nodiscard]] std::string ChannelName(std::uint32_t channel);  // "CSC1" for 0
// "no gaps", "2 gaps of 0.3 s in all"; "gaps unknown" without timestamps.
[[nodiscard]] std::string GapsInWords(const RecordingSurvey& survey);
// "no damage", "1 damaged place of 71 bytes".
[[nodiscard]] std::string DamageInWords(const RecordingSurvey& survey);

// Something that a page says first; `mood` is a class of the style.
struct PageFinding {
    std::string mood;  // good, warn or bad
    std::string text;
};
[[nodiscard]] std::vector<PageFinding> FindingsOf(const PageSurvey& page);

// The names of the channels of which a rule holds: "CSC1, CSC4 and CSC9"; empty if there are none.
[[nodiscard]] std::string NamesBy(const PageSurvey& page, bool ChannelVerdict::*rule);

// What is said of a channel: "flat", "clipped, noisy"; empty of a healthy one.
[[nodiscard]] std::string VerdictInWords(const ChannelVerdict& verdict);

// The rules that channels are named by.
[[nodiscard]] std::string FlatRule(const SignalRules& rules);
[[nodiscard]] std::string ClippedRule(const SignalRules& rules);
[[nodiscard]] std::string NoisyRule(const SignalRules& rules);

}  // namespace stalwick
