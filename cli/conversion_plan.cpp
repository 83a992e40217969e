// SPDX-License-Identifier: BSD-3-Clause
#include "cli/conversion_plan.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "engine/output_directory.h"
#include "platform/file_system.h"
#include "platform/paths.h"

namespace stalwick {

namespace {

// The directory of its outputs; nothing is made absolute.
std::wstring ShownOutputs(const std::wstring& name, std::wstring outputDirectory) {
    const PathParts parts = SplitPath(name);
    if (outputDirectory.empty()) return parts.drive + parts.directory + parts.name;
    if (LastSeparator(outputDirectory) + 1 != outputDirectory.size()) {
        outputDirectory += kPathSeparator;
    }
    return outputDirectory + parts.name;
}

std::wstring WithoutCase(std::wstring text) {
    for (wchar_t& c : text) {
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    return text;
}

// Equal for recordings whose outputs would go into the same directory.
std::wstring DirectoryKey(const PlannedRecording& recording) {
    return WithoutCase(OutputDirectoryOf(recording.path, ResolvedPath(recording.parentDirectory)));
}

std::wstring DescribePair(const PlannedRecording& first, const PlannedRecording& second) {
    if (first.name == second.name) return first.name + L" is given twice; give it once";
    return first.name + L" and " + second.name + L" would be converted into the same directory, " +
           OutputDirectoryOf(second.path, second.parentDirectory) +
           L"; convert them in two runs, each with its own --output-dir";
}

}  // namespace

std::vector<PlannedRecording> PlanRecordings(const CommandLine& commandLine) {
    const auto plan = [&](const std::wstring& name) {
        const std::wstring path = AbsolutePath(name);
        const std::wstring& directory = commandLine.outputDirectory;
        return PlannedRecording{name, path,
                                directory.empty() ? ParentDirectory(path) : AbsolutePath(directory),
                                ShownOutputs(name, directory)};
    };
    std::vector<PlannedRecording> recordings;
    std::transform(commandLine.inputFiles.begin(), commandLine.inputFiles.end(),
                   std::back_inserter(recordings), plan);
    return recordings;
}

std::wstring DescribeSharedDirectory(const std::vector<PlannedRecording>& recordings) {
    std::map<std::wstring, const PlannedRecording*> taken;
    for (const PlannedRecording& recording : recordings) {
        const auto [first, isNew] = taken.emplace(DirectoryKey(recording), &recording);
        if (!isNew) return DescribePair(*first->second, recording);
    }
    return {};
}

}  // namespace stalwick
