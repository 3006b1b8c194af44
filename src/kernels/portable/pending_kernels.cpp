// Interim: weak do-nothing definitions for portable kernels that are still
// being written. Every real definition overrides its weak twin at link time.
// This file is deleted once every slot has its routine.
#include "kernels/kernel_slots.hpp"

#pragma GCC diagnostic ignored "-Wunused-parameter"

namespace tqcs::portable {
#define TQCS_PENDING(n, name, ret, params) \
  __attribute__((weak)) ret name params { return ret(); }
TCS_KERNEL_SLOTS(TQCS_PENDING)
}  // namespace tqcs::portable
