// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "survey/page_survey.h"

namespace stalwick {

// The beginning of every page, by which a page is recognized.
inline constexpr std::string_view kPageBeginning =
    "<!DOCTYPE html>\n<html lang=\"en\" data-page-of=\"stalwick\">";

// A recording's page: HTML that needs no other file, no network and no script. `indexName`: the
// file in the same directory that lists several recordings; empty if there is none.
[[nodiscard]] std::string FormatRecordingPage(const PageSurvey& page,
                                              const std::wstring& indexName);

// A recording's row in the list of several recordings.
struct IndexRow {
    std::wstring path;
    std::wstring pageName;  // of the file next to the list; empty if there is none
    std::wstring error;     // why there is none
    std::string size;       // its length and channels
    std::vector<std::string> findings;
    std::string thumbnail;  // an <svg>
};
[[nodiscard]] IndexRow IndexRowOf(const PageSurvey& page, std::size_t number);
[[nodiscard]] std::string FormatIndexPage(const std::vector<IndexRow>& rows);

}  // namespace stalwick
