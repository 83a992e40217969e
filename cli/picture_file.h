// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <optional>
#include <string>

namespace stalwick {

enum class PictureKind { kSvg, kPng };

// From the extension, in any letter case; none for any other extension.
[[nodiscard]] std::optional<PictureKind> PictureKindOf(const std::wstring& path);

// Why a picture of that name cannot be made, as one line: the name belongs to a file that is not a
// picture of this program, or the directory cannot be written. Empty if it can.
[[nodiscard]] std::wstring RefusePictureName(const std::wstring& path);

// Writes an <svg> element as a picture of its kind, replacing an existing picture. Returns nothing,
// or why not; the picture is then complete.
[[nodiscard]] std::wstring WritePicture(const std::wstring& path, const std::string& svg);

}  // namespace stalwick
