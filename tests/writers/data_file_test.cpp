#include "writers/data_file.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/forwarding_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

// Keeps where the disk was asked to begin with data, and with how many bytes.
class WriteBackCalls final : public ForwardingFileCalls {
  public:
    SystemErrorCode StartWriteBack(FileHandle handle, std::uint64_t offset,
                                   std::uint64_t size) override {
        spans.emplace_back(offset, size);
        return ForwardingFileCalls::StartWriteBack(handle, offset, size);
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
};

TEST(DataFile, WriteBackAfterACutBeginsWhereTheFileEndsThen) {
    constexpr std::size_t kPiece = std::size_t{1} << 20U;
    constexpr std::size_t kKept = 5000;
    const TempDirectory directory;
    WriteBackCalls calls;
    DataFile file{OutputSettings()};
    ASSERT_EQ(file.Create(directory.Path(L"a.vcs")), 0);
    const std::vector<char> data(kPiece);
    ASSERT_TRUE(file.Append(data.data(), data.size()));
    ASSERT_TRUE(file.CutTo(kKept));
    ASSERT_TRUE(file.Append(data.data(), kKept));
    ASSERT_TRUE(file.Append(data.data(), data.size()));
    const std::vector<std::pair<std::uint64_t, std::uint64_t>> expected = {
        {kOutputHeaderSize, kPiece}, {kOutputHeaderSize + kKept, kKept + kPiece}};
    EXPECT_EQ(calls.spans, expected);
    EXPECT_TRUE(file.Close());
}

}  // namespace
}  // namespace stalwick::test
