#include "cli/report_file.h"

#include "platform/file_system.h"
#include "platform/input_file.h"
#include "platform/replace_file.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool IsReport(const std::wstring& path) {
    InputFile file;
    // Reading a pipe would wait for its writer.
    if (!IsOrdinaryFile(path) || file.Open(path) != 0) return false;
    std::string beginning(kReportBeginning.size(), '\0');
    std::size_t count = 0;
    return file.Read(beginning.data(), beginning.size(), count) == 0 &&
           beginning == kReportBeginning;
}

// A link to a report stays; what it leads to is replaced.
std::wstring TargetOf(const std::wstring& path) {
    return ResolvedPath(AbsolutePath(path));
}

std::wstring CannotWrite(const std::wstring& path, SystemErrorCode error) {
    return L"cannot write the report " + OneLine(path) + L": " + SystemErrorText(error);
}

}  // namespace

std::wstring RefuseReportName(const std::wstring& path) {
    if (QueryPath(path) == PathKind::kMissing || IsReport(path)) return {};
    return OneLine(path) +
           L" exists and is no report of this program, so it stays as it is; choose another name "
           L"for --report";
}

std::wstring RefuseReportDirectory(const std::wstring& path) {
    const SystemErrorCode error = TryReplaceFile(TargetOf(path));
    if (error == 0) return {};
    return CannotWrite(path, error) +
           L"; choose a name in a directory that exists and can be written";
}

std::wstring WriteReport(const std::wstring& path, const std::string& text) {
    // Another program may have taken the name since the run began.
    if (const std::wstring refusal = RefuseReportName(path); !refusal.empty()) return refusal;
    const SystemErrorCode error = ReplaceFile(TargetOf(path), text);
    if (error == 0) return {};
    return CannotWrite(path, error) +
           L"; the outputs are not concerned; for a report run again with --skip-converted";
}

}  // namespace stalwick
