// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "survey/verify_outputs.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_converter.h"

namespace stalwick::test {

/** A recording and the outputs that the reference makes of it, on a disk in memory. */
class OutputSetInMemory {
  public:
    explicit OutputSetInMemory(const ReferenceConvertInput& input) {
        disk_.files[kRecording] = input.recording;
        Add(input);
    }

    /** What a second conversion into the same directory leaves there too. */
    void Add(ReferenceConvertInput input) {
        if (input.fileName.empty()) input.fileName = "rec.ord";
        if (input.clockText == "T") input.clockText = kFixedTimeText;
        input.uuidText = kFixedUuidText;
        for (const auto& file : outputs) input.takenNames.insert(file.first);
        for (auto& [name, bytes] : ReferenceConvert(input).files) outputs[name] = std::move(bytes);
    }

    VerifyReport Verify() { return Run({}); }
    VerifyReport Compare() { return Run(kRecording); }
    /** The path of the output with that name. */
    static std::wstring PathOf(const std::wstring& name) {
        return std::wstring(kDirectory) + kPathSeparator + name;
    }
    /** The recording of the outputs, as Compare() takes it. */
    std::string& Recording() { return disk_.files[kRecording]; }

    std::map<std::string, std::string> outputs;  // by name; tests damage them

  private:
    static constexpr const wchar_t* kRecording = L"in/rec.ord";
    static constexpr const wchar_t* kDirectory = L"out/rec";

    VerifyReport Run(const std::wstring& recordingPath) {
        std::vector<std::wstring> names;
        std::vector<std::wstring> paths;
        for (auto& [name, bytes] : outputs) {
            names.push_back(FromUtf8(name));
            paths.push_back(PathOf(names.back()));
            disk_.files[paths.back()].swap(bytes);
        }
        FileCalls* const before = SetFileCalls(&disk_);
        VerifyReport report = VerifyOutputs({kDirectory, recordingPath, kMostListed}, names);
        SetFileCalls(before);
        auto path = paths.begin();
        for (auto& file : outputs) {
            file.second.swap(disk_.files[*path]);
            disk_.files.erase(*path++);
        }
        return report;
    }

    static constexpr std::size_t kMostListed = 20;
    MemoryFileCalls disk_;
};

/** Everything that was found, to be printed by a test that fails. */
inline std::string Findings(const VerifyReport& report) {
    std::string text = ToUtf8(report.error);
    for (const VerifiedSet& set : report.sets) {
        for (const OutputFinding& finding : set.findings) {
            text += "\n  " + ToUtf8(finding.path);
            if (finding.record) text += " record " + std::to_string(*finding.record);
            if (finding.byte) text += " byte " + std::to_string(*finding.byte);
            text += ": " + ToUtf8(finding.text);
        }
    }
    return text;
}

/** A conversion of every output that the recording has. */
inline ReferenceConvertInput EveryOutput(std::string recording) {
    ReferenceConvertInput input;
    input.recording = std::move(recording);
    input.options = {true, true, true, true, true, true};
    return input;
}

}  // namespace stalwick::test
