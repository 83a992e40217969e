// SPDX-License-Identifier: BSD-3-Clause

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
        ReferenceConvertInput input =
            ReferenceInput(recording_, AllOutputs(), directory_.Path(L"out"));
        input.fileName = fileName;
        input.spansUntilCancel = blocks;
        return ReferenceConvert(input);
    }
    std::map<std::string, std::string> Files(const std::wstring& name) const {
        return FilesIn(directory_.Path(L"out") + kPathSeparator + name);
    }
    // The block before which the conversion ended, according to the packets in its account. A
    // conversion that reads ahead sees the flag at an earlier block than the one being read.
    std::size_t LastBlock(std::size_t block, const ConversionAccount& account) const {
        while (hasHelpers() && block > 0 &&
               Reference("a.ord", block).packetCount > account.packets) {
            --block;
        }
        return block;
    }
    // Whether the files, and the account, are those of a conversion that ended before a block.
    testing::AssertionResult EndedBefore(std::size_t block,
                                         const ConversionAccount& account) const {
        const ReferenceConvertResult expected = Reference("a.ord", block);
        if (!account.canceled) return testing::AssertionFailure() << "not said to be canceled";
        if (account.packets != expected.packetCount) {
            return testing::AssertionFailure()
                   << account.packets << " packets for " << expected.packetCount;
        }
        return SameFiles(Files(L"a"), expected.files);
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
        FaultyFileCalls disk;
        // The header is the first read, each block the next; the flag is checked before it.
        if (block == 0) processor.cancelRequested = 1;
        disk.beforeRead = [&](unsigned readCount) {
            if (readCount == block) processor.cancelRequested = 1;
        };
        RunConversionJob(MakeJob(directory_, {first}, AllOutputs(), processor, status));
        EXPECT_EQ(status, L"Data processing canceled.");
        const ConversionAccount account = processor.TakeAccount();
        RunConversionJob(MakeJob(directory_, {second}, AllOutputs(), processor, status));
        EXPECT_EQ(status, L"Data processing canceled.");
        EXPECT_EQ(disk.openCount, 0U);
        EXPECT_TRUE(EndedBefore(LastBlock(block, account), account));
        EXPECT_TRUE(SameFiles(Files(L"b"), Reference("b.ord", 0).files));
        for (const auto& entry : Files(L"b")) EXPECT_EQ(entry.second.size(), kHeaderBytes);
        const ExpectedFiles whole = ExpectFiles(Reference("a.ord", SIZE_MAX));
        for (const auto& [name, bytes] : Files(L"a")) {
            // Closed in order, and all its records except the last are those of the whole
            // conversion.
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
