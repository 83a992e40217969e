#include "engine/output_directory.h"

#include "platform/file_system.h"

namespace stalwick {

SystemErrorCode EnsureOutputDirectory(const std::wstring& directory) {
    if (QueryPath(directory) == PathKind::kDirectory) return 0;
    const SystemErrorCode code = CreateDirectoryLevel(directory);
    // Another conversion may have made it in between.
    return code != 0 && QueryPath(directory) == PathKind::kDirectory ? 0 : code;
}

std::wstring OutputDirectoryErrorText(const std::wstring& directory) {
    return L"Error creating output directory(" + directory +
           L").  Unable to proceed.  Please make sure the output directory location exists.";
}

}  // namespace stalwick
