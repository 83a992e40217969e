#include "platform/process_setup.h"

#include "platform/windows/windows_api.h"

namespace stalwick {

void PrepareProcess() {
    // A drive without a disk is an error of that call, not a box that waits for a click.
    ::SetErrorMode(SEM_FAILCRITICALERRORS);
}

}  // namespace stalwick
