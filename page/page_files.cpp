// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_files.h"

#include <set>

#include "platform/paths.h"

namespace stalwick {

namespace {

// Some file systems treat names that differ only in case as the same.
std::wstring WithoutCase(std::wstring text) {
    for (wchar_t& c : text) {
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    return text;
}

}  // namespace

std::vector<std::wstring> NamePages(const std::wstring& listPath,
                                    const std::vector<std::wstring>& recordings) {
    const PathParts list = SplitPath(listPath);
    std::set<std::wstring> taken = {WithoutCase(listPath)};
    std::vector<std::wstring> pages;
    for (const std::wstring& recording : recordings) {
        const std::wstring beginning =
            list.drive + list.directory + list.name + L"-" + SplitPath(recording).name;
        std::wstring page = beginning + L".html";
        for (int number = 2; !taken.insert(WithoutCase(page)).second; ++number) {
            page = beginning + L"-" + std::to_wstring(number) + L".html";
        }
        pages.push_back(page);
    }
    return pages;
}

std::wstring FileNameOf(const std::wstring& path) {
    const PathParts parts = SplitPath(path);
    return parts.name + parts.extension;
}

}  // namespace stalwick
