// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "writers/file_writer_container.h"
#include "writers/output_file_record.h"

namespace stalwick {

// The path of a new output file: directory, separator, both name parts and the extension. If a file
// already has that name, the first free variant of it. A directory of that name does not count as
// taken.
[[nodiscard]] std::wstring BuildOutputFilePath(const std::wstring& directory,
                                               const std::wstring& namePart1,
                                               const std::wstring& namePart2,
                                               const std::wstring& extension);

using SuffixMaker = std::function<std::wstring(std::int32_t)>;

// `path` (UTF-8) itself or, while a file has that name, with _01, _02 ... _99, _100 ... before the
// last "." of the whole path. `suffixMaker` returns another text to replace "_" and the number.
[[nodiscard]] std::string MakeUniqueFileName(const std::string& path,
                                             const SuffixMaker& suffixMaker = nullptr);

// The result of a creation that failed because another file has taken the name since it was chosen.
inline constexpr std::int32_t kNameTaken = VtxDataTypes::kFileExists;

// 0, kNameTaken, or -1 for any other failure of creating a file at `path`.
[[nodiscard]] std::int32_t CreationResult(SystemErrorCode code, const std::wstring& path);

// Chooses a free path and has `create` make the file there; chooses again while `create` returns
// kNameTaken. `create` returns 0 on success; its last result is returned.
[[nodiscard]] std::int32_t CreateUnderFreeName(
    const std::function<std::wstring()>& choosePath,
    const std::function<std::int32_t(const std::wstring&)>& create, std::wstring& path);

// What a writer knows about a file that it has just opened.
struct OpenedFile {
    std::int32_t handle = 0;
    std::wstring filePath;
    std::wstring acqEntName;
    std::uint32_t channelIndex = 0;
    double samplingFrequency = 0.0;  // samples per second
};

// Fills in the identity of a file's record: a fresh random UUID, the time, and the container's
// values.
void InitOutputFileRecord(const FileWriterContainer& container, OutputFileRecord& file,
                          const OpenedFile& opened);

}  // namespace stalwick
