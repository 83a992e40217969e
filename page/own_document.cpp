// SPDX-License-Identifier: BSD-3-Clause
#include "page/own_document.h"

#include "platform/file_system.h"
#include "platform/input_file.h"
#include "platform/replace_file.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool IsOwn(const OwnDocument& document, const std::wstring& path) {
    InputFile file;
    // Reading a pipe would wait for its writer.
    if (!IsOrdinaryFile(path) || file.Open(path) != 0) return false;
    std::string beginning(document.beginning.size(), '\0');
    std::size_t count = 0;
    return file.Read(beginning.data(), beginning.size(), count) == 0 &&
           beginning == document.beginning;
}

// A link to a document stays; its target is replaced.
std::wstring TargetOf(const std::wstring& path) {
    return ResolvedPath(AbsolutePath(path));
}

std::wstring CannotWrite(const OwnDocument& document, const std::wstring& path,
                         SystemErrorCode error) {
    return L"cannot write the " + std::wstring(document.name) + L" " + OneLine(path) + L": " +
           SystemErrorText(error);
}

}  // namespace

std::wstring RefuseName(const OwnDocument& document, const std::wstring& path) {
    if (QueryPath(path) == PathKind::kMissing || IsOwn(document, path)) return {};
    return OneLine(path) + L" exists and is not a " + std::wstring(document.name) +
           L" of this program, so it was not replaced; " + std::wstring(document.whenTaken);
}

std::wstring RefuseDirectory(const OwnDocument& document, const std::wstring& path) {
    const SystemErrorCode error = TryReplaceFile(TargetOf(path));
    if (error == 0) return {};
    return CannotWrite(document, path, error) +
           L"; choose a name in a directory that exists and can be written";
}

std::wstring WriteDocument(const OwnDocument& document, const std::wstring& path,
                           const std::string& text) {
    // Another program may have taken the name since the run began.
    if (const std::wstring refusal = RefuseName(document, path); !refusal.empty()) return refusal;
    const SystemErrorCode error = ReplaceFile(TargetOf(path), text);
    if (error == 0) return {};
    return CannotWrite(document, path, error) + L"; " + std::wstring(document.afterwards);
}

}  // namespace stalwick
