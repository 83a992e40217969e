// SPDX-License-Identifier: BSD-3-Clause
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

// Why there are no outputs of a recording to compare with; empty if there are.
template <typename Reader>
std::wstring OpenRecording(const std::wstring& path, Reader& reader) {
    if (reader.Open(path) != 0) {
        return reader.SystemError() != 0 ? SystemErrorText(reader.SystemError())
                                         : reader.GetErrorMessage();
    }
    const RecordingHeader& header = reader.Header();
    if (header.samplingFrequency != 0 && header.numADChannels <= kMostChannels) return {};
    return L"its header is damaged, so no outputs can be made from it";
}

// Returns why it could not compare; empty if it could.
template <typename Reader>
std::wstring CompareSet(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
                        Reader& recording, VerifiedSet& set) {
    if (std::wstring error = OpenRecording(request.recordingPath, recording); !error.empty()) {
        return error;
    }
    const RecordingHeader& header = recording.Header();
    CheckMembers(outputs, &header, request.mostFindingsPerFile, set);
    CheckHeaders(outputs, &header, request.mostFindingsPerFile, set);
    CompareRecords(recording, outputs, request.mostFindingsPerFile, set);
    for (OutputFinding& finding : set.findings) {
        if (finding.path.empty()) finding.path = request.recordingPath;
    }
    return {};
}

// About 50 KB each: not for the stack.
std::wstring CompareSet(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
                        VerifiedSet& set) {
    if (!request.salvaged) {
        return CompareSet(outputs, request, *std::make_unique<ORDFileReader>(), set);
    }
    const auto stream = std::make_unique<PacketStream>();
    stream->BeStrict();
    return CompareSet(outputs, request, *stream, set);
}

void CheckSet(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
              VerifiedSet& set) {
    CheckMembers(outputs, nullptr, request.mostFindingsPerFile, set);
    CheckHeaders(outputs, nullptr, request.mostFindingsPerFile, set);
    CheckRecords(outputs, request, set);
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
        report.recordingError = CompareSet(outputs, request, set);
        if (!report.recordingError.empty()) {
            report.sets.clear();
            return report;
        }
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
