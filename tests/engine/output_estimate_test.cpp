// SPDX-License-Identifier: BSD-3-Clause
#include "engine/output_estimate.h"

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

std::string Recording(std::size_t packets) {
    RandomRecordingShape shape;
    shape.packet = {0, {}, false, true, true, true, true, true, 40, {}, true};
    shape.packetCount = packets;
    return BuildOrdFile(Version2Header(32), MakeRandomPackets(5, shape));
}

TEST(OutputEstimate, IsCloseToWhatTheReferenceMakes) {
    for (const std::size_t packets : {700U, 3000U}) {
        const TempDirectory directory;
        const std::string recording = Recording(packets);
        const std::wstring path = PutRecording(directory, recording);
        std::uint64_t bytes = 0;
        for (const auto& [name, content] : RunReference(directory, recording, AllOutputs()).files) {
            bytes += content.size();
        }
        const std::uint64_t estimate = EstimateOutputBytes(path, {{1, 1, 1, 1}, true, true});
        EXPECT_GT(estimate, bytes - bytes / 20);
        EXPECT_LT(estimate, bytes + bytes / 20);
    }
}

TEST(OutputEstimate, CountsOnlyWhatIsWanted) {
    const TempDirectory directory;
    const std::wstring path = PutRecording(directory, Recording(3000));
    const std::uint64_t all = EstimateOutputBytes(path, {{1, 1, 1, 1}, true, true});
    const std::uint64_t withoutRaw = EstimateOutputBytes(path, {{1, 1, 1, 1}, true, false});
    EXPECT_GT(all, withoutRaw + std::uint64_t{3000} * 10 * 200 * 9 / 10);
    EXPECT_EQ(EstimateOutputBytes(path, {{0, 0, 0, 0}, false, false}), 0U);
}

TEST(OutputEstimate, RecordingWithoutPacketsNeedsItsHeaders) {
    const TempDirectory directory;
    const std::wstring path = PutRecording(directory, Recording(0));
    EXPECT_EQ(EstimateOutputBytes(path, {{1, 0, 0, 0}, true, false}), 33U * 16384);
}

TEST(OutputEstimate, IsUnknownForWhatIsNoRecording) {
    const TempDirectory directory;
    EXPECT_EQ(EstimateOutputBytes(PutRecording(directory, "text"), {{1, 1, 1, 1}, true, true}), 0U);
    EXPECT_EQ(EstimateOutputBytes(directory.Path(), {{1, 1, 1, 1}, true, true}), 0U);
}

}  // namespace
}  // namespace stalwick::test
