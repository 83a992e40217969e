// SPDX-License-Identifier: BSD-3-Clause
#include "survey/set_check.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <set>

#include "outputs/output_format.h"
#include "outputs/output_names.h"
#include "platform/text_encoding.h"
#include "survey/raw_record_check.h"
#include "survey/record_check.h"

namespace stalwick {

namespace {

using Outputs = std::vector<OutputInSet>;

const OutputInSet* FindKind(const Outputs& outputs, OutputName::Kind kind) {
    const auto found = std::find_if(outputs.begin(), outputs.end(),
                                    [&](const auto& output) { return output.name.kind == kind; });
    return found == outputs.end() ? nullptr : &*found;
}

bool HasChannelsOf(const Outputs& outputs, ChannelGroup group) {
    return std::any_of(outputs.begin(), outputs.end(),
                       [&](const auto& output) { return output.name.IsChannelOf(group); });
}

// Reports which outputs are missing or superfluous.
class MemberCheck {
  public:
    MemberCheck(const Outputs& outputs, const RecordingHeader* recording, std::size_t mostListed,
                VerifiedSet& set)
        : outputs_(outputs), recording_(recording), mostListed_(mostListed), set_(set) {}

    void Run() {
        for (const OutputInSet& output : outputs_) CheckReadable(output);
        if (FindKind(outputs_, OutputName::Kind::kEvents) == nullptr) {
            ReportMissing(std::wstring(kEventEntity) + kEventFileExtension);
        }
        CheckADChannels();
        const auto imuChannels = static_cast<std::uint32_t>(kImuChannelNames.size());
        const bool all = recording_ == nullptr;
        CheckGroup(ChannelGroup::kBaseIMU, all || recording_->baseImuAvailable ? imuChannels : 0);
        CheckGroup(ChannelGroup::kAfeIMU, all || recording_->afeImuAvailable ? imuChannels : 0);
        CheckGroup(ChannelGroup::kUltrasonic, all || recording_->ultrasonicAvailable ? 1 : 0);
    }

  private:
    void Report(const std::wstring& path, const FindingPlace& place, const std::wstring& text) {
        FindingLog(set_, path, mostListed_).Add(place, text);
    }

    void ReportMissing(const std::wstring& name) {
        const OutputInSet& other = outputs_.front();
        const std::wstring directory =
            other.path.substr(0, other.path.size() - other.fileName.size());
        Report(directory + name, {}, L"it is missing, but other files of its set exist");
    }

    void CheckReadable(const OutputInSet& output) {
        if (!output.error) return;
        // A cut record of the raw data file is not reported here: its records may have other
        // lengths than its header says.
        if (output.error.kind != RecordFileError::Kind::kCutRecord) {
            const std::wstring prefix = OneLine(output.path) + L": ";
            const std::wstring& text = output.error.text;
            Report(output.path, {}, text.starts_with(prefix) ? text.substr(prefix.size()) : text);
        } else if (output.name.kind != OutputName::Kind::kRawData) {
            const std::size_t recordSize = output.name.kind == OutputName::Kind::kEvents
                                               ? sizeof(VtxDataTypes::EventRec)
                                               : sizeof(VtxDataTypes::CRRec);
            const std::uint64_t bytes = output.size - kOutputHeaderSize;
            Report(output.path, {bytes / recordSize, output.size - bytes % recordSize},
                   L"it ends inside this record: " + std::to_wstring(bytes % recordSize) + L" of " +
                       std::to_wstring(recordSize) + L" bytes");
        }
    }

    // As many as the recording has, or the raw data file announces; otherwise up to the last one
    // that exists.
    void CheckADChannels() {
        std::uint32_t count = 0;
        for (const OutputInSet& output : outputs_) {
            if (output.name.IsChannelOf(ChannelGroup::kAD)) {
                count = std::max(count, output.name.channel + 1);
            }
        }
        const OutputInSet* const raw = FindKind(outputs_, OutputName::Kind::kRawData);
        if (recording_ != nullptr) {
            count = recording_->numADChannels;
        } else if (raw != nullptr && raw->HasHeader()) {
            count =
                static_cast<std::uint32_t>(raw->header.Number(L"-NumADChannels").value_or(count));
        }
        CheckGroup(ChannelGroup::kAD, count);
    }

    // A group is either complete or absent.
    void CheckGroup(ChannelGroup group, std::uint32_t count) {
        if (!HasChannelsOf(outputs_, group)) return;
        std::set<std::uint32_t> missing;
        for (std::uint32_t channel = 0; channel < count; ++channel) missing.insert(channel);
        for (const OutputInSet& output : outputs_) {
            if (!output.name.IsChannelOf(group) || missing.erase(output.name.channel) != 0)
                continue;
            Report(output.path, {}, L"the recording has no such channel");
        }
        for (const std::uint32_t channel : missing) ReportMissing(NameOf(group, channel));
    }

    static std::wstring NameOf(ChannelGroup group, std::uint32_t channel) {
        switch (group) {
            case ChannelGroup::kBaseIMU:
                return std::wstring(kBaseImuPrefix) + kImuChannelNames[channel] +
                       kChannelFileExtension;
            case ChannelGroup::kAfeIMU:
                return std::wstring(kAfeImuPrefix) + kImuChannelNames[channel] +
                       kChannelFileExtension;
            case ChannelGroup::kUltrasonic:
                return std::wstring(kUltrasonicEntity) + kChannelFileExtension;
            case ChannelGroup::kAD:
                break;
        }
        return kADChannelPrefix + std::to_wstring(channel + 1) + kChannelFileExtension;
    }

    const Outputs& outputs_;
    const RecordingHeader* recording_;
    std::size_t mostListed_;
    VerifiedSet& set_;
};

double SamplesPerSecond(const OutputInSet& output) {
    const std::string text = ToUtf8(output.header.Value(L"-SamplingFrequency"));
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    constexpr double kMost = 1e12;  // beyond any recorder; "inf" is a number, too
    return value > 0.0 && value < kMost ? value : 0.0;
}

// The most frequent value; of equally frequent ones, the one that reached this number first.
template <typename Value>
Value MostFrequent(const std::vector<Value>& values) {
    std::map<Value, std::size_t> counts;
    Value best = values.front();
    for (const Value& value : values) {
        if (++counts[value] > counts[best]) best = value;
    }
    return best;
}

// Goes through the files of a set and adds up their records.
class RecordsCheck {
  public:
    RecordsCheck(const Outputs& outputs, const VerifyRequest& request, VerifiedSet& set)
        : outputs_(outputs),
          mostListed_(request.mostFindingsPerFile),
          mayEndEarly_(request.salvaged),
          set_(set) {}

    void Run() {
        const auto gapSource =
            std::find_if(outputs_.begin(), outputs_.end(), [](const auto& output) {
                const bool isAD = output.name.IsChannelOf(ChannelGroup::kAD);
                return (isAD || output.name.kind == OutputName::Kind::kRawData) &&
                       output.HasHeader();
            });
        for (auto output = outputs_.begin(); output != outputs_.end(); ++output) {
            if (output->HasHeader()) CheckFile(*output, output == gapSource);
        }
        for (const auto& alike : channels_) CompareChannels(alike.second);
        CompareRawData();
    }

  private:
    struct CheckedChannel {
        const OutputInSet* output;
        ChannelTotals totals;
    };

    void CheckFile(const OutputInSet& output, bool showsGaps) {
        FindingLog log(set_, output.path, mostListed_);
        RecordFile file;
        const RecordFileError error = OpenOutput(output.name.kind, output.path, file);
        if (error && error.kind != RecordFileError::Kind::kCutRecord) {
            log.Add({}, L"it could not be opened again: " + error.text);
            return;
        }
        TimeSteps steps(showsGaps ? SamplesPerSecond(output) : 0.0, set_, log);
        switch (output.name.kind) {
            case OutputName::Kind::kEvents:
                CheckEventRecords(file, steps, log);
                events_ = file.RecordCount();
                return;
            case OutputName::Kind::kRawData:
                raw_ = CheckRawRecords(output, file, steps, log);
                rawOutput_ = log.Count() == 0 ? &output : nullptr;
                return;
            case OutputName::Kind::kChannel:
                channels_[Alike(output.name)].push_back(
                    {&output, CheckChannelRecords(output, file, {steps, log, mayEndEarly_})});
                return;
        }
    }

    // What channels with the same number of samples have in common. A packet may have samples only
    // for the first 32, 64, 128 or 256 A/D channels.
    static std::pair<ChannelGroup, std::uint32_t> Alike(const OutputName& name) {
        std::uint32_t width = 0;
        if (name.group == ChannelGroup::kAD) {
            constexpr std::uint32_t kLeastWidth = 32;
            for (width = kLeastWidth; name.channel >= width; width *= 2) {
            }
        }
        return {name.group, width};
    }

    void CompareChannels(const std::vector<CheckedChannel>& channels) {
        std::vector<std::uint64_t> samples;
        for (const auto& channel : channels) samples.push_back(channel.totals.samples);
        const std::uint64_t usual = MostFrequent(samples);
        std::vector<std::uint64_t> digests;
        for (const CheckedChannel& channel : channels) {
            if (channel.totals.samples == usual) digests.push_back(channel.totals.timesDigest);
        }
        const std::uint64_t usualTimes = MostFrequent(digests);
        for (const auto& [output, totals] : channels) {
            FindingLog log(set_, output->path, mostListed_);
            if (totals.samples != usual) {
                log.Add({}, L"it has " + std::to_wstring(totals.samples) +
                                L" samples, but other files of its set have " +
                                std::to_wstring(usual));
            } else if (totals.timesDigest != usualTimes) {
                log.Add({}, L"the times of its records differ from those of its set");
            }
        }
        const bool isFirstADGroup = channels.front().output->name.IsChannelOf(ChannelGroup::kAD) &&
                                    channels.front().output->name.channel < 32;
        if (isFirstADGroup) adSamples_ = usual;
    }

    void CompareRawData() {
        if (rawOutput_ == nullptr) return;
        FindingLog log(set_, rawOutput_->path, mostListed_);
        if (adSamples_ && *adSamples_ != raw_.records) {
            log.Add({}, L"it has " + std::to_wstring(raw_.records) +
                            L" records, but the first A/D channels have " +
                            std::to_wstring(*adSamples_) + L" samples");
        }
        // Packets without samples change TTL lines too, but have no raw records.
        if (events_ && raw_.ttlChanges > *events_) {
            log.Add({}, L"its TTL values change " + std::to_wstring(raw_.ttlChanges) +
                            L" times, the event file has " + std::to_wstring(*events_) +
                            L" events");
        }
    }

    const Outputs& outputs_;
    std::size_t mostListed_;
    bool mayEndEarly_;
    VerifiedSet& set_;
    std::map<std::pair<ChannelGroup, std::uint32_t>, std::vector<CheckedChannel>> channels_;
    std::optional<std::uint64_t> adSamples_;  // of channels that every packet has
    std::optional<std::uint64_t> events_;
    RawTotals raw_;
    const OutputInSet* rawOutput_ = nullptr;  // only if it has no findings
};

}  // namespace

void CheckMembers(const std::vector<OutputInSet>& outputs, const RecordingHeader* recording,
                  std::size_t mostFindingsPerFile, VerifiedSet& set) {
    MemberCheck(outputs, recording, mostFindingsPerFile, set).Run();
}

void CheckRecords(const std::vector<OutputInSet>& outputs, const VerifyRequest& request,
                  VerifiedSet& set) {
    RecordsCheck(outputs, request, set).Run();
}

}  // namespace stalwick
