// SPDX-License-Identifier: BSD-3-Clause

// The order in which a successful conversion closes its files.

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// The system's calls; records the names of files as they are closed. For one thread.
class NotingCloses final : public ForwardingFileCalls {
  public:
    std::vector<std::wstring> closed;

    SystemErrorCode OpenForReading(const std::wstring& path, FileHandle& handle) override {
        return Named(path, handle, ForwardingFileCalls::OpenForReading(path, handle));
    }
    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override {
        return Named(path, handle, ForwardingFileCalls::CreateExclusive(path, handle));
    }
    SystemErrorCode Close(FileHandle handle) override {
        closed.push_back(names_[handle]);
        return ForwardingFileCalls::Close(handle);
    }

  private:
    SystemErrorCode Named(const std::wstring& path, FileHandle handle, SystemErrorCode code) {
        const PathParts parts = SplitPath(path);
        if (code == 0) names_[handle] = parts.name + parts.extension;
        return code;
    }

    std::map<FileHandle, std::wstring> names_;
};

TEST(ClosingOrder, ChannelFilesThenEventsThenRawDataThenTheRecording) {
    const TempDirectory directory;
    RandomRecordingShape shape;
    shape.packetCount = 3;
    const std::string recording = BuildOrdFile(Version2Header(2), MakeRandomPackets(1, shape));
    OutputSettings settings = QuickSettings();
    settings.helperThreads = HelperThreads::kOff;
    const NotingCloses calls;
    const EngineRun run =
        RunEngine(directory, recording, {true, false, false, false, true, true}, settings);
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(calls.closed, (std::vector<std::wstring>{L"CSC1.vcs", L"CSC2.vcs", L"Events.vev",
                                                       L"RawData.vrd", L"rec.ord"}));
}

}  // namespace
}  // namespace stalwick::test
