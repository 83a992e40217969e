// SPDX-License-Identifier: BSD-3-Clause
#include "cli/earlier_report.h"

#include <array>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/run_report.h"
#include "engine/output_directory.h"
#include "platform/file_system.h"
#include "platform/input_file.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

using Json = nlohmann::json;

std::string ContentsOf(const std::wstring& path) {
    InputFile file;
    std::string text;
    if (!IsOrdinaryFile(path) || file.Open(path) != 0) return text;
    std::array<char, 65536> piece;
    for (std::size_t count = piece.size(); count == piece.size();) {
        if (file.Read(piece.data(), piece.size(), count) != 0) return {};
        text.append(piece.data(), count);
    }
    return text;
}

OutputAccount OutputOf(const Json& output) {
    return {FromUtf8(output.at("name").get<std::string>()), output.at("bytes").get<std::uint64_t>(),
            output.at("records").get<std::uint64_t>()};
}

}  // namespace

EarlierReport::EarlierReport(const std::wstring& path) {
    try {
        Read(ContentsOf(path));
    } catch (const Json::exception&) {
        conversions_.clear();
    }
}

void EarlierReport::Read(const std::string& text) {
    const Json document = Json::parse(text);
    const Json& options = document.at("options");
    const auto isOn = [&](const char* option) {
        return static_cast<std::uint8_t>(options.at(option).get<bool>() ? 1 : 0);
    };
    channelOptions_ = {isOn("csc"), isOn("base_imu"), isOn("afe_imu"), isOn("ultrasonic")};
    writeRawData_ = isOn("raw") != 0;
    for (const Json& entry : document.at("recordings")) {
        const Json& result = entry.at("result");
        if (result != "whole" && result != "passed_over") continue;
        if (!entry.at("modified").is_string() || !entry.at("directory").is_string()) continue;
        Conversion conversion{entry.at("bytes"), entry.at("modified"), entry.at("directory"), {}};
        for (const Json& output : entry.at("outputs")) {
            conversion.outputs.push_back(OutputOf(output));
        }
        conversions_[entry.at("path").get<std::string>()] = std::move(conversion);
    }
}

std::vector<OutputAccount> EarlierReport::OutputsOf(const PlannedRecording& recording,
                                                    const RecordingFile& file,
                                                    const CommandLine& commandLine) const {
    if (commandLine.writeRawData && !writeRawData_) return {};
    for (std::size_t i = 0; i < channelOptions_.size(); ++i) {
        if (commandLine.channelOptions[i] > channelOptions_[i]) return {};
    }
    const auto found = conversions_.find(ToUtf8(recording.path));
    if (found == conversions_.end() || !file.modified) return {};
    const Conversion& conversion = found->second;
    const std::wstring directory = OutputDirectoryOf(recording.path, recording.parentDirectory);
    if (conversion.bytes != file.bytes || conversion.modified != FormatReportTime(*file.modified) ||
        conversion.directory != ToUtf8(directory)) {
        return {};
    }
    std::vector<OutputAccount> outputs = conversion.outputs;
    for (OutputAccount& output : outputs) output.path = directory + kPathSeparator + output.path;
    return outputs;
}

}  // namespace stalwick
