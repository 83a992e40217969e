// SPDX-License-Identifier: BSD-3-Clause
#include "platform/process_setup.h"

#include "platform/windows/windows_api.h"

namespace stalwick {

void PrepareProcess() {
    // A drive without a disk makes that call fail instead of showing a box that waits for a click.
    ::SetErrorMode(SEM_FAILCRITICALERRORS);
}

}  // namespace stalwick
