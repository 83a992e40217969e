// SPDX-License-Identifier: BSD-3-Clause
#include "survey/trace_sources.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "outputs/channel_file.h"
#include "outputs/output_format.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

constexpr double kMicrovoltsPerVolt = 1e6;
constexpr double kMicrosecondsPerSecond = 1e6;

double HeaderNumber(const OutputHeader& header, std::wstring_view key) {
    const std::string text = ToUtf8(header.Value(key));
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return std::isfinite(value) ? value : 0.0;
}

TraceError ReadEnds(const ChannelFile& file, TraceSource& source) {
    VtxDataTypes::CRRec first;
    VtxDataTypes::CRRec last;
    RecordFileError error = file.ReadRecords(0, std::span(&first, 1));
    if (!error) error = file.ReadRecords(file.RecordCount() - 1, std::span(&last, 1));
    if (error) return {TraceError::Kind::kUnreadable, error.text + L"; look for a whole copy"};
    source.firstMicroseconds = first.timestamp;
    const auto steps = static_cast<std::int64_t>(last.timestamp - first.timestamp);
    source.seconds = static_cast<double>(steps) / kMicrosecondsPerSecond +
                     static_cast<double>(last.numValidSamples) / source.samplesPerSecond;
    return {};
}

// Finds the ends of a file that contains samples.
TraceError LookAt(const std::wstring& path, TraceSources& sources) {
    ChannelFile file;
    const RecordFileError error = file.Open(path);
    if (error && error.kind != RecordFileError::Kind::kCutRecord) {
        return {TraceError::Kind::kUnreadable,
                error.text + L"; give a recording, or channel files of a conversion"};
    }
    if (file.RecordCount() == 0) {
        sources.warnings.push_back(OneLine(path) + L": left out: it holds no samples");
        return {};
    }
    const OutputHeader& header = file.Header();
    TraceSource source;
    source.path = path;
    source.session = header.Value(L"-SessionUUID");
    source.entity = header.Value(L"-AcqEntName");
    source.name = ReadOutputName(source.entity + kChannelFileExtension);
    source.samplesPerSecond = HeaderNumber(header, L"-SamplingFrequency");
    source.microvoltsPerStep = HeaderNumber(header, L"-ADBitVolts") * kMicrovoltsPerVolt;
    if (source.samplesPerSecond <= 0.0) {
        return {TraceError::Kind::kUnreadable,
                OneLine(path) + L": its header has no -SamplingFrequency; look for a whole copy"};
    }
    if (TraceError fault = ReadEnds(file, source)) return fault;
    sources.channels.push_back(std::move(source));
    return {};
}

TraceError CheckSessions(const std::vector<TraceSource>& channels) {
    for (const TraceSource& source : channels) {
        if (source.session == channels.front().session) continue;
        return {TraceError::Kind::kRequest,
                OneLine(source.path) + L" and " + OneLine(channels.front().path) +
                    L" belong to different sessions; draw them in two pictures"};
    }
    return {};
}

// A shell sorts CSC10 before CSC2.
void SortByChannel(std::vector<TraceSource>& channels) {
    const auto key = [](const TraceSource& source) {
        if (!source.name) return std::pair(INT32_MAX, 0U);
        return std::pair(static_cast<std::int32_t>(source.name->group), source.name->channel);
    };
    std::stable_sort(channels.begin(), channels.end(),
                     [&](const auto& a, const auto& b) { return key(a) < key(b); });
}

TraceError ChooseChannels(const std::vector<std::uint32_t>& wanted,
                          std::vector<TraceSource>& channels) {
    std::vector<TraceSource> chosen;
    for (const std::uint32_t channel : wanted) {
        const std::size_t before = chosen.size();
        for (const TraceSource& source : channels) {
            const bool isIt = source.name && source.name->IsChannelOf(ChannelGroup::kAD) &&
                              source.name->channel == channel;
            if (isIt) chosen.push_back(source);
        }
        if (chosen.size() != before) continue;
        return {TraceError::Kind::kRequest, L"no file with samples of channel " +
                                                std::to_wstring(channel + 1) +
                                                L" was given; add it, or choose other --channels"};
    }
    channels = std::move(chosen);
    return {};
}

}  // namespace

TraceSources FindTraceSources(const TraceRequest& request) {
    TraceSources sources;
    for (const std::wstring& path : request.paths) {
        if (path.ends_with(kEventFileExtension)) {
            sources.eventFiles.push_back(path);
        } else if ((sources.error = LookAt(path, sources))) {
            return sources;
        }
    }
    if (sources.channels.empty()) {
        sources.error = {TraceError::Kind::kUnreadable,
                         OneLine(request.paths.front()) +
                             L": no samples to draw; give channel files (.vcs) that hold some"};
        return sources;
    }
    sources.error = CheckSessions(sources.channels);
    SortByChannel(sources.channels);
    if (!sources.error && !request.channels.empty()) {
        sources.error = ChooseChannels(request.channels, sources.channels);
    }
    return sources;
}

}  // namespace stalwick
