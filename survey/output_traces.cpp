// SPDX-License-Identifier: BSD-3-Clause
#include "survey/output_traces.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

#include "outputs/channel_file.h"
#include "outputs/event_file.h"
#include "outputs/header_text.h"
#include "platform/text_encoding.h"
#include "survey/time_spans.h"
#include "survey/time_steps.h"
#include "survey/trace_sources.h"
#include "survey/ttl_spans.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::EventRec;

constexpr double kMicrosecondsPerSecond = 1e6;
constexpr std::uint64_t kRecordsAtATime = 128;

// A damaged record may claim more than it has room for.
std::uint64_t ValidSamples(const CRRec& record) {
    return std::min<std::uint64_t>(record.numValidSamples, VtxDataTypes::kSamplesPerRecord);
}

// Gathers the traces of a set, one file at a time.
class OutputTracer {
  public:
    OutputTracer(const TraceRequest& request, TraceSources sources)
        : request_(request), sources_(std::move(sources)) {
        set_.warnings = sources_.warnings;
    }

    [[nodiscard]] TraceSet Read();

  private:
    TraceError SetStretch();
    ColumnScale ScaleOf(const TraceSource& source, const CRRec& record) const;
    void AddGap(const CRRec& before, const CRRec& after, double samplesPerSecond,
                TimeSpans& gaps) const;
    void ReadChannel(const TraceSource& source, bool withGaps);
    void TakeRecord(const CRRec& record, double samplesPerSecond, Trace& trace) const;
    void ReadEvents(const std::wstring& path);
    template <typename Record, typename File, typename Take>
    void ReadStretch(const std::wstring& path, File& file, const Take& take);
    template <typename Record, typename File>
    std::uint64_t FindStart(const File& file);
    void ReportFault(const RecordFileError& error);
    double SecondsOf(std::uint64_t microseconds) const {
        return static_cast<double>(static_cast<std::int64_t>(microseconds - zero_)) /
               kMicrosecondsPerSecond;
    }

    const TraceRequest& request_;
    TraceSources sources_;
    std::uint64_t zero_ = 0;  // microseconds, of the first sample
    TraceSet set_;
};

void OutputTracer::ReportFault(const RecordFileError& error) {
    set_.lostData = true;
    set_.warnings.push_back(error.text + L"; look for a whole copy");
}

TraceError OutputTracer::SetStretch() {
    const std::vector<TraceSource>& channels = sources_.channels;
    zero_ = channels.front().firstMicroseconds;
    for (const TraceSource& source : channels) {
        if (SecondsOf(source.firstMicroseconds) < 0.0) zero_ = source.firstMicroseconds;
    }
    double end = 0.0;
    for (const TraceSource& source : channels) {
        end = std::max(end, SecondsOf(source.firstMicroseconds) + source.seconds);
    }
    if (end <= request_.startSeconds) {
        return {TraceError::Kind::kRequest, OneLine(channels.front().path) + L": it ends after " +
                                                FormatDouble(end, std::chars_format::fixed, 3) +
                                                L" s; choose an earlier --start"};
    }
    const double most = end - request_.startSeconds;
    set_.startSeconds = request_.startSeconds;
    set_.seconds = std::min(request_.seconds.value_or(most), most);
    return {};
}

// The last record that begins at or before the start of the stretch; the first one if none does.
template <typename Record, typename File>
std::uint64_t OutputTracer::FindStart(const File& file) {
    std::uint64_t low = 0;
    std::uint64_t high = file.RecordCount();
    while (high - low > 1) {
        const std::uint64_t middle = low + (high - low) / 2;
        Record record;
        // A fault occurs again, and is reported, when records are read in order.
        const bool isRead = !file.ReadRecords(middle, std::span(&record, 1));
        const bool isBefore = isRead && SecondsOf(record.timestamp) <= set_.startSeconds;
        (isBefore ? low : high) = middle;
    }
    return low;
}

void OutputTracer::TakeRecord(const CRRec& record, double samplesPerSecond, Trace& trace) const {
    const double seconds = SecondsOf(record.timestamp);
    for (std::size_t i = 0; i < ValidSamples(record); ++i) {
        const double at = seconds + static_cast<double>(i) / samplesPerSecond;
        const std::int64_t column = trace.scale.ColumnOf(at);
        if (column < 0 || column >= static_cast<std::int64_t>(trace.scale.columns)) continue;
        trace.columns[static_cast<std::size_t>(column)].Add(record.samples[i], record.samples[i]);
    }
}

ColumnScale OutputTracer::ScaleOf(const TraceSource& source, const CRRec& record) const {
    const double period = 1.0 / source.samplesPerSecond;
    const auto columns = static_cast<double>(request_.columns);
    if (set_.seconds >= columns * period) {
        return {set_.startSeconds, set_.seconds / columns, request_.columns};
    }
    return ScaleOfSamples(set_.startSeconds, set_.seconds, {SecondsOf(record.timestamp), period});
}

// Only the record after a gap is known: the gap may begin up to a record earlier than here.
void OutputTracer::AddGap(const CRRec& before, const CRRec& after, double samplesPerSecond,
                          TimeSpans& gaps) const {
    const auto missing =
        MissingBetween(before.timestamp, after.timestamp, ValidSamples(before), samplesPerSecond);
    if (!missing) return;
    const double end = SecondsOf(after.timestamp);
    gaps.Add({end - *missing / samplesPerSecond, end, 1,
              static_cast<std::uint64_t>(std::llround(*missing))});
}

void OutputTracer::ReadChannel(const TraceSource& source, bool withGaps) {
    Trace trace{source.entity, source.microvoltsPerStep, {}, {}};
    TimeSpans gaps(set_.seconds / static_cast<double>(request_.columns));
    std::optional<CRRec> before;
    const auto take = [&](const CRRec& record) {
        if (!before) {
            trace.scale = ScaleOf(source, record);
            trace.columns.resize(trace.scale.columns);
        } else if (withGaps) {
            AddGap(*before, record, source.samplesPerSecond, gaps);
        }
        TakeRecord(record, source.samplesPerSecond, trace);
        before = record;
    };
    ChannelFile file;
    ReadStretch<CRRec>(source.path, file, take);
    if (withGaps) set_.gaps = gaps.Within(set_.startSeconds, set_.EndSeconds());
    set_.traces.push_back(std::move(trace));
}

// Passes on the records from the last one that begins before the stretch to the first one after it.
template <typename Record, typename File, typename Take>
void OutputTracer::ReadStretch(const std::wstring& path, File& file, const Take& take) {
    const RecordFileError opened = file.Open(path);
    if (opened) ReportFault(opened);
    if (opened && opened.kind != RecordFileError::Kind::kCutRecord) return;
    std::vector<Record> records;
    for (std::uint64_t next = FindStart<Record>(file); next < file.RecordCount();) {
        records.resize(
            static_cast<std::size_t>(std::min(kRecordsAtATime, file.RecordCount() - next)));
        if (const RecordFileError error = file.ReadRecords(next, records)) {
            return ReportFault(error);
        }
        next += records.size();
        for (const Record& record : records) {
            take(record);
            if (SecondsOf(record.timestamp) >= set_.EndSeconds()) return;
        }
    }
}

// The value before a file's first event is unknown: lines count as low until then.
void OutputTracer::ReadEvents(const std::wstring& path) {
    const double sampleSeconds = 1.0 / sources_.channels.front().samplesPerSecond;
    TtlSpans ttl(sampleSeconds);
    ttl.Coarsen(set_.seconds / static_cast<double>(request_.columns));
    EventFile file;
    ReadStretch<EventRec>(path, file, [&](const EventRec& event) {
        ttl.TakeValue(static_cast<std::uint8_t>(event.ttlValue), SecondsOf(event.timestamp));
    });
    ttl.EndAt(set_.EndSeconds());
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        const auto high = ttl.High(line).Within(set_.startSeconds, set_.EndSeconds());
        set_.ttlHigh[line].insert(set_.ttlHigh[line].end(), high.begin(), high.end());
    }
}

TraceSet OutputTracer::Read() {
    set_.error = sources_.error ? sources_.error : SetStretch();
    if (set_.error) return std::move(set_);
    for (const TraceSource& source : sources_.channels) {
        ReadChannel(source, &source == &sources_.channels.front());
    }
    for (const std::wstring& path : sources_.eventFiles) ReadEvents(path);
    return std::move(set_);
}

}  // namespace

TraceSet ReadOutputTraces(const TraceRequest& request) {
    return OutputTracer(request, FindTraceSources(request)).Read();
}

}  // namespace stalwick
