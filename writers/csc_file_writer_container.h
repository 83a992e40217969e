// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "outputs/channel_options.h"
#include "writers/file_writer_container.h"
#include "writers/output_naming.h"

namespace stalwick {

// A packet's samples for the files of a group: samples[file * samplesPerChannel + i], and the
// hardware time of the first ones in nanoseconds.
struct SampleBlock {
    std::span<std::int16_t> samples;
    std::optional<std::uint64_t> baseTimestamp;
};

// Writes the continuously sampled channel files (.vcs), laid out as in docs/output-files.md:
// one for each A/D channel, nine for each inertial unit, one for the ultrasonic channel.
// Records are written in small blocks.
//
// Order of calls: fill the fields, InitializeCscFiles, WriteSamples for every block,
// FinishCscFiles or LeaveUnfinished. Operations return 0, or -1 with the reasons in
// fileIO.Files().
class CSCFileWriterContainer : public FileWriterContainer {
  public:
    using FileWriterContainer::FileWriterContainer;

    // Opens the files of every wanted group and gives them their provisional header.
    [[nodiscard]] std::int32_t InitializeCscFiles(const std::wstring& outputDirectory,
                                                  const ChannelOptions& options);

    // Gives every file its header, in order, until one fails.
    [[nodiscard]] std::int32_t SetHeaders(bool fileClosed);

    // Takes packets' samples for the files of a group, in order, and scales them in place. Files
    // beyond the end of a block get nothing of it. A file that fails ends the block, and every
    // later one, for the files after it.
    std::int32_t WriteSamples(std::span<const SampleBlock> sampleBlocks,
                              std::uint32_t samplesPerChannel, ChannelGroup group);

    // Ends the record in progress of every file, however few samples it has; the next samples begin
    // another one. `hasBaseTimestamps`: WriteSamples receives them. Returns -1 if a block could not
    // be written.
    std::int32_t EndRecords(bool hasBaseTimestamps);

    // Writes what is buffered, gives every file its final header, and closes them all.
    [[nodiscard]] std::int32_t FinishCscFiles();

    // For a recording that fails in the middle: leaves in every file only full blocks of 5000
    // records, or all whole records if the settings keep them. A file whose write failed stays
    // unchanged. The reasons of failures are in fileIO.Files().
    void LeaveUnfinished();

    std::uint32_t numAdChannels = 0;
    std::uint32_t adMaxValue = 0;  // printed in the headers
    ChannelOptions channelOptions{};
    std::uint32_t baseImuFirst = 0;  // position in `records` of the group's first file
    std::uint32_t afeImuFirst = 0;
    std::uint32_t ultrasonicFirst = 0;

    // A timestamp left the 64-bit range and was clamped to its end.
    bool timestampsSaturated = false;

  private:
    std::int32_t OpenChannelFile(const std::wstring& directory, const std::wstring& namePart1,
                                 const std::wstring& namePart2, std::uint32_t channelIndex,
                                 double frequency);
    std::int32_t OpenInertialFiles(const std::wstring& directory, const std::wstring& prefix);
    std::size_t CountFiles(const ChannelOptions& options) const;
    void ReserveBlocks(std::size_t files);
    std::span<OutputFileRecord> FilesOf(ChannelGroup group);
    std::int32_t AppendSamples(OutputFileRecord& file, std::span<const std::int16_t> samples,
                               std::optional<std::uint64_t> baseTimestamp);
    std::int32_t AppendAcrossRecords(OutputFileRecord& file, std::span<const std::int16_t> samples,
                                     bool hasBaseTimestamp);
    void StartBlock(OutputFileRecord& file);
    void StartRecord(OutputFileRecord& file);
    std::int32_t CompleteRecord(OutputFileRecord& file, bool hasBaseTimestamp);
    std::int32_t WriteRecords(OutputFileRecord& file, std::uint64_t count);
    std::int32_t WriteRest(OutputFileRecord& file);

    std::uint32_t recordsPerWrite_ = 0;
};

// The lines of a channel file's header after the common ones.
[[nodiscard]] std::wstring ChannelHeaderLines(const CSCFileWriterContainer& container,
                                              double samplingFrequency, std::uint32_t channelIndex);

}  // namespace stalwick
