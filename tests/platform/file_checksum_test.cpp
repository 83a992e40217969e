// SPDX-License-Identifier: BSD-3-Clause
#include "platform/file_checksum.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

class Checksum : public testing::Test {
  protected:
    FileChecksum Of(const std::string& bytes) const {
        WriteFile(directory_.Path(L"a"), bytes);
        return ChecksumOf(directory_.Path(L"a"), cancelRequested_);
    }

    TempDirectory directory_;
    std::atomic<std::uint8_t> cancelRequested_{0};
};

// The examples in the standard.
TEST_F(Checksum, IsThatOfTheStandardsExamples) {
    EXPECT_EQ(Of("").sha256, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Of("abc").sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Of(std::string(1'000'000, 'a')).sha256,
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

// More than is read at a time, in pieces.
TEST_F(Checksum, TakesTheWholeOfALongFile) {
    FaultyFileCalls calls;
    calls.mostBytesPerCall = 300'000;
    EXPECT_EQ(Of(std::string(2U << 20U, '\0')).sha256,
              "5647f05ec18958947d32874eeb788fa396a05d0bab7c1b71f112ceb7e9b31eee");
}

TEST_F(Checksum, FailedReadReturnsNoneAndTheReason) {
    FaultyFileCalls calls;
    calls.readError = SystemErrorFor(SystemErrorKind::kNoSpace);
    const FileChecksum checksum = Of("abc");
    EXPECT_EQ(checksum.sha256, "");
    EXPECT_EQ(checksum.error, calls.readError);
    EXPECT_EQ(calls.openCount, 0U);
}

TEST_F(Checksum, MissingFileReturnsNoneAndTheReason) {
    const FileChecksum checksum = ChecksumOf(directory_.Path(L"none"), cancelRequested_);
    EXPECT_EQ(checksum.sha256, "");
    EXPECT_EQ(ClassifySystemError(checksum.error), SystemErrorKind::kNotFound);
}

TEST_F(Checksum, CancelReturnsNoneAndIsNotAnError) {
    cancelRequested_ = 1;
    const FileChecksum checksum = Of("abc");
    EXPECT_EQ(checksum.sha256, "");
    EXPECT_EQ(checksum.error, 0);
}

}  // namespace
}  // namespace stalwick::test
