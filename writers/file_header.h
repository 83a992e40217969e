// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

#include "outputs/header_text.h"
#include "writers/file_writer_container.h"

namespace stalwick {

// The header lines that every output begins with, each ended by CR LF; docs/output-files.md lists
// them. `fileClosed` prints the time of this call as the closing time. Control characters in the
// file's path are escaped, so a name cannot forge a line.
[[nodiscard]] std::wstring BuildFileHeader(const FileWriterContainer& container, bool fileClosed,
                                           const OutputFileRecord& file, std::uint8_t fileType,
                                           const std::wstring& fileVersion);

}  // namespace stalwick
