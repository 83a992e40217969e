// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "page/own_document.h"
#include "page/recording_page.h"

namespace stalwick {

inline constexpr OwnDocument kPageOfInspect = {
    kPageBeginning, L"page", L"choose another name for --output", L"choose another place for it"};

// The pages of several recordings, in the directory of their list: its name, the recording's, and a
// number if that is taken. `listPath` as given.
[[nodiscard]] std::vector<std::wstring> NamePages(const std::wstring& listPath,
                                                  const std::vector<std::wstring>& recordings);

// A path without its directory.
[[nodiscard]] std::wstring FileNameOf(const std::wstring& path);

}  // namespace stalwick
