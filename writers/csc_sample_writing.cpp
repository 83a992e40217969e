// SPDX-License-Identifier: BSD-3-Clause

// How samples fill the records of the channel files.

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "writers/csc_file_writer_container.h"
#include "writers/sample_scaling.h"
#include "writers/timestamps.h"

namespace stalwick {

namespace {

using VtxDataTypes::CRRec;
using VtxDataTypes::kSamplesPerRecord;

constexpr std::size_t kPrefetchDistance = 6;  // files
constexpr std::size_t kCacheLine = 64;        // bytes

// A whole packet's samples do not change the phase, so this avoids a division.
inline void AdvancePhase(OutputFileRecord& file, std::uint32_t count) {
    if (count != file.phaseModulus) file.phase = (file.phase + count) % file.phaseModulus;
}

// Hundreds of files are filled at the same time, too many for the processor to predict.
inline void PrefetchForWriting(const std::int16_t* first, std::size_t count) {
    const auto* const address = reinterpret_cast<const char*>(first);
    for (std::size_t i = 0; i <= count * sizeof *first; i += kCacheLine) {
        __builtin_prefetch(address + i, 1);
    }
}

// The block was used before: clears what is left in the record after its samples.
void ClearUnusedSamples(const OutputFileRecord& file) {
    std::fill_n(file.nextSample, kSamplesPerRecord - file.filledSamples, std::int16_t{0});
}

void ScaleSamples(std::span<std::int16_t> samples, ChannelGroup group) {
    if (group == ChannelGroup::kAD) {
        ScaleADSamples(samples);
    } else if (group != ChannelGroup::kUltrasonic) {
        ScaleImuValues(samples);
    }
}

// A packet's samples are copied by a few fixed moves.
inline void CopySamples(std::span<const std::int16_t> samples, OutputFileRecord& file) {
    if (samples.size() == kPacketSamples) {
        std::memcpy(file.nextSample, samples.data(), kPacketSamples * sizeof samples[0]);
    } else {
        std::copy(samples.begin(), samples.end(), file.nextSample);
    }
    file.nextSample += samples.size();
    file.filledSamples += static_cast<std::uint32_t>(samples.size());
}

// What the blocks of one call have in common.
struct PacketRun {
    std::size_t leastSamples = 0;  // of the shortest block
    // Each file gets ten samples of every block, and either each block has another hardware time
    // than the one before it, or none has any.
    bool canCopyTogether = false;
};

PacketRun InspectRun(std::span<const SampleBlock> sampleBlocks, std::uint32_t samplesPerChannel) {
    PacketRun run{std::numeric_limits<std::size_t>::max(), samplesPerChannel == kPacketSamples};
    for (std::size_t i = 0; i < sampleBlocks.size(); ++i) {
        const auto& [samples, time] = sampleBlocks[i];
        run.leastSamples = std::min(run.leastSamples, samples.size());
        if (i == 0) continue;
        const std::optional<std::uint64_t>& before = sampleBlocks[i - 1].baseTimestamp;
        if (time.has_value() != before.has_value() || (time && time == before))
            run.canCopyTogether = false;
    }
    return run;
}

// How many packets only add to the file's record in progress; it is still incomplete after them.
inline std::size_t PacketsThatFit(const OutputFileRecord& file) {
    if (file.filledSamples == 0 || file.filledSamples >= kSamplesPerRecord ||
        file.phaseModulus != kPacketSamples || file.cscBuffer.empty()) {
        return 0;
    }
    return (kSamplesPerRecord - 1 - file.filledSamples) / kPacketSamples;
}

// AppendSamples without its checks, for packets that fit and can be copied together. Whole packets
// do not change the phase, but each new hardware time resets it; the second one is always new.
inline void AppendPackets(OutputFileRecord& file, std::span<const SampleBlock> packets,
                          std::size_t position) {
    if (packets.front().baseTimestamp) {
        const bool isNew = *packets.front().baseTimestamp != file.lastBaseTimestamp;
        if (isNew || packets.size() > 1) file.phase = 0;
        file.lastBaseTimestamp = *packets.back().baseTimestamp;
    }
    std::int16_t* target = file.nextSample;
    for (const SampleBlock& packet : packets) {
        std::memcpy(target, packet.samples.data() + position, kPacketSamples * sizeof *target);
        target += kPacketSamples;
    }
    file.filledSamples += static_cast<std::uint32_t>(target - file.nextSample);
    file.nextSample = target;
}

}  // namespace

// File by file: the values in a file's record then stay in the nearest cache for all blocks.
std::int32_t CSCFileWriterContainer::WriteSamples(std::span<const SampleBlock> sampleBlocks,
                                                  std::uint32_t samplesPerChannel,
                                                  ChannelGroup group) {
    if (channelOptions[static_cast<std::size_t>(group)] == 0) return -1;
    for (const SampleBlock& block : sampleBlocks) ScaleSamples(block.samples, group);
    const PacketRun run = InspectRun(sampleBlocks, samplesPerChannel);
    std::int32_t result = 0;
    const std::span<OutputFileRecord> files = FilesOf(group);
    for (std::size_t f = 0; f < files.size(); ++f) {
        if (f + kPrefetchDistance < files.size()) {
            PrefetchForWriting(files[f + kPrefetchDistance].nextSample,
                               sampleBlocks.size() * samplesPerChannel);
        }
        const std::size_t position = f * samplesPerChannel;
        const bool hasAll = run.canCopyTogether && run.leastSamples >= position + samplesPerChannel;
        for (std::size_t i = 0; i < sampleBlocks.size();) {
            const std::size_t together =
                hasAll ? std::min(PacketsThatFit(files[f]), sampleBlocks.size() - i) : 0;
            if (together > 0) {
                AppendPackets(files[f], sampleBlocks.subspan(i, together), position);
                i += together;
                continue;
            }
            const SampleBlock& block = sampleBlocks[i++];
            if (block.samples.size() < position + samplesPerChannel) continue;
            if (AppendSamples(files[f], block.samples.subspan(position, samplesPerChannel),
                              block.baseTimestamp) != 0) {
                result = -1;
                // This ends the loop; the remaining files get only the blocks before the failure.
                sampleBlocks = sampleBlocks.first(i - 1);
            }
        }
    }
    return result;
}

inline std::int32_t CSCFileWriterContainer::AppendSamples(
    OutputFileRecord& file, std::span<const std::int16_t> samples,
    std::optional<std::uint64_t> baseTimestamp) {
    // A file whose block could not be written has no block and receives nothing more.
    if (file.cscBuffer.empty()) return -1;
    if (baseTimestamp && *baseTimestamp != file.lastBaseTimestamp) {
        file.phase = 0;
        file.lastBaseTimestamp = *baseTimestamp;
    }
    if (file.filledSamples == 0) StartRecord(file);
    if (file.filledSamples + samples.size() >= kSamplesPerRecord) {
        return AppendAcrossRecords(file, samples, baseTimestamp.has_value());
    }
    AdvancePhase(file, static_cast<std::uint32_t>(samples.size()));
    CopySamples(samples, file);
    return 0;
}

// The samples that complete the current record, and those that start the next one.
std::int32_t CSCFileWriterContainer::AppendAcrossRecords(OutputFileRecord& file,
                                                         std::span<const std::int16_t> samples,
                                                         bool hasBaseTimestamp) {
    const std::size_t count = kSamplesPerRecord - file.filledSamples;
    AdvancePhase(file, static_cast<std::uint32_t>(count));
    CopySamples(samples.first(count), file);
    if (CompleteRecord(file, hasBaseTimestamp) != 0) return -1;
    if (count == samples.size()) return 0;

    StartRecord(file);
    // The phase does not advance for these samples. Do not change this (pinned by
    // CSCFileWriterContainer.PhaseLagsBehindTheSamplesThatStartARecord).
    CopySamples(samples.subspan(count), file);
    return 0;
}

void CSCFileWriterContainer::StartRecord(OutputFileRecord& file) {
    CRRec& current = file.cscBuffer[file.bufferedCount];
    if (file.lastBaseTimestamp != 0) {
        const double nanoseconds =
            file.phase * (kNanosecondsPerSecond / file.interpolationFrequency) +
            static_cast<double>(file.lastBaseTimestamp);
        current.timestamp =
            TruncateToCount(nanoseconds / kNanosecondsPerMicrosecond, timestampsSaturated) +
            file.timestampOffset;
    } else {
        // Without base timestamps the offset is not added: the time counts from the start.
        current.timestamp = file.runningTimestamp;
    }
    current.sampleFrequency = static_cast<std::uint32_t>(file.samplingFrequency);
    current.channelNumber = file.channelIndex;
}

std::int32_t CSCFileWriterContainer::CompleteRecord(OutputFileRecord& file, bool hasBaseTimestamp) {
    const std::uint32_t sampleCount = std::exchange(file.filledSamples, 0);
    file.cscBuffer[file.bufferedCount].numValidSamples = sampleCount;
    ++file.bufferedCount;
    if (file.bufferedCount == file.cscBuffer.size()) {
        if (WriteRecords(file, file.bufferedCount) != 0) return -1;
        StartBlock(file);
    } else {
        file.nextSample = file.cscBuffer[file.bufferedCount].samples.data();
    }
    if (!hasBaseTimestamp) {
        file.accumulatedTimestamp +=
            (kMicrosecondsPerSecond / file.samplingFrequency) * sampleCount;
        file.runningTimestamp = TruncateToCount(file.accumulatedTimestamp, timestampsSaturated);
    }
    return 0;
}

std::int32_t CSCFileWriterContainer::EndRecords(bool hasBaseTimestamps) {
    std::int32_t result = 0;
    for (OutputFileRecord& file : records) {
        if (file.cscBuffer.empty()) continue;  // its block could not be written
        if (file.filledSamples == 0) continue;
        ClearUnusedSamples(file);
        if (CompleteRecord(file, hasBaseTimestamps) != 0) result = -1;
    }
    return result;
}

// Writes the complete records and the one in progress, whose unused samples are 0.
std::int32_t CSCFileWriterContainer::WriteRest(OutputFileRecord& file) {
    if (file.cscBuffer.empty()) return -1;
    std::uint32_t count = file.bufferedCount;
    if (file.filledSamples > 0) {
        file.cscBuffer[count].numValidSamples = file.filledSamples;
        ClearUnusedSamples(file);
        ++count;
    }
    return WriteRecords(file, count);
}

}  // namespace stalwick
