#pragma once

#include <optional>
#include <string>

namespace stalwick {

enum class PictureKind { kSvg, kPng };

// By the extension, in any letter case; none for another one.
[[nodiscard]] std::optional<PictureKind> PictureKindOf(const std::wstring& path);

// Why a picture of that name cannot be made, as one line: a file has the name that is no picture of
// this program, or the directory cannot be written. Empty: it can.
[[nodiscard]] std::wstring RefusePictureName(const std::wstring& path);

// Puts an <svg> element there as a picture of its kind; a picture that was there is replaced.
// Returns why not, or nothing: then all of it is there.
[[nodiscard]] std::wstring WritePicture(const std::wstring& path, const std::string& svg);

}  // namespace stalwick
