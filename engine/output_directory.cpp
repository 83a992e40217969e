// SPDX-License-Identifier: BSD-3-Clause
#include "engine/output_directory.h"

#include "platform/file_system.h"
#include "platform/paths.h"

namespace stalwick {

SystemErrorCode EnsureOutputDirectory(const std::wstring& directory, bool* made) {
    if (QueryPath(directory) == PathKind::kDirectory) return 0;
    const SystemErrorCode code = CreateDirectoryLevel(directory);
    if (made != nullptr) *made = code == 0;
    // Another conversion may have created it in the meantime.
    return code != 0 && QueryPath(directory) == PathKind::kDirectory ? 0 : code;
}

std::wstring OutputDirectoryOf(const std::wstring& recording, const std::wstring& outputDirectory) {
    return outputDirectory + kPathSeparator + SplitPath(recording).name;
}

std::wstring OutputDirectoryErrorText(const std::wstring& directory) {
    return L"Error creating output directory(" + directory +
           L").  Unable to proceed.  Please make sure the output directory location exists.";
}

}  // namespace stalwick
