// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

#include "writers/file_writer_container.h"

namespace stalwick {

// Owns the conversion's one event file, Events.vev (docs/output-files.md). The conversion fills
// EventRecs into the record's eventBuffer and hands full blocks to WriteBufferedEvents. Operations
// return 0, or -1 with the reasons in fileIO.Files().
class EventFileWriterContainer : public FileWriterContainer {
  public:
    using FileWriterContainer::FileWriterContainer;

    [[nodiscard]] std::int32_t Open(const std::wstring& outputDirectory);

    // The event file gets its header only once, at opening, and so always says that it was not
    // closed. Do not change this (pinned by
    // EventFileWriterContainer.FinishedFileSaysThatItWasNotClosed).
    [[nodiscard]] std::int32_t SetHeader();

    // The next free slot. It keeps the contents from an earlier block.
    VtxDataTypes::EventRec& NextEvent();
    // Counts the slot as filled and writes the block when it is full.
    [[nodiscard]] std::int32_t CommitEvent();
    // Writes the filled slots, even if there are none.
    std::int32_t WriteBufferedEvents();
    // For a recording that fails in the middle: buffered events are written only if the settings
    // keep partial blocks.
    void LeaveUnfinished();

    std::uint8_t lastTtl = 0;
    bool ttlUnset = true;       // no TTL value seen yet
    double samplePeriod = 0.0;  // microseconds
    bool timestampsSaturated = false;
};

}  // namespace stalwick
