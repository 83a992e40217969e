// SPDX-License-Identifier: BSD-3-Clause

// Whole conversions on a thread with a stack of 512 KiB: good recordings, and malicious ones.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"
#include "tests/support/small_stack_thread.h"

namespace stalwick::test {
namespace {

std::wstring StatusOnSmallStack(const std::string& recording) {
    const TempDirectory directory;
    std::wstring status;
    RunOnSmallStack([&] { status = RunEngine(directory, recording, AllOutputs()).statusText; });
    return status;
}

std::wstring Missing(const wchar_t* key) {
    return std::wstring(L"Processing failed - Error retrieving header field ") + key;
}

TEST(SmallStack, WidestRecordingConverts) {
    RandomRecordingShape shape;
    shape.packet = {3, {}, true, true, true, true, true, true, 40, {}, true};
    shape.packetCount = 60;
    EXPECT_EQ(StatusOnSmallStack(BuildOrdFile(Version2Header(256), MakeRandomPackets(81, shape))),
              L"Processing complete");
}

TEST(SmallStack, HeadersThatNothingSaneProducesAreRefused) {
    EXPECT_EQ(StatusOnSmallStack(""), Missing(L"-NumADChannels"));
    EXPECT_EQ(StatusOnSmallStack(std::string(16384, 'x')), Missing(L"-NumADChannels"));
    EXPECT_EQ(StatusOnSmallStack(OrdHeaderText().Set("-NumADChannels", "4294967295").Block()),
              L"Processing failed - Invalid header field -NumADChannels");
    EXPECT_EQ(StatusOnSmallStack(OrdHeaderText().Set("-SamplingFrequency", "0").Block()),
              L"Processing failed - Invalid header field -SamplingFrequency");
}

TEST(SmallStack, VersionThatMakesBacktrackersExplodeConverts) {
    OrdHeaderText header = Version1Header(2);
    header.Set("-FileVersion", std::string(60, '1') + "..1");
    EXPECT_EQ(StatusOnSmallStack(BuildOrdFile(header, std::vector<PacketPlan>(3))),
              L"Processing complete");
}

TEST(SmallStack, JunkInTheStreamIsReported) {
    EXPECT_EQ(StatusOnSmallStack(Version1Header(2).Block() + std::string(60000, '\xFF')),
              L"Processing failed - Failed to process buffer. 0 bytes consumed.");
}

}  // namespace
}  // namespace stalwick::test
