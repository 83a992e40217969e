// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "writers/data_file.h"

namespace stalwick::test {

/** A line for each of the files that failed. */
inline std::vector<std::wstring> FailuresOf(const std::vector<OutputFileState>& files) {
    std::vector<std::wstring> lines;
    for (const OutputFileState& file : files) {
        if (file.failure) lines.push_back(DescribeFailure(*file.failure, file.path));
    }
    return lines;
}

}  // namespace stalwick::test
