// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "writers/data_file.h"

namespace stalwick {

// How a conversion left one of its outputs.
struct OutputEnd {
    OutputFileState file;
    bool whole = false;          // it is complete and has its last header
    std::size_t recordSize = 0;  // bytes; 0: its records are counted in bytes
};

// The outputs that failed, one line for each cause: "cannot write out/rec/CSC4.vcs to CSC64.vcs: No
// space left on device; they hold 5000 records each; free some space ...". A full disk that stops
// hundreds of files is one line.
[[nodiscard]] std::vector<std::wstring> DescribeFailedOutputs(std::span<const OutputEnd> outputs);

// The outputs that are not whole although they did not fail themselves: "CSC5.vcs to CSC64.vcs
// (5000 records each) and Events.vev (no records)". Empty if there are none.
[[nodiscard]] std::wstring NameUnfinishedOutputs(std::span<const OutputEnd> outputs);

}  // namespace stalwick
