// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "platform/file_calls.h"

namespace stalwick {

struct FileChecksum {
    std::string sha256;         // 64 lower-case hexadecimal digits; empty if there is none
    SystemErrorCode error = 0;  // why the file could not be read to its end
};

// Reads the file at the path to its end. If `cancelRequested` is set, ends early, without a
// checksum.
[[nodiscard]] FileChecksum ChecksumOf(const std::wstring& path,
                                      const std::atomic<std::uint8_t>& cancelRequested);

}  // namespace stalwick
