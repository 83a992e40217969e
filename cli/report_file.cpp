// SPDX-License-Identifier: BSD-3-Clause
#include "cli/report_file.h"

#include "page/own_document.h"

namespace stalwick {

namespace {

constexpr OwnDocument kReport = {
    kReportBeginning, L"report", L"choose another name for --report",
    L"the outputs are not affected; for a report run again with --skip-converted"};

}  // namespace

std::wstring RefuseReportName(const std::wstring& path) {
    return RefuseName(kReport, path);
}

std::wstring RefuseReportDirectory(const std::wstring& path) {
    return RefuseDirectory(kReport, path);
}

std::wstring WriteReport(const std::wstring& path, const std::string& text) {
    return WriteDocument(kReport, path, text);
}

}  // namespace stalwick
