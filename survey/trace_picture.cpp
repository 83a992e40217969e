// SPDX-License-Identifier: BSD-3-Clause
#include "survey/trace_picture.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/text_encoding.h"
#include "survey/axis_ticks.h"
#include "survey/svg_writer.h"
#include "survey/trace_layout.h"

namespace stalwick {

namespace {

const std::array<SvgColour, 15> kColours = {{
    {".paper", "fill", "#ffffff", "#14171a"},
    {"text", "fill", "#1b1f23", "#e6e8ea"},
    {".grid", "stroke", "#e1e5e8", "#2b3136"},
    {".axis", "stroke", "#5a636b", "#9aa3ab"},
    {".bar", "stroke", "#1b1f23", "#e6e8ea"},
    {".even", "stroke", "#1a5276", "#8ec9f5"},
    {".odd", "stroke", "#8a4b08", "#f2b26b"},
    {".gap,.gap-key", "fill", "#ccd3d9", "#454d55"},
    {".damage,.damage-key", "fill", "#f5b7b1", "#7d2b25"},
    {".gap,.gap-key", "stroke", "#9aa5ae", "#7c8790"},
    {".damage,.damage-key", "stroke", "#c0392b", "#e5887e"},
    {".ttl", "fill", "#1e8449", "#58c98a"},
    {".many", "fill", "#82c09c", "#2e7d54"},
    {".low", "stroke", "#9fb8aa", "#4b6356"},
    {".missing", "fill", "#5a636b", "#9aa3ab"},
}};

constexpr char kStyle[] =
    "text{font:11px 'DejaVu Sans',Verdana,sans-serif}\n"
    ".title{font-size:15px;font-weight:bold}\n"
    ".trace{fill:none;stroke-width:.8;stroke-linejoin:round;stroke-linecap:round}\n"
    ".grid,.axis,.low{stroke-width:1}\n"
    ".gap,.damage,.gap-key,.damage-key{stroke-width:.5}\n"
    ".bar{stroke-width:2}\n";

std::string Plural(std::uint64_t count, const std::string& singular, const std::string& plural) {
    return std::to_string(count) + ' ' + (count == 1 ? singular : plural);
}

std::uint64_t CountOf(const std::vector<TimeSpan>& spans) {
    std::uint64_t count = 0;
    for (const TimeSpan& span : spans) count += span.count;
    return count;
}

// The text, shortened to `most` characters if it is longer.
std::string Shortened(const std::wstring& text, std::size_t most) {
    if (text.size() <= most) return ToUtf8(text);
    return ToUtf8(text.substr(0, most - 1)) + "\xE2\x80\xA6";
}

class TracePainter {
  public:
    TracePainter(const TraceSet& set, const TracePictureOptions& options)
        : set_(set),
          options_(options),
          layout_(LayOut(set)),
          spacing_(options.spacingMicrovolts.value_or(ChooseSpacing(set.traces))),
          axis_(MakeTimeAxis(set.startSeconds, set.EndSeconds(), 10)),
          writer_({layout_.width, layout_.height, options.title, Description(),
                   kStyle + SvgColourRules(kColours), options.id}) {}

    std::string Paint();

  private:
    std::string Stretch() const;
    std::string Description() const;
    double X(double seconds) const;
    double WidthAt(double x, double toSeconds) const;
    void PaintHead();
    void PaintSpans(const std::vector<TimeSpan>& spans, const std::string& kind,
                    const std::string& kinds);
    void PaintGrid();
    void PaintTtl();
    void PaintTraces();
    SvgPath PathOf(const Trace& trace, double rowMiddle) const;
    bool IsBroken(const Trace& trace, std::size_t from, std::size_t to) const;
    void PaintNames();
    void PaintScaleBar();
    void PaintKey();

    const TraceSet& set_;
    const TracePictureOptions& options_;
    TraceLayout layout_;
    double spacing_;  // microvolts
    TimeAxis axis_;
    SvgWriter writer_;
};

std::string TracePainter::Stretch() const {
    const std::string spacing = set_.traces.size() == 1 ? Voltage(spacing_) + " high"
                                                        : "rows " + Voltage(spacing_) + " apart";
    return FewDigits(set_.startSeconds) + " s to " + FewDigits(set_.EndSeconds()) + " s, " +
           Plural(set_.traces.size(), "channel", "channels") + ", " + spacing;
}

std::string TracePainter::Description() const {
    std::string text = "Traces in microvolts over time: " + Stretch() + ". " +
                       Plural(CountOf(set_.gaps), "gap", "gaps") + ", " +
                       Plural(CountOf(set_.damage), "damaged stretch", "damaged stretches") + ".";
    if (layout_.ttlLines.empty()) return text + " No TTL line is high.";
    text += " TTL lines that are high at times:";
    for (const std::size_t line : layout_.ttlLines) text += ' ' + std::to_string(line);
    return text + '.';
}

double TracePainter::X(double seconds) const {
    return layout_.left +
           (seconds - set_.startSeconds) / set_.seconds * static_cast<double>(kTraceColumns);
}

// Never less than a pixel, so that a short stretch is visible too.
double TracePainter::WidthAt(double x, double toSeconds) const {
    return std::max(X(toSeconds) - x, 1.0);
}

std::string TracePainter::Paint() {
    writer_.Rect("paper", {0.0, 0.0, layout_.width, layout_.height});
    PaintSpans(set_.gaps, "gap", "gaps");
    PaintSpans(set_.damage, "damage", "damaged stretches");
    PaintGrid();
    PaintTtl();
    PaintTraces();
    PaintNames();
    PaintScaleBar();
    PaintHead();
    PaintKey();
    return writer_.Finish();
}

void TracePainter::PaintHead() {
    constexpr std::size_t kMostCharacters = 100;
    writer_.Text("title", {layout_.left, 24.0},
                 Shortened(FromUtf8(options_.title), kMostCharacters));
    writer_.Text("stretch", {layout_.left, 42.0}, Stretch());
}

void TracePainter::PaintSpans(const std::vector<TimeSpan>& spans, const std::string& kind,
                              const std::string& kinds) {
    for (const TimeSpan& span : spans) {
        const double x = std::min(X(span.fromSeconds), layout_.Right() - 1.0);
        std::string title = span.count == 1 ? kind : std::to_string(span.count) + ' ' + kinds;
        title +=
            " from " + FewDigits(span.fromSeconds) + " s to " + FewDigits(span.toSeconds) + " s";
        if (span.missingSamples != 0) {
            title += ": " + std::to_string(span.missingSamples) + " samples a channel missing";
        }
        writer_.Rect(kind, layout_.Column(x, WidthAt(x, span.toSeconds)), title);
    }
}

void TracePainter::PaintGrid() {
    writer_.OpenGroup("time");
    for (const AxisTick& tick : axis_.ticks) {
        const double x = X(tick.seconds);
        writer_.Line("grid", {x, layout_.top}, {x, layout_.axis});
        writer_.Line("axis tick", {x, layout_.axis}, {x, layout_.axis + 5.0});
        writer_.Text("time-label", {x, layout_.axis + 18.0}, tick.label, SvgAnchor::kMiddle);
        if (!layout_.hasTopLabels) continue;
        writer_.Text("top-label", {x, layout_.top - 6.0}, tick.label, SvgAnchor::kMiddle);
    }
    writer_.Line("axis", {layout_.left, layout_.axis}, {layout_.Right(), layout_.axis});
    writer_.Text("unit", {(layout_.left + layout_.Right()) / 2.0, layout_.axis + 38.0},
                 axis_.unit + " from the first sample", SvgAnchor::kMiddle);
    writer_.CloseGroup();
}

void TracePainter::PaintTtl() {
    constexpr double kHeight = 10.0;
    writer_.OpenGroup("ttl-lines");
    double y = layout_.ttlTop;
    for (const std::size_t line : layout_.ttlLines) {
        writer_.Text("ttl-label", {layout_.left - 8.0, y + kHeight}, "TTL " + std::to_string(line),
                     SvgAnchor::kEnd);
        writer_.Line("low", {layout_.left, y + kHeight}, {layout_.Right(), y + kHeight});
        writer_.OpenGroup("line" + std::to_string(line));
        for (const TimeSpan& span : set_.ttlHigh[line]) {
            const double x = std::min(X(span.fromSeconds), layout_.Right() - 1.0);
            writer_.Rect(span.count == 1 ? "ttl" : "ttl many",
                         {x, y, WidthAt(x, span.toSeconds), kHeight});
        }
        writer_.CloseGroup();
        y += layout_.ttlRowHeight;
    }
    writer_.CloseGroup();
}

void TracePainter::PaintTraces() {
    writer_.OpenClippedGroup("traces", layout_.TracesArea());
    for (std::size_t row = 0; row < set_.traces.size(); ++row) {
        const Trace& trace = set_.traces[row];
        const SvgPath path = PathOf(trace, layout_.RowMiddle(row));
        if (path.IsEmpty()) continue;
        writer_.Path(row % 2 == 0 ? "trace even" : "trace odd", path, ToUtf8(trace.name));
    }
    writer_.CloseGroup();
}

SvgPath TracePainter::PathOf(const Trace& trace, double rowMiddle) const {
    const bool isFitted = set_.traces.size() == 1 && !options_.spacingMicrovolts;
    const double offset = MiddleMicrovolts(trace, isFitted);
    const double pixelsPerMicrovolt = layout_.rowHeight / spacing_;
    const auto y = [&](std::int16_t sample) {
        const double microvolts = sample * trace.microvoltsPerStep - offset;
        return std::clamp(rowMiddle - microvolts * pixelsPerMicrovolt, -layout_.height,
                          2.0 * layout_.height);
    };
    SvgPath path;
    std::optional<std::size_t> before;
    bool isAtHigh = false;  // position of the path in the previous column
    for (std::size_t column = 0; column < trace.columns.size(); ++column) {
        const ColumnRange& range = trace.columns[column];
        if (range.IsEmpty()) continue;
        const double x = X(trace.scale.MiddleOf(column));
        const double first = isAtHigh ? y(range.largest) : y(range.smallest);
        const double second = isAtHigh ? y(range.smallest) : y(range.largest);
        if (!before || IsBroken(trace, *before, column)) {
            path.MoveTo(x, first);
            path.LineTo(x + 0.1, first);  // makes a single point visible
        } else {
            path.LineTo(x, first);
        }
        path.LineTo(x, second);
        isAtHigh = !isAtHigh;
        before = column;
    }
    return path;
}

// Whether nothing is known between two columns that have samples. One column may be empty if there
// are about as many samples as columns.
bool TracePainter::IsBroken(const Trace& trace, std::size_t from, std::size_t to) const {
    if (to - from <= 1) return false;
    if (to - from > 2) return true;
    const double begin = trace.scale.MiddleOf(from);
    const double end = trace.scale.MiddleOf(to);
    const auto isBetween = [&](const TimeSpan& span) {
        return span.toSeconds > begin && span.fromSeconds < end;
    };
    return std::any_of(set_.gaps.begin(), set_.gaps.end(), isBetween) ||
           std::any_of(set_.damage.begin(), set_.damage.end(), isBetween);
}

void TracePainter::PaintNames() {
    constexpr std::size_t kMostCharacters = 11;
    constexpr double kBaseline = 4.0;  // below the middle of letters
    writer_.OpenGroup("names");
    for (std::size_t row = 0; row < set_.traces.size(); row += layout_.labelEvery) {
        writer_.Text("name", {layout_.left - 8.0, layout_.RowMiddle(row) + kBaseline},
                     Shortened(set_.traces[row].name, kMostCharacters), SvgAnchor::kEnd);
    }
    for (std::size_t row = 0; row < set_.traces.size() && layout_.labelEvery == 1; ++row) {
        if (!set_.traces[row].columns.empty()) continue;
        writer_.Text("missing", {layout_.left + 6.0, layout_.RowMiddle(row) + kBaseline},
                     "no samples");
    }
    writer_.CloseGroup();
}

void TracePainter::PaintScaleBar() {
    constexpr double kLongest = 90.0;
    const double microvolts = RoundDown(spacing_ * kLongest / layout_.rowHeight);
    const double height = microvolts * layout_.rowHeight / spacing_;
    const double x = layout_.Right() + 14.0;
    writer_.OpenGroup("scale");
    writer_.Line("bar", {x, layout_.top}, {x, layout_.top + height});
    writer_.Text("scale-label", {x + 8.0, layout_.top + height / 2.0 + 4.0}, Voltage(microvolts));
    writer_.CloseGroup();
}

// Explains the shades of gaps and damage, if there are any.
void TracePainter::PaintKey() {
    double right = layout_.Right();
    const double y = layout_.axis + 38.0;
    const auto add = [&](const std::string& cssClass, const std::string& text, double width) {
        writer_.Text("key", {right, y}, text, SvgAnchor::kEnd);
        writer_.Rect(cssClass, {right - width - 18.0, y - 10.0, 12.0, 12.0});
        right -= width + 34.0;
    };
    if (!set_.damage.empty()) add("damage-key", "damage", 48.0);
    if (!set_.gaps.empty()) add("gap-key", "gap", 22.0);
}

}  // namespace

std::string PaintTraces(const TraceSet& set, const TracePictureOptions& options) {
    return TracePainter(set, options).Paint();
}

}  // namespace stalwick
