// SPDX-License-Identifier: BSD-3-Clause
#include "platform/local_time.h"

#include "platform/windows/windows_api.h"

namespace stalwick {

LocalTime SystemLocalTime() {
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace stalwick
