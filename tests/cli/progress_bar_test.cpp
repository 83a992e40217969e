// SPDX-License-Identifier: BSD-3-Clause
#include "cli/progress_bar.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace stalwick {
namespace {

using Seconds = std::chrono::duration<double>;

TEST(ProgressBar, LineHasBarPercentRateTimeLeftAndFile) {
    const BatchProgress progress{2, 3, 25'000'000, 100'000'000};
    EXPECT_EQ(FormatProgress(progress, Seconds(5), 80),
              L"[#########............................]  25 %  5.0 MB/s  0:15 left  file 2 of 3");
}

BatchProgress WithName(const std::wstring& name) {
    return {2, 3, 25'000'000, 100'000'000, name};
}

TEST(ProgressBar, FilesNameIsAtTheEnd) {
    EXPECT_EQ(FormatProgress(WithName(L"rat01.ord"), Seconds(5), 80),
              L"[######....................]  25 %  5.0 MB/s  0:15 left  file 2 of 3  rat01.ord");
}

TEST(ProgressBar, NameThatIsTooLongIsCut) {
    const std::wstring line = FormatProgress(WithName(std::wstring(100, L'n')), Seconds(5), 80);
    EXPECT_EQ(line, L"[##......]  25 %  5.0 MB/s  0:15 left  file 2 of 3  " +
                        std::wstring(24, L'n') + L"...");
}

TEST(ProgressBar, ControlCharactersOfTheNameAreWrittenOut) {
    const std::wstring line = FormatProgress(WithName(L"a\nb\x1b.ord"), Seconds(5), 120);
    EXPECT_NE(line.find(L"file 2 of 3  a\\nb\\x1b.ord"), std::wstring::npos);
}

TEST(ProgressBar, LineWithANameOfWideLettersFitsIntoEveryWidth) {
    for (int width = 1; width <= 250; ++width) {
        const std::wstring name(60, L'\u6F22');
        const std::wstring line = FormatProgress(WithName(name), Seconds(5), width);
        const auto wide = std::count(line.begin(), line.end(), L'\u6F22');
        EXPECT_LT(static_cast<int>(line.size()) + static_cast<int>(wide), width);
        EXPECT_EQ(wide > 0, width >= 61) << width;
    }
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
        const std::wstring line = FormatProgress(progress, Seconds(0), 80);
        EXPECT_EQ(line.find(L"nan"), std::wstring::npos);
        EXPECT_EQ(line.find(L"inf"), std::wstring::npos);
        EXPECT_EQ(line.find(L'-'), std::wstring::npos);
    }
}

TEST(ProgressBar, PercentNeverExceedsOneHundred) {
    EXPECT_NE(FormatProgress({1, 1, 300, 100}, Seconds(1), 80).find(L" 100 %"), std::wstring::npos);
    EXPECT_NE(FormatProgress({1, 1, 999, 1000}, Seconds(1), 80).find(L"  99 %"),
              std::wstring::npos);
}

}  // namespace
}  // namespace stalwick
