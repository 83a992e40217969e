// SPDX-License-Identifier: BSD-3-Clause
#include "platform/replace_file.h"

#include "platform/file_system.h"
#include "platform/output_file.h"
#include "platform/paths.h"
#include "platform/random_seed.h"
#include "platform/system_error.h"

namespace stalwick {

namespace {

// In the same directory, because a rename stays within one file system.
SystemErrorCode CreateTemporary(const std::wstring& path, OutputFile& file, std::wstring& name) {
    constexpr int kAttempts = 100;
    SystemErrorCode error = 0;
    for (int i = 0; i < kAttempts; ++i) {
        name = path + L'.' + std::to_wstring(RandomSeed()) + L".part";
        error = file.CreateExclusive(name);
        if (ClassifySystemError(error) != SystemErrorKind::kAlreadyExists) break;
    }
    return error;
}

SystemErrorCode WriteAll(OutputFile& file, std::string_view contents) {
    SystemErrorCode error = file.WriteAt(0, contents.data(), contents.size());
    if (error == 0) error = file.SyncData();
    const SystemErrorCode closing = file.Close();
    return error != 0 ? error : closing;
}

}  // namespace

SystemErrorCode ReplaceFile(const std::wstring& path, std::string_view contents) {
    OutputFile file;
    std::wstring temporary;
    SystemErrorCode error = CreateTemporary(path, file, temporary);
    if (error != 0) return error;
    error = WriteAll(file, contents);
    if (error == 0) error = RenameOver(temporary, path);
    if (error != 0) {
        RemoveFile(temporary);
        return error;
    }
    return SyncDirectory(ParentDirectory(path));
}

SystemErrorCode TryReplaceFile(const std::wstring& path) {
    OutputFile file;
    std::wstring temporary;
    const SystemErrorCode error = CreateTemporary(path, file, temporary);
    if (error != 0) return error;
    file.Close();
    RemoveFile(temporary);
    return 0;
}

}  // namespace stalwick
