// SPDX-License-Identifier: BSD-3-Clause
#include "engine/output_failures.h"

#include <algorithm>
#include <optional>

#include "outputs/channel_options.h"
#include "outputs/output_format.h"
#include "platform/paths.h"

namespace stalwick {

namespace {

using Outputs = std::vector<const OutputEnd*>;

constexpr std::wstring_view kDigits = L"0123456789";

// The name of a file of a group, before and after its number in the group.
struct MemberName {
    std::wstring group;
    std::uint64_t place = 0;
    std::wstring rest;

    bool IsFollowedBy(const MemberName& next) const {
        return group == next.group && place + 1 == next.place && rest == next.rest;
    }
};

std::wstring FileNameOf(const OutputEnd& output) {
    const PathParts parts = SplitPath(output.file.path);
    return parts.name + parts.extension;
}

bool IsNumbered(const std::wstring& name) {
    return name.starts_with(kADChannelPrefix);
}

std::optional<MemberName> ReadNumberedName(const std::wstring& name) {
    if (!IsNumbered(name)) return std::nullopt;
    const std::size_t first = std::wstring_view(kADChannelPrefix).size();
    const std::size_t end = name.find_first_not_of(kDigits, first);
    if (end == first || end == std::wstring::npos) return std::nullopt;
    return MemberName{name.substr(0, first), std::stoull(name.substr(first, end - first)),
                      name.substr(end)};
}

std::optional<MemberName> ReadInertialName(const std::wstring& name) {
    for (const wchar_t* prefix : {kBaseImuPrefix, kAfeImuPrefix}) {
        for (std::size_t i = 0; i < kImuChannelNames.size(); ++i) {
            const std::wstring start = prefix + std::wstring(kImuChannelNames[i]);
            if (name.starts_with(start)) return MemberName{prefix, i, name.substr(start.size())};
        }
    }
    return std::nullopt;
}

std::optional<MemberName> ReadName(const OutputEnd& output) {
    const std::wstring name = FileNameOf(output);
    return IsNumbered(name) ? ReadNumberedName(name) : ReadInertialName(name);
}

bool IsFollowedBy(const OutputEnd& output, const OutputEnd& next) {
    const std::optional<MemberName> name = ReadName(output);
    const std::optional<MemberName> nextName = ReadName(next);
    return name && nextName && name->IsFollowedBy(*nextName);
}

// Splits the outputs into runs of consecutive files of a group.
std::vector<Outputs> RunsOf(const Outputs& outputs) {
    std::vector<Outputs> runs;
    for (const OutputEnd* output : outputs) {
        if (runs.empty() || !IsFollowedBy(*runs.back().back(), *output)) runs.emplace_back();
        runs.back().push_back(output);
    }
    return runs;
}

// "no records", "5000 records each", "5000 to 5063 records": how much each of them holds.
std::wstring DescribeHeld(const Outputs& outputs) {
    const auto counts = [&](const OutputEnd* output) {
        return output->file.dataBytes / std::max<std::size_t>(output->recordSize, 1);
    };
    const auto [fewest, most] = std::ranges::minmax(outputs, {}, counts);
    const std::uint64_t least = counts(fewest);
    const std::uint64_t greatest = counts(most);
    const bool inBytes = outputs.front()->recordSize == 0;
    if (greatest == 0) return inBytes ? L"no data" : L"no records";
    const std::wstring unit =
        std::wstring(inBytes ? L" byte" : L" record") + (greatest == 1 ? L"" : L"s");
    if (least != greatest) {
        return std::to_wstring(least) + L" to " + std::to_wstring(greatest) + unit;
    }
    return std::to_wstring(least) + unit + (outputs.size() > 1 ? L" each" : L"");
}

// "a", "a and b", "a, b and c".
std::wstring Enumerate(const std::vector<std::wstring>& items) {
    std::wstring text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) text += i + 1 == items.size() ? L" and " : L", ";
        text += items[i];
    }
    return text;
}

// Numbers imply those in between. The names of axes do not, so each one is listed.
std::wstring NameRun(const Outputs& run) {
    std::wstring names = FileNameOf(*run.front());
    if (IsNumbered(names)) {
        if (run.size() > 1) names += L" to " + FileNameOf(*run.back());
        return names;
    }
    for (const OutputEnd* output : std::span(run).subspan(1)) names += L", " + FileNameOf(*output);
    return names;
}

std::wstring DescribeRun(const Outputs& run) {
    return NameRun(run) + L" (" + DescribeHeld(run) + L")";
}

// The outputs in one line: the first by its path, the others by their names.
std::wstring DescribeCause(const Outputs& outputs) {
    std::vector<std::wstring> names;
    for (const Outputs& run : RunsOf(outputs)) names.push_back(NameRun(run));
    const OutputFileState& first = outputs.front()->file;
    const PathParts parts = SplitPath(first.path);
    OutputFailure failure = *first.failure;
    if (first.created) {
        failure.reason +=
            (outputs.size() == 1 ? L"; it holds " : L"; they hold ") + DescribeHeld(outputs);
    }
    return DescribeFailure(failure, parts.drive + parts.directory + Enumerate(names));
}

}  // namespace

std::vector<std::wstring> DescribeFailedOutputs(std::span<const OutputEnd> outputs) {
    std::vector<Outputs> causes;
    for (const OutputEnd& output : outputs) {
        if (!output.file.failure) continue;
        const auto same = std::ranges::find_if(causes, [&](const Outputs& others) {
            return others.front()->file.failure == output.file.failure;
        });
        if (same != causes.end()) {
            same->push_back(&output);
        } else {
            causes.push_back({&output});
        }
    }
    std::vector<std::wstring> texts;
    for (const Outputs& cause : causes) texts.push_back(DescribeCause(cause));
    return texts;
}

std::wstring NameUnfinishedOutputs(std::span<const OutputEnd> outputs) {
    Outputs unfinished;
    for (const OutputEnd& output : outputs) {
        if (!output.whole && !output.file.failure) unfinished.push_back(&output);
    }
    std::vector<std::wstring> runs;
    for (const Outputs& run : RunsOf(unfinished)) runs.push_back(DescribeRun(run));
    return Enumerate(runs);
}

}  // namespace stalwick
