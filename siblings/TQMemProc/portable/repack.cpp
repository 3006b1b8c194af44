// The reference tier's byte rearrangements: channel extraction, the pair swap
// and the 4-to-3-byte copy in plain C++, the bytes every other tier
// reproduces.
#include "row_slots.hpp"

namespace tqmp::portable {

void ExtractChannel_Row(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  for (int32_t i = 0; i < count; ++i) dst[i] = src[4 * int64_t{i} + channel];
}

void YUV16_Swap_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const int64_t bytes = int64_t{count / 2} * 4;
  for (int64_t i = 0; i < bytes; i += 4) {
    const uint8_t a = src[i], b = src[i + 1], c = src[i + 2], d = src[i + 3];
    dst[i] = b;
    dst[i + 1] = a;
    dst[i + 2] = d;
    dst[i + 3] = c;
  }
}

void RGB32_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  for (int64_t i = 0; i < count; ++i) {
    dst[3 * i] = src[4 * i];
    dst[3 * i + 1] = src[4 * i + 1];
    dst[3 * i + 2] = src[4 * i + 2];
  }
}

}  // namespace tqmp::portable
