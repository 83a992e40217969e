// SPDX-License-Identifier: BSD-3-Clause
#include "outputs/event_file.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/outputs/reference_outputs.h"
#include "tests/support/memory_file_calls.h"

namespace stalwick::test {
namespace {

constexpr wchar_t kPath[] = L"out/rec/Events.vev";

TEST(EventFile, ReturnsEventsByPosition) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceEventBytes(5);
    EventFile file;
    ASSERT_FALSE(file.Open(kPath));
    ASSERT_EQ(file.RecordCount(), 5U);
    std::vector<VtxDataTypes::EventRec> events(3);
    ASSERT_FALSE(file.ReadRecords(2, events));
    EXPECT_EQ(std::uint64_t{events[0].timestamp}, 3000U);
    EXPECT_EQ(events[0].eventId, 21);
    EXPECT_EQ(events[0].ttlValue, 3);
    EXPECT_EQ(events[2].ttlValue, 5);
    EXPECT_STREQ(events[2].eventString.data(), "TTL Change.");
}

TEST(EventFile, NeverSaysThatItWasClosed) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceEventBytes(0);
    EventFile file;
    ASSERT_FALSE(file.Open(kPath));
    EXPECT_FALSE(file.IsClosed());
    EXPECT_EQ(file.RecordCount(), 0U);
}

TEST(EventFile, IsNoChannelFile) {
    MemoryFileCalls disk;
    disk.files[kPath] = ReferenceChannelBytes(1);
    EventFile file;
    const RecordFileError error = file.Open(kPath);
    EXPECT_EQ(error.kind, RecordFileError::Kind::kWrongType);
    EXPECT_EQ(error.text, L"out/rec/Events.vev: its -FileType is CSC, not Event");
    EXPECT_EQ(disk.openCount, 0U);
}

}  // namespace
}  // namespace stalwick::test
