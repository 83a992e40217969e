// SPDX-License-Identifier: BSD-3-Clause
#include "cli/room_check.h"

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

class RoomCheck : public testing::Test {
  protected:
    // Recordings without packets need 33 headers of 16,384 bytes: 540,672.
    std::vector<std::wstring> Lines(std::uint64_t freeBytes, const std::wstring& other = L"") {
        line_.inputFiles = {Put(L"a.ord"), Put(L"b.ord")};
        line_.outputDirectory = directory_.Path(L"out");
        line_.channelOptions = {1, 0, 0, 0};
        std::vector<PlannedRecording> recordings = PlanRecordings(line_);
        if (!other.empty()) recordings[1].parentDirectory = other;
        return DescribeLackOfRoom(recordings, line_, [=](const std::wstring& directory) {
            return FreeSpace{freeBytes, directory == other ? 2U : 1U};
        });
    }
    std::wstring Put(const std::wstring& name) const {
        return PutRecording(directory_, BuildOrdFile(Version2Header(32), {}), name);
    }

    TempDirectory directory_;
    CommandLine line_;
};

TEST_F(RoomCheck, SaysHowMuchIsNeededAndHowMuchIsFree) {
    EXPECT_EQ(Lines(500'000),
              std::vector<std::wstring>{
                  L"stalwick-convert: the outputs need about 1.0 MB in " + directory_.Path(L"out") +
                  L", but only 500.0 kB are free; free some space or choose another directory"});
}

TEST_F(RoomCheck, SaysNothingIfThereIsRoom) {
    EXPECT_TRUE(Lines(2 * 540'672).empty());
    EXPECT_FALSE(Lines(2 * 540'672 - 1).empty());
}

TEST_F(RoomCheck, CountsEachFileSystemByItself) {
    EXPECT_TRUE(Lines(540'672, L"elsewhere").empty());
    EXPECT_EQ(Lines(540'671, L"elsewhere").size(), 2U);
}

TEST_F(RoomCheck, LeavesOutWhatMayBeSkipped) {
    MakeDirectory(directory_.Path(L"out"));
    MakeDirectory(directory_.Path(L"out/b"));
    EXPECT_FALSE(Lines(600'000).empty());
    line_.skipConverted = true;
    EXPECT_TRUE(Lines(600'000).empty());
}

TEST_F(RoomCheck, SaysNothingIfTheRoomIsUnknown) {
    line_.inputFiles = {Put(L"a.ord")};
    line_.channelOptions = {1, 0, 0, 0};
    EXPECT_TRUE(DescribeLackOfRoom(PlanRecordings(line_), line_, [](const std::wstring&) {
                    return std::optional<FreeSpace>();
                }).empty());
}

}  // namespace
}  // namespace stalwick::test
