// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "logging/log_file.h"

namespace stalwick::test {

/** The logger of a source unit that is not the caller's. */
VtxLogging::ILogFile& LoggerOfAnotherUnit();

}  // namespace stalwick::test
