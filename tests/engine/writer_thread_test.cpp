// SPDX-License-Identifier: BSD-3-Clause

// Conversions with a second thread that writes: the same bytes, and the same results when writes
// fail.

#include <cwchar>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/forwarding_file_calls.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr std::uint64_t kHeaderBytes = 16384;

OutputSettings Settings(HelperThreads helperThreads, std::uint32_t recordsPerWrite) {
    OutputSettings settings = QuickSettings();
    settings.helperThreads = helperThreads;
    settings.recordsPerWrite = recordsPerWrite;
    return settings;
}

// 1300 samples per channel: two full records and part of a third.
std::string Recording() {
    RandomRecordingShape shape;
    shape.packet.baseImu = shape.packet.afeImu = shape.packet.ultrasonic = true;
    shape.packet.stateBytePerSample = true;
    shape.packetCount = 130;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(5, shape));
}

TEST(WriterThread, WritesTheSameBytes) {
    const std::string recording = Recording();
    for (const std::uint32_t recordsPerWrite : {0U, 1U, 2U, 3U, 5U, 5000U}) {
        for (const HelperThreads helperThreads : {HelperThreads::kOff, HelperThreads::kOn}) {
            EXPECT_TRUE(ConvertsLikeTheReference(recording, AllOutputs(),
                                                 Settings(helperThreads, recordsPerWrite)))
                << recordsPerWrite << " records a write";
        }
    }
}

// The system's calls, but the disk is full for one file from some offset on.
class OneFullFile final : public ForwardingFileCalls {
  public:
    OneFullFile(std::wstring name, std::uint64_t end) : name_(std::move(name)), end_(end) {}

    SystemErrorCode CreateExclusive(const std::wstring& path, FileHandle& handle) override {
        const SystemErrorCode code = ForwardingFileCalls::CreateExclusive(path, handle);
        if (code == 0 && path.ends_with(name_)) full_ = handle;
        return code;
    }
    SystemErrorCode WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                            std::size_t size, std::size_t& transferred) override {
        const bool fails = handle == full_ && offset >= kHeaderBytes && offset + size > end_;
        return fails ? SystemErrorFor(SystemErrorKind::kNoSpace)
                     : ForwardingFileCalls::WriteAt(handle, offset, data, size, transferred);
    }

  private:
    std::wstring name_;
    std::uint64_t end_;
    FileHandle full_ = kNoFile;
};

struct Outcome {
    EngineRun run;
    ReferenceConvertResult reference;
};

Outcome ConvertWithFullFile(const std::string& recording, const OutputSettings& settings,
                            const std::wstring& name, std::uint64_t end) {
    const TempDirectory directory;
    Outcome outcome;
    {
        const OneFullFile calls(name, end);
        outcome.run = RunEngine(directory, recording, AllOutputs(), settings);
    }
    outcome.reference = RunReference(directory, recording, AllOutputs());
    return outcome;
}

bool IsIncomplete(const EngineRun& run) {
    for (const ConversionDetail& detail : run.details) {
        if (detail.kind == ConversionDetail::Kind::kIncomplete) return true;
    }
    return false;
}

// The data of each file after its header are a beginning of what it should hold.
void ExpectBeginnings(const Outcome& outcome) {
    for (const auto& [name, bytes] : outcome.run.files) {
        const std::string& whole = outcome.reference.files.at(name);
        ASSERT_GE(bytes.size(), kHeaderBytes) << name;
        ASSERT_LE(bytes.size(), whole.size()) << name;
        EXPECT_EQ(bytes.compare(kHeaderBytes, std::string::npos, whole, kHeaderBytes,
                                bytes.size() - kHeaderBytes),
                  0)
            << name;
    }
}

TEST(WriterThread, FailingWritesGiveTheSameResults) {
    const std::string recording = Recording();
    for (const wchar_t* name : {L"CSC1.vcs", L"CSC17.vcs", L"Base_AVX.vcs", L"Ultrasonic.vcs",
                                L"RawData.vrd", L"Events.vev"}) {
        for (const std::uint64_t end :
             {std::uint64_t{0}, kHeaderBytes + 1044, kHeaderBytes + 3000}) {
            SCOPED_TRACE(testing::Message() << std::string(name, name + 5) << " up to " << end);
            const Outcome alone =
                ConvertWithFullFile(recording, Settings(HelperThreads::kOff, 1), name, end);
            const Outcome helped =
                ConvertWithFullFile(recording, Settings(HelperThreads::kOn, 1), name, end);
            EXPECT_EQ(helped.run.statusText, alone.run.statusText);
            EXPECT_EQ(helped.run.errorText, alone.run.errorText);
            EXPECT_EQ(IsIncomplete(helped.run), IsIncomplete(alone.run));
            ASSERT_EQ(helped.run.details.size(), alone.run.details.size());
            ExpectBeginnings(alone);
            ExpectBeginnings(helped);
            const std::string narrowName(name, name + std::wcslen(name));
            EXPECT_TRUE(SameBytes(helped.run.files.at(narrowName).substr(kHeaderBytes),
                                  alone.run.files.at(narrowName).substr(kHeaderBytes)));
        }
    }
}

// No header says "closed" unless every channel file is whole.
TEST(WriterThread, FailingChannelFileLeavesEveryHeaderAsNotClosed) {
    const std::string recording = Recording();
    const Outcome outcome = ConvertWithFullFile(recording, Settings(HelperThreads::kOn, 64),
                                                L"CSC20.vcs", kHeaderBytes);
    EXPECT_EQ(outcome.run.statusText, L"Processing failed");
    for (const auto& [name, bytes] : outcome.run.files) {
        if (!name.ends_with(".vcs")) continue;
        EXPECT_NE(bytes.find("File was not closed properly"), std::string::npos) << name;
    }
}

}  // namespace
}  // namespace stalwick::test
