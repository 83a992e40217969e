// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

namespace VtxLogging {

// A sink for diagnostic messages. Levels: 0 fatal, 1 error, 2 warning, 3 notice, 4 data, 5 debug.
class ILogFile {
  public:
    virtual ~ILogFile() = default;

    // Returns 0.
    virtual std::int32_t Log(std::uint32_t level, const std::wstring& message) = 0;
};

}  // namespace VtxLogging
