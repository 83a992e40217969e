#include "cli/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cli/print_line.h"
#include "platform/console.h"

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

std::string FormatBar(double fraction, int width) {
    std::string bar(static_cast<std::size_t>(width) + 2, '.');
    std::fill_n(bar.begin() + 1, static_cast<int>(fraction * width), '#');
    bar.front() = '[';
    bar.back() = ']';
    return bar;
}

std::string FormatFigures(const BatchProgress& progress, double seconds) {
    const double fraction = FractionDone(progress);
    const double rate = seconds > 0 ? static_cast<double>(progress.bytesProcessed) / seconds : 0;
    const double left = fraction > 0 ? seconds * (1 - fraction) / fraction : 0;
    char text[128];
    std::snprintf(text, sizeof text, " %3d %%  %.1f MB/s  %s left  file %zu of %zu",
                  static_cast<int>(fraction * 100), rate / kBytesPerMegabyte,
                  FormatSeconds(left).c_str(), progress.currentFile, progress.fileCount);
    return text;
}

}  // namespace

std::string FormatProgress(const BatchProgress& progress, std::chrono::duration<double> elapsed,
                           int width) {
    const std::string figures = FormatFigures(progress, elapsed.count());
    const int room = width - static_cast<int>(figures.size()) - 3;  // brackets, last column
    if (room < kNarrowestBar) return figures.substr(1, static_cast<std::size_t>(width - 1));
    return FormatBar(FractionDone(progress), std::min(room, kWidestBar)) + figures;
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
    std::string line =
        FormatProgress(progress, std::chrono::steady_clock::now() - start_, TerminalWidth());
    // An unchanged line is not drawn again: no flicker.
    if (line == shown_) return;
    // Blanks erase what is left of a longer line; not every console knows escape sequences.
    const std::size_t longest = std::max(line.size(), shown_.size());
    std::fprintf(stderr, "\r%-*s", static_cast<int>(longest), line.c_str());
    std::fflush(stderr);
    shown_ = std::move(line);
}

void ProgressBar::Erase() {
    if (shown_.empty()) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(shown_.size()), "");
    shown_.clear();
}

}  // namespace stalwick
