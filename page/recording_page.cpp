// SPDX-License-Identifier: BSD-3-Clause
#include "page/recording_page.h"

#include "page/info_words.h"
#include "page/page_charts.h"
#include "page/page_json.h"
#include "page/page_sections.h"
#include "page/page_words.h"
#include "page/readable_figures.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "survey/svg_number.h"

namespace stalwick {

namespace {

// Within a script only `<` could end it; JSON may escape it.
std::string ForScript(const std::string& json) {
    std::string text;
    text.reserve(json.size());
    for (const char c : json) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

// A file name as the target of a link: everything except letters, digits and a few signs is
// percent-encoded, so that no name becomes a scheme, a query or another directory.
std::string LinkTo(const std::wstring& name) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string link;
    for (const char c : ToUtf8(name)) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' ||
                             byte == '.';
        if (isPlain) {
            link += c;
        } else {
            link += '%';
            link += kDigits[byte >> 4U];
            link += kDigits[byte & 15U];
        }
    }
    return link;
}

std::string NameOf(const std::wstring& path) {
    const PathParts parts = SplitPath(path);
    return Narrow(parts.name + parts.extension);
}

std::string Section(const std::string& id, const std::string& title, const std::string& html) {
    if (html.empty()) return {};
    return "<section aria-labelledby=\"" + id + "\"><h2 id=\"" + id + "\">" + title + "</h2>\n" +
           html + "</section>\n";
}

std::string UnknownNotes(const PageSurvey& page) {
    std::string html;
    for (const std::wstring& what : WhatCannotBeKnown(page.survey)) {
        html += "<p class=\"soft\">Note: " + EscapeXml(Narrow(what)) + ".</p>\n";
    }
    return html;
}

std::string SignalSections(const PageSurvey& page) {
    if (page.verdict.channels.empty()) return {};
    return Section("map", "Channels by noise",
                   "<p class=\"soft\">The number of each channel, coloured by its noise. Named "
                   "channels have a frame.</p>\n" +
                       ChannelMap(page) + RulesTable(page)) +
           Section("spectra-title", "Spectra", SpectraChart(page)) +
           Section("traces", "Traces", TraceCharts(page));
}

std::string RowOf(const IndexRow& row) {
    const std::string name = EscapeXml(NameOf(row.path));
    const std::string begin = "<tr><th scope=\"row\">";
    if (row.pageName.empty()) {
        return begin + name + "</th><td class=\"words\">not read: " + EscapeXml(Narrow(row.error)) +
               "</td></tr>\n";
    }
    std::string html = begin + "<a href=\"" + LinkTo(row.pageName) + "\">" + name +
                       "</a><p class=\"soft\">" + EscapeXml(row.size) + "</p>" + row.thumbnail +
                       "</th><td class=\"words\">";
    for (const std::string& finding : row.findings) html += "<p>" + EscapeXml(finding) + "</p>";
    return html + "</td></tr>\n";
}

}  // namespace

std::string FormatRecordingPage(const PageSurvey& page, const std::wstring& indexName) {
    const std::string name = NameOf(page.survey.path);
    std::string html = PageHead(name) + "<header>";
    if (!indexName.empty()) {
        html += "<nav aria-label=\"Recordings\"><p><a href=\"" + LinkTo(indexName) +
                "\">All recordings</a></p></nav>";
    }
    html += "<h1>" + EscapeXml(name) + "</h1>\n" + FindingsSection(page) + "</header>\n<main>\n";
    html += Section("recording", "The recording", FactsSection(page));
    html += Section("whole", "How whole it is",
                    TimeLineChart(page) + LossTables(page) + UnknownNotes(page));
    html += SignalSections(page);
    html += Section("events-title", "Events", EventsChart(page));
    html += Section("sensors", "Sensors", SensorCharts(page));
    if (!page.verdict.channels.empty()) {
        html += Section("numbers", "Numbers", ChannelTable(page));
    }
    html += "</main>\n<script type=\"application/json\" id=\"data\">" +
            ForScript(PageAsJson(page)) + "</script>\n";
    return html + PageFoot();
}

IndexRow IndexRowOf(const PageSurvey& page, std::size_t number) {
    IndexRow row;
    row.path = page.survey.path;
    row.error = page.survey.error;
    if (!row.error.empty()) return row;
    row.size = Narrow(ReadableDuration(page.survey.durationSeconds) + L", " +
                      Counted(page.survey.header.numADChannels, L"channel"));
    for (const PageFinding& finding : FindingsOf(page)) row.findings.push_back(finding.text);
    row.thumbnail = Thumbnail(page, "thumbnail-" + std::to_string(number));
    return row;
}

std::string FormatIndexPage(const std::vector<IndexRow>& rows) {
    std::string html =
        PageHead("Recordings") + "<header><h1>" + Narrow(Counted(rows.size(), L"recording")) +
        "</h1></header>\n<main>\n<div class=\"scroll\" role=\"region\" "
        "tabindex=\"0\" aria-label=\"Recordings\"><table class=\"index\"><caption>"
        "Each name leads to its page</caption><thead><tr><th scope=\"col\">recording</th>"
        "<th scope=\"col\" class=\"words\">what to know</th></tr></thead><tbody>\n";
    for (const IndexRow& row : rows) html += RowOf(row);
    return html + "</tbody></table></div>\n</main>\n" + PageFoot();
}

}  // namespace stalwick
