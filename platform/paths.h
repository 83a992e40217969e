// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace stalwick {

#ifdef _WIN32
inline constexpr wchar_t kPathSeparator = L'\\';
#else
inline constexpr wchar_t kPathSeparator = L'/';
#endif

// The four parts of a path; joined in this order they form the path again.
struct PathParts {
    std::wstring drive;      // "C:" on Windows, empty elsewhere
    std::wstring directory;  // up to and including the last separator
    std::wstring name;       // without the extension
    std::wstring extension;  // from the name's last ".", even if that is its first character
};

// The separators are `\` and `/` on Windows, `/` elsewhere. Nothing is normalised.
[[nodiscard]] PathParts SplitPath(const std::wstring& path);

// The parent directory of a path, without a separator at its end unless it is the root; "." if the
// path names none. Separators at the path's own end do not count.
[[nodiscard]] std::wstring ParentDirectory(const std::wstring& path);

// Position of the last separator, or npos.
std::wstring::size_type LastSeparator(const std::wstring& path);

}  // namespace stalwick
