// The reference path: plain C++, the bytes every other path reproduces.
#include <algorithm>

#include "row_kernels.hpp"

namespace tqmp {
namespace {

// in * gain / 2^14 + offset / 2^5, rounded to nearest, in Q14.
uint8_t ScaleByte(uint8_t in, int16_t gain, int16_t offset) {
  const int32_t v = (in * gain + offset * 512 + 8192) >> 14;
  return static_cast<uint8_t>(std::clamp(v, 0, 255));
}

}  // namespace

void portable::ExtractChannelRow(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  for (int32_t i = 0; i < count; ++i) dst[i] = src[4 * int64_t{i} + channel];
}

void portable::SwapRow(uint8_t *dst, const uint8_t *src, int32_t count) {
  const int64_t bytes = int64_t{count / 2} * 4;
  for (int64_t i = 0; i < bytes; i += 4) {
    const uint8_t a = src[i], b = src[i + 1], c = src[i + 2], d = src[i + 3];
    dst[i] = b;
    dst[i + 1] = a;
    dst[i + 2] = d;
    dst[i + 3] = c;
  }
}

void portable::ScaleRow(uint8_t *dst, const uint8_t *src, const int16_t *gain,
                        const int16_t *offset, int32_t bytes) {
  for (int32_t i = 0; i < bytes; ++i) dst[i] = ScaleByte(src[i], gain[i & 3], offset[i & 3]);
}

void portable::ScaleRun(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset,
                        int32_t bytes) {
  for (int32_t i = 0; i < bytes; ++i) dst[i] = ScaleByte(src[i], gain, offset);
}

void portable::RGB32ToRGB24Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  for (int64_t i = 0; i < count; ++i) {
    dst[3 * i] = src[4 * i];
    dst[3 * i + 1] = src[4 * i + 1];
    dst[3 * i + 2] = src[4 * i + 2];
  }
}

}  // namespace tqmp
