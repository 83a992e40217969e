// SPDX-License-Identifier: BSD-3-Clause
#include "engine/recording_check.h"

#include <gtest/gtest.h>

#include "engine/conversion_job.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/support/ord_builder.h"
#include "tests/support/temp_directory.h"

#ifndef _WIN32
#include <sys/stat.h>

#include "platform/text_encoding.h"
#endif

namespace stalwick::test {
namespace {

class RecordingCheck : public testing::Test {
  protected:
    std::wstring Put(const std::string& bytes, const std::wstring& name = L"rec.ord") {
        const std::wstring path = directory_.Path(name);
        WriteFile(path, bytes);
        return path;
    }
    RecordingRefusal Check(const std::wstring& path) const {
        return CheckRecording(path, directory_.Path(L"out"));
    }
    // The engine's status without the preceding check.
    std::wstring EngineStatus(const std::wstring& path) const {
        MakeDirectory(directory_.Path(L"out"));
        DataProcessor processor(QuickSettings());
        std::wstring status;
        RunConversionJob(MakeJob(directory_, {path}, {}, processor, status));
        return status;
    }
    void ExpectTheEnginesStatus(const std::wstring& path) const {
        EXPECT_EQ(L"Processing failed - " + Check(path).errorText, EngineStatus(path));
    }

    TempDirectory directory_;
};

TEST_F(RecordingCheck, WholeRecordingIsNotRefused) {
    const std::wstring path = Put(BuildOrdFile(Version2Header(32), {}));
    EXPECT_FALSE(Check(path));
    EXPECT_EQ(NamesIn(directory_.Path()), std::set<std::string>{"rec.ord"});
}

TEST_F(RecordingCheck, MissingFileIsRefusedWithTheSystemsReason) {
    const std::wstring path = directory_.Path(L"missing.ord");
    const RecordingRefusal refusal = Check(path);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal.reason, L"not converted: " +
                                  SystemErrorText(SystemErrorFor(SystemErrorKind::kNotFound)) +
                                  L"; choose a recording that can be read");
    ExpectTheEnginesStatus(path);
}

TEST_F(RecordingCheck, DirectoryIsRefused) {
    const std::wstring path = directory_.Path(L"night");
    MakeDirectory(path);
    ASSERT_TRUE(Check(path));
    ExpectTheEnginesStatus(path);
}

TEST_F(RecordingCheck, UnreadableHeaderIsRefused) {
    const std::wstring path = Put(BuildOrdFile(Version2Header(32), {}));
    FaultyFileCalls calls;
    calls.readError = SystemErrorFor(SystemErrorKind::kAccessDenied);
    const RecordingRefusal refusal = Check(path);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal.errorText, L"Error reading header from file.");
}

TEST_F(RecordingCheck, FileWithoutARequiredFieldIsNoRecording) {
    for (const std::string& bytes :
         {std::string(), std::string("plain text\n"), std::string(9, '\0')}) {
        const std::wstring path = Put(bytes);
        const RecordingRefusal refusal = Check(path);
        ASSERT_TRUE(refusal);
        EXPECT_EQ(refusal.reason,
                  L"not an .ord recording (no -NumADChannels in its header; empty, cut short, or "
                  L"another kind of file)");
        ExpectTheEnginesStatus(path);
    }
    const std::wstring path = Put(Version2Header(32).Remove("-InputRange").Block());
    EXPECT_EQ(Check(path).reason,
              L"not an .ord recording (no -InputRange in its header; empty, cut short, or another "
              L"kind of file)");
    ExpectTheEnginesStatus(path);
}

TEST_F(RecordingCheck, HeaderThatTheEngineRefusesIsRefused) {
    const std::wstring wide = Put(Version2Header(32).Set("-NumADChannels", "257").Block());
    EXPECT_EQ(Check(wide).reason,
              L"not converted: Invalid header field -NumADChannels is above 256; check the "
              L"recording's header");
    ExpectTheEnginesStatus(wide);
    const std::wstring still = Put(Version2Header(32).Set("-SamplingFrequency", "0").Block());
    EXPECT_EQ(Check(still).reason,
              L"not converted: Invalid header field -SamplingFrequency is 0; check the recording's "
              L"header");
    ExpectTheEnginesStatus(still);
}

TEST_F(RecordingCheck, FileWithoutExtensionCannotHaveItsDirectoryNextToIt) {
    const std::wstring path = Put(BuildOrdFile(Version2Header(32), {}), L"rec");
    const RecordingRefusal refusal = CheckRecording(path, directory_.Path());
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal.errorText, L"");
    EXPECT_EQ(refusal.reason,
              L"not converted: it has no extension, so the directory of its outputs would have the "
              L"same name; "
              L"choose another output directory, or name it rec.ord");
    EXPECT_FALSE(Check(path));
}

#ifndef _WIN32
TEST_F(RecordingCheck, PipeIsNotOpened) {
    const std::wstring path = directory_.Path(L"pipe.ord");
    ASSERT_EQ(::mkfifo(ToUtf8(path).c_str(), 0600), 0);
    EXPECT_FALSE(Check(path));  // opening it would wait for a writer
}
#endif

}  // namespace
}  // namespace stalwick::test
