#pragma once

#include <string>

namespace stalwick {

#ifdef _WIN32
inline constexpr wchar_t kPathSeparator = L'\\';
#else
inline constexpr wchar_t kPathSeparator = L'/';
#endif

// A path in its four parts; joined in this order they are the path again.
struct PathParts {
    std::wstring drive;      // "C:" on Windows, empty elsewhere
    std::wstring directory;  // up to and with the last separator
    std::wstring name;       // without the extension
    std::wstring extension;  // from the name's last ".", even where that is its first character
};

// Parts are told apart by `\` and `/` on Windows, by `/` elsewhere. Nothing is normalised.
[[nodiscard]] PathParts SplitPath(const std::wstring& path);

// The directory that a path stands in, without a separator at its end unless it is the root; "."
// if the path names none. Separators at the path's own end do not count.
[[nodiscard]] std::wstring ParentDirectory(const std::wstring& path);

// Position of the last separator, or npos.
std::wstring::size_type LastSeparator(const std::wstring& path);

}  // namespace stalwick
