// SPDX-License-Identifier: BSD-3-Clause

// Small parts of pictures of traces.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "survey/axis_ticks.h"
#include "survey/channel_list.h"
#include "survey/png_software.h"
#include "survey/time_spans.h"
#include "survey/trace_layout.h"

namespace stalwick::test {
namespace {

std::string Labels(const TimeAxis& axis) {
    std::string text = axis.unit + ':';
    for (const AxisTick& tick : axis.ticks) text += ' ' + tick.label;
    return text;
}

TEST(AxisTicks, AreAtRoundTimes) {
    EXPECT_EQ(Labels(MakeTimeAxis(0.0, 4.0, 10)), "seconds: 0.0 0.5 1.0 1.5 2.0 2.5 3.0 3.5 4.0");
    EXPECT_EQ(Labels(MakeTimeAxis(0.0, 599.9999999, 10)),
              "minutes:seconds: 0:00 1:00 2:00 3:00 4:00 5:00 6:00 7:00 8:00 9:00 10:00");
    EXPECT_EQ(Labels(MakeTimeAxis(35990.0, 36000.0, 5)),
              "hours:minutes:seconds: 9:59:50 9:59:52 9:59:54 9:59:56 9:59:58 10:00:00");
    EXPECT_EQ(Labels(MakeTimeAxis(18000.2504, 18000.2511, 4)),
              "seconds: 18000.2504 18000.2506 18000.2508 18000.2510");
    EXPECT_EQ(Labels(MakeTimeAxis(0.0, 36000.0, 10)),
              "hours:minutes:seconds: 0:00:00 1:00:00 2:00:00 3:00:00 4:00:00 5:00:00 6:00:00 "
              "7:00:00 8:00:00 9:00:00 10:00:00");
    EXPECT_EQ(Labels(MakeTimeAxis(0.0, 1000000.0, 10)).substr(0, 45),
              "hours:minutes:seconds: 0:00:00 30:00:00 60:00");
}

TEST(AxisTicks, AreNeverManyMoreThanWanted) {
    for (double length = 3e-6; length < 1e6; length *= 1.37) {
        const TimeAxis axis = MakeTimeAxis(12.34, 12.34 + length, 10);
        EXPECT_LE(axis.ticks.size(), 11U) << length;
        EXPECT_GE(axis.ticks.size(), 3U) << length;
    }
}

TEST(AxisTicks, RoundNumbersAreNearby) {
    EXPECT_DOUBLE_EQ(RoundDown(999.0), 500.0);
    EXPECT_DOUBLE_EQ(RoundDown(1000.0), 1000.0);
    EXPECT_DOUBLE_EQ(RoundDown(0.03), 0.02);
    EXPECT_DOUBLE_EQ(RoundUp(1000.0), 1000.0);
    EXPECT_DOUBLE_EQ(RoundUp(1001.0), 1250.0);
    EXPECT_DOUBLE_EQ(RoundUp(0.0085), 0.01);
    EXPECT_EQ(Voltage(200.0), "200 \xC2\xB5V");
    EXPECT_EQ(Voltage(1500.0), "1.5 mV");
    EXPECT_EQ(Voltage(2e6), "2 V");
}

TEST(ChannelList, TakesNumbersAndRangesOnly) {
    using List = std::vector<std::uint32_t>;
    EXPECT_EQ(ReadChannelList("1", 256), List{0});
    EXPECT_EQ(ReadChannelList("33,1-3,2", 256), (List{0, 1, 2, 32}));
    EXPECT_EQ(ReadChannelList("256-256", 256), List{255});
    for (const char* wrong : {"", "0", "257", "3-1", "1,", ",1", "1-", "-1", "a", "1 2", "1-2-3",
                              "0x1", "1.5", "99999999999"}) {
        EXPECT_FALSE(ReadChannelList(wrong, 256)) << wrong;
    }
}

TEST(TimeSpans, JoinWhatIsNearerThanAColumn) {
    TimeSpans spans(0.5);
    spans.Add({1.0, 2.0, 1, 10});
    spans.Add({2.4, 2.5, 1, 20});
    spans.Add({3.0, 4.0, 1, 30});
    auto all = spans.Within(0.0, 10.0);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].count, 2U);
    EXPECT_EQ(all[0].missingSamples, 30U);
    EXPECT_DOUBLE_EQ(all[0].toSeconds, 2.5);
    spans.Coarsen(0.6);
    EXPECT_EQ(spans.Within(0.0, 10.0).size(), 1U);
    all = spans.Within(3.5, 3.6);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_DOUBLE_EQ(all[0].fromSeconds, 3.5);
    EXPECT_DOUBLE_EQ(all[0].toSeconds, 3.6);
    EXPECT_TRUE(spans.Within(4.5, 9.0).empty());
}

TEST(PngSoftware, ChunkHasLengthAndChecksum) {
    const std::string chunk = PngSoftwareChunk("stalwick-inspect plot");
    EXPECT_EQ(chunk.substr(0, 8), std::string("\0\0\0\x1EtEXt", 8));
    EXPECT_EQ(chunk.substr(8, 9), std::string("Software\0", 9));
    // zlib.crc32(b"tEXtSoftware\0stalwick-inspect plot")
    EXPECT_EQ(chunk.substr(chunk.size() - 4), std::string("\x7C\xED\x6F\xE1", 4));
}

TEST(TraceLayout, LabelsOfManyRowsAreThinned) {
    TraceSet set;
    const auto every = [&](std::size_t rows) {
        set.traces.resize(rows);
        const TraceLayout layout = LayOut(set);
        EXPECT_GE(layout.rowHeight * static_cast<double>(layout.labelEvery), 11.0) << rows;
        return layout.labelEvery;
    };
    EXPECT_EQ(every(1), 1U);
    EXPECT_EQ(every(32), 1U);
    EXPECT_EQ(every(256), 2U);
}

TEST(TraceLayout, SpacingFitsTheTypicalTrace) {
    Trace quiet{L"CSC1", 0.5, {0.0, 1.0, 2}, {{-100, 100}, {-50, 90}}};
    Trace flat{L"CSC2", 0.5, {0.0, 1.0, 2}, {{7, 7}, {7, 7}}};
    EXPECT_DOUBLE_EQ(ChooseSpacing({quiet}), 125.0);  // 100 microvolts and a tenth
    EXPECT_DOUBLE_EQ(ChooseSpacing({flat}), 100.0);
    EXPECT_DOUBLE_EQ(MiddleMicrovolts(flat, false), 3.5);
    EXPECT_DOUBLE_EQ(MiddleMicrovolts(quiet, true), 0.0);
}

}  // namespace
}  // namespace stalwick::test
