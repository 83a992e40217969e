// SPDX-License-Identifier: BSD-3-Clause
#include "cli/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "cli/print_line.h"
#include "platform/console.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr double kBytesPerMegabyte = 1e6;
constexpr int kWidestBar = 40;
constexpr int kNarrowestBar = 8;

std::string FormatSeconds(double seconds) {
    constexpr int kSecondsPerMinute = 60;
    constexpr double kMost = 359999.0;  // 99:59:59
    const int whole = static_cast<int>(std::min(std::ceil(seconds), kMost));
    const int minutes = whole / kSecondsPerMinute;
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d", minutes, whole % kSecondsPerMinute);
    return text;
}

double FractionDone(const BatchProgress& progress) {
    if (progress.bytesTotal == 0) return 0.0;
    return std::min(1.0, static_cast<double>(progress.bytesProcessed) /
                             static_cast<double>(progress.bytesTotal));
}

// The most columns that a terminal needs for the text: letters of many scripts take two.
int Columns(std::wstring_view text) {
    constexpr wchar_t kFirstThatMayBeWide = 0x1100;
    const auto wide =
        std::count_if(text.begin(), text.end(), [](wchar_t c) { return c >= kFirstThatMayBeWide; });
    return static_cast<int>(text.size()) + static_cast<int>(wide);
}

std::wstring FormatBar(double fraction, int width) {
    std::wstring bar(static_cast<std::size_t>(width) + 2, L'.');
    std::fill_n(bar.begin() + 1, static_cast<int>(fraction * width), L'#');
    bar.front() = L'[';
    bar.back() = L']';
    return bar;
}

// The name and the separator before the figures; the end of the name is cut off if there is no
// room.
std::wstring FormatName(const std::wstring& fileName, int room) {
    constexpr std::wstring_view kGap = L"  ";
    constexpr std::wstring_view kCut = L"...";
    constexpr int kFewestColumns = 10;
    const std::wstring whole = std::wstring(kGap) + OneLine(fileName);
    if (fileName.empty() || Columns(whole) <= room) return fileName.empty() ? fileName : whole;
    if (room < kFewestColumns) return {};
    std::wstring name = whole;
    while (Columns(name) + Columns(kCut) > room) name.pop_back();
    return name.append(kCut);
}

std::wstring FormatFigures(const BatchProgress& progress, double seconds) {
    const double fraction = FractionDone(progress);
    const double rate = seconds > 0 ? static_cast<double>(progress.bytesProcessed) / seconds : 0;
    const double left = fraction > 0 ? seconds * (1 - fraction) / fraction : 0;
    char text[128];
    std::snprintf(text, sizeof text, " %3d %%  %.1f MB/s  %s left  file %zu of %zu",
                  static_cast<int>(fraction * 100), rate / kBytesPerMegabyte,
                  FormatSeconds(left).c_str(), progress.currentFile, progress.fileCount);
    return FromUtf8(text);
}

}  // namespace

std::wstring FormatProgress(const BatchProgress& progress, std::chrono::duration<double> elapsed,
                            int width) {
    const std::wstring figures = FormatFigures(progress, elapsed.count());
    const int room = width - Columns(figures) - 3;  // brackets, last column
    if (room < kNarrowestBar) return figures.substr(1, static_cast<std::size_t>(width - 1));
    const std::wstring name = FormatName(progress.currentName, room - kNarrowestBar);
    return FormatBar(FractionDone(progress), std::min(room - Columns(name), kWidestBar)) + figures +
           name;
}

ProgressBar::ProgressBar(bool enabled)
    : enabled_(enabled && StandardErrorIsTerminal()), start_(std::chrono::steady_clock::now()) {}

void ProgressBar::Show(const BatchProgress& progress) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (enabled_) Draw(progress);
}

void ProgressBar::PrintLines(const std::vector<std::wstring>& lines) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!lines.empty()) Erase();
    for (const std::wstring& line : lines) PrintLine(stderr, line);
}

void ProgressBar::Finish(const BatchProgress& progress) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!enabled_) return;
    Draw(progress);
    std::fputc('\n', stderr);
}

void ProgressBar::Draw(const BatchProgress& progress) {
    std::wstring line =
        FormatProgress(progress, std::chrono::steady_clock::now() - start_, TerminalWidth());
    // An unchanged line is not drawn again: no flicker.
    if (line == shown_) return;
    // Blanks erase the previous line; not every console supports escape sequences.
    std::fprintf(stderr, "\r%*s\r%s", Columns(shown_), "", ToUtf8(line).c_str());
    std::fflush(stderr);
    shown_ = std::move(line);
}

void ProgressBar::Erase() {
    if (shown_.empty()) return;
    std::fprintf(stderr, "\r%*s\r", Columns(shown_), "");
    shown_.clear();
}

}  // namespace stalwick
