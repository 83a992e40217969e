// SPDX-License-Identifier: BSD-3-Clause
#include "ord/stream_window.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

std::string BytesOf(const StreamWindow& window) {
    return {window.Bytes().begin(), window.Bytes().end()};
}

std::string Numbered(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31 >> 3U);
    return bytes;
}

class StreamWindowTest : public testing::Test {
  protected:
    void Open(const std::string& bytes) {
        WriteFile(directory_.Path(L"a"), bytes);
        ASSERT_EQ(file_.Open(directory_.Path(L"a")), 0);
    }

    TempDirectory directory_;
    InputFile file_;
};

TEST_F(StreamWindowTest, ReturnsAllBytesAtTheirPositions) {
    const std::string bytes = Numbered(3 * StreamWindow::kMostBytes + 777);
    Open(bytes);
    StreamWindow window(file_, 0, StreamWindow::Access::kInOrder);
    for (std::size_t at = 0; at < bytes.size();) {
        window.Fill(1000);
        const std::size_t least = std::min<std::size_t>(1000, bytes.size() - at);
        ASSERT_EQ(window.Position(), at);
        ASSERT_GE(window.Bytes().size(), least);
        ASSERT_EQ(BytesOf(window).substr(0, least), bytes.substr(at, least));
        window.Advance(std::min<std::size_t>(701, window.Bytes().size()));
        at += 701;
    }
    EXPECT_TRUE(window.ReachesEnd());
    EXPECT_EQ(window.SystemError(), 0);
}

TEST_F(StreamWindowTest, ReadsNothingWhileItHasEnough) {
    Open(Numbered(2 * StreamWindow::kMostBytes));
    FaultyFileCalls calls;
    StreamWindow window(file_, 0, StreamWindow::Access::kInOrder);
    window.Fill(1000);
    const unsigned reads = calls.readCount;
    window.Advance(1000);
    window.Fill(1000);
    EXPECT_EQ(calls.readCount, reads);
}

TEST_F(StreamWindowTest, ReadThatFailedIsNotRepeated) {
    Open(Numbered(2 * StreamWindow::kMostBytes));
    FaultyFileCalls calls;
    calls.readError = SystemErrorFor(SystemErrorKind::kOther);
    calls.readsUntilError = 1;
    StreamWindow window(file_, 0, StreamWindow::Access::kInOrder);
    window.Fill(1000);
    window.Advance(window.Bytes().size());
    window.Fill(1000);
    EXPECT_TRUE(window.Bytes().empty() && window.ReachesEnd());
    calls.readError = 0;
    window.Fill(1000);
    EXPECT_TRUE(window.Bytes().empty());
    EXPECT_NE(window.SystemError(), 0);
}

}  // namespace
}  // namespace stalwick::test
