// SPDX-License-Identifier: BSD-3-Clause

// The readers' reports on files that are not whole.

#include <gtest/gtest.h>

#include "outputs/channel_file.h"
#include "platform/system_error.h"
#include "tests/outputs/reference_outputs.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

using Kind = RecordFileError::Kind;

constexpr wchar_t kPath[] = L"CSC3.vcs";

RecordFileError OpenBytes(const std::string& bytes) {
    MemoryFileCalls disk;
    disk.files[kPath] = bytes;
    ChannelFile file;
    RecordFileError error = file.Open(kPath);
    EXPECT_EQ(disk.openCount, error && error.kind != Kind::kCutRecord ? 0U : 1U);
    return error;
}

TEST(DamagedOutput, MissingFileIsUnreadable) {
    MemoryFileCalls disk;
    ChannelFile file;
    const RecordFileError error = file.Open(kPath);
    EXPECT_EQ(error.kind, Kind::kUnreadable);
    EXPECT_EQ(error.text,
              L"CSC3.vcs: " + SystemErrorText(SystemErrorFor(SystemErrorKind::kNotFound)));
}

TEST(DamagedOutput, DirectoryIsUnreadable) {
    const TempDirectory directory;
    ChannelFile file;
    EXPECT_EQ(file.Open(directory.Path()).kind, Kind::kUnreadable);
}

TEST(DamagedOutput, FileThatEndsInItsHeaderIsRefusedAtEveryLength) {
    const std::string bytes = ReferenceChannelBytes(100);
    for (std::size_t length = 0; length < 16384; length += 1023) {
        const RecordFileError error = OpenBytes(bytes.substr(0, length));
        EXPECT_EQ(error.kind, Kind::kHeader);
        EXPECT_EQ(error.text, L"CSC3.vcs: it ends after " + std::to_wstring(length) +
                                  L" bytes, inside its header of 16384");
    }
    EXPECT_EQ(OpenBytes(bytes.substr(0, 16383)).kind, Kind::kHeader);
    EXPECT_FALSE(OpenBytes(bytes.substr(0, 16384)));
}

TEST(DamagedOutput, FileThatEndsInARecordSaysWhere) {
    const std::string bytes = ReferenceChannelBytes(256);
    const RecordFileError error = OpenBytes(bytes.substr(0, 16384 + 2 * 1044 + 1043));
    EXPECT_EQ(error.kind, Kind::kCutRecord);
    EXPECT_EQ(error.text, L"CSC3.vcs: it ends inside record 2 at byte 18472: 1043 of 1044 bytes");
}

TEST(DamagedOutput, WholeRecordsOfACutFileCanBeRead) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(256).substr(0, 16384 + 2 * 1044 + 1);
    ChannelFile file;
    ASSERT_EQ(file.Open(kPath).kind, Kind::kCutRecord);
    EXPECT_EQ(file.RecordCount(), 2U);
    EXPECT_EQ(file.CutBytes(), 1U);
    VtxDataTypes::CRRec record{};
    EXPECT_FALSE(file.ReadRecords(1, {&record, 1}));
    EXPECT_EQ(record.samples.front(), 512);
    EXPECT_TRUE(file.ReadRecords(2, {&record, 1}));
}

TEST(DamagedOutput, OtherFileIsRefused) {
    const RecordFileError error = OpenBytes(std::string(20000, 'x'));
    EXPECT_EQ(error.kind, Kind::kHeader);
    EXPECT_EQ(error.text, L"CSC3.vcs: it does not begin like an output of this program");
}

TEST(DamagedOutput, RecordSizeOfAnotherKindIsRefused) {
    std::string bytes = ReferenceChannelBytes(1);
    bytes.replace(bytes.find("-RecordSize 1044"), 16, "-RecordSize 1045");
    const RecordFileError error = OpenBytes(bytes);
    EXPECT_EQ(error.kind, Kind::kHeader);
    EXPECT_EQ(error.text, L"CSC3.vcs: its -RecordSize is 1045, not 1044");
}

TEST(DamagedOutput, ErrorStaysOnOneLine) {
    MemoryFileCalls disk;
    ChannelFile file;
    EXPECT_EQ(file.Open(L"a\nb").text.substr(0, 6), L"a\\nb: ");
}

TEST(DamagedOutput, FileThatIsCutWhileItIsReadIsReported) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(256);
    ChannelFile file;
    ASSERT_FALSE(file.Open(kPath));
    disk.files[kPath].resize(16384 + 1044);
    VtxDataTypes::CRRec record{};
    const RecordFileError error = file.ReadRecords(3, {&record, 1});
    EXPECT_EQ(error.kind, Kind::kUnreadable);
    EXPECT_EQ(error.text,
              L"CSC3.vcs: it was cut short while it was being read: it ends at byte 19516");
}

// Reads at an offset fail from the second on.
class FailingReads final : public ForwardingFileCalls {
  public:
    SystemErrorCode ReadAt(FileHandle handle, std::uint64_t offset, void* data, std::size_t size,
                           std::size_t& transferred) override {
        if (++reads_ > 1) return SystemErrorFor(SystemErrorKind::kAccessDenied);
        return ForwardingFileCalls::ReadAt(handle, offset, data, size, transferred);
    }

  private:
    int reads_ = 0;
};

TEST(DamagedOutput, FailedReadSaysWhereAndWhy) {
    const TempDirectory directory;
    const std::wstring path = directory.Path(L"CSC3.vcs");
    WriteFile(path, ReferenceChannelBytes(256));
    FailingReads disk;
    ChannelFile file;
    ASSERT_FALSE(file.Open(path));
    VtxDataTypes::CRRec record{};
    const RecordFileError error = file.ReadRecords(2, {&record, 1});
    EXPECT_EQ(error.kind, Kind::kUnreadable);
    EXPECT_EQ(error.text, path + L": at byte 18472: " +
                              SystemErrorText(SystemErrorFor(SystemErrorKind::kAccessDenied)));
}

}  // namespace
}  // namespace stalwick::test
