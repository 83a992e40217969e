// SPDX-License-Identifier: BSD-3-Clause
#include "engine/stream_source.h"

#include <gtest/gtest.h>

#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

// A recording of which every tenth packet has another type byte, every twentieth also the next but
// one: too few whole packets are left between those two.
std::string DamagedRecording() {
    RandomRecordingShape shape;
    shape.packetCount = 300;
    std::vector<PacketPlan> plans = MakeRandomPackets(91, shape);
    for (std::size_t i = 10; i < plans.size(); i += 10) {
        plans[i].packetType = 5;
        if (i % 20 == 0) plans[i + 2].packetType = 5;
    }
    return BuildOrdFile(Version2Header(32), plans);
}

TEST(StreamSource, PacketsAndStretchesAddUpToTheRecording) {
    const TempDirectory directory;
    const std::string recording = DamagedRecording();
    StreamSource source;
    ASSERT_EQ(source.Open(PutRecording(directory, recording)), 0);
    DecodedSpan span;
    std::uint64_t end = kOrdHeaderBytes;  // of what came so far
    std::size_t stretches = 0;
    do {
        source.Read(span);
        ASSERT_EQ(span.status, 0);
        auto stretch = span.skipped.begin();
        for (std::size_t i = 0; i <= span.packets.size(); ++i) {
            for (; stretch != span.skipped.end() && stretch->packetsBefore == i; ++stretch) {
                EXPECT_GE(stretch->part.position, end);
                end = stretch->part.position + stretch->part.size;
                if (i < span.packets.size()) {
                    EXPECT_EQ(span.positions[i], end);
                }
                ++stretches;
            }
            if (i < span.packets.size()) end = span.positions[i] + 1;
        }
    } while (!span.endOfFile);
    EXPECT_EQ(stretches, 29U);
}

}  // namespace
}  // namespace stalwick::test
