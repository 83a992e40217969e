// SPDX-License-Identifier: BSD-3-Clause

// A recording that changes, vanishes or fails while it is read.

#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPackets = 600;  // several blocks of data

/** Does something to the recording before its n-th block is read. */
class ChangingInput final {
  public:
    ChangingInput(unsigned block, std::function<void()> change) {
        disk_.beforeRead = [block, change = std::move(change)](unsigned readCount) {
            if (readCount == block) change();
        };
    }

  private:
    FaultyFileCalls disk_;
};

class InputChange : public testing::Test {
  protected:
    EngineRun Convert(const std::string& bytes) {
        return RunEngine(directory_, bytes, AllOutputs());
    }
    std::string InputPath() const {
        return ToUtf8(directory_.Path(L"in") + kPathSeparator + L"rec.ord");
    }
    std::map<std::string, std::string> FilesOf(const std::string& bytes) {
        return RunReference(directory_, bytes, AllOutputs()).files;
    }
    static bool Tells(const EngineRun& run, const std::wstring& text) {
        return run.details.size() == 1 &&
               run.details[0].kind == ConversionDetail::Kind::kIncomplete &&
               run.details[0].text.find(text) != std::wstring::npos;
    }

    TempDirectory directory_;
    std::string recording_ = MakeFullRecording(3, kPackets);
};

TEST_F(InputChange, RecordingThatGrowsInTimeIsReadToItsNewEnd) {
    const std::string begin = recording_.substr(0, recording_.size() - 30000);
    const ChangingInput change(2, [&] { WriteFile(FromUtf8(InputPath()), recording_); });
    const EngineRun run = Convert(begin);
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(SameFiles(run.files, FilesOf(recording_)));
    EXPECT_EQ(run.details.size(), 0U);
}

TEST_F(InputChange, WhatComesAfterTheEndThatWasReadIsReportedAsMissing) {
    bool grown = false;
    FaultyFileCalls disk;
    disk.afterRead = [&](std::size_t count) {
        if (count != 0 || grown) return;
        grown = true;
        WriteFile(FromUtf8(InputPath()), recording_ + recording_.substr(16384));
    };
    const EngineRun run = Convert(recording_);
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_TRUE(Tells(run, L"it grew while it was being read"));
    EXPECT_TRUE(SameFiles(run.files, FilesOf(recording_)));
}

TEST_F(InputChange, WhatAShortHeaderGrowsByIsNeverMistakenForPackets) {
    const std::string begin = recording_.substr(0, 10000);
    FaultyFileCalls disk;
    disk.beforeCreate = [&](const std::wstring&) {
        WriteFile(FromUtf8(InputPath()), begin + recording_.substr(16384));
    };
    const EngineRun run = Convert(begin);
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(run.recordsProcessed, 0U);
    EXPECT_TRUE(Tells(run, L"it grew while it was being read"));
    EXPECT_TRUE(SameFiles(run.files, FilesOf(begin)));
}

TEST_F(InputChange, RecordingThatIsCutWhileItIsReadIsReportedAsIncomplete) {
    const ChangingInput change(2, [&] { fs::resize_file(InputPath(), 80000); });
    const EngineRun run = Convert(recording_);
    EXPECT_EQ(run.statusText, L"Processing complete");
    ASSERT_FALSE(run.details.empty());
    EXPECT_EQ(run.details[0].kind, ConversionDetail::Kind::kIncomplete);
    EXPECT_NE(run.details[0].text.find(L"it was cut short while it was being read"),
              std::wstring::npos);
    EXPECT_TRUE(SameFiles(run.files, FilesOf(recording_.substr(0, 80000))));
}

TEST_F(InputChange, RecordingThatIsRemovedWhileItIsReadConvertsWhole) {
    const ChangingInput change(1, [&] { fs::remove(InputPath()); });
    const EngineRun run = Convert(recording_);
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(run.details.size(), 0U);
    EXPECT_TRUE(SameFiles(run.files, FilesOf(recording_)));
}

TEST_F(InputChange, ReadThatFailsForGoodFailsTheFileOnce) {
    FaultyFileCalls disk;
    disk.readError = SystemErrorFor(SystemErrorKind::kOther);
    disk.readsUntilError = 2;
    const EngineRun run = Convert(recording_);
    EXPECT_EQ(run.statusText, L"Processing failed - Failed to process input file");
    EXPECT_TRUE(Tells(run, SystemErrorText(disk.readError)));
    EXPECT_TRUE(Tells(run, FromUtf8(InputPath())));
    EXPECT_EQ(disk.openCount, 0U);
}

}  // namespace
}  // namespace stalwick::test
