// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <string_view>

namespace stalwick {

// The beginning of every report. An existing file counts as a report, and is replaced, only if it
// begins like this.
inline constexpr std::string_view kReportBeginning = "{\n  \"report_of\": \"stalwick-convert\"";

// All of these return nothing, or one line with the reason why not.

// Whether the name is free or belongs to a report.
[[nodiscard]] std::wstring RefuseReportName(const std::wstring& path);
// Whether a file can be created in the report's directory.
[[nodiscard]] std::wstring RefuseReportDirectory(const std::wstring& path);
// Writes the whole report there, or leaves the existing file.
[[nodiscard]] std::wstring WriteReport(const std::wstring& path, const std::string& text);

}  // namespace stalwick
