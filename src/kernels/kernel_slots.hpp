// The kernel table's slot numbers and each tier's declarations, all generated
// from the one slot list of the public header.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>

namespace tqcs {

// Slot numbers named after their kernels: drivers never write a bare number.
enum class K : int32_t {
#define TQCS_KERNEL_ENUM(n, name, ret, params) name = n,
  TCS_KERNEL_SLOTS(TQCS_KERNEL_ENUM)
#undef TQCS_KERNEL_ENUM
};

#define TQCS_KERNEL_DECLARE(n, name, ret, params) ret name params;

// The reference tier. Every row slot has a portable routine, including the
// fixed slots (0 to 2, and slot 9, whose table entry nevertheless comes from
// TQMemProc); the whole-plane routines 133 to 136 are frame operations.
namespace portable {
TCS_KERNEL_SLOTS(TQCS_KERNEL_DECLARE)
}

// The SIMD tiers declare every slot under the same name; each defines only the
// slots it implements (tiers.cpp lists them), in units compiled with that
// tier's instruction set alone. Their bodies hand the tail of a row to the
// portable routine above, never to an inline copy of it, through the one row
// loop of x86/in_blocks.hpp and the row extents of slot_extents.hpp.
namespace sse2 {
TCS_KERNEL_SLOTS(TQCS_KERNEL_DECLARE)
}
namespace ssse3 {
TCS_KERNEL_SLOTS(TQCS_KERNEL_DECLARE)
}
namespace sse41 {
TCS_KERNEL_SLOTS(TQCS_KERNEL_DECLARE)
}

// The function-pointer type of each slot, so a tier list can refuse a routine
// of the wrong shape at compile time.
template <K kSlot>
struct SlotFn;
#define TQCS_KERNEL_FN_TYPE(n, name, ret, params) \
  template <>                                     \
  struct SlotFn<K::name> {                        \
    using Type = ret(*) params;                   \
  };
TCS_KERNEL_SLOTS(TQCS_KERNEL_FN_TYPE)
#undef TQCS_KERNEL_FN_TYPE

}  // namespace tqcs
