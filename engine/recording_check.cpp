// SPDX-License-Identifier: BSD-3-Clause
#include "engine/recording_check.h"

#include <memory>

#include "engine/output_directory.h"
#include "ord/ord_file_reader.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr wchar_t kFieldMissing[] = L"Error retrieving header field ";
constexpr wchar_t kNotConverted[] = L"not converted: ";

RecordingRefusal Refuse(const std::wstring& errorText, const std::wstring& reason) {
    return {true, errorText, reason};
}

RecordingRefusal DescribeOpenFailure(const ORDFileReader& reader) {
    const std::wstring error = reader.GetErrorMessage();
    if (reader.SystemError() != 0) {
        return Refuse(error, kNotConverted + SystemErrorText(reader.SystemError()) +
                                 L"; choose a recording that can be read");
    }
    if (!error.starts_with(kFieldMissing)) return Refuse(error, kNotConverted + error);
    return Refuse(error, L"not an .ord recording (no " +
                             error.substr(std::wstring(kFieldMissing).size()) +
                             L" in its header; empty, cut short, or another kind of file)");
}

// The output directory has the recording's name without the extension.
bool WouldReplaceItself(const std::wstring& path, const std::wstring& outputDirectory) {
    return SplitPath(path).extension.empty() && OutputDirectoryOf(path, outputDirectory) == path;
}

}  // namespace

RecordingRefusal CheckHeader(const RecordingHeader& header) {
    constexpr wchar_t kInvalid[] = L"Invalid header field ";
    constexpr wchar_t kAdvice[] = L"; check the recording's header";
    if (header.numADChannels > kMostADChannels) {
        const std::wstring text = std::wstring(kInvalid) + L"-NumADChannels";
        return Refuse(text, kNotConverted + text + L" is above 256" + kAdvice);
    }
    if (header.samplingFrequency == 0) {
        const std::wstring text = std::wstring(kInvalid) + L"-SamplingFrequency";
        return Refuse(text, kNotConverted + text + L" is 0" + kAdvice);
    }
    return {};
}

RecordingRefusal CheckRecording(const std::wstring& path, const std::wstring& outputDirectory) {
    const PathKind kind = QueryPath(path);
    if (kind == PathKind::kFile && WouldReplaceItself(path, outputDirectory)) {
        return Refuse(L"",
                      L"not converted: it has no extension, so the directory of its outputs would "
                      L"have the same "
                      L"name; choose another output directory, or name it " +
                          OneLine(SplitPath(path).name) + L".ord");
    }
    // Opening waits for the writer of a pipe and consumes what it writes.
    if (kind == PathKind::kFile && !IsOrdinaryFile(path)) return {};
    const auto reader = std::make_unique<ORDFileReader>();
    if (reader->Open(path) != 0) return DescribeOpenFailure(*reader);
    return CheckHeader(reader->Header());
}

}  // namespace stalwick
