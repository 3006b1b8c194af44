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

// The reference tier. Every slot has a portable routine, including the fixed
// slots (0 to 2, the whole-plane routines 133 to 136, and slot 9, whose table
// entry nevertheless comes from TQMemProc).
namespace portable {
TCS_KERNEL_SLOTS(TQCS_KERNEL_DECLARE)
}

}  // namespace tqcs
