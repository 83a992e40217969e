// SPDX-License-Identifier: BSD-3-Clause
#include "cli/picture_file.h"

#include <algorithm>

#include "platform/file_system.h"
#include "platform/input_file.h"
#include "platform/replace_file.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "survey/png_picture.h"
#include "survey/png_software.h"

namespace stalwick {

namespace {

// The beginning of every picture, after the size in a PNG file. An existing file counts as a
// picture of this program, and is replaced, only if it has that.
constexpr char kSoftware[] = "stalwick-inspect plot";
constexpr char kSvgBeginning[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- stalwick-inspect plot -->\n";
constexpr char kPngSignature[] = "\x89PNG\r\n\x1A\n";

bool IsPictureOfOurs(const std::wstring& path) {
    InputFile file;
    // Reading a pipe would wait for its writer.
    if (!IsOrdinaryFile(path) || file.Open(path) != 0) return false;
    const std::string chunk = PngSoftwareChunk(kSoftware);
    std::string beginning(std::max(kPngHeadSize + chunk.size(), sizeof kSvgBeginning), '\0');
    std::size_t count = 0;
    if (file.Read(beginning.data(), beginning.size(), count) != 0) return false;
    beginning.resize(count);
    if (beginning.starts_with(kSvgBeginning)) return true;
    return beginning.starts_with(kPngSignature) &&
           beginning.compare(std::min(kPngHeadSize, count), chunk.size(), chunk) == 0;
}

// A link to a picture stays; its target is replaced.
std::wstring TargetOf(const std::wstring& path) {
    return ResolvedPath(AbsolutePath(path));
}

std::wstring RefuseTaken(const std::wstring& path) {
    if (QueryPath(path) == PathKind::kMissing || IsPictureOfOurs(path)) return {};
    return OneLine(path) +
           L" exists and is not a picture of this program, so it was not replaced; choose another "
           L"name "
           L"for -o";
}

std::wstring CannotWrite(const std::wstring& path, SystemErrorCode error) {
    return L"cannot write the picture " + OneLine(path) + L": " + SystemErrorText(error) +
           L"; choose a name in a directory that exists and can be written";
}

}  // namespace

std::optional<PictureKind> PictureKindOf(const std::wstring& path) {
    constexpr std::size_t kLength = 4;
    if (path.size() < kLength) return std::nullopt;
    std::wstring extension = path.substr(path.size() - kLength);
    for (wchar_t& c : extension) {
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    if (extension == L".svg") return PictureKind::kSvg;
    if (extension == L".png") return PictureKind::kPng;
    return std::nullopt;
}

std::wstring RefusePictureName(const std::wstring& path) {
    const auto kind = PictureKindOf(path);
    if (!kind) return OneLine(path) + L" must end in .svg or .png: choose another name for -o";
    if (kind == PictureKind::kPng && !CanRenderPng()) {
        return OneLine(path) +
               L": this program was built without PNG; choose a name that ends in .svg";
    }
    if (std::wstring refusal = RefuseTaken(path); !refusal.empty()) return refusal;
    const SystemErrorCode error = TryReplaceFile(TargetOf(path));
    return error == 0 ? std::wstring() : CannotWrite(path, error);
}

std::wstring WritePicture(const std::wstring& path, const std::string& svg) {
    std::string bytes = kSvgBeginning + svg;
    if (PictureKindOf(path) == PictureKind::kPng) {
        PngPicture picture = RenderPng(svg, kSoftware);
        if (!picture.error.empty()) {
            return OneLine(path) + L": " + picture.error + L"; choose a name that ends in .svg";
        }
        bytes = std::move(picture.bytes);
    }
    // Another program may have taken the name in the meantime.
    if (std::wstring refusal = RefuseTaken(path); !refusal.empty()) return refusal;
    const SystemErrorCode error = ReplaceFile(TargetOf(path), bytes);
    return error == 0 ? std::wstring() : CannotWrite(path, error);
}

}  // namespace stalwick
