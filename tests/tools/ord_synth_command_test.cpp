// SPDX-License-Identifier: BSD-3-Clause
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

// The command's exit status; its output is ignored.
int RunCommand(const std::string& arguments) {
    const std::string line =
        std::string("'" ORD_SYNTH_COMMAND "' ") + arguments + " > /dev/null 2> /dev/null";
    const int status = std::system(line.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class OrdSynthCommandTest : public testing::Test {
  protected:
    void SetUp() override {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        path_ = testing::TempDir() + "ord_synth_" + info->name() + ".ord";
        std::filesystem::remove(path_);
    }
    void TearDown() override { std::filesystem::remove(path_); }

    std::string Output() const { return "--output '" + path_ + "' "; }
    bool WasMade() const { return std::filesystem::exists(path_); }

    std::string path_;
};

TEST_F(OrdSynthCommandTest, AMadeRecordingEndsWithStatus0) {
    EXPECT_EQ(RunCommand(Output() +
                         "--seconds 0.05 --all --per-sample-states --mask 0-7 --gap 0.02:0.01"),
              0);
    EXPECT_TRUE(WasMade());
}

TEST_F(OrdSynthCommandTest, HelpEndsWithStatus0) {
    EXPECT_EQ(RunCommand("--help"), 0);
}

TEST_F(OrdSynthCommandTest, WrongUsageEndsWithStatus2AndMakesNothing) {
    EXPECT_EQ(RunCommand(""), 2);
    for (const char* wrong : {"--channels 33",
                              "--channels 512",
                              "--seconds 0",
                              "--seconds -1",
                              "--seconds abc",
                              "--rate 0",
                              "--rate 4294997296",
                              "--noise 1001",
                              "--noise -1",
                              "--seed -1",
                              "--seed 18446744073709551616",
                              "--seed 1x",
                              "--file-version 3.0",
                              "--flip 20000:8",
                              "--flip 20000",
                              "--insert 20000:0",
                              "--drop-bytes 5",
                              "--cut -1",
                              "--cut 20000 --flip 20001:1",
                              "--drop-bytes 20000:10 --insert 20009:1",
                              "--drift 1001",
                              "--mask 64",
                              "--mask 5-4",
                              "--mask ''",
                              "--gap 0.5",
                              "--gap 2:0.1",
                              "--gap 0:0.1",
                              "--gap 0.5:0.5",
                              "--gap 0.5:0",
                              "--utc-offset 9999999999999999999",
                              "--nonsense",
                              "extra"}) {
        EXPECT_EQ(RunCommand(Output() + wrong), 2) << wrong;
        EXPECT_FALSE(WasMade()) << wrong;
    }
}

TEST_F(OrdSynthCommandTest, AnExistingFileEndsWithStatus1UnlessForced) {
    EXPECT_EQ(RunCommand(Output() + "--seconds 0.01"), 0);
    EXPECT_EQ(RunCommand(Output() + "--seconds 0.01"), 1);
    EXPECT_EQ(RunCommand(Output() + "--seconds 0.01 --force"), 0);
}

}  // namespace
