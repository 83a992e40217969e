// SPDX-License-Identifier: BSD-3-Clause

// The order of the file calls: a header is written only after the data it describes are on the
// disk.

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/nth_fault_file_calls.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

constexpr std::uint64_t kHeaderBytes = 16384;

std::vector<FileCallRecord> CallsOf(const std::wstring& name, const OutputSettings& settings) {
    const TempDirectory directory;
    NthFaultFileCalls disk({});
    const EngineRun run = RunEngine(directory, MakeFullRecording(3, 64), AllOutputs(), settings);
    EXPECT_EQ(run.statusText, L"Processing complete");
    std::vector<FileCallRecord> calls = disk.calls();
    std::erase_if(calls, [&](const FileCallRecord& call) {
        return call.path.substr(call.path.rfind(kPathSeparator) + 1) != name;
    });
    return calls;
}

OutputSettings SmallBlocks() {
    OutputSettings settings;
    settings.recordsPerWrite = 1;
    return settings;
}

/** One letter per call: c create, H first header, d data, s sync, h final header, x close. */
std::string Order(const std::vector<FileCallRecord>& calls) {
    std::string order;
    bool hasHeader = false;
    for (const FileCallRecord& call : calls) {
        char letter = '?';
        if (call.operation == FileOperation::kCreate) letter = 'c';
        if (call.operation == FileOperation::kSync) letter = 's';
        if (call.operation == FileOperation::kClose) letter = 'x';
        if (call.operation == FileOperation::kWrite) {
            letter = call.offset >= kHeaderBytes ? 'd' : (hasHeader ? 'h' : 'H');
            hasHeader = true;
        }
        if (letter != 'd' || !order.ends_with('d')) order += letter;  // data: once for any number
    }
    return order;
}

TEST(Durability, DataAreOnTheDiskBeforeTheHeaderThatSaysClosed) {
    for (const wchar_t* name : {L"CSC1.vcs", L"Base_MZ.vcs", L"Ultrasonic.vcs", L"RawData.vrd"}) {
        EXPECT_EQ(Order(CallsOf(name, SmallBlocks())), "cHdshx") << testing::PrintToString(name);
    }
}

TEST(Durability, EventFileNeverSaysClosedAndNeedsNoWait) {
    EXPECT_EQ(Order(CallsOf(L"Events.vev", SmallBlocks())), "cHdx");
}

TEST(Durability, WithoutSyncNobodyWaitsForTheDisk) {
    OutputSettings settings = SmallBlocks();
    settings.syncBeforeFinalHeader = false;
    for (const wchar_t* name : {L"CSC1.vcs", L"RawData.vrd"}) {
        EXPECT_EQ(Order(CallsOf(name, settings)), "cHdhx") << testing::PrintToString(name);
    }
}

/** The directories that were synced, and where: after the last close of an output or before. */
std::vector<std::wstring> SyncedAfterTheOutputs(const TempDirectory& directory,
                                                const OutputSettings& settings) {
    NthFaultFileCalls disk({});
    RunEngine(directory, MakeFullRecording(3, 64), AllOutputs(), settings);
    std::vector<std::wstring> synced;
    for (const FileCallRecord& call : disk.calls()) {
        if (call.operation == FileOperation::kSyncDirectory) synced.push_back(call.path);
        const bool isInput = call.path.ends_with(L"rec.ord");
        if (call.operation == FileOperation::kClose && !isInput) synced.clear();
    }
    return synced;
}

TEST(Durability, NewDirectoriesAreOnTheDiskWithTheNamesInThem) {
    const TempDirectory directory;
    const std::wstring out = directory.Path(L"out");
    const std::wstring rec = out + kPathSeparator + L"rec";
    const std::wstring parent = out.substr(0, out.size() - 4);  // without the separator
    EXPECT_EQ(SyncedAfterTheOutputs(directory, OutputSettings()),
              (std::vector<std::wstring>{rec, out, parent}));
    // The second time only the new files' names are new.
    EXPECT_EQ(SyncedAfterTheOutputs(directory, OutputSettings()), std::vector<std::wstring>{rec});
}

TEST(Durability, WithoutSyncNobodyWaitsForDirectories) {
    const TempDirectory directory;
    OutputSettings settings;
    settings.syncBeforeFinalHeader = false;
    EXPECT_EQ(SyncedAfterTheOutputs(directory, settings), std::vector<std::wstring>());
}

// Each byte is written once and in order, so a file truncated by a power failure is a beginning.
TEST(Durability, DataOnlyGrow) {
    for (const wchar_t* name : {L"CSC1.vcs", L"Events.vev", L"RawData.vrd"}) {
        std::uint64_t end = kHeaderBytes;
        for (const FileCallRecord& call : CallsOf(name, SmallBlocks())) {
            if (call.operation != FileOperation::kWrite || call.offset < kHeaderBytes) continue;
            EXPECT_EQ(call.offset, end);
            end = call.offset + call.size;
        }
        EXPECT_GT(end, kHeaderBytes);
    }
}

}  // namespace
}  // namespace stalwick::test
