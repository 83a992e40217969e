#pragma once

#include <string>
#include <string_view>

namespace stalwick {

// What every report begins with. An existing file is taken for a report, and replaced, only if it
// begins so.
inline constexpr std::string_view kReportBeginning = "{\n  \"report_of\": \"stalwick-convert\"";

// All of these return nothing, or one line that says why not.

// Whether the name is free or a report has it.
[[nodiscard]] std::wstring RefuseReportName(const std::wstring& path);
// Whether a file can be made in the report's directory.
[[nodiscard]] std::wstring RefuseReportDirectory(const std::wstring& path);
// Puts the whole report there, or leaves what was there.
[[nodiscard]] std::wstring WriteReport(const std::wstring& path, const std::string& text);

}  // namespace stalwick
