// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outputs/channel_options.h"
#include "outputs/record_file.h"

namespace stalwick {

// What the name of an output says about it. Ordered as a conversion creates them.
struct OutputName {
    enum class Kind { kChannel, kEvents, kRawData };
    Kind kind = Kind::kChannel;
    ChannelGroup group = ChannelGroup::kAD;  // of a channel file
    std::uint32_t channel = 0;               // of a channel file, from 0 within its group
    std::int32_t number = 0;                 // 7 for CSC1_07.vcs; 0 if there is none
    std::wstring entity;                     // CSC1, Base_LAX, Events ...

    [[nodiscard]] bool IsChannelOf(ChannelGroup wanted) const {
        return kind == Kind::kChannel && group == wanted;
    }
};

// None if the file is not an output.
[[nodiscard]] std::optional<OutputName> ReadOutputName(std::wstring_view fileName);

// An output whose header has been read.
struct OutputInSet {
    OutputName name;
    std::wstring fileName;
    std::wstring path;
    std::uint64_t size = 0;  // bytes
    RecordFileError error;   // from opening it; with kHeader and others there is no header
    OutputHeader header;

    [[nodiscard]] bool HasHeader() const { return !header.Text().empty(); }
};

// Opens a file of that kind; after kCutRecord it is open nevertheless.
[[nodiscard]] RecordFileError OpenOutput(OutputName::Kind kind, const std::wstring& path,
                                         RecordFile& file);

// Reads the headers of all outputs in a directory and sorts them by the conversion that made them,
// the first one first.
[[nodiscard]] std::vector<std::vector<OutputInSet>> FindOutputSets(
    const std::wstring& directory, const std::vector<std::wstring>& fileNames);

// "YYYY/MM/DD HH:MM:SS" as a number that grows by one per second and jumps at some ends of months;
// none for anything else.
[[nodiscard]] std::optional<std::int64_t> ReadHeaderTime(std::wstring_view text);

}  // namespace stalwick
