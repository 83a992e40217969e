// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "ord/read_sizes.h"
#include "tests/support/reference_header.h"

namespace stalwick::fuzz {

/**
 * An input that represents a whole recording:
 *
 *     options | channels | span | n | n bytes of header lines | packet stream
 *
 * The lines come before a complete header and so override its own, unless the highest bit of the
 * options requests no such header. The one below it leaves the padding of the header block out.
 * The recording is read in small pieces: a short input has as many spans as a long recording.
 */
struct RecordingInput {
    std::uint8_t options = 0;  // for the target to interpret, except the two highest bits
    ReadSizes sizes;           // for SetReadSizes
    std::string recording;     // the bytes of the `.ord` file
};

RecordingInput ReadRecordingInput(const std::uint8_t* data, std::size_t size);

/**
 * True for a share of the recordings, whose headers are read by the reference's patterns too. These
 * take a hundred times as long as everything else, and far longer for some headers, which are left
 * out.
 */
bool IsForThePatterns(const RecordingInput& input);

/** The fields as the program reads them, in the reference's form. */
test::ReferenceHeaderFields FieldsByTheProgram(const RecordingInput& input);
/** The fields by the reference's patterns. */
test::ReferenceHeaderFields FieldsByThePatterns(const RecordingInput& input);

/** Inputs made of small recordings of every kind, with these options. */
std::vector<std::string> MakeRecordingSeeds(std::uint8_t options);

}  // namespace stalwick::fuzz
