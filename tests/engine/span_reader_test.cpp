// SPDX-License-Identifier: BSD-3-Clause

// The spans of a recording are the same, and end the same way, whether read on request or ahead.

#include "engine/span_reader.h"

#include "engine/span_source.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <new>
#include <semaphore>
#include <string>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kSpanBytes = 50000;

// More than twice as many spans as are read ahead.
std::string Recording() {
    RandomRecordingShape shape;
    shape.packet.stateBytePerSample = true;
    shape.packetCount = 3000;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(7, shape));
}

constexpr int kNever = -1;

// With the number of spans before reading ahead starts.
class SpanReaderTest : public testing::TestWithParam<int> {
  protected:
    SpanReaderTest() {
        path_ = directory_.Path(L"rec.ord");
        WriteFile(path_, recording_);
        EXPECT_EQ(reader_.Open(path_), 0);
    }

    DecodedSpan& Next(SpanReader& spans) {
        if (given_++ == GetParam()) spans.ReadAhead();
        return spans.Next();
    }

    TempDirectory directory_;
    std::string recording_ = Recording();
    std::wstring path_;
    SpanSource reader_;
    int given_ = 0;
};

TEST_P(SpanReaderTest, ReturnsTheSpansOfTheReaderInOrder) {
    ORDFileReader other;
    ASSERT_EQ(other.Open(path_), 0);
    SpanReader spans(reader_);
    std::vector<ORDDataPacket> expected;
    std::size_t count = 0;
    for (bool endOfFile = false; !endOfFile; ++count) {
        ASSERT_EQ(other.GetData(expected, endOfFile), 0);
        const DecodedSpan& span = Next(spans);
        ASSERT_EQ(span.status, 0);
        ASSERT_EQ(span.endOfFile, endOfFile);
        ASSERT_EQ(span.bytesRead, other.BytesRead());
        ASSERT_TRUE(span.packets == expected) << "span " << count;
    }
    // More spans than are read ahead, so that their buffers are reused.
    EXPECT_GT(count, 20U);
    EXPECT_EQ(count, (recording_.size() - kOrdHeaderBytes) / kSpanBytes + 1);
}

TEST_P(SpanReaderTest, FailingReadIsTheSpanAfterTheWholeOnes) {
    FaultyFileCalls disk;
    disk.readError = EIO;
    disk.readsUntilError = 12;
    SpanReader spans(reader_);
    for (int i = 0; i < 12; ++i) ASSERT_EQ(Next(spans).status, 0) << "span " << i;
    EXPECT_EQ(Next(spans).status, -1);
    EXPECT_EQ(reader_.SystemError(), EIO);
    EXPECT_EQ(reader_.GetErrorMessage(), L"Failed to process input file");
}

TEST_P(SpanReaderTest, WhatReadingThrowsIsThrownWhereTheSpanIsTaken) {
    FaultyFileCalls disk;
    disk.beforeRead = [](unsigned readCount) {
        if (readCount == 11) throw std::bad_alloc();
    };
    SpanReader spans(reader_);
    for (int i = 0; i < 11; ++i) ASSERT_EQ(Next(spans).status, 0) << "span " << i;
    EXPECT_THROW(Next(spans), std::bad_alloc);
}

TEST_P(SpanReaderTest, MayEndBeforeTheLastSpan) {
    for (int taken = 0; taken < 12; ++taken) {
        SpanSource reader;
        ASSERT_EQ(reader.Open(path_), 0);
        std::uint64_t bytesTaken = 0;
        {
            SpanReader spans(reader);
            given_ = 0;
            for (int i = 0; i < taken; ++i) bytesTaken = Next(spans).bytesRead;
        }
        EXPECT_GE(reader.BytesRead(), bytesTaken);
        reader.Close();
    }
}

TEST(SpanReader, StaysWithinEightSpansOfTheCaller) {
    const TempDirectory directory;
    const std::wstring path = directory.Path(L"rec.ord");
    WriteFile(path, Recording());
    SpanSource reader;
    ASSERT_EQ(reader.Open(path), 0);
    FaultyFileCalls disk;
    std::atomic<unsigned> taken = 0;
    unsigned furthest = 0;
    disk.beforeRead = [&](unsigned readCount) {
        furthest = std::max(furthest, readCount + 1 - taken.load());
    };
    {
        SpanReader spans(reader);
        spans.ReadAhead();
        while (!spans.Next().IsLast()) ++taken;
    }
    EXPECT_LE(furthest, 9U);  // the caller's own one among them
}

// A recording on a slow disk: the user sees the progress, and a cancel takes effect.
TEST(SpanReader, SpanIsGivenBeforeTheNextOneIsRead) {
    const TempDirectory directory;
    const std::wstring path = directory.Path(L"rec.ord");
    WriteFile(path, Recording());
    SpanSource reader;
    ASSERT_EQ(reader.Open(path), 0);
    FaultyFileCalls disk;
    std::binary_semaphore isTaken(0);
    std::atomic<bool> wasTaken = false;
    unsigned reads = 0;
    disk.beforeRead = [&](unsigned) {
        if (++reads == 2) wasTaken = isTaken.try_acquire_for(std::chrono::seconds(20));
    };
    {
        SpanReader spans(reader);
        spans.ReadAhead();
        spans.Next();
        isTaken.release();
    }
    EXPECT_TRUE(wasTaken || reads < 2);
}

std::string NameOfStart(const testing::TestParamInfo<int>& start) {
    if (start.param == kNever) return "WhenAskedFor";
    return "ReadingAheadAfter" + std::to_string(start.param);
}

INSTANTIATE_TEST_SUITE_P(All, SpanReaderTest, testing::Values(kNever, 0, 1, 5), NameOfStart);

}  // namespace
}  // namespace stalwick::test
