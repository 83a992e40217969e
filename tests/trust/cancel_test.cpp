// A conversion canceled at each of its blocks of data.

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/fixed_identity.h"
#include "tests/trust/expected_outputs.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kBlockSize = 50000;
constexpr std::size_t kHeaderBytes = 16384;

class CancelTest : public testing::TestWithParam<bool> {
  protected:
    bool hasHelpers() const { return GetParam(); }
    ReferenceConvertResult Reference(const std::string& fileName, std::size_t blocks) const {
        ReferenceConvertInput input;
        input.recording = recording_;
        input.options = AllOutputs();
        input.outputDirectory = ToUtf8(directory_.Path(L"out"));
        input.fileName = fileName;
        input.clockText = kFixedTimeText;
        input.uuidText = kFixedUuidText;
        input.separator = ToUtf8(std::wstring(1, kPathSeparator));
        input.spansUntilCancel = blocks;
        return ReferenceConvert(input);
    }
    std::map<std::string, std::string> Files(const std::wstring& name) const {
        return FilesIn(directory_.Path(L"out") + kPathSeparator + name);
    }
    // Whether the files are those of a conversion canceled at this block. One that reads ahead
    // sees the flag at an earlier block than the one that is being read.
    testing::AssertionResult AreFilesUntil(std::size_t block) const {
        const auto files = Files(L"a");
        const auto exact = SameFiles(files, Reference("a.ord", block).files);
        if (exact || !hasHelpers() || block == 0) return exact;
        return AreFilesUntil(block - 1);
    }

    TempDirectory directory_;
    std::string recording_ = MakeFullRecording(3, 1000);
};

TEST_P(CancelTest, AtEachBlockTheFilesAreClosedAndLaterOnesEmpty) {
    const std::size_t blocks = (recording_.size() - kHeaderBytes) / kBlockSize;
    ASSERT_GT(blocks, 3U);
    for (std::size_t block = 0; block <= blocks; ++block) {
        SCOPED_TRACE("block " + std::to_string(block));
        const TempDirectory directory;
        const FixedIdentity identity;
        const std::wstring first = PutRecording(directory_, recording_, L"a.ord");
        const std::wstring second = PutRecording(directory_, recording_, L"b.ord");
        OutputSettings settings = QuickSettings();
        settings.helperThreads = hasHelpers() ? HelperThreads::kOn : HelperThreads::kOff;
        DataProcessor processor(settings);
        std::wstring status;
        const ConversionJob job =
            MakeJob(directory_, {first, second}, AllOutputs(), processor, status);
        FaultyFileCalls disk;
        // The header is the first read, each block the next; the flag is looked at before it.
        if (block == 0) processor.cancelRequested = 1;
        disk.beforeRead = [&](unsigned readCount) {
            if (readCount == block) processor.cancelRequested = 1;
        };
        RunConversionJob(job);
        EXPECT_EQ(status, L"Data processing canceled.");
        EXPECT_EQ(disk.openCount, 0U);
        EXPECT_TRUE(AreFilesUntil(block));
        EXPECT_TRUE(SameFiles(Files(L"b"), Reference("b.ord", 0).files));
        for (const auto& entry : Files(L"b")) EXPECT_EQ(entry.second.size(), kHeaderBytes);
        const ExpectedFiles whole = ExpectFiles(Reference("a.ord", SIZE_MAX));
        for (const auto& [name, bytes] : Files(L"a")) {
            // Closed in order, and all its records but the last are those of the whole conversion.
            EXPECT_EQ(bytes.substr(0, kHeaderBytes), whole.at(name).finalHeader) << name;
        }
        for (const wchar_t* name : {L"a", L"b"}) {
            for (const auto& entry : Files(name)) {
                RemoveFile(directory_.Path(L"out") + kPathSeparator + name + kPathSeparator +
                           FromUtf8(entry.first));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, CancelTest, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "HelperThreads" : "OneThread");
});

}  // namespace
}  // namespace stalwick::test
