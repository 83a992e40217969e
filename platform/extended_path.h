#pragma once

#include <string>

namespace stalwick {

// Windows takes paths of 260 characters and more only behind the prefix `\\?\`, and then takes
// them literally. `fullPath` is absolute, with `\` as its only separator and nothing to resolve
// (GetFullPathNameW gives such paths). A short path, a device and a path that has the prefix
// already come back as they are:
//
//   C:\rec\...            \\?\C:\rec\...
//   \\server\share\...    \\?\UNC\server\share\...
[[nodiscard]] std::wstring ExtendedLengthPath(const std::wstring& fullPath);

// True for a path that may be too long once it was made absolute from a working directory of up
// to `workingDirectoryLength` characters.
[[nodiscard]] bool MayNeedExtendedLength(const std::wstring& path,
                                         std::size_t workingDirectoryLength);

}  // namespace stalwick
