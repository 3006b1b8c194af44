// The row routines behind TQMemProc's tables, listed once: X(name, return
// type, parameter list). Every tier declares every routine under the same
// name and defines the ones it implements (tiers.hpp lists them), in units
// compiled with that tier's instruction set alone. The portable tier defines
// them all; the SIMD tiers hand the tail of a row to the portable routine.
#pragma once

#include <cstdint>

// clang-format off
#define TQMP_ROW_SLOTS(X)                                                                       \
  /* sub-table 0 slot 6: byte `channel` of every 4-byte pixel */                                \
  X(ExtractChannel_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count,                 \
                               int32_t channel))                                                \
  /* sub-table 0 slot 10: YUYV <-> UYVY over count / 2 pairs */                                 \
  X(YUV16_Swap_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count))                    \
  /* the rows of sub-table 6 slots 5 and 7: */                                                  \
  /* dst[i] = scale(src[i], gain[i & 3], offset[i & 3]) */                                      \
  X(Scale_Row, void, (uint8_t *dst, const uint8_t *src, const int16_t *gain,                    \
                      const int16_t *offset, int32_t bytes))                                    \
  /* sub-table 6 slot 37: dst[i] = scale(src[i], gain, offset) */                               \
  X(Scale_Run, void, (uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset,           \
                      int32_t bytes))                                                           \
  /* sub-table 6 slot 11: the first three bytes of every 4-byte pixel */                        \
  X(RGB32_2_RGB24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count))
// clang-format on

namespace tqmp {

#define TQMP_ROW_DECLARE(name, ret, params) ret name params;
namespace portable {
TQMP_ROW_SLOTS(TQMP_ROW_DECLARE)
}
namespace sse2 {
TQMP_ROW_SLOTS(TQMP_ROW_DECLARE)
}
namespace ssse3 {
TQMP_ROW_SLOTS(TQMP_ROW_DECLARE)
}
namespace avx2 {
TQMP_ROW_SLOTS(TQMP_ROW_DECLARE)
}
#undef TQMP_ROW_DECLARE

}  // namespace tqmp
