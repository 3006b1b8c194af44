// The row routines behind TQMemProc's tables, one set per code path. Every
// path has every name (a path that adds nothing for a routine uses the lower
// path's), so the tables of all paths are built from one template. Each path
// lives in its own unit, compiled with its own instruction-set flags only.
#pragma once

#include <cstdint>

namespace tqmp {

#define TQMP_ROW_ROUTINES                                                                       \
  /* byte `channel` of every 4-byte pixel */                                                    \
  void ExtractChannelRow(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel);     \
  /* YUYV <-> UYVY over count / 2 pairs */                                                      \
  void SwapRow(uint8_t *dst, const uint8_t *src, int32_t count);                                \
  /* dst[i] = scale(src[i], gain[i & 3], offset[i & 3]) */                                      \
  void ScaleRow(uint8_t *dst, const uint8_t *src, const int16_t *gain, const int16_t *offset,   \
                int32_t bytes);                                                                 \
  /* dst[i] = scale(src[i], gain, offset) */                                                    \
  void ScaleRun(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes); \
  /* the first three bytes of every 4-byte pixel */                                             \
  void RGB32ToRGB24Row(uint8_t *dst, const uint8_t *src, int32_t count);

namespace portable {
TQMP_ROW_ROUTINES
}
namespace sse2 {
TQMP_ROW_ROUTINES
}
namespace ssse3 {
void ExtractChannelRow(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel);
void RGB32ToRGB24Row(uint8_t *dst, const uint8_t *src, int32_t count);
using sse2::ScaleRow;
using sse2::ScaleRun;
using sse2::SwapRow;
}  // namespace ssse3
namespace avx2 {
TQMP_ROW_ROUTINES
}

#undef TQMP_ROW_ROUTINES

}  // namespace tqmp
