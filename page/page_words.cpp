// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_words.h"

#include "page/info_words.h"
#include "page/page_numbers.h"
#include "page/readable_figures.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr double kPercent = 100.0;

void AddChannels(const PageSurvey& page, bool ChannelVerdict::*rule, const std::string& what,
                 std::vector<PageFinding>& findings) {
    std::size_t count = 0;
    for (const ChannelVerdict& verdict : page.verdict.channels) count += verdict.*rule ? 1 : 0;
    if (count == 0) return;
    findings.push_back({"warn", std::to_string(count) + ' ' + what +
                                    (count == 1 ? " channel: " : " channels: ") +
                                    NamesBy(page, rule)});
}

void AddTimes(const RecordingSurvey& survey, std::vector<PageFinding>& findings) {
    if (!survey.hasTimestamps) {
        findings.push_back({"warn", "Packets of this version carry no time, so gaps are unknown"});
    } else if (!survey.gaps.empty()) {
        findings.push_back(
            {"warn", GapsInWords(survey) + ": samples that the recorder did not receive"});
    }
    const std::uint64_t odd =
        survey.repeatedTimestamps + survey.shortSteps + survey.backwardTimestamps.size();
    if (odd != 0) {
        findings.push_back(
            {"warn", Narrow(Counted(odd, L"timestamp")) + " repeated, too early or back in time"});
    }
}

}  // namespace

std::string Narrow(const std::wstring& text) {
    return ToUtf8(OneLine(text));
}

std::string ChannelName(std::uint32_t channel) {
    return "CSC" + std::to_string(std::uint64_t{channel} + 1);
}

std::string GapsInWords(const RecordingSurvey& survey) {
    if (!survey.hasTimestamps) return "gaps unknown";
    if (survey.gaps.empty()) return "no gaps";
    return Narrow(Counted(survey.gaps.size(), L"gap")) + " of " + ShortNumber(survey.gapSeconds) +
           " s in total";
}

std::string DamageInWords(const RecordingSurvey& survey) {
    if (survey.damage.empty()) return "no damage";
    return Narrow(Counted(survey.damage.size(), L"damaged place")) + " of " +
           Narrow(ReadableBytes(survey.damagedBytes)) + " in total";
}

std::vector<PageFinding> FindingsOf(const PageSurvey& page) {
    const RecordingSurvey& survey = page.survey;
    std::vector<PageFinding> findings;
    if (!survey.readError.empty()) {
        findings.push_back({"bad", "It could not be read to its end: " + Narrow(survey.readError) +
                                       "; look for a whole copy"});
    }
    if (!survey.damage.empty()) {
        findings.push_back({"bad", DamageInWords(survey) + "; look for a whole copy"});
    }
    AddTimes(survey, findings);
    if (survey.cutEndBytes != 0) {
        findings.push_back({"warn", Narrow(CutEndReason(survey)) +
                                        ", as left by a recorder that was switched off"});
    }
    AddChannels(page, &ChannelVerdict::flat, "flat", findings);
    AddChannels(page, &ChannelVerdict::clipped, "clipped", findings);
    AddChannels(page, &ChannelVerdict::noisy, "noisy", findings);
    if (survey.channelStatistics.empty()) {
        findings.push_back({"warn", "It has no A/D samples"});
    }
    if (findings.empty()) {
        findings.push_back(
            {"good", "Whole: no damage, no gaps, no channel flat, clipped or noisy"});
    }
    return findings;
}

std::string NamesBy(const PageSurvey& page, bool ChannelVerdict::*rule) {
    std::vector<std::string> names;
    for (const ChannelVerdict& verdict : page.verdict.channels) {
        if (verdict.*rule) names.push_back(ChannelName(verdict.channel));
    }
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i != 0) text += i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    return text;
}

std::string VerdictInWords(const ChannelVerdict& verdict) {
    std::string text;
    const auto add = [&text](bool is, const char* word) {
        if (!is) return;
        if (!text.empty()) text += ", ";
        text += word;
    };
    add(verdict.flat, "flat");
    add(verdict.clipped, "clipped");
    add(verdict.noisy, "noisy");
    return text;
}

std::string FlatRule(const SignalRules& rules) {
    return "noise below " + ShortNumber(rules.flatBelowMicrovolts) + " µV, or one value for " +
           ShortNumber(rules.flatRunSeconds) + " s or longer";
}

std::string ClippedRule(const SignalRules& rules) {
    return "more than " + ShortNumber(rules.clippedAboveShare * kPercent) +
           " % of the samples at an end of the converter's range";
}

std::string NoisyRule(const SignalRules& rules) {
    return "noise above " + ShortNumber(rules.noisyAboveMedians) +
           " times the median of the channels that are not flat";
}

}  // namespace stalwick
