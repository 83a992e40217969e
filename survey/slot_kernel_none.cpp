// SPDX-License-Identifier: BSD-3-Clause
#include "survey/slot_kernel.h"

namespace stalwick {

SlotKernel BestSlotKernel() {
    return nullptr;
}

}  // namespace stalwick
