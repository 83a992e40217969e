// SPDX-License-Identifier: BSD-3-Clause
#include "cli/info_table.h"

#include <algorithm>
#include <array>
#include <cwchar>

#include "page/info_words.h"
#include "page/readable_figures.h"

namespace stalwick {

namespace {

constexpr std::size_t kMostRows = 20;  // of a list; the document for machines has all

std::wstring Fixed(double value, int decimals) {
    std::array<wchar_t, 400> text{};
    std::swprintf(text.data(), text.size(), L"%.*f", decimals, value);
    return text.data();
}

std::wstring RightAligned(const std::wstring& text, std::size_t width) {
    return std::wstring(width - std::min(width, text.size()), L' ') + text;
}

// The lines of a recording: a name for each group, and its contents next to it.
class Table {
  public:
    void Row(const std::wstring& name, const std::wstring& text) {
        constexpr std::size_t kNameWidth = 10;
        std::wstring padded = name;
        padded.resize(std::max(kNameWidth, name.size() + 1), L' ');
        lines_.push_back(L"  " + padded + text);
    }
    void More(const std::wstring& text) { Row(L"", L"  " + text); }
    void Title(const std::wstring& text) { lines_.push_back(text); }
    // `line` for each of the first values of a list.
    template <typename Values, typename Line>
    void List(const Values& values, Line line) {
        for (std::size_t i = 0; i < std::min(values.size(), kMostRows); ++i) More(line(values[i]));
        if (values.size() > kMostRows) {
            More(L"and " + std::to_wstring(values.size() - kMostRows) + L" more; see --json");
        }
    }
    std::vector<std::wstring> Take() { return std::move(lines_); }

  private:
    std::vector<std::wstring> lines_;
};

void AddTitle(const RecordingSurvey& survey, Table& table) {
    const RecordingHeader& header = survey.header;
    const std::wstring size =
        survey.fileSize != 0 ? ReadableBytes(survey.fileSize) : std::wstring(L"size not known");
    table.Title(survey.path + L": " + (survey.quick && !survey.hasTimestamps ? L"about " : L"") +
                ReadableDuration(survey.durationSeconds) + L", " +
                Counted(header.numADChannels, L"channel") + L", " + size);
    const std::wstring system =
        header.acquisitionSystem.empty() ? L"not named" : header.acquisitionSystem;
    table.Row(L"header", L"version " + header.fileVersion + L", " +
                             std::to_wstring(header.samplingFrequency) + L" samples a second, " +
                             L"input range " + std::to_wstring(header.inputRange));
    table.More(L"session " + (header.sessionUuid.empty() ? L"not named" : header.sessionUuid) +
               L", system " + system);
}

void AddChannelsCarried(const RecordingSurvey& survey, Table& table) {
    std::wstring text = std::to_wstring(survey.header.numADChannels) + L" announced, " +
                        std::to_wstring(survey.channelsCarried) + L" in the packets";
    if (!survey.quick) text += L", " + std::to_wstring(survey.channelsMasked) + L" of them masked";
    table.Row(L"channels", text);
}

void AddBlocks(const RecordingSurvey& survey, Table& table) {
    table.Row(L"packets", std::to_wstring(survey.packets) + (survey.quick ? L" read" : L""));
    const BlockCounts& blocks = survey.blocks;
    const auto add = [&](const wchar_t* name, std::uint64_t count) {
        if (count == 0) return;
        const double share =
            100.0 * static_cast<double>(count) / static_cast<double>(survey.packets);
        table.More(std::wstring(name) + L" in " + std::to_wstring(count) + L" (" + Fixed(share, 1) +
                   L" %)");
    };
    add(L"A/D samples", blocks.adSamples);
    add(L"base inertial unit", blocks.baseImu);
    add(L"front-end inertial unit", blocks.afeImu);
    add(L"ultrasonic block", blocks.ultrasonic);
    add(L"channel mask", blocks.channelMask);
    add(L"a state byte a sample", blocks.statePerSample);
    add(L"hardware timestamp", blocks.hardwareTimestamp);
}

void AddClock(const RecordingSurvey& survey, Table& table) {
    if (!survey.measuredRate) return;
    table.Row(L"clock", Fixed(*survey.measuredRate, 3) + L" samples a second measured, " +
                            Fixed(*survey.driftPpm, 2) + L" ppm from the header's");
}

void AddTtl(const RecordingSurvey& survey, Table& table) {
    std::wstring lines;
    for (std::size_t line = 0; line < kTtlLines; ++line) {
        if (survey.ttlChanges[line] == 0) continue;
        lines += (lines.empty() ? L"line " : L", line ") + std::to_wstring(line) + L": " +
                 std::to_wstring(survey.ttlChanges[line]);
    }
    table.Row(L"TTL", lines.empty() ? L"no change" : L"changes of " + lines);
}

void AddGaps(const RecordingSurvey& survey, Table& table) {
    if (!survey.hasTimestamps) {
        table.Row(L"gaps", L"unknown");
    } else if (survey.gaps.empty()) {
        table.Row(L"gaps", L"none");
    } else {
        table.Row(L"gaps", Counted(survey.gaps.size(), L"gap") + L", " +
                               ReadableDuration(survey.gapSeconds) + L", " +
                               Counted(survey.missingSamples, L"sample") + L" a channel missing");
    }
    table.List(survey.gaps, [](const RecordingGap& gap) {
        return L"at " + Fixed(gap.atSeconds, 6) + L" s: " + Fixed(gap.seconds, 6) + L" s, " +
               Counted(gap.missingSamples, L"sample") + L", before byte " +
               std::to_wstring(gap.position);
    });
    if (survey.repeatedTimestamps != 0) {
        table.More(Counted(survey.repeatedTimestamps, L"timestamp") + L" repeated");
    }
    if (survey.shortSteps != 0) {
        table.More(Counted(survey.shortSteps, L"timestamp") + L" too early");
    }
    table.List(survey.backwardTimestamps, [](const BackwardTimestamp& step) {
        return L"timestamp " + std::to_wstring(step.nanoseconds) + L" ns back in time at byte " +
               std::to_wstring(step.position);
    });
}

std::wstring DescribeDamage(const DamagedStretch& damage) {
    std::wstring text = L"byte " + std::to_wstring(damage.position) + L", " +
                        Counted(damage.bytes, L"byte") + L": " + DamageReason(damage);
    if (damage.atSeconds) text += L"; at " + Fixed(*damage.atSeconds, 6) + L" s";
    if (damage.missingSamples) {
        text += L", " + Counted(*damage.missingSamples, L"sample") + L" a channel lost";
    }
    return text;
}

void AddDamage(const RecordingSurvey& survey, Table& table) {
    if (survey.damage.empty()) {
        table.Row(L"damage", survey.quick ? L"none at either end" : L"none");
    } else {
        table.Row(L"damage", Counted(survey.damage.size(), L"place") + L", " +
                                 Counted(survey.damagedBytes, L"byte"));
    }
    table.List(survey.damage, DescribeDamage);
    if (!survey.readError.empty()) {
        table.Row(L"end", L"could not be read to its end: " + survey.readError);
    } else if (survey.cutEndBytes != 0) {
        table.Row(L"end", CutEndReason(survey) + L" (" + Counted(survey.cutEndBytes, L"byte") +
                              L" left over)");
    } else {
        table.Row(L"end", L"whole");
    }
}

void AddChannelStatistics(const RecordingSurvey& survey, Table& table) {
    if (survey.channelStatistics.empty()) return;
    table.Row(L"signal",
              L"channel    min uV    max uV   mean uV    RMS uV  at range's ends  longest flat");
    for (const ChannelStatistics& channel : survey.channelStatistics) {
        std::wstring line = RightAligned(L"CSC" + std::to_wstring(channel.channel + 1), 7);
        for (const double value : {channel.minMicrovolts, channel.maxMicrovolts,
                                   channel.meanMicrovolts, channel.rmsMicrovolts}) {
            line += RightAligned(Fixed(value, 1), 10);
        }
        line += RightAligned(std::to_wstring(channel.atRangeEnds), 17) +
                RightAligned(std::to_wstring(channel.longestFlatRun), 14);
        table.Row(L"", line);
    }
}

void AddOutputs(const RecordingSurvey& survey, Table& table) {
    if (survey.outputs.empty()) return;
    std::uint64_t bytes = 0;
    for (const OutputSize& output : survey.outputs) bytes += output.bytes;
    table.Row(L"outputs", Counted(survey.outputs.size(), L"file") + L", " + ReadableBytes(bytes) +
                              L" with every output switched on");
    // The channel files of a group differ only in name.
    std::size_t first = 0;
    for (std::size_t i = 1; i <= survey.outputs.size(); ++i) {
        const OutputSize& from = survey.outputs[first];
        if (i < survey.outputs.size() && survey.outputs[i].bytes == from.bytes &&
            survey.outputs[i].records == from.records) {
            continue;
        }
        const std::wstring names =
            i - first == 1 ? from.name : from.name + L" to " + survey.outputs[i - 1].name;
        table.More(names + L": " + Counted(from.records, L"record") + L", " +
                   ReadableBytes(from.bytes) + (i - first == 1 ? L"" : L" each"));
        first = i;
    }
}

}  // namespace

std::vector<std::wstring> SurveyAsTable(const RecordingSurvey& survey) {
    Table table;
    AddTitle(survey, table);
    AddChannelsCarried(survey, table);
    AddBlocks(survey, table);
    AddClock(survey, table);
    if (!survey.quick) {
        AddTtl(survey, table);
        AddGaps(survey, table);
    }
    AddDamage(survey, table);
    AddChannelStatistics(survey, table);
    AddOutputs(survey, table);
    for (const std::wstring& what : WhatCannotBeKnown(survey)) table.Row(L"note", what);
    return table.Take();
}

}  // namespace stalwick
