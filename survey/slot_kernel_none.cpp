#include "survey/slot_kernel.h"

namespace stalwick {

SlotKernel BestSlotKernel() {
    return nullptr;
}

}  // namespace stalwick
