// SPDX-License-Identifier: BSD-3-Clause
#include "cli/report_pages.h"

#include <cstdio>

#include <CLI/CLI.hpp>

#include "cli/argument_brackets.h"
#include "cli/exit_status.h"
#include "cli/print_line.h"
#include "cli/survey_losses.h"
#include "page/page_files.h"
#include "page/recording_page.h"
#include "platform/file_system.h"
#include "platform/text_encoding.h"
#include "survey/page_survey.h"

namespace stalwick {

namespace {

constexpr wchar_t kProgram[] = L"stalwick-inspect: ";

// The pages of one command line: one for each recording, and the list of several.
struct Pages {
    std::vector<std::wstring> recordings;
    std::vector<std::wstring> paths;  // of their pages
    std::wstring list;                // empty if there is only one recording
};

Pages PlanPages(const ReportPageOptions& options) {
    Pages pages;
    for (const std::string& file : options.files) pages.recordings.push_back(FromUtf8(file));
    const std::wstring page = FromUtf8(options.page);
    if (pages.recordings.size() == 1) {
        pages.paths = {page};
    } else {
        pages.paths = NamePages(page, pages.recordings);
        pages.list = page;
    }
    return pages;
}

// Before anything is read: a name that is taken, or a directory that accepts no file.
bool ArePossible(const Pages& pages) {
    std::vector<std::wstring> all = pages.paths;
    if (!pages.list.empty()) all.push_back(pages.list);
    std::wstring refusal;
    for (const std::wstring& path : all) {
        if (refusal.empty()) refusal = RefuseName(kPageOfInspect, path);
    }
    if (refusal.empty()) refusal = RefuseDirectory(kPageOfInspect, all.front());
    if (refusal.empty()) return true;
    PrintLine(stderr, kProgram + refusal);
    return false;
}

bool Write(const std::wstring& path, const std::string& html) {
    const std::wstring failure = WriteDocument(kPageOfInspect, path, html);
    if (failure.empty()) return true;
    PrintLine(stderr, kProgram + failure);
    return false;
}

// The page of the n-th recording; adds its row. Returns its exit status.
int WritePage(const Pages& pages, std::size_t n, std::vector<IndexRow>& rows) {
    const PageSurvey page = SurveyForPage(pages.recordings[n]);
    rows.push_back(IndexRowOf(page, n + 1));
    if (!page.survey.error.empty()) {
        ReportUnreadable(page.survey);
        return kExitFailed;
    }
    ReportLosses(page.survey);
    const std::wstring list = pages.list.empty() ? L"" : FileNameOf(pages.list);
    if (!Write(pages.paths[n], FormatRecordingPage(page, list))) return kExitFailed;
    rows.back().pageName = FileNameOf(pages.paths[n]);
    if (!page.survey.readError.empty()) return kExitFailed;
    return page.survey.damage.empty() ? kExitWhole : kExitLosses;
}

}  // namespace

void DeclareReport(CLI::App& app, ReportPageOptions& options) {
    app.option_defaults()->disable_flag_override();
    app.add_option("FILE", options.files, "recordings to read, in this order")->required();
    app.add_option("-o,--output", options.page,
                   "the page; for several recordings a list with links to their pages, in the same "
                   "directory; replaces only an earlier page of that name")
        ->type_name("PAGE.html")
        ->required()
        ->check([](const std::string& path) {
            return path.empty() ? std::string("it needs the name of a page") : std::string();
        });
    app.footer(
        "Exit status: 0 all whole; 1 a FILE cannot be read or a page cannot be written; 2 wrong\n"
        "usage or PAGE.html; 3 a recording is damaged. Gaps and a recording that ends inside a\n"
        "packet are not damage.");
    UncoverBrackets(app);
}

int ShowReport(const ReportPageOptions& options) {
    const Pages pages = PlanPages(options);
    if (!ArePossible(pages)) return kExitUsage;
    std::vector<IndexRow> rows;
    int status = kExitWhole;
    for (std::size_t n = 0; n < pages.recordings.size(); ++n) {
        const int one = WritePage(pages, n, rows);
        if (one == kExitFailed || status == kExitWhole) status = one;
    }
    if (!pages.list.empty() && !Write(pages.list, FormatIndexPage(rows))) return kExitFailed;
    return status;
}

}  // namespace stalwick
