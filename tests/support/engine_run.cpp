// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/engine_run.h"

#include <algorithm>

#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/fixed_identity.h"

namespace stalwick::test {

OutputSettings QuickSettings() {
    OutputSettings settings;
    settings.syncBeforeFinalHeader = false;
    return settings;
}

std::wstring PutRecording(const TempDirectory& directory, const std::string& recording,
                          const std::wstring& name) {
    MakeDirectory(directory.Path(L"in"));
    const std::wstring path = directory.Path(L"in") + kPathSeparator + name;
    WriteFile(path, recording);
    return path;
}

ConversionJob MakeJob(const TempDirectory& directory, const std::vector<std::wstring>& inputFiles,
                      const ReferenceConvertOptions& options, DataProcessor& processor,
                      std::wstring& statusText) {
    const auto on = [](bool value) { return static_cast<std::uint8_t>(value ? 1 : 0); };
    ConversionJob job;
    job.inputFiles = inputFiles;
    job.processor = &processor;
    job.outputDirectory = directory.Path(L"out");
    job.channelOptions = {on(options.csc), on(options.baseImu), on(options.afeImu),
                          on(options.ultrasonic)};
    job.writeEvents = options.events;
    job.writeRawData = options.raw;
    job.onFinished = [&statusText](const std::wstring& text) { statusText = text; };
    MakeDirectory(job.outputDirectory);
    return job;
}

EngineRun RunEngine(const TempDirectory& directory, const std::string& recording,
                    const ReferenceConvertOptions& options, const OutputSettings& settings,
                    std::shared_ptr<ParallelConversions> parallel) {
    const FixedIdentity identity;
    const std::wstring input = PutRecording(directory, recording);
    DataProcessor processor(settings, std::move(parallel));
    EngineRun run;
    RunConversionJob(MakeJob(directory, {input}, options, processor, run.statusText));
    run.errorText = processor.GetErrorMessage();
    run.details = processor.Details();
    run.recordsProcessed = processor.recordsProcessed.load();
    run.files = FilesIn(directory.Path(L"out") + kPathSeparator + L"rec");
    return run;
}

ReferenceConvertResult RunReference(const TempDirectory& directory, const std::string& recording,
                                    const ReferenceConvertOptions& options) {
    return ReferenceConvert(ReferenceInput(recording, options, directory.Path(L"out")));
}

ReferenceConvertInput ReferenceInput(const std::string& recording,
                                     const ReferenceConvertOptions& options,
                                     const std::wstring& outputDirectory) {
    ReferenceConvertInput input;
    input.recording = recording;
    input.options = options;
    input.outputDirectory = ToUtf8(outputDirectory);
    input.fileName = "rec.ord";
    input.clockText = kFixedTimeText;
    input.uuidText = kFixedUuidText;
    input.separator = ToUtf8(std::wstring(1, kPathSeparator));
    return input;
}

testing::AssertionResult SameBytes(const std::string& actual, const std::string& expected) {
    if (actual == expected) return testing::AssertionSuccess();
    const auto shorter = std::min(actual.size(), expected.size());
    const auto end = actual.begin() + static_cast<std::ptrdiff_t>(shorter);
    const auto at = std::mismatch(actual.begin(), end, expected.begin()).first - actual.begin();
    const auto start = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, at - 20));
    return testing::AssertionFailure()
           << actual.size() << " bytes for " << expected.size() << ", differing from byte " << at
           << " on:\n  " << testing::PrintToString(actual.substr(start, 60)) << "\n  "
           << testing::PrintToString(expected.substr(start, 60));
}

testing::AssertionResult SameFiles(const std::map<std::string, std::string>& actual,
                                   const std::map<std::string, std::string>& expected) {
    for (const auto& [name, bytes] : expected) {
        const auto file = actual.find(name);
        if (file == actual.end()) return testing::AssertionFailure() << "no file " << name;
        const auto same = SameBytes(file->second, bytes);
        if (!same) return testing::AssertionFailure() << name << ": " << same.message();
    }
    for (const auto& entry : actual) {
        if (!expected.contains(entry.first)) {
            return testing::AssertionFailure() << "unexpected file " << entry.first;
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult ConvertsLikeTheReference(const std::string& recording,
                                                  const ReferenceConvertOptions& options,
                                                  const OutputSettings& settings) {
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, options, settings);
    const ReferenceConvertResult expected = RunReference(directory, recording, options);
    if (ToUtf8(run.statusText) != expected.statusText) {
        return testing::AssertionFailure()
               << "status " << ToUtf8(run.statusText) << " for " << expected.statusText;
    }
    if (ToUtf8(run.errorText) != expected.errorText) {
        return testing::AssertionFailure()
               << "error text " << ToUtf8(run.errorText) << " for " << expected.errorText;
    }
    if (run.recordsProcessed != expected.packetCount) {
        return testing::AssertionFailure()
               << run.recordsProcessed << " packets for " << expected.packetCount;
    }
    return SameFiles(run.files, expected.files);
}

ReferenceConvertOptions AllOutputs() {
    return {true, true, true, true, true, true};
}

}  // namespace stalwick::test
