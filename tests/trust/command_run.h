// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/support/reference_converter.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {

/** A directory with in/rec.ord and out/, for the command. */
class CommandScene {
  public:
    explicit CommandScene(const std::string& recording) : recording_(recording) {
        MakeDirectory(directory_.Path(L"in"));
        MakeDirectory(directory_.Path(L"out"));
        WriteFile(InputPath(), recording);
    }

    std::wstring InputPath() const { return directory_.Path(L"in") + kPathSeparator + L"rec.ord"; }
    std::wstring OutputDirectory() const { return directory_.Path(L"out"); }
    std::wstring RecordingDirectory() const { return OutputDirectory() + kPathSeparator + L"rec"; }

    /** Every output of rec.ord into out/. */
    std::vector<std::string> Arguments() const {
        return {"--all", "-o", ToUtf8(OutputDirectory()), ToUtf8(InputPath())};
    }
    CommandResult Run(const CommandSetup& setup = {}) const {
        return RunCommand(Arguments(), setup);
    }

    /**
     * The outputs with times, UUIDs and the directory masked, by file name. A header block that was
     * truncated is padded first: the system writes whole pages, and the text is in the first.
     */
    std::map<std::string, std::string> MaskedFiles() const {
        std::map<std::string, std::string> files = FilesIn(RecordingDirectory());
        for (auto& [name, bytes] : files) {
            if (bytes.empty()) continue;
            if (bytes.size() % kPageBytes == 0) bytes.resize(std::max(bytes.size(), kHeaderBytes));
            bytes = MaskOutputFile(bytes, ToUtf8(OutputDirectory()));
        }
        return files;
    }

    /** What the reference writes, masked the same way; `taken` as if they already existed. */
    ReferenceConvertResult Reference(const std::set<std::string>& taken = {}) const {
        ReferenceConvertInput input;
        input.recording = recording_;
        input.options = {true, true, true, true, true, true};
        input.fileName = "rec.ord";
        input.takenNames = taken;
        return ReferenceConvert(input);
    }

  private:
    static constexpr std::size_t kHeaderBytes = 16384;
    static constexpr std::size_t kPageBytes = 4096;

    TempDirectory directory_;
    std::string recording_;
};

}  // namespace stalwick::test
