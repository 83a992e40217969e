// SPDX-License-Identifier: BSD-3-Clause
#include "tests/logging/another_unit.h"

#include "logging/console_logger.h"

namespace stalwick::test {

VtxLogging::ILogFile& LoggerOfAnotherUnit() {
    return VtxLogging::consoleLogger;
}

}  // namespace stalwick::test
