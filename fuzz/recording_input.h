#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_target.h"

namespace stalwick::fuzz {

/**
 * An input that stands for a whole recording:
 *
 *     options | channels | n | n bytes of header lines | packet stream
 *
 * The lines come before a complete header and so outweigh its own, unless the highest bit of the
 * options asks for no such header.
 */
struct RecordingInput {
    std::uint8_t options = 0;  // the target's to read, but for the highest bit
    std::string recording;     // the bytes of the `.ord` file
};

RecordingInput ReadRecordingInput(const std::uint8_t* data, std::size_t size);

/** False for a header that the plain reference would take ages to read. */
bool SuitsTheReference(const std::string& recording);

/** Inputs made of small recordings of every kind, with these options. */
std::vector<std::string> MakeRecordingSeeds(std::uint8_t options);

}  // namespace stalwick::fuzz
