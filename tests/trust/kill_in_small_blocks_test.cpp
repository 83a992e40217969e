// SPDX-License-Identifier: BSD-3-Clause

// What a killed conversion keeps: all but the newest records of every file. For short recordings
// that is more than blocks of 5000 records would leave, and for long ones never less.

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"
#include "tests/trust/command_run.h"
#include "tests/trust/expected_outputs.h"

namespace stalwick::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kChannelRecordBytes = 1044;
constexpr std::size_t kRawRecordBytes = (32 + 18) * 4;
constexpr std::size_t kBlockRecords = 5000;  // of the format's own blocks
// 6,000 raw records: the packets of which ten come.
constexpr std::size_t kPacketsWithADSamples = 600;
// How much of the ultrasonic file may be in memory: spans that were read ahead, a block that is
// being filled, and blocks that wait for the writing thread.
constexpr std::size_t kNewestRecords = 850;

std::string Recording(std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packetCount = packetCount;
    shape.packet.ultrasonic = true;
    shape.packet.adBlock = false;
    std::vector<PacketPlan> packets = MakeRandomPackets(5, shape);
    shape.packetCount = kPacketsWithADSamples;
    shape.packet.adBlock = true;
    const std::vector<PacketPlan> withADSamples = MakeRandomPackets(5, shape);
    std::copy(withADSamples.begin(), withADSamples.end(), packets.begin());
    return BuildOrdFile(Version2Header(32).Set("-UltrasonicAvailable", "1"), packets);
}

// A named pipe that delivers the recording and then nothing more, without an end.
class StalledPipe {
  public:
    StalledPipe(std::string path, const std::string& bytes)
        : path_(std::move(path)), writer_([this, &bytes] { Write(bytes); }) {}
    ~StalledPipe() {
        // Releases a writer that still waits for a reader; its writes then fail.
        const int reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        ::close(reader);
        writer_.join();
        ::close(pipe_);
    }
    StalledPipe(const StalledPipe&) = delete;
    StalledPipe& operator=(const StalledPipe&) = delete;

  private:
    void Write(const std::string& bytes) {
        pipe_ = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        for (std::size_t written = 0; written < bytes.size();) {
            const ssize_t count = ::write(pipe_, bytes.data() + written, bytes.size() - written);
            if (count <= 0) return;
            written += static_cast<std::size_t>(count);
        }
    }

    std::string path_;
    int pipe_ = -1;
    std::thread writer_;  // last: it uses the others
};

class KillInSmallBlocks : public testing::TestWithParam<std::size_t> {};

TEST_P(KillInSmallBlocks, EveryFileKeepsAllButItsNewestRecords) {
    const std::string recording = Recording(GetParam());
    const CommandScene scene(recording);
    const ExpectedFiles expected = ExpectFiles(scene.Reference());
    RemoveFile(scene.InputPath());
    ASSERT_EQ(::mkfifo(ToUtf8(scene.InputPath()).c_str(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);

    const std::size_t wanted = GetParam() * 70 / 512 - kNewestRecords;
    const std::wstring ultrasonic = scene.RecordingDirectory() + kPathSeparator + L"Ultrasonic.vcs";
    CommandProcess command(scene.Arguments());
    {
        const StalledPipe pipe(ToUtf8(scene.InputPath()), recording);
        const auto isWritten = [&] {
            return Exists(ultrasonic) &&
                   ReadFile(ultrasonic).size() >= kOrdHeaderBytes + wanted * kChannelRecordBytes;
        };
        const Clock::time_point latest = Clock::now() + std::chrono::seconds(60);
        while (!isWritten() && Clock::now() < latest) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        command.Signal(SIGKILL);
        EXPECT_EQ(command.Wait().signal, SIGKILL);
    }
    const auto files = scene.MaskedFiles();
    EXPECT_TRUE(AreValidRemainders(files, expected));
    EXPECT_GE(files.at("Ultrasonic.vcs").size(), kOrdHeaderBytes + wanted * kChannelRecordBytes);
    EXPECT_GE(files.at("RawData.vrd").size(), kOrdHeaderBytes + kBlockRecords * kRawRecordBytes);
}

// 4,101 ultrasonic records, of which one block would leave none; 6,152, of which it would leave
// 5,000.
INSTANTIATE_TEST_SUITE_P(Packets, KillInSmallBlocks, testing::Values(30'000, 45'000));

}  // namespace
}  // namespace stalwick::test
