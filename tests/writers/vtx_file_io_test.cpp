// SPDX-License-Identifier: BSD-3-Clause
#include "writers/vtx_file_io.h"

#include <chrono>
#include <cstring>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/output_failures.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

using Veltrosyn::VtxFileIO;
using VtxDataTypes::CRRec;
using VtxDataTypes::EventRec;

const OutputSettings kQuick = QuickSettings();

// One library object with one open channel file.
struct OpenLibrary {
    explicit OpenLibrary(const OutputSettings& settings = kQuick) : library(settings) {
        EXPECT_EQ(library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, handle, 0), 0);
    }

    TempDirectory directory;
    std::wstring path = directory.Path(L"a.vcs");
    VtxFileIO library;
    int handle = -1;
};

TEST(VtxFileIO, FileIsItsHeaderBlockAndTheRecordsAsHandedOver) {
    OpenLibrary file;
    EXPECT_EQ(file.library.SetHeader(file.handle, L"\u00B5 head"), 0);
    std::vector<CRRec> records(17);
    for (std::size_t i = 0; i < records.size(); ++i) {
        std::memset(&records[i], static_cast<int>(i + 1), sizeof(CRRec));
    }
    EXPECT_EQ(file.library.WriteDataToFile(file.handle, records.data(), 17748), 0);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
    std::string expected = "\xC2\xB5 head";
    expected.resize(16384, '\0');
    for (char i = 1; i <= 17; ++i) expected.append(1044, i);
    EXPECT_EQ(ReadFile(file.path), expected);
}

TEST(VtxFileIO, BlockOfFiveThousandRecordsIsWrittenWhole) {
    OpenLibrary file;
    const std::vector<CRRec> records(5000, CRRec{1, 2, 3, 4, {}});
    std::vector<CRRec> handed = records;
    EXPECT_EQ(file.library.WriteDataToFile(file.handle, handed.data(), 5'220'000), 0);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
    EXPECT_EQ(ReadFile(file.path).size(), 16384U + 5'220'000U);
}

TEST(VtxFileIO, LaterHeaderReplacesTheWholeEarlierOne) {
    OpenLibrary file;
    CRRec record{};
    EXPECT_EQ(file.library.SetHeader(file.handle, L"a long first header"), 0);
    EXPECT_EQ(file.library.WriteDataToFile(file.handle, &record, sizeof record), 0);
    EXPECT_EQ(file.library.SetHeader(file.handle, L"short"), 0);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
    const std::string bytes = ReadFile(file.path);
    EXPECT_EQ(bytes.size(), 16384U + 1044);
    EXPECT_EQ(bytes.substr(0, 20), std::string("short") + std::string(15, '\0'));
}

TEST(VtxFileIO, HeaderTextMayFillTheBlockAndNoMore) {
    OpenLibrary file;
    EXPECT_EQ(file.library.SetHeader(file.handle, std::wstring(16384, L'x').c_str()), 0);
    EXPECT_NE(file.library.SetHeader(file.handle, std::wstring(16385, L'x').c_str()), 0);
    EXPECT_EQ(FailuresOf(file.library.Files()).size(), 1U);
    EXPECT_NE(file.library.CloseAllOutputFiles(), 0);
    EXPECT_EQ(ReadFile(file.path), std::string(16384, 'x'));
}

TEST(VtxFileIO, HeaderSizeCountsInUtf8) {
    OpenLibrary file;
    EXPECT_EQ(file.library.SetHeader(file.handle, std::wstring(8192, L'\u00B5').c_str()), 0);
    EXPECT_NE(file.library.SetHeader(file.handle, std::wstring(8193, L'\u00B5').c_str()), 0);
}

TEST(VtxFileIO, ExistingFileIsNeitherOpenedNorTruncated) {
    const TempDirectory directory;
    const std::wstring path = directory.Path(L"a.vcs");
    WriteFile(path, "precious");
    VtxFileIO library(kQuick);
    int handle = -1;
    EXPECT_NE(library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, handle, 0), 0);
    EXPECT_EQ(library.CloseAllOutputFiles(), 0);
    EXPECT_EQ(ReadFile(path), "precious");
}

TEST(VtxFileIO, FileThatCannotBeCreatedIsNamedWithItsReason) {
    const TempDirectory directory;
    const std::wstring path = directory.Path(L"none") + L"/a.vcs";
    VtxFileIO library(kQuick);
    int handle = -1;
    EXPECT_NE(library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, handle, 0), 0);
    ASSERT_EQ(FailuresOf(library.Files()).size(), 1U);
    EXPECT_NE(FailuresOf(library.Files())[0].find(path), std::wstring::npos);
}

TEST(VtxFileIO, HandlesAreIndependent) {
    OpenLibrary file;
    int second = -1;
    const std::wstring path = file.directory.Path(L"b.vev");
    EXPECT_EQ(file.library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kEvent, second, 0), 0);
    EXPECT_NE(second, file.handle);
    EventRec event{};
    EXPECT_EQ(file.library.WriteDataToFile(second, &event, sizeof event), 0);
    EXPECT_EQ(file.library.SetHeader(file.handle, L"first"), 0);
    EXPECT_EQ(file.library.SetHeader(second, L"second"), 0);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
    EXPECT_EQ(ReadFile(file.path).size(), 16384U);
    EXPECT_EQ(ReadFile(path).size(), 16384U + 184);
}

TEST(VtxFileIO, UnknownHandlesAndLengthsAreRefused) {
    OpenLibrary file;
    CRRec record{};
    EXPECT_NE(file.library.SetHeader(file.handle + 1, L"x"), 0);
    EXPECT_NE(file.library.SetHeader(-1, L"x"), 0);
    EXPECT_NE(file.library.WriteDataToFile(99, &record, sizeof record), 0);
    EXPECT_NE(file.library.WriteDataToFile(file.handle, &record, -1), 0);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
    EXPECT_NE(file.library.SetHeader(file.handle, L"x"), 0);
}

TEST(VtxFileIO, LengthOfZeroWritesNothingAndSucceeds) {
    OpenLibrary file;
    CRRec record{};
    EXPECT_EQ(file.library.SetHeader(file.handle, L"x"), 0);
    EXPECT_EQ(file.library.WriteDataToFile(file.handle, &record, 0), 0);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
    EXPECT_EQ(ReadFile(file.path).size(), 16384U);
}

TEST(VtxFileIO, FullDiskFailsTheWriteAndEverythingAfterIt) {
    OpenLibrary file;
    EXPECT_EQ(file.library.SetHeader(file.handle, L"provisional"), 0);
    FaultyFileCalls calls;
    calls.bytesUntilFull = 1500;
    std::vector<CRRec> records(3, CRRec{1, 1, 1, 1, {}});
    EXPECT_NE(file.library.WriteDataToFile(file.handle, records.data(), 3 * 1044), 0);
    calls.bytesUntilFull.reset();
    EXPECT_NE(file.library.WriteDataToFile(file.handle, records.data(), 3 * 1044), 0);
    EXPECT_NE(file.library.SetHeader(file.handle, L"final"), 0);
    EXPECT_NE(file.library.CloseAllOutputFiles(), 0);
    ASSERT_EQ(FailuresOf(file.library.Files()).size(), 1U);
    const std::wstring reason = SystemErrorText(SystemErrorFor(SystemErrorKind::kNoSpace));
    EXPECT_NE(FailuresOf(file.library.Files())[0].find(file.path + L": " + reason),
              std::wstring::npos);
    const std::string bytes = ReadFile(file.path);
    EXPECT_EQ(bytes.substr(0, 11), "provisional");
    EXPECT_EQ(bytes.size(), 16384U + 1500);
}

TEST(VtxFileIO, FailingCloseIsReportedWithItsReason) {
    OpenLibrary file;
    FaultyFileCalls calls;
    calls.closeError = SystemErrorFor(SystemErrorKind::kNoSpace);
    EXPECT_NE(file.library.CloseAllOutputFiles(), 0);
    ASSERT_EQ(FailuresOf(file.library.Files()).size(), 1U);
    EXPECT_NE(FailuresOf(file.library.Files())[0].find(file.path), std::wstring::npos);
}

TEST(VtxFileIO, InterruptedCloseIsNoFailure) {
    OpenLibrary file;
    FaultyFileCalls calls;
    calls.closeError = SystemErrorFor(SystemErrorKind::kInterrupted);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
}

TEST(VtxFileIO, DestructionClosesWhatIsStillOpen) {
    FaultyFileCalls calls;
    {
        const OpenLibrary file;
        EXPECT_EQ(calls.openCount, 1U);
    }
    EXPECT_EQ(calls.openCount, 0U);
}

TEST(VtxFileIO, DataAreOnTheDiskBeforeTheFinalHeader) {
    OutputSettings settings;
    OpenLibrary file(settings);
    FaultyFileCalls calls;
    CRRec record{};
    EXPECT_EQ(file.library.SetHeader(file.handle, L"provisional"), 0);
    EXPECT_EQ(calls.syncCount, 0U);
    EXPECT_EQ(file.library.WriteDataToFile(file.handle, &record, sizeof record), 0);
    EXPECT_EQ(file.library.SetHeader(file.handle, L"final"), 0);
    EXPECT_EQ(calls.syncCount, 1U);
    EXPECT_EQ(file.library.CloseAllOutputFiles(), 0);
}

TEST(VtxFileIO, FilesWithDataAreOnTheDiskOnceBeforeAnyFinalHeader) {
    const TempDirectory directory;
    FaultyFileCalls calls;
    VtxFileIO library{OutputSettings()};
    CRRec record{};
    for (int i = 0; i < 40; ++i) {
        int handle = -1;
        const std::wstring path = directory.Path(std::to_wstring(i));
        ASSERT_EQ(library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, handle, 0), 0);
        const int length = i % 2 == 0 ? static_cast<int>(sizeof record) : 0;
        ASSERT_EQ(library.WriteDataToFile(handle, &record, length), 0);
    }
    EXPECT_EQ(library.SyncFiles(), 0);
    EXPECT_EQ(calls.syncCount, 20U);
    for (int handle = 0; handle < 40; ++handle) EXPECT_EQ(library.SetHeader(handle, L"x"), 0);
    EXPECT_EQ(calls.syncCount, 20U);
}

// The system's calls, with slow syncs; records which threads sync.
class SlowSyncs final : public ForwardingFileCalls {
  public:
    std::set<std::thread::id> threads;
    unsigned failing = 0;  // the n-th sync; 0: none

    SystemErrorCode SyncData(FileHandle /*handle*/) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const std::scoped_lock lock(mutex_);
        threads.insert(std::this_thread::get_id());
        return ++count_ == failing ? SystemErrorFor(SystemErrorKind::kNoSpace) : 0;
    }

  private:
    std::mutex mutex_;
    unsigned count_ = 0;
};

class SlowDisk : public testing::TestWithParam<unsigned> {};

TEST_P(SlowDisk, IsAwaitedByManyThreadsAndAnyOfThemReportsItsFailure) {
    constexpr std::size_t kFiles = 40;
    const TempDirectory directory;
    SlowSyncs calls;
    calls.failing = GetParam();
    VtxFileIO library{OutputSettings()};
    CRRec record{};
    for (std::size_t i = 0; i < kFiles; ++i) {
        int handle = -1;
        const std::wstring path = directory.Path(std::to_wstring(i));
        ASSERT_EQ(library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, handle, 0), 0);
        ASSERT_EQ(library.WriteDataToFile(handle, &record, sizeof record), 0);
    }
    EXPECT_EQ(library.SyncFiles() == 0, GetParam() == 0);
    EXPECT_EQ(calls.threads.size(), 16U);
    EXPECT_EQ(FailuresOf(library.Files()).size(), GetParam() == 0 ? 0U : 1U);
}

INSTANTIATE_TEST_SUITE_P(FailingSync, SlowDisk, testing::Values(0U, 1U, 2U, 9U, 20U, 40U));

// The system's calls, with slow writes; records which threads write.
class SlowWrites final : public ForwardingFileCalls {
  public:
    std::set<std::thread::id> writers;

    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const std::scoped_lock lock(mutex_);
        writers.insert(std::this_thread::get_id());
        return ForwardingFileCalls::WriteAt(handle, offset, data, size, transferred);
    }

  private:
    std::mutex mutex_;
};

// Its queue is for one caller; up to 16 threads wait for the disk.
TEST(VtxFileIO, ThreadsThatWaitForTheDiskLeaveTheQueueToTheCaller) {
    constexpr std::size_t kFiles = 40;
    const TempDirectory directory;
    SlowWrites calls;
    WriteQueue queue;
    queue.StartThread();
    BlockPool pool(&queue);
    pool.Reserve(kFiles, sizeof(CRRec));
    VtxFileIO library(OutputSettings(), &pool);
    for (std::size_t i = 0; i < kFiles; ++i) {
        int handle = -1;
        const std::wstring path = directory.Path(std::to_wstring(i));
        ASSERT_EQ(library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, handle, 0), 0);
        auto* const record = new (pool.Acquire()) CRRec();
        ASSERT_EQ(library.WriteDataToFile(handle, record, sizeof *record), 0);
    }
    EXPECT_EQ(library.SyncFiles(), 0);
    EXPECT_LE(calls.writers.size(), 2U);  // the queue's thread and this one
    EXPECT_EQ(library.Totals().bytes, kFiles * sizeof(CRRec));
    EXPECT_EQ(library.CloseAllOutputFiles(), 0);
}

TEST(VtxFileIO, FailingSyncFailsThatFileOnly) {
    OpenLibrary file{OutputSettings()};
    int other = -1;
    const std::wstring path = file.directory.Path(L"b.vcs");
    ASSERT_EQ(file.library.OpenVtxOutputFile(path.c_str(), VtxDataTypes::kCSC, other, 0), 0);
    CRRec record{};
    ASSERT_EQ(file.library.WriteDataToFile(file.handle, &record, sizeof record), 0);
    FaultyFileCalls calls;
    calls.syncError = SystemErrorFor(SystemErrorKind::kNoSpace);
    EXPECT_NE(file.library.SyncFiles(), 0);
    EXPECT_NE(file.library.SetHeader(file.handle, L"closed"), 0);
    EXPECT_EQ(file.library.SetHeader(other, L"closed"), 0);
    EXPECT_EQ(FailuresOf(file.library.Files()).size(), 1U);
}

TEST(DescribeFailure, AdviceFitsTheReason) {
    const auto advice = [](SystemErrorKind kind) {
        return DescribeFailure(L"create", L"x", SystemErrorFor(kind));
    };
    EXPECT_NE(advice(SystemErrorKind::kNameTooLong).find(L"a shorter path"), std::wstring::npos);
    EXPECT_NE(advice(SystemErrorKind::kFileTooLarge).find(L"larger files"), std::wstring::npos);
    EXPECT_NE(advice(SystemErrorKind::kNoSpace).find(L"free some space"), std::wstring::npos);
}

}  // namespace
}  // namespace stalwick::test
