#include "TQMemProc.h"

#include <algorithm>
#include <cstring>

namespace {

void MemCopy(uint8_t *dst, const uint8_t *src, int64_t bytes) {
  if (bytes > 0) std::memmove(dst, src, static_cast<size_t>(bytes));
}

// Starts the destination at its last row and negates its pitch when flipping.
void Orient(uint8_t *&dst, int64_t &pitch, int32_t rows, uint8_t flip) {
  if (flip && rows > 0) {
    dst += pitch * (rows - 1);
    pitch = -pitch;
  }
}

void PlaneCopy(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
               int32_t bytesPerRow, int32_t rows, uint8_t flip) {
  Orient(dst, dstPitch, rows, flip);
  for (int32_t y = 0; y < rows; ++y, dst += dstPitch, src += srcPitch)
    MemCopy(dst, src, bytesPerRow);
}

void ExtractChannelRow(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  for (int32_t i = 0; i < count; ++i) dst[i] = src[4 * i + channel];
}

void ExtractChannelPlane(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                         int64_t width, int32_t channel, int32_t height, uint8_t flip) {
  if (!dst || !src || width <= 0 || height <= 0 || channel < 0 || channel > 3) return;
  Orient(dst, dstPitch, height, flip);
  for (int32_t y = 0; y < height; ++y, dst += dstPitch, src += srcPitch)
    ExtractChannelRow(dst, src, static_cast<int32_t>(width), channel);
}

void SwapRow(uint8_t *dst, const uint8_t *src, int32_t count) {
  const int32_t bytes = (count / 2) * 4;
  for (int32_t i = 0; i < bytes; i += 4) {
    const uint8_t a = src[i], b = src[i + 1], c = src[i + 2], d = src[i + 3];
    dst[i] = b;
    dst[i + 1] = a;
    dst[i + 2] = d;
    dst[i + 3] = c;
  }
}

void SwapFrame(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch, int64_t width,
               int32_t height, uint8_t flip) {
  if (!dst || !src || width <= 0 || height <= 0) return;
  Orient(dst, dstPitch, height, flip);
  for (int32_t y = 0; y < height; ++y, dst += dstPitch, src += srcPitch)
    SwapRow(dst, src, static_cast<int32_t>(width));
}

void PlaneFill(uint8_t *dst, int64_t dstPitch, int32_t bytesPerRow, uint8_t value, int32_t rows) {
  if (bytesPerRow <= 0) return;
  for (int32_t y = 0; y < rows; ++y, dst += dstPitch)
    std::memset(dst, value, static_cast<size_t>(bytesPerRow));
}

uint8_t ScaleByte(uint8_t in, int16_t gain, int16_t offset) {
  // in * gain / 2^14 + offset / 2^5, rounded to nearest, in Q14.
  const int32_t v = (in * gain + offset * 512 + 8192) >> 14;
  return static_cast<uint8_t>(std::clamp(v, 0, 255));
}

void ScaleRun(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes) {
  for (int32_t i = 0; i < bytes; ++i) dst[i] = ScaleByte(src[i], gain, offset);
}

void ScaleRows(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
               const int16_t *gain, const int16_t *offset, int32_t rowBytes, int32_t height,
               uint8_t flip) {
  Orient(dst, dstPitch, height, flip);
  for (int32_t y = 0; y < height; ++y, dst += dstPitch, src += srcPitch)
    for (int32_t i = 0; i < rowBytes; ++i) dst[i] = ScaleByte(src[i], gain[i & 3], offset[i & 3]);
}

void Scale32(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
             const int16_t *gain, const int16_t *offset, int32_t width, int32_t height,
             uint8_t flip) {
  ScaleRows(dst, dstPitch, src, srcPitch, gain, offset, 4 * width, height, flip);
}

void ScaleYUV16(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                const int16_t *gain, const int16_t *offset, int32_t width, int32_t height,
                uint8_t flip) {
  ScaleRows(dst, dstPitch, src, srcPitch, gain, offset, width, height, flip);
}

void RGB32ToRGB24Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    dst[3 * i] = src[4 * i];
    dst[3 * i + 1] = src[4 * i + 1];
    dst[3 * i + 2] = src[4 * i + 2];
  }
}

TMP_MemTable g_mem = {MemCopy, {},        PlaneCopy, ExtractChannelRow, ExtractChannelPlane,
                      nullptr, SwapFrame, SwapRow};
TMP_FillTable g_fill = {{}, PlaneFill};
TMP_PixelTable g_pixel = {{}, ScaleYUV16, nullptr, Scale32, {}, RGB32ToRGB24Row, {}, ScaleRun};
TMP_APIStu g_root = {&g_mem, nullptr, &g_fill, nullptr, nullptr, nullptr, &g_pixel};

}  // namespace

extern "C" {
TMP_APIStu *g_pMemProcAPI = &g_root;
TMP_APIStu *TMP_GetAPIStuPtr(void) { return g_pMemProcAPI; }
}
