// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/recording_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/tools/recording_in_memory.h"

namespace stalwick {
namespace {

namespace fs = std::filesystem;

class OrdSynthFileTest : public testing::Test {
  protected:
    void SetUp() override {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        directory_ = fs::path(testing::TempDir()) / (std::string("ord_synth_") + info->name());
        fs::remove_all(directory_);
        fs::create_directories(directory_);
        options_.channelCount = 32;
        options_.packetCount = 5;
    }
    void TearDown() override { fs::remove_all(directory_); }

    std::string PathOf(const std::string& name) const { return (directory_ / name).string(); }

    void Put(const std::string& name, const std::string& text) const {
        std::ofstream(PathOf(name), std::ios::binary) << text;
    }

    std::string Read(const std::string& name) const {
        std::ifstream file(PathOf(name), std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    std::string Write(const std::string& name, bool replaceExisting) {
        return WriteRecordingFile(options_, PathOf(name), replaceExisting, summary_);
    }

    auto EntryCount() const {
        return std::distance(fs::directory_iterator(directory_), fs::directory_iterator());
    }

    SynthOptions options_;
    SynthSummary summary_;

  private:
    fs::path directory_;
};

TEST_F(OrdSynthFileTest, TheFileHoldsTheRecordingAndNothingElseIsLeft) {
    EXPECT_EQ(Write("a.ord", false), "");
    EXPECT_EQ(Read("a.ord"), test::MakeInMemory(options_).bytes);
    EXPECT_EQ(summary_.bytes, Read("a.ord").size());
    EXPECT_EQ(EntryCount(), 1);
}

TEST_F(OrdSynthFileTest, AnExistingFileIsRefusedAndKept) {
    Put("a.ord", "kept");
    EXPECT_EQ(Write("a.ord", false),
              PathOf("a.ord") + " already exists; give another name, or --force to replace it");
    EXPECT_EQ(Read("a.ord"), "kept");
    EXPECT_EQ(EntryCount(), 1);
}

TEST_F(OrdSynthFileTest, AnExistingFileIsReplacedWhenAskedFor) {
    Put("a.ord", "old");
    EXPECT_EQ(Write("a.ord", true), "");
    EXPECT_EQ(Read("a.ord"), test::MakeInMemory(options_).bytes);
}

TEST_F(OrdSynthFileTest, ADirectoryIsRefusedEvenWhenAskedToReplace) {
    fs::create_directory(PathOf("a.ord"));
    EXPECT_EQ(Write("a.ord", true),
              PathOf("a.ord") + " is a directory or a device; give the name of a file");
    EXPECT_EQ(EntryCount(), 1);
}

TEST_F(OrdSynthFileTest, AMissingDirectoryIsNamedWithTheReason) {
    EXPECT_EQ(Write("none/a.ord", false),
              "cannot create " + PathOf("none/a.ord") + ".part: No such file or directory");
}

TEST_F(OrdSynthFileTest, AFailedWriteLeavesNothingAndKeepsTheFileThatWasThere) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
    Put("a.ord", "kept");
    fs::create_symlink("/dev/full", PathOf("a.ord.part"));
    EXPECT_EQ(Write("a.ord", true),
              "cannot write " + PathOf("a.ord") +
                  ".part: No space left on device; the incomplete file was removed");
    EXPECT_EQ(Read("a.ord"), "kept");
    EXPECT_EQ(EntryCount(), 1);
}

}  // namespace
}  // namespace stalwick
