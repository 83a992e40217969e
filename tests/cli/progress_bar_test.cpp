#include "cli/progress_bar.h"

#include <string>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

using Seconds = std::chrono::duration<double>;

TEST(ProgressBar, LineHasBarPercentRateTimeLeftAndFile) {
    const BatchProgress progress{2, 3, 25'000'000, 100'000'000};
    EXPECT_EQ(FormatProgress(progress, Seconds(5), 80),
              "[#########............................]  25 %  5.0 MB/s  0:15 left  file 2 of 3");
}

TEST(ProgressBar, LineFitsIntoEveryWidth) {
    const BatchProgress progress{12, 345, 999'999'999'999, 1'000'000'000'000};
    for (int width = 1; width <= 250; ++width) {
        EXPECT_LT(FormatProgress(progress, Seconds(100000), width).size(),
                  static_cast<std::size_t>(width));
    }
}

TEST(ProgressBar, UnknownSizesAndTimesAreNoTrouble) {
    for (const BatchProgress& progress :
         {BatchProgress{0, 0, 0, 0}, BatchProgress{1, 1, 5, 0}, BatchProgress{1, 1, 9, 3}}) {
        const std::string line = FormatProgress(progress, Seconds(0), 80);
        EXPECT_EQ(line.find("nan"), std::string::npos) << line;
        EXPECT_EQ(line.find("inf"), std::string::npos) << line;
        EXPECT_EQ(line.find('-'), std::string::npos) << line;
    }
}

TEST(ProgressBar, PercentNeverExceedsOneHundred) {
    EXPECT_NE(FormatProgress({1, 1, 300, 100}, Seconds(1), 80).find(" 100 %"), std::string::npos);
    EXPECT_NE(FormatProgress({1, 1, 999, 1000}, Seconds(1), 80).find("  99 %"), std::string::npos);
}

}  // namespace
}  // namespace stalwick
