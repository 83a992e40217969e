// SPDX-License-Identifier: BSD-3-Clause

// Recordings that come through a named pipe whose writer opens it only once.

#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/conversion_batch.h"
#include "platform/text_encoding.h"
#include "tests/cli/command_process.h"
#include "tests/support/ord_builder.h"
#include "tests/support/reference_converter.h"

namespace stalwick::test {
namespace {

// More than a pipe holds, so that the writer still writes while the command reads.
std::string LongRecording() {
    RandomRecordingShape shape;
    shape.packetCount = 1000;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(73, shape));
}

// Opens the pipe once and writes until all is written or nobody reads any more.
void WriteOnce(const std::string& path, const std::string& bytes) {
    const int pipe = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(pipe, bytes.data() + written, bytes.size() - written);
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    ::close(pipe);
}

TEST(CommandPipe, RecordingThatAWriterWritesOnceIsConvertedWhole) {
    const TempDirectory directory;
    const std::string recording = LongRecording();
    const std::string path = ToUtf8(directory.Path(L"rec.ord"));
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);
    std::thread writer([&] { WriteOnce(path, recording); });
    CommandSetup setup;
    // A command that waits for a second writer would wait forever.
    setup.prepare = [] { ::alarm(120); };
    const CommandResult result = RunCommand({"-o", ToUtf8(directory.Path(L"out")), path}, setup);
    // If the command never opened the pipe, the writer still waits for a reader.
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    writer.join();
    ::close(reader);
    EXPECT_EQ(result.output, "Processing complete\n") << result.signal;
    EXPECT_EQ(result.error.rfind(path + ": 0.3 s, 32 channels -> ", 0), 0U) << result.error;
    EXPECT_EQ(result.exitStatus, 0);

    ReferenceConvertInput input;
    input.recording = recording;
    const auto expected = ReferenceConvert(input).files;
    const auto outputs = FilesIn(directory.Path(L"out/rec"));
    ASSERT_EQ(outputs.size(), expected.size());
    for (const auto& [name, bytes] : expected) {
        EXPECT_TRUE(outputs.at(name).substr(kOrdHeaderBytes) == bytes.substr(kOrdHeaderBytes))
            << name;
    }
}

TEST(CommandPipe, SizesOfTheInputsAreLearntWithoutOpeningThem) {
    const TempDirectory directory;
    WriteFile(directory.Path(L"a.ord"), std::string(1234, 'x'));
    ASSERT_EQ(::mkfifo(ToUtf8(directory.Path(L"b.ord")).c_str(), 0600), 0);
    CommandLine line;
    line.inputFiles = {directory.Path(L"a.ord"), directory.Path(L"b.ord")};
    // Opening the pipe would wait for a writer, and none ever comes.
    ::alarm(120);
    const ConversionBatch batch(line, PlanRecordings(line));
    ::alarm(0);
    EXPECT_EQ(batch.Progress().bytesTotal, 1234U);
}

}  // namespace
}  // namespace stalwick::test
