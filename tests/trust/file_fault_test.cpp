// SPDX-License-Identifier: BSD-3-Clause

// One conversion for every file call that it makes, in which that call fails; once for every kind
// of fault. Each time: the status text that belongs to the call, a detail with file and reason,
// valid files, and all earlier files unchanged.

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/nth_fault_file_calls.h"
#include "tests/trust/expected_outputs.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

constexpr std::uint64_t kHeaderBytes = 16384;
constexpr char kOldText[] = "made by somebody before";

const SystemErrorCode kInterrupted = SystemErrorFor(SystemErrorKind::kInterrupted);
const SystemErrorCode kDiskFull = SystemErrorFor(SystemErrorKind::kNoSpace);
const SystemErrorCode kInputOutputError = SystemErrorFor(SystemErrorKind::kOther);
// EDQUOT or ERROR_DISK_QUOTA_EXCEEDED: the second number of its kind.
constexpr SystemErrorCode kQuotaExceeded = kPathSeparator == L'/' ? 122 : 1295;

struct Scene {
    const char* name;
    ReferenceConvertOptions options;
    unsigned channelCount;
    std::uint32_t recordsPerWrite;
    HelperThreads helperThreads;
};

struct FaultKind {
    const char* name;
    FileFault fault;
};

void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

void PrintTo(const FaultKind& kind, std::ostream* out) {
    *out << kind.name;
}

class FileFaultTest : public testing::TestWithParam<std::tuple<Scene, FaultKind>> {
  protected:
    FileFaultTest() {
        // More than one block of data, more than one record of samples.
        recording_ = MakeFullRecording(scene().channelCount, 64);
        for (const char* name : {"CSC1.vcs", "Events.vev", "RawData.vrd", "notes.txt"}) {
            oldFiles_[name] = kOldText;
        }
        ReferenceConvertInput input =
            ReferenceInput(recording_, scene().options, directory_.Path(L"out"));
        for (const auto& entry : oldFiles_) input.takenNames.insert(entry.first);
        complete_ = ReferenceConvert(input);
        expected_ = ExpectFiles(complete_);
    }

    static const Scene& scene() { return std::get<0>(GetParam()); }

    // Replaces the files of an earlier run with the old files.
    void Prepare() {
        const std::wstring out = directory_.Path(L"out");
        std::filesystem::remove_all(ToUtf8(out));
        MakeDirectory(out);
        const std::wstring rec = out + kPathSeparator + L"rec";
        MakeDirectory(rec);
        for (const auto& [name, text] : oldFiles_) {
            WriteFile(rec + kPathSeparator + FromUtf8(name), text);
        }
    }

    EngineRun Convert() {
        OutputSettings settings;
        settings.recordsPerWrite = scene().recordsPerWrite;
        settings.helperThreads = scene().helperThreads;
        return RunEngine(directory_, recording_, scene().options, settings);
    }

    bool IsFatal(const FileCallRecord& call) const;
    std::wstring StatusText(const std::vector<FileCallRecord>& failedCalls) const;
    void Check(const EngineRun& run, const NthFaultFileCalls& disk, SystemErrorCode code) const;
    void CheckDetails(const EngineRun& run, const FileCallRecord& failed,
                      SystemErrorCode code) const;
    void CheckNames(const EngineRun& run, const std::map<std::string, std::string>& newFiles,
                    const std::vector<FileCallRecord>& failedCalls) const;
    void CheckOtherFiles(std::map<std::string, std::string> newFiles,
                         const std::vector<FileCallRecord>& failedCalls) const;

    TempDirectory directory_;
    std::string recording_;
    std::map<std::string, std::string> oldFiles_;
    ReferenceConvertResult complete_;
    ExpectedFiles expected_;
};

std::string FileName(const std::wstring& path) {
    return ToUtf8(path.substr(path.rfind(kPathSeparator) + 1));
}

bool IsHarmless(const FileCallRecord& call) {
    const bool input = FileName(call.path) == "rec.ord";
    return call.operation == FileOperation::kQuerySize ||
           (input && call.operation == FileOperation::kClose);
}

// Whether the status text shows it. Failures of the remaining events, and of the raw data after
// opening, show only in the details.
bool FileFaultTest::IsFatal(const FileCallRecord& call) const {
    if (IsHarmless(call) || call.operation == FileOperation::kSyncDirectory) return false;
    if (call.operation == FileOperation::kCreate || call.toFreshHeader) return true;
    const std::string name = FileName(call.path);
    if (name.ends_with(".vrd")) return false;
    // For events, only a full block would, and no scene has one.
    return !name.ends_with(".vev");
}

std::wstring FileFaultTest::StatusText(const std::vector<FileCallRecord>& failedCalls) const {
    const auto fatal = std::find_if(failedCalls.begin(), failedCalls.end(),
                                    [this](const auto& call) { return IsFatal(call); });
    if (fatal == failedCalls.end()) return L"Processing complete";
    switch (fatal->operation) {
        case FileOperation::kOpenForReading:
            return L"Processing failed - Error opening file, the file path(" + fatal->path +
                   L") may be invalid.";
        case FileOperation::kRead:
            return fatal->offset < kHeaderBytes
                       ? L"Processing failed - Error reading header from file."
                       : L"Processing failed - Failed to process input file";
        default:
            return L"Processing failed";
    }
}

// The output's name in a word of a detail; empty if there is none.
std::string NameIn(const std::string& word) {
    const std::string base = word.substr(word.find_last_of("/\\") + 1);
    for (const char* extension : {".vcs", ".vev", ".vrd"}) {
        const auto at = base.find(extension);
        if (at != std::string::npos) return base.substr(0, at + 4);
    }
    return {};
}

// The names of outputs in a detail; "CSC1.vcs to CSC3.vcs" are three.
std::set<std::string> NamesIn(const std::wstring& detail) {
    std::string text = ToUtf8(detail);
    // This begins the detail for any file name.
    const std::string prefix = "RawData.vrd is incomplete: ";
    if (text.starts_with(prefix)) text.erase(0, prefix.size());
    std::istringstream words(text);
    std::set<std::string> names;
    std::string last;
    bool isRange = false;
    for (std::string word; words >> word;) {
        const std::string name = NameIn(word);
        if (!name.empty()) names.insert(name);
        if (isRange && name.starts_with("CSC")) {
            const int end = std::stoi(name.substr(3));
            const int start = std::stoi(last.substr(3));
            const std::string rest = last.substr(3 + std::to_string(start).size());
            for (int n = start; n < end; ++n) names.insert("CSC" + std::to_string(n) + rest);
        }
        isRange = word == "to" && last.starts_with("CSC");
        if (word != "to") last = name;
    }
    return names;
}

void FileFaultTest::CheckDetails(const EngineRun& run, const FileCallRecord& failed,
                                 SystemErrorCode code) const {
    const std::string name = FileName(failed.path);
    const auto tells = [&](const ConversionDetail& detail) {
        const std::wstring directory = failed.path.substr(0, failed.path.rfind(kPathSeparator));
        return detail.kind == ConversionDetail::Kind::kIncomplete &&
               (detail.text.find(failed.path) != std::wstring::npos ||
                (detail.text.find(directory) != std::wstring::npos &&
                 NamesIn(detail.text).contains(name))) &&
               detail.text.find(SystemErrorText(code)) != std::wstring::npos;
    };
    EXPECT_TRUE(std::any_of(run.details.begin(), run.details.end(), tells))
        << FileName(failed.path);
}

// The details name each output on the disk that lacks its end or its final header, each one whose
// call failed, and no other. If the recording failed, one detail covers them all.
void FileFaultTest::CheckNames(const EngineRun& run,
                               const std::map<std::string, std::string>& newFiles,
                               const std::vector<FileCallRecord>& failedCalls) const {
    std::set<std::string> expected;
    for (const auto& [name, bytes] : newFiles) {
        if (bytes != complete_.files.at(name)) expected.insert(name);
    }
    for (const FileCallRecord& call : failedCalls) {
        const std::string name = FileName(call.path);
        const bool isFile = call.operation != FileOperation::kSyncDirectory;
        if (!IsHarmless(call) && isFile && name != "rec.ord") expected.insert(name);
    }
    std::set<std::string> named;
    for (const ConversionDetail& detail : run.details) {
        if (detail.text.find(L"conversion stopped at byte") != std::wstring::npos) return;
        named.merge(NamesIn(detail.text));
    }
    EXPECT_EQ(named, expected);
}

// In an otherwise complete conversion, only the files of the failed calls may lack anything.
void FileFaultTest::CheckOtherFiles(std::map<std::string, std::string> newFiles,
                                    const std::vector<FileCallRecord>& failedCalls) const {
    std::map<std::string, std::string> expected = complete_.files;
    for (const FileCallRecord& call : failedCalls) {
        newFiles.erase(FileName(call.path));
        expected.erase(FileName(call.path));
    }
    EXPECT_TRUE(SameFiles(newFiles, expected));
}

void FileFaultTest::Check(const EngineRun& run, const NthFaultFileCalls& disk,
                          SystemErrorCode code) const {
    std::map<std::string, std::string> newFiles = run.files;
    for (const auto& [name, text] : oldFiles_) {
        EXPECT_EQ(run.files.at(name), text) << name;
        newFiles.erase(name);
    }
    EXPECT_EQ(disk.openCount(), 0U);
    const std::vector<FileCallRecord>& failed = disk.failedCalls();
    EXPECT_EQ(run.statusText, StatusText(failed));
    EXPECT_TRUE(AreValidRemainders(newFiles, expected_));
    if (run.statusText == L"Processing complete") CheckOtherFiles(newFiles, failed);
    CheckNames(run, newFiles, failed);
    if (std::all_of(failed.begin(), failed.end(), IsHarmless)) {
        EXPECT_TRUE(SameFiles(newFiles, complete_.files));
        EXPECT_EQ(run.details.size(), 0U);
    } else {
        CheckDetails(run, *std::find_if_not(failed.begin(), failed.end(), IsHarmless), code);
    }
}

TEST_P(FileFaultTest, EveryCallThatFailsIsReportedAndLosesNothing) {
    FileFault fault = std::get<1>(GetParam()).fault;
    std::uint64_t runs = 0;
    for (bool met = true; met; ++runs) {
        fault.nth = runs;
        Prepare();
        NthFaultFileCalls disk(fault);
        const EngineRun run = Convert();
        met = disk.met();
        SCOPED_TRACE("call " + std::to_string(fault.nth));
        Check(run, disk, fault.code);
        if (HasFatalFailure() || HasNonfatalFailure()) return;
    }
    EXPECT_GT(runs, expected_.size() * 4);  // at least create, header, header, close for each
    RecordProperty("faults", std::to_string(runs - 1));
}

// An interrupted call is simply repeated, and a short one continued.
const FaultKind kContinuedKinds[] = {{"Interrupted", {0, kInterrupted}}, {"Short", {}}};
const FaultKind kFailingKinds[] = {
    {"DiskFull", {0, kDiskFull}},
    {"DiskFullFromThenOn", {0, kDiskFull, true}},
    {"DiskFullAfterHalf", {0, kDiskFull, true, true}},
    {"InputOutputError", {0, kInputOutputError}},
    {"InputOutputErrorFromThenOn", {0, kInputOutputError, true}},
    {"QuotaExceeded", {0, kQuotaExceeded, true}},
};

class ContinuedFileFaultTest : public FileFaultTest {};

TEST_P(ContinuedFileFaultTest, CallIsContinuedAndNobodyNotices) {
    FileFault fault = std::get<1>(GetParam()).fault;
    fault.nth = 0;
    for (bool met = true; met; ++fault.nth) {
        Prepare();
        NthFaultFileCalls disk(fault);
        const EngineRun run = Convert();
        met = disk.met();
        std::map<std::string, std::string> newFiles = run.files;
        for (const auto& entry : oldFiles_) newFiles.erase(entry.first);
        ASSERT_EQ(run.statusText, L"Processing complete") << "call " << fault.nth;
        ASSERT_TRUE(SameFiles(newFiles, complete_.files)) << "call " << fault.nth;
        ASSERT_EQ(run.details.size(), 0U) << "call " << fault.nth;
        ASSERT_EQ(disk.openCount(), 0U);
    }
    RecordProperty("faults", std::to_string(fault.nth - 1));
}

const Scene kScenes[] = {
    {"EveryOutput", AllOutputs(), 3, 20, HelperThreads::kOff},
    {"EveryOutputByTwoThreads", AllOutputs(), 3, 20, HelperThreads::kOn},
    {"SmallBlocks", {true, false, false, true, true, false}, 4, 1, HelperThreads::kOff},
    {"SmallBlocksByTwoThreads", {true, false, false, true, true, false}, 4, 1, HelperThreads::kOn},
    {"RawAndEvents", {false, false, false, false, true, true}, 32, 50, HelperThreads::kOff},
    {"RawAndEventsByTwoThreads",
     {false, false, false, false, true, true},
     32,
     50,
     HelperThreads::kOn},
};

std::string TestName(const testing::TestParamInfo<std::tuple<Scene, FaultKind>>& info) {
    return std::string(std::get<0>(info.param).name) + std::get<1>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(All, FileFaultTest,
                         testing::Combine(testing::ValuesIn(kScenes),
                                          testing::ValuesIn(kFailingKinds)),
                         TestName);
INSTANTIATE_TEST_SUITE_P(All, ContinuedFileFaultTest,
                         testing::Combine(testing::ValuesIn(kScenes),
                                          testing::ValuesIn(kContinuedKinds)),
                         TestName);

}  // namespace
}  // namespace stalwick::test
