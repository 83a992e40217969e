// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "ord/recording_header.h"
#include "tests/support/reference_header.h"

namespace stalwick::test {

/** The fields that the program read, in the form in which the reference returns them. */
ReferenceHeaderFields ToReference(const RecordingHeader& header);

/** The fields that the program reads from this text; only the error's text if one is missing. */
ReferenceHeaderFields ProgramHeaderFields(const std::wstring& headerText);

}  // namespace stalwick::test
