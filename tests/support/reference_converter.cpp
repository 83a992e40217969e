// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/reference_converter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace stalwick::test {
namespace {

constexpr std::size_t kHeaderBytes = 16384;
constexpr std::uint32_t kLargestChannelCount = 256;
const char* const kImuChannelNames[] = {"LAX", "LAY", "LAZ", "AVX", "AVY", "AVZ", "MX", "MY", "MZ"};

std::string NameWithoutExtension(const ReferenceConvertInput& input) {
    const std::string partMarks = input.separator == "/" ? "/" : "/\\";
    const std::size_t lastMark = input.fileName.find_last_of(partMarks);
    const std::string name =
        lastMark == std::string::npos ? input.fileName : input.fileName.substr(lastMark + 1);
    return name.substr(0, name.find_last_of('.'));
}

std::string FreeName(const std::set<std::string>& takenNames, const std::string& name) {
    const std::size_t point = name.find_last_of('.');
    std::string candidate = name;
    for (int i = 1; takenNames.contains(candidate); ++i) {
        candidate = name.substr(0, point);
        candidate += i < 10 ? "_0" : "_";
        candidate += std::to_string(i);
        candidate += name.substr(point);
    }
    return candidate;
}

std::vector<std::int16_t> Scaled(const std::vector<std::uint16_t>& values, double factor) {
    std::vector<std::int16_t> samples;
    for (const std::uint16_t value : values) {
        samples.push_back(static_cast<std::int16_t>(static_cast<std::int16_t>(value) * factor));
    }
    return samples;
}

template <std::size_t Count>
std::vector<std::int16_t> Scaled(const std::array<std::uint16_t, Count>& values, double factor) {
    return Scaled(std::vector<std::uint16_t>(values.begin(), values.end()), factor);
}

void WriteGroup(std::vector<ReferenceChannelFile>& files, const std::vector<std::int16_t>& samples,
                std::size_t samplesPerChannel, const std::optional<std::uint64_t>& baseTimestamp) {
    for (std::size_t i = 0; i < files.size(); ++i) {
        // Channels that the packet does not have get nothing from it.
        if ((i + 1) * samplesPerChannel > samples.size()) return;
        files[i].WriteSamples(samples.data() + i * samplesPerChannel, samplesPerChannel,
                              baseTimestamp);
    }
}

class Conversion {
  public:
    explicit Conversion(const ReferenceConvertInput& input)
        : input_(input), fields_(input.fields ? *input.fields : ReadFields(input)) {}

    ReferenceConvertResult Run() {
        result_.status = Convert() ? 0 : -1;
        if (result_.status == 0) {
            result_.statusText = canceled_ ? "Data processing canceled." : "Processing complete";
        } else {
            result_.statusText = "Processing failed";
            if (!result_.errorText.empty()) result_.statusText += " - " + result_.errorText;
        }
        for (const auto* group : ChannelGroups()) {
            for (const auto& file : *group) result_.files[file.fileName] = file.Bytes();
        }
        if (eventFile_) result_.files[eventFile_->fileName] = eventFile_->Bytes();
        if (rawFile_) result_.files[rawFile_->fileName] = rawFile_->Bytes();
        return result_;
    }

  private:
    static ReferenceHeaderFields ReadFields(const ReferenceConvertInput& input) {
        const std::string_view recording(input.recording);
        return ReferenceReadHeaderFields(
            ReferenceHeaderText(recording.substr(0, input.headerBytes)));
    }

    bool Convert() {
        if (!AcceptHeader() || !OpenFiles() || !ConvertSpans()) return false;
        Finish();
        return true;
    }

    bool Fail(const std::string& errorText) {
        result_.errorText = errorText;
        return false;
    }

    bool AcceptHeader() {
        if (!fields_.errorText.empty()) return Fail(ReferenceUtf8(fields_.errorText));
        if (fields_.numADChannels > kLargestChannelCount) {
            return Fail("Invalid header field -NumADChannels");
        }
        if (fields_.samplingFrequency == 0) return Fail("Invalid header field -SamplingFrequency");
        return true;
    }

    void Prepare(ReferenceOutputFile& file, const std::string& entity,
                 const std::string& extension) {
        file.fileName = FreeName(input_.takenNames, entity + extension);
        file.recordsPerWrite = input_.recordsPerWrite;
        file.lines.fileUuid = input_.uuidText;
        file.lines.sessionUuid = ReferenceUtf8(fields_.sessionUuid);
        file.lines.path = input_.outputDirectory + input_.separator + NameWithoutExtension(input_) +
                          input_.separator + file.fileName;
        file.lines.timeCreated = input_.clockText;
        file.lines.acquisitionSystem = ReferenceUtf8(fields_.acquisitionSystem);
        file.lines.acqEntName = entity;
    }

    ReferenceChannelFile MakeChannelFile(const std::string& entity, std::uint32_t index,
                                         double samplingFrequency) {
        ReferenceChannelFile file;
        Prepare(file, entity, ".vcs");
        file.lines.fileType = "CSC";
        file.lines.fileVersion = "3.4";
        file.lines.recordSize = 1044;
        file.channelIndex = index;
        file.samplingFrequency = samplingFrequency;
        // The offset reaches the channel writer only together with the A/D channels; do not change
        // this.
        if (HasAdChannels()) file.timestampOffset = Offset();
        return file;
    }

    bool HasAdChannels() const { return input_.options.csc && fields_.numADChannels > 0; }
    std::uint64_t Offset() const {
        return static_cast<std::uint64_t>(fields_.utcOffsetMicroseconds);
    }

    std::vector<std::vector<ReferenceChannelFile>*> ChannelGroups() {
        return {&adFiles_, &baseFiles_, &afeFiles_, &ultrasonicFiles_};
    }

    bool SetHeader(ReferenceOutputFile& file, const std::string& moreLines, std::size_t longest) {
        const std::string text = ReferenceCommonHeader(file.lines) + moreLines;
        if (text.size() > longest) return false;
        file.headerText = text;
        return true;
    }

    bool SetChannelHeaders(bool closed) {
        for (auto* group : ChannelGroups()) {
            for (ReferenceChannelFile& file : *group) {
                if (closed) file.lines.timeClosed = input_.clockText;
                const std::string lines = ReferenceChannelLines(
                    file.samplingFrequency, fields_.adMaxValue, file.channelIndex);
                if (!SetHeader(file, lines, kHeaderBytes)) return false;
            }
        }
        return true;
    }

    bool SetRawHeader() {
        // The raw data file keeps at least one zero byte after its text.
        return SetHeader(*rawFile_,
                         ReferenceRawLines(rawFile_->samplingFrequency, rawFile_->adChannelCount),
                         kHeaderBytes - 1);
    }

    void MakeImuFiles(std::vector<ReferenceChannelFile>& files, const std::string& prefix) {
        for (const char* name : kImuChannelNames) {
            const auto index = static_cast<std::uint32_t>(files.size());
            files.push_back(MakeChannelFile(prefix + name, index, 3000.0));
        }
    }

    bool OpenFiles() {
        if (HasAdChannels()) {
            for (std::uint32_t n = 1; n <= fields_.numADChannels; ++n) {
                adFiles_.push_back(
                    MakeChannelFile("CSC" + std::to_string(n), n - 1, fields_.samplingFrequency));
            }
        }
        const ReferenceConvertOptions& options = input_.options;
        if (options.baseImu && fields_.baseImuAvailable) MakeImuFiles(baseFiles_, "Base_");
        if (options.afeImu && fields_.afeImuAvailable) MakeImuFiles(afeFiles_, "AFE_");
        if (options.ultrasonic && fields_.ultrasonicAvailable) {
            ultrasonicFiles_.push_back(MakeChannelFile("Ultrasonic", 0, 210000.0));
        }
        if (!SetChannelHeaders(false)) return false;
        if (options.events && !OpenEventFile()) return false;
        return !options.raw || OpenRawFile();
    }

    bool OpenEventFile() {
        eventFile_.emplace();
        Prepare(*eventFile_, "Events", ".vev");
        eventFile_->lines.fileType = "Event";
        eventFile_->lines.fileVersion = "3.2";
        eventFile_->lines.recordSize = 184;
        eventFile_->timestampOffset = Offset();
        eventFile_->samplePeriod = 1000000.0 / fields_.samplingFrequency;
        return SetHeader(*eventFile_, "", kHeaderBytes);
    }

    bool OpenRawFile() {
        rawFile_.emplace();
        Prepare(*rawFile_, "RawData", ".vrd");
        rawFile_->lines.fileType = "Raw";
        rawFile_->lines.fileVersion = "3.4";
        rawFile_->adChannelCount = fields_.numADChannels;
        rawFile_->samplingFrequency = fields_.samplingFrequency;
        rawFile_->timestampOffset = Offset();
        return SetRawHeader();
    }

    bool ConvertSpans() {
        const std::size_t streamStart = std::min(input_.headerBytes, input_.recording.size());
        ReferenceSpanReader reader(input_.recording.substr(streamStart), fields_.versionNumber,
                                   input_.spanBytes);
        for (std::size_t spans = 0;; ++spans) {
            if (input_.spansUntilCancel && spans >= *input_.spansUntilCancel) {
                canceled_ = true;
                return true;
            }
            const ReferenceSpanReader::Result span = reader.GetData();
            if (span.failed) return Fail("Failed to process buffer. 0 bytes consumed.");
            for (const ReferencePacket& packet : span.packets) ConvertPacket(packet);
            if (span.endOfFile) return true;
        }
    }

    void ConvertPacket(const ReferencePacket& packet) {
        std::vector<std::uint8_t> ttlValues;
        for (std::size_t i = 0; i < packet.stateHigh.size(); ++i) {
            const unsigned low = packet.stateLow[i];
            ttlValues.push_back(static_cast<std::uint8_t>(packet.stateHigh[i] | (low << 4)));
        }
        const auto& timestamp = packet.hardwareTimestamp;
        if (packet.adSamples) {
            if (rawFile_) rawFile_->WriteRecords(*packet.adSamples, ttlValues, timestamp);
            WriteGroup(adFiles_, Scaled(*packet.adSamples, 0.048675537109375), 10, timestamp);
        }
        if (packet.baseIMU) {
            WriteGroup(baseFiles_, Scaled(*packet.baseIMU, 0.00390625), 1, timestamp);
        }
        if (packet.afeIMU) WriteGroup(afeFiles_, Scaled(*packet.afeIMU, 0.00390625), 1, timestamp);
        if (packet.ultrasonic) {
            WriteGroup(ultrasonicFiles_, Scaled(*packet.ultrasonic, 1.0), 70, timestamp);
        }
        if (eventFile_) eventFile_->WriteTtlValues(ttlValues, timestamp, packetTime_);
        packetTime_ += 1000000.0 / fields_.samplingFrequency * 10.0;
        ++result_.packetCount;
    }

    void Finish() {
        for (auto* group : ChannelGroups()) {
            for (ReferenceChannelFile& file : *group) file.WriteRest();
        }
        SetChannelHeaders(true);
        // The event file's header is written only once.
        if (eventFile_) eventFile_->WritePending();
        if (!rawFile_) return;
        rawFile_->WritePending();
        rawFile_->lines.timeClosed = input_.clockText;
        SetRawHeader();
    }

    const ReferenceConvertInput& input_;
    ReferenceHeaderFields fields_;
    ReferenceConvertResult result_;
    bool canceled_ = false;
    double packetTime_ = 0.0;  // microseconds, for packets without a timestamp
    std::vector<ReferenceChannelFile> adFiles_;
    std::vector<ReferenceChannelFile> baseFiles_;
    std::vector<ReferenceChannelFile> afeFiles_;
    std::vector<ReferenceChannelFile> ultrasonicFiles_;
    std::optional<ReferenceEventFile> eventFile_;
    std::optional<ReferenceRawFile> rawFile_;
};

}  // namespace

ReferenceConvertResult ReferenceConvert(const ReferenceConvertInput& input) {
    return Conversion(input).Run();
}

}  // namespace stalwick::test
