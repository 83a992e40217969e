#include "survey/verify_outputs.h"

#include <memory>

#include "platform/file_system.h"
#include "platform/system_error.h"
#include "survey/header_check.h"
#include "survey/output_comparison.h"
#include "survey/output_set.h"
#include "survey/set_check.h"

namespace stalwick {

namespace {

constexpr std::uint32_t kMostChannels = 256;

// Why there are no outputs of a recording to compare with; empty: there are.
std::wstring OpenRecording(const std::wstring& path, ORDFileReader& reader) {
    if (reader.Open(path) != 0) {
        return reader.SystemError() != 0 ? SystemErrorText(reader.SystemError())
                                         : reader.GetErrorMessage();
    }
    const RecordingHeader& header = reader.Header();
    if (header.samplingFrequency != 0 && header.numADChannels <= kMostChannels) return {};
    return L"its header is damaged, no outputs are made of it";
}

void CompareSet(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
                ORDFileReader& recording, VerifiedSet& set) {
    const RecordingHeader& header = recording.Header();
    CheckMembers(outputs, &header, request.mostFindingsPerFile, set);
    CheckHeaders(outputs, &header, request.mostFindingsPerFile, set);
    CompareRecords(recording, outputs, request.mostFindingsPerFile, set);
    for (OutputFinding& finding : set.findings) {
        if (finding.path.empty()) finding.path = request.recordingPath;
    }
}

void CheckSet(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
              VerifiedSet& set) {
    CheckMembers(outputs, nullptr, request.mostFindingsPerFile, set);
    CheckHeaders(outputs, nullptr, request.mostFindingsPerFile, set);
    CheckRecords(outputs, request.mostFindingsPerFile, set);
}

}  // namespace

VerifyReport VerifyOutputs(const VerifyRequest& request, const std::vector<std::wstring>& names) {
    VerifyReport report;
    report.directory = request.directory;
    for (const auto& outputs : FindOutputSets(request.directory, names)) {
        VerifiedSet& set = report.sets.emplace_back();
        for (const OutputInSet& output : outputs) {
            set.names.push_back(output.fileName);
            set.bytes += output.size;
        }
        if (request.recordingPath.empty()) {
            CheckSet(outputs, request, set);
            continue;
        }
        // Some 50 KB: kept off the stack.
        const auto recording = std::make_unique<ORDFileReader>();
        report.recordingError = OpenRecording(request.recordingPath, *recording);
        if (!report.recordingError.empty()) {
            report.sets.clear();
            return report;
        }
        CompareSet(outputs, request, *recording, set);
    }
    if (report.sets.empty()) report.error = L"there are no outputs (.vcs, .vev, .vrd) in it";
    return report;
}

VerifyReport VerifyOutputs(const VerifyRequest& request) {
    std::vector<std::wstring> names;
    if (const SystemErrorCode code = ListDirectory(request.directory, names); code != 0) {
        VerifyReport report;
        report.directory = request.directory;
        report.error = SystemErrorText(code);
        return report;
    }
    return VerifyOutputs(request, names);
}

}  // namespace stalwick
