// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace stalwick {

// Windows accepts paths of 260 characters and more only with the prefix `\\?\`, and then literally.
// `fullPath` is absolute, with `\` as its only separator and nothing to resolve (as
// GetFullPathNameW returns it). A short path, a device and a path that already has the prefix are
// returned unchanged:
//
//   C:\rec\...            \\?\C:\rec\...
//   \\server\share\...    \\?\UNC\server\share\...
[[nodiscard]] std::wstring ExtendedLengthPath(const std::wstring& fullPath);

// True for a path that may be too long once it is made absolute from a working directory of up to
// `workingDirectoryLength` characters.
[[nodiscard]] bool MayNeedExtendedLength(const std::wstring& path,
                                         std::size_t workingDirectoryLength);

}  // namespace stalwick
