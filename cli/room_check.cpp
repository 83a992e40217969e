// SPDX-License-Identifier: BSD-3-Clause
#include "cli/room_check.h"

#include <cstdint>
#include <map>

#include "engine/output_directory.h"
#include "engine/output_estimate.h"
#include "page/readable_figures.h"

namespace stalwick {

namespace {

struct Room {
    std::wstring directory;  // the first one on that file system
    std::uint64_t free = 0;
    std::uint64_t needed = 0;
};

bool MayBePassedOver(const PlannedRecording& recording, const CommandLine& commandLine) {
    return commandLine.skipConverted &&
           QueryPath(OutputDirectoryOf(recording.path, recording.parentDirectory)) ==
               PathKind::kDirectory;
}

}  // namespace

std::vector<std::wstring> DescribeLackOfRoom(const std::vector<PlannedRecording>& recordings,
                                             const CommandLine& commandLine,
                                             const SpaceQuery& querySpace) {
    const WantedOutputs wanted = {commandLine.channelOptions, true, commandLine.writeRawData};
    std::map<std::uint64_t, Room> rooms;
    for (const PlannedRecording& recording : recordings) {
        if (MayBePassedOver(recording, commandLine)) continue;
        const std::optional<FreeSpace> space = querySpace(recording.parentDirectory);
        if (!space) continue;
        Room& room =
            rooms.try_emplace(space->fileSystem, Room{recording.parentDirectory, space->bytes, 0})
                .first->second;
        room.needed += EstimateOutputBytes(recording.path, wanted);
    }
    std::vector<std::wstring> lines;
    for (const auto& [fileSystem, room] : rooms) {
        if (room.needed <= room.free) continue;
        lines.push_back(L"stalwick-convert: the outputs need about " + ReadableBytes(room.needed) +
                        L" in " + room.directory + L", but only " + ReadableBytes(room.free) +
                        L" are free; free some space or choose another directory");
    }
    return lines;
}

}  // namespace stalwick
