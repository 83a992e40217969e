// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "logging/log_file.h"

namespace VtxLogging {

// Writes each message after its level's banner to the standard wide output, unfiltered and
// unlocked: messages logged at the same time may interleave.
class ConsoleLogger : public ILogFile {
  public:
    std::int32_t Log(std::uint32_t level, const std::wstring& message) override;
};

// Every source unit that includes this header has its own logger.
[[maybe_unused]] static ConsoleLogger consoleLogger;

}  // namespace VtxLogging
