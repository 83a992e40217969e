// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <map>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/reference_converter.h"

namespace stalwick::test {

/** An output file as the reference writes it, and before it is finished. */
struct ExpectedFile {
    std::string provisionalHeader;  // 16,384 bytes that say "File was not closed properly"
    std::string finalHeader;        // the same for the event file
    std::string data;
};

using ExpectedFiles = std::map<std::string, ExpectedFile>;  // by file name

ExpectedFiles ExpectFiles(const ReferenceConvertResult& complete);

/**
 * Whether the bytes are a possible remainder of a file: nothing, the beginning of a provisional
 * header, or a header and the beginning of the data. A header with a closing time precedes
 * all of the data.
 */
testing::AssertionResult IsValidRemainder(const std::string& bytes, const ExpectedFile& expected);

/** All of the files, by these rules; names that are not expected fail. */
testing::AssertionResult AreValidRemainders(const std::map<std::string, std::string>& files,
                                            const ExpectedFiles& expected);

}  // namespace stalwick::test
