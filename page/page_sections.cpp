// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_sections.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "page/info_words.h"
#include "page/page_numbers.h"
#include "page/page_style.h"
#include "page/page_words.h"
#include "page/readable_figures.h"
#include "page/recording_page.h"
#include "platform/program_version.h"
#include "survey/svg_number.h"

namespace stalwick {

namespace {

constexpr std::size_t kMostRows = 20;  // of a list; the page's document has all
constexpr double kPercent = 100.0;

std::string Fact(const std::string& name, const std::string& value) {
    if (value.empty()) return {};
    return "<dt>" + EscapeXml(name) + "</dt><dd>" + EscapeXml(value) + "</dd>";
}

std::string Cell(const std::string& text) {
    return "<td>" + EscapeXml(text) + "</td>";
}

std::string RowHead(const std::string& text) {
    return "<th scope=\"row\">" + EscapeXml(text) + "</th>";
}

struct Column {
    const char* name;
    bool isWords = false;
};

// A table that is too wide scrolls without the rest of the page, also with the keyboard.
std::string OpenTable(const std::string& caption, const std::vector<Column>& columns) {
    std::string html = "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" +
                       EscapeXml(caption) + "\"><table><caption>" + EscapeXml(caption) +
                       "</caption><thead><tr>";
    for (const Column& column : columns) {
        html += column.isWords ? "<th scope=\"col\" class=\"words\">" : "<th scope=\"col\">";
        html += EscapeXml(column.name) + "</th>";
    }
    return html + "</tr></thead><tbody>";
}

constexpr char kCloseTable[] = "</tbody></table></div>\n";

std::string FirstOf(std::size_t count, const std::wstring& what) {
    const std::string all = Narrow(Counted(count, what));
    if (count <= kMostRows) return all;
    return std::string("The first ").append(std::to_string(kMostRows)) + " of " + all;
}

std::string GapTable(const RecordingSurvey& survey) {
    if (survey.gaps.empty()) return {};
    std::string html =
        OpenTable(FirstOf(survey.gaps.size(), L"gap"), {{"at"}, {"length"}, {"samples missing"}});
    for (std::size_t i = 0; i < std::min(survey.gaps.size(), kMostRows); ++i) {
        const RecordingGap& gap = survey.gaps[i];
        html += "<tr>" + RowHead(FixedNumber(gap.atSeconds, 6) + " s") +
                Cell(FixedNumber(gap.seconds, 6) + " s") +
                Cell(std::to_string(gap.missingSamples)) + "</tr>";
    }
    return html + kCloseTable;
}

std::string DamageTable(const RecordingSurvey& survey) {
    if (survey.damage.empty()) return {};
    std::string html =
        OpenTable(FirstOf(survey.damage.size(), L"damaged place"),
                  {{"from byte"}, {"bytes"}, {"at"}, {"samples lost"}, {"why", true}});
    for (std::size_t i = 0; i < std::min(survey.damage.size(), kMostRows); ++i) {
        const DamagedStretch& damage = survey.damage[i];
        html += "<tr>" + RowHead(std::to_string(damage.position)) +
                Cell(std::to_string(damage.bytes)) +
                Cell(damage.atSeconds ? FixedNumber(*damage.atSeconds, 6) + " s" : "unknown") +
                Cell(damage.missingSamples ? std::to_string(*damage.missingSamples) : "unknown") +
                "<td class=\"words\">" + EscapeXml(Narrow(DamageReason(damage))) + "</td></tr>";
    }
    return html + kCloseTable;
}

// Levels of noise, each a factor of the square root of two wide; the median is in the middle one.
constexpr std::size_t kLevels = 7;

std::array<double, kLevels - 1> LevelBounds(const PageSurvey& page) {
    const double median = page.verdict.medianNoiseMicrovolts.value_or(0.0);
    std::array<double, kLevels - 1> bounds{};
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        bounds[i] = median * std::pow(2.0, (static_cast<double>(i) - 2.5) / 2.0);
    }
    return bounds;
}

std::string LevelClass(std::size_t level) {
    return std::string("m").append(std::to_string(level + 1));
}

std::string MapScale(const std::array<double, kLevels - 1>& bounds) {
    std::string html = "<ul class=\"scale\" aria-label=\"Colours of the map\">";
    for (std::size_t level = 0; level < kLevels; ++level) {
        std::string text;
        if (level == 0) {
            text = "below " + ShortNumber(bounds[0]) + " µV";
        } else if (level + 1 == kLevels) {
            text = "above " + ShortNumber(bounds[level - 1]) + " µV";
        } else {
            text = ShortNumber(bounds[level - 1]) + " to " + ShortNumber(bounds[level]) + " µV";
        }
        html += "<li><i class=\"" + LevelClass(level) + "\"></i>" + EscapeXml(text) + "</li>";
    }
    return html + "</ul>\n";
}

std::string RuleRow(const PageSurvey& page, bool ChannelVerdict::*rule, const std::string& word,
                    const std::string& text) {
    std::size_t count = 0;
    for (const ChannelVerdict& verdict : page.verdict.channels) count += verdict.*rule ? 1 : 0;
    const std::string names = count == 0 ? "none" : NamesBy(page, rule);
    return "<tr>" + RowHead(word) + "<td class=\"words\">" + EscapeXml(text) + "</td>" +
           Cell(std::to_string(count)) + "<td class=\"words\" id=\"named-" + word + "\">" +
           EscapeXml(names) + "</td></tr>";
}

std::string ChannelRow(const ChannelStatistics& channel, const ChannelVerdict& verdict) {
    const std::string name = ChannelName(channel.channel);
    return std::string(verdict.IsNamed() ? "<tr class=\"named\">" : "<tr>") + RowHead(name) +
           Cell(FixedNumber(channel.noiseMicrovolts, 2)) +
           Cell(channel.driftMicrovoltsPerMinute ? FixedNumber(*channel.driftMicrovoltsPerMinute, 2)
                                                 : "unknown") +
           Cell(FixedNumber(channel.minMicrovolts, 1)) +
           Cell(FixedNumber(channel.maxMicrovolts, 1)) +
           Cell(FixedNumber(channel.meanMicrovolts, 2)) +
           Cell(FixedNumber(ClippedShare(channel) * kPercent, 3)) +
           Cell(std::to_string(channel.longestFlatRun)) + "<td class=\"words\">" +
           VerdictInWords(verdict) + "</td></tr>\n";
}

}  // namespace

std::string PageHead(const std::string& title) {
    // The policy blocks everything from elsewhere, whatever the texts of a recording contain.
    return std::string(kPageBeginning) +
           "\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
           "'unsafe-inline'\">\n<meta name=\"viewport\" content=\"width=device-width, "
           "initial-scale=1\">\n<meta name=\"generator\" content=\"stalwick " +
           std::string(kVersion) + "\">\n<title>" + EscapeXml(title) + "</title>\n<style>" +
           std::string(kPageStyle) + "</style>\n</head>\n<body>\n";
}

std::string PageFoot() {
    return "<footer><p>Made by stalwick " + std::string(kVersion) +
           ". For research use only; not for diagnostic or clinical use.</p></footer>\n"
           "</body>\n</html>\n";
}

std::string FindingsSection(const PageSurvey& page) {
    std::string html = "<ul class=\"findings\" id=\"findings\">";
    for (const PageFinding& finding : FindingsOf(page)) {
        html += "<li class=\"" + finding.mood + "\">" + EscapeXml(finding.text) + "</li>";
    }
    return html + "</ul>\n";
}

std::string FactsSection(const PageSurvey& page) {
    const RecordingSurvey& survey = page.survey;
    const RecordingHeader& header = survey.header;
    std::string channels = std::to_string(header.numADChannels);
    if (survey.channelsMasked != 0) {
        channels += ", " + std::to_string(survey.channelsMasked) + " of them not recorded";
    }
    std::string rate = std::to_string(header.samplingFrequency) + " samples a second";
    if (survey.measuredRate && survey.driftPpm) {
        rate += "; by the timestamps " + FixedNumber(*survey.measuredRate, 3) + " (" +
                FixedNumber(*survey.driftPpm, 2) + " ppm)";
    }
    return "<dl class=\"facts\">" +
           Fact("Length", Narrow(ReadableDuration(survey.durationSeconds))) +
           Fact("Channels", channels) + Fact("Rate", rate) +
           Fact("Size", survey.fileSize == 0 ? std::string("unknown, read from a pipe")
                                             : Narrow(ReadableBytes(survey.fileSize))) +
           Fact("Packets", std::to_string(survey.packets)) +
           Fact("Version", Narrow(header.fileVersion)) +
           Fact("Session", Narrow(header.sessionUuid)) +
           Fact("System", Narrow(header.acquisitionSystem)) + Fact("File", Narrow(survey.path)) +
           "</dl>\n";
}

std::string LossTables(const PageSurvey& page) {
    return GapTable(page.survey) + DamageTable(page.survey);
}

std::string ChannelMap(const PageSurvey& page) {
    const std::array<double, kLevels - 1> bounds = LevelBounds(page);
    std::string html = "<ol class=\"map\" id=\"channel-map\">";
    for (std::size_t i = 0; i < page.verdict.channels.size(); ++i) {
        const ChannelStatistics& channel = page.survey.channelStatistics[i];
        const ChannelVerdict& verdict = page.verdict.channels[i];
        const auto level = static_cast<std::size_t>(
            std::upper_bound(bounds.begin(), bounds.end(), channel.noiseMicrovolts) -
            bounds.begin());
        const std::string number = std::to_string(std::uint64_t{channel.channel} + 1);
        std::string text = ShortNumber(channel.noiseMicrovolts) + " µV";
        if (verdict.IsNamed()) text += ", " + VerdictInWords(verdict);
        html += "<li class=\"" + LevelClass(level) + (verdict.IsNamed() ? " named" : "") +
                "\" title=\"" + EscapeXml("CSC" + number + ": " + text) +
                "\"><span class=\"hidden\">CSC</span>" + number +
                "<span class=\"hidden\">: " + EscapeXml(text) + "</span></li>";
    }
    html += "</ol>\n";
    return page.verdict.medianNoiseMicrovolts ? html + MapScale(bounds) : html;
}

std::string RulesTable(const PageSurvey& page) {
    return OpenTable("Channels that are named, and by which rule",
                     {{"named"}, {"rule", true}, {"channels"}, {"which", true}}) +
           RuleRow(page, &ChannelVerdict::flat, "flat", FlatRule(page.rules)) +
           RuleRow(page, &ChannelVerdict::clipped, "clipped", ClippedRule(page.rules)) +
           RuleRow(page, &ChannelVerdict::noisy, "noisy", NoisyRule(page.rules)) + kCloseTable;
}

std::string ChannelTable(const PageSurvey& page) {
    std::string html = OpenTable(
        "Every channel: noise is the RMS about the mean, drift the slope of the means of whole "
        "seconds",
        {{"channel"},
         {"noise, µV"},
         {"drift, µV/min"},
         {"min, µV"},
         {"max, µV"},
         {"mean, µV"},
         {"at the range's ends, %"},
         {"longest flat run, samples"},
         {"named", true}});
    for (std::size_t i = 0; i < page.verdict.channels.size(); ++i) {
        html += ChannelRow(page.survey.channelStatistics[i], page.verdict.channels[i]);
    }
    return html + kCloseTable;
}

}  // namespace stalwick
