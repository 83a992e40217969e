// SPDX-License-Identifier: BSD-3-Clause
#include "survey/output_set.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>

#include "outputs/channel_file.h"
#include "outputs/event_file.h"
#include "outputs/output_format.h"
#include "outputs/output_names.h"
#include "outputs/raw_data_file.h"
#include "platform/file_system.h"
#include "platform/paths.h"

namespace stalwick {

namespace {

constexpr std::uint32_t kMostChannelFiles = 256;

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

// The whole text as a number of at most nine digits.
std::optional<std::int32_t> ReadNumber(std::wstring_view digits) {
    constexpr std::size_t kMostDigits = 9;
    constexpr std::int32_t kBase = 10;
    if (digits.empty() || digits.size() > kMostDigits) return std::nullopt;
    std::int32_t number = 0;
    for (const wchar_t digit : digits) {
        if (!IsDigit(digit)) return std::nullopt;
        number = number * kBase + (digit - L'0');
    }
    return number;
}

bool ReadImuEntity(const wchar_t* prefix, ChannelGroup group, OutputName& name) {
    for (std::uint32_t i = 0; i < kImuChannelNames.size(); ++i) {
        if (name.entity != std::wstring(prefix) + kImuChannelNames[i]) continue;
        name.group = group;
        name.channel = i;
        return true;
    }
    return false;
}

bool ReadChannelEntity(OutputName& name) {
    name.kind = OutputName::Kind::kChannel;
    if (name.entity == kUltrasonicEntity) {
        name.group = ChannelGroup::kUltrasonic;
        return true;
    }
    if (ReadImuEntity(kBaseImuPrefix, ChannelGroup::kBaseIMU, name)) return true;
    if (ReadImuEntity(kAfeImuPrefix, ChannelGroup::kAfeIMU, name)) return true;
    const std::wstring prefix = kADChannelPrefix;
    if (!name.entity.starts_with(prefix)) return false;
    const auto number = ReadNumber(std::wstring_view(name.entity).substr(prefix.size()));
    if (!number || *number < 1 || *number > static_cast<std::int32_t>(kMostChannelFiles)) {
        return false;
    }
    name.group = ChannelGroup::kAD;
    name.channel = static_cast<std::uint32_t>(*number - 1);
    return name.entity == prefix + std::to_wstring(*number);
}

// Removes and returns the number at the end of a name without extension.
void SplitNumber(std::wstring& entity, std::int32_t& number) {
    const auto mark = entity.rfind(L'_');
    if (mark == std::wstring::npos) return;
    const std::wstring suffix = entity.substr(mark);
    const auto value = ReadNumber(std::wstring_view(suffix).substr(1));
    if (!value || *value == 0 || NumberSuffix(*value) != suffix) return;
    number = *value;
    entity.resize(mark);
}

auto CreationOrder(const OutputName& name) {
    return std::tuple(name.kind, name.group, name.channel);
}

OutputInSet ReadOutput(const std::wstring& directory, const std::wstring& fileName,
                       OutputName name) {
    OutputInSet output;
    output.name = std::move(name);
    output.fileName = fileName;
    output.path = directory + kPathSeparator + fileName;
    RecordFile file;
    output.error = OpenOutput(output.name.kind, output.path, file);
    output.header = file.Header();
    output.size = output.HasHeader() ? file.Size() : QueryFileSize(output.path);
    return output;
}

// How badly a file matches one whose conversion is known.
auto Misfit(const OutputInSet& output, const OutputInSet& anchor) {
    constexpr const wchar_t* kSession = L"-SessionUUID";
    const bool otherSession = output.HasHeader() && anchor.HasHeader() &&
                              output.header.Value(kSession) != anchor.header.Value(kSession);
    const auto created = ReadHeaderTime(output.header.Value(L"-TimeCreated"));
    const auto anchorCreated = ReadHeaderTime(anchor.header.Value(L"-TimeCreated"));
    std::int64_t seconds = 0;
    if (created && anchorCreated) {
        seconds = std::max(*created, *anchorCreated) - std::min(*created, *anchorCreated);
    }
    return std::tuple(otherSession, seconds, output.name.number != anchor.name.number);
}

using Outputs = std::vector<OutputInSet>;

// Assigns each file of an entity to a different set, in order.
void AddToSets(Outputs& outputs, const Outputs& anchors, std::vector<Outputs>& sets) {
    std::size_t first = 0;  // first set that is still free
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const std::size_t last = sets.size() - (outputs.size() - i);
        std::size_t best = first;
        for (std::size_t set = first + 1; set <= last; ++set) {
            if (Misfit(outputs[i], anchors[set]) < Misfit(outputs[i], anchors[best])) best = set;
        }
        sets[best].push_back(std::move(outputs[i]));
        first = best + 1;
    }
}

}  // namespace

std::optional<OutputName> ReadOutputName(std::wstring_view fileName) {
    const auto point = fileName.rfind(L'.');
    if (point == std::wstring_view::npos) return std::nullopt;
    const std::wstring_view extension = fileName.substr(point);
    OutputName name;
    name.entity = fileName.substr(0, point);
    SplitNumber(name.entity, name.number);
    if (extension == kChannelFileExtension && ReadChannelEntity(name)) return name;
    name.kind = OutputName::Kind::kEvents;
    if (extension == kEventFileExtension && name.entity == kEventEntity) return name;
    name.kind = OutputName::Kind::kRawData;
    if (extension == kRawDataFileExtension && name.entity == kRawDataEntity) return name;
    return std::nullopt;
}

RecordFileError OpenOutput(OutputName::Kind kind, const std::wstring& path, RecordFile& file) {
    const auto open = [&](auto opened) {
        RecordFileError error = opened.Open(path);
        file = std::move(opened);
        return error;
    };
    if (kind == OutputName::Kind::kChannel) return open(ChannelFile());
    return kind == OutputName::Kind::kEvents ? open(EventFile()) : open(RawDataFile());
}

std::vector<std::vector<OutputInSet>> FindOutputSets(const std::wstring& directory,
                                                     const std::vector<std::wstring>& fileNames) {
    std::map<decltype(CreationOrder(OutputName())), Outputs> byEntity;
    for (const std::wstring& fileName : fileNames) {
        if (auto name = ReadOutputName(fileName)) {
            const auto key = CreationOrder(*name);
            byEntity[key].push_back(ReadOutput(directory, fileName, std::move(*name)));
        }
    }
    const Outputs* most = nullptr;
    for (auto& entity : byEntity) {
        Outputs& outputs = entity.second;
        std::sort(outputs.begin(), outputs.end(), [](const auto& one, const auto& other) {
            return one.name.number < other.name.number;
        });
        // Every conversion makes an event file.
        const bool isEvents = outputs.front().name.kind == OutputName::Kind::kEvents;
        if (most == nullptr || outputs.size() > most->size() ||
            (isEvents && outputs.size() == most->size())) {
            most = &outputs;
        }
    }
    if (most == nullptr) return {};
    const Outputs anchors = *most;
    std::vector<Outputs> sets(anchors.size());
    for (auto& entity : byEntity) AddToSets(entity.second, anchors, sets);
    return sets;
}

std::optional<std::int64_t> ReadHeaderTime(std::wstring_view text) {
    struct Field {
        std::size_t start, size;
        std::int64_t most;
    };
    constexpr std::wstring_view kForm = L"0000/00/00 00:00:00";
    constexpr std::array<Field, 6> kFields = {
        {{0, 4, 9999}, {5, 2, 12}, {8, 2, 31}, {11, 2, 23}, {14, 2, 59}, {17, 2, 60}}};
    const auto fits = [](wchar_t c, wchar_t form) {
        return IsDigit(form) ? IsDigit(c) : c == form;
    };
    if (!std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), fits)) {
        return std::nullopt;
    }
    std::int64_t time = 0;
    for (const Field& field : kFields) {
        const std::int64_t value = ReadNumber(text.substr(field.start, field.size)).value_or(0);
        if (value > field.most) return std::nullopt;
        // Seconds and minutes go to 59; a leap second coincides with the next second.
        const bool countsSixty = field.most >= 59 && field.most < 100;
        time = time * (countsSixty ? 60 : field.most + 1) + value;
    }
    return time;
}

}  // namespace stalwick
