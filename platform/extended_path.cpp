// SPDX-License-Identifier: BSD-3-Clause
#include "platform/extended_path.h"

#include <cstddef>

namespace stalwick {

namespace {

// A directory's limit: 260 with the terminating zero, minus the 12 characters of a short file name.
constexpr std::size_t kLongestPlainPath = 247;

bool StartsWith(const std::wstring& text, const wchar_t* prefix) {
    return text.rfind(prefix, 0) == 0;
}

bool HasDrive(const std::wstring& path) {
    return path.size() > 2 && path[1] == L':' && path[2] == L'\\';
}

}  // namespace

std::wstring ExtendedLengthPath(const std::wstring& fullPath) {
    if (fullPath.size() <= kLongestPlainPath) return fullPath;
    if (StartsWith(fullPath, L"\\\\?\\") || StartsWith(fullPath, L"\\\\.\\")) return fullPath;
    if (StartsWith(fullPath, L"\\\\")) return L"\\\\?\\UNC" + fullPath.substr(1);
    if (HasDrive(fullPath)) return L"\\\\?\\" + fullPath;
    return fullPath;
}

bool MayNeedExtendedLength(const std::wstring& path, std::size_t workingDirectoryLength) {
    return path.size() + workingDirectoryLength + 1 > kLongestPlainPath;
}

}  // namespace stalwick
