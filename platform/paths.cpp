// SPDX-License-Identifier: BSD-3-Clause
#include "platform/paths.h"

namespace stalwick {

namespace {

#ifdef _WIN32
constexpr wchar_t kSeparators[] = L"\\/";
constexpr bool kHasDrives = true;
#else
constexpr wchar_t kSeparators[] = L"/";
constexpr bool kHasDrives = false;
#endif

}  // namespace

std::wstring::size_type LastSeparator(const std::wstring& path) {
    return path.find_last_of(kSeparators);
}

std::wstring ParentDirectory(const std::wstring& path) {
    std::wstring own = path;
    while (own.size() > 1 && LastSeparator(own) == own.size() - 1) own.pop_back();
    PathParts parts = SplitPath(own);
    if (parts.directory.size() > 1) parts.directory.pop_back();
    const std::wstring parent = parts.drive + parts.directory;
    return parent.empty() ? L"." : parent;
}

PathParts SplitPath(const std::wstring& path) {
    constexpr std::wstring::size_type kDriveLength = 2;
    PathParts parts;
    std::wstring rest = path;
    if (kHasDrives && rest.size() >= kDriveLength && rest[1] == L':') {
        parts.drive = rest.substr(0, kDriveLength);
        rest.erase(0, kDriveLength);
    }
    const auto separator = LastSeparator(rest);
    if (separator != std::wstring::npos) {
        parts.directory = rest.substr(0, separator + 1);
        rest.erase(0, separator + 1);
    }
    const auto point = rest.rfind(L'.');
    parts.name = rest.substr(0, point);
    if (point != std::wstring::npos) parts.extension = rest.substr(point);
    return parts;
}

}  // namespace stalwick
