// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "tests/support/reference_decoder.h"
#include "tests/support/reference_header.h"
#include "tests/support/reference_writers.h"

// A second, plain conversion of a whole recording in memory (docs/output-files.md). It shares no
// code with the program. The tests compare the program's files with these, byte for byte.

namespace stalwick::test {

struct ReferenceConvertOptions {
    bool csc = true;
    bool baseImu = false;
    bool afeImu = false;
    bool ultrasonic = false;
    bool events = true;
    bool raw = false;
};

struct ReferenceConvertInput {
    std::string recording;  // the bytes of the `.ord` file
    ReferenceConvertOptions options;
    std::string outputDirectory = "ROOT";  // as text; nothing is created
    std::string fileName;                  // of the recording, with or without directories
    std::string clockText = "T";           // printed on -TimeCreated and -TimeClosed
    std::string uuidText = "U";            // printed on -FileUUID of every file
    std::string separator = "/";
    /** Names that the recording's output directory holds already, as files. */
    std::set<std::string> takenNames;
    /** The conversion is canceled after this many spans of 50,000 bytes. */
    std::optional<std::size_t> spansUntilCancel;
    std::size_t headerBytes = 16384;
    std::size_t spanBytes = kReferenceSpanBytes;
    std::size_t recordsPerWrite = kReferenceRecordsPerWrite;
    /** The header's fields if the caller knows them; otherwise they are read here. */
    std::optional<ReferenceHeaderFields> fields;
};

struct ReferenceConvertResult {
    int status = 0;          // -1: failed
    std::string errorText;   // of the processor; may be empty after a failure
    std::string statusText;  // what the user reads at the end
    std::size_t packetCount = 0;
    std::map<std::string, std::string> files;  // every byte of each output, by file name
};

ReferenceConvertResult ReferenceConvert(const ReferenceConvertInput& input);

/**
 * The text of an output's 16,384-byte header block without its padding, with the file's UUID as
 * "U", its times as "T" and the output directory as "ROOT". A malformed UUID or time does not
 * change.
 */
std::string MaskHeaderText(std::string_view headerBlock, std::string_view outputDirectory);

/** The whole file with its header block masked like this, padded to 16,384 bytes again. */
std::string MaskOutputFile(std::string_view fileBytes, std::string_view outputDirectory);

}  // namespace stalwick::test
