#include "engine/output_directory.h"

#include "platform/file_system.h"
#include "platform/paths.h"

namespace stalwick {

SystemErrorCode EnsureOutputDirectory(const std::wstring& directory, bool* made) {
    if (QueryPath(directory) == PathKind::kDirectory) return 0;
    const SystemErrorCode code = CreateDirectoryLevel(directory);
    if (made != nullptr) *made = code == 0;
    // Another conversion may have made it in between.
    return code != 0 && QueryPath(directory) == PathKind::kDirectory ? 0 : code;
}

std::wstring ParentDirectory(const std::wstring& path) {
    std::wstring own = path;
    while (own.size() > 1 && LastSeparator(own) == own.size() - 1) own.pop_back();
    const PathParts parts = SplitPath(own);
    const std::wstring parent = parts.drive + parts.directory;
    return parent.empty() ? L"." : parent;
}

std::wstring OutputDirectoryErrorText(const std::wstring& directory) {
    return L"Error creating output directory(" + directory +
           L").  Unable to proceed.  Please make sure the output directory location exists.";
}

}  // namespace stalwick
