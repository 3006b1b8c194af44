// The reference tier's range scaling in plain C++, the bytes every other tier
// reproduces.
#include <algorithm>

#include "row_slots.hpp"

namespace tqmp::portable {
namespace {

// in * gain / 2^14 + offset / 2^5, rounded to nearest, in Q14.
uint8_t ScaleByte(uint8_t in, int16_t gain, int16_t offset) {
  const int32_t v = (in * gain + offset * 512 + 8192) >> 14;
  return static_cast<uint8_t>(std::clamp(v, 0, 255));
}

}  // namespace

void Scale_Row(uint8_t *dst, const uint8_t *src, const int16_t *gain, const int16_t *offset,
               int32_t bytes) {
  for (int32_t i = 0; i < bytes; ++i) dst[i] = ScaleByte(src[i], gain[i & 3], offset[i & 3]);
}

void Scale_Run(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes) {
  for (int32_t i = 0; i < bytes; ++i) dst[i] = ScaleByte(src[i], gain, offset);
}

}  // namespace tqmp::portable
