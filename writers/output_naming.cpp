// SPDX-License-Identifier: BSD-3-Clause
#include "writers/output_naming.h"

#include "outputs/file_identity.h"
#include "outputs/output_names.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool IsTaken(const std::wstring& path) {
    return QueryPath(path) == PathKind::kFile;
}

}  // namespace

std::wstring BuildOutputFilePath(const std::wstring& directory, const std::wstring& namePart1,
                                 const std::wstring& namePart2, const std::wstring& extension) {
    std::wstring path = directory + kPathSeparator + namePart1 + namePart2 + extension;
    if (!IsTaken(path)) return path;
    return FromUtf8(MakeUniqueFileName(ToUtf8(path)));
}

std::string MakeUniqueFileName(const std::string& path, const SuffixMaker& suffixMaker) {
    if (path.empty()) return {};
    const std::wstring whole = FromUtf8(path);
    const auto point = whole.rfind(L'.');
    const std::wstring stem = whole.substr(0, point);
    const std::wstring extension = point == std::wstring::npos ? L"" : whole.substr(point);

    std::wstring candidate = whole;
    for (std::int32_t number = 1; IsTaken(candidate); ++number) {
        candidate = stem + (suffixMaker ? suffixMaker(number) : NumberSuffix(number)) + extension;
    }
    return ToUtf8(candidate);
}

std::int32_t CreationResult(SystemErrorCode code, const std::wstring& path) {
    if (code == 0) return 0;
    return WasNameTaken(code, path) ? kNameTaken : -1;
}

std::int32_t CreateUnderFreeName(const std::function<std::wstring()>& choosePath,
                                 const std::function<std::int32_t(const std::wstring&)>& create,
                                 std::wstring& path) {
    for (;;) {
        path = choosePath();
        const std::int32_t result = create(path);
        if (result != kNameTaken) return result;
    }
}

void InitOutputFileRecord(const FileWriterContainer& container, OutputFileRecord& file,
                          const OpenedFile& opened) {
    file.handle = opened.handle;
    file.fileUuid = MakeUuid();
    file.filePath = opened.filePath;
    file.timeCreated = FormatLocalTime();
    file.acqEntName = opened.acqEntName;
    file.samplingFrequency = opened.samplingFrequency;
    file.interpolationFrequency = opened.samplingFrequency;
    file.channelIndex = opened.channelIndex;
    file.timestampOffset = container.timestampOffset;
    file.phaseModulus = container.phaseModulus;
}

}  // namespace stalwick
