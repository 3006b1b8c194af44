// 8-bit RGB to YUV matrix kernels, portable tier: an RGB-like source (3 or 4
// bytes per pixel) to YUVA 4:4:4, packed 4:2:2 (either pair order, with or
// without a key plane), planar 4:2:2 or grey. The byte layout of the
// destination and the origin of alpha are small policy structs; the
// arithmetic exists once.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {
// ---------------------------------------------------------------- RGB -> YUV

// A matrix as the kernels apply it: a luma and two chroma weight triples and
// the term added before the >> 14 (8192 to round, 0 to truncate). Chroma is
// centred on 128. Everything is clamped to 0..255.
struct Matrix {
  Weights y, u, v;
  int32_t add;
  uint8_t Y(const uint8_t *s) const { return Clamp8((y.Dot(s) + add) >> 14); }
  uint8_t U(const uint8_t *s) const { return Clamp8(((u.Dot(s) + add) >> 14) + 128); }
  uint8_t V(const uint8_t *s) const { return Clamp8(((v.Dot(s) + add) >> 14) + 128); }
};

// The common row layout, rounding: the luma row is laid out like g_sY_GBR /
// g_sY_GRB, whose elements 2, 3, 4 weight source bytes 0, 1, 2; the chroma
// rows (g_sU_RGB / g_sV_RGB or the B-first twins) from element 0.
Matrix RoundedMatrix(const int16_t *r1, const int16_t *r2, const int16_t *r3) {
  return {{r1[2], r1[3], r1[4]}, {r2[0], r2[1], r2[2]}, {r3[0], r3[1], r3[2]}, 8192};
}

// The pair layout of the RGB32 -> packed 4:2:2 kernels, truncating: r1 holds
// the two outer luma weights (g_sY_RB / g_sY_BR), r2 the green weights of U,
// Y and V (g_sYUV_G), r3 the outer chroma weights (g_sUV_RB / g_sUV_BR).
Matrix PairMatrix(const int16_t *r1, const int16_t *r2, const int16_t *r3) {
  return {{r1[0], r2[1], r1[1]}, {r3[0], r2[0], r3[1]}, {r3[2], r2[2], r3[3]}, 0};
}

template <int kSrcBytes, class Alpha>
void RgbToYuva(uint8_t *dst, const uint8_t *src, int32_t count, const Matrix &m, Alpha alpha) {
  for (Index i = 0; i < count; ++i) {
    const uint8_t *s = src + i * kSrcBytes;
    uint8_t *d = dst + 4 * i;
    d[0] = m.Y(s);
    d[1] = m.U(s);
    d[2] = m.V(s);
    d[3] = alpha(i);
  }
}

// Luma of every pixel; the chroma of each pair comes from its even pixel, the
// odd pixel's is dropped.
template <int kSrcBytes, class Writer>
void RgbTo422(Writer dst, const uint8_t *src, int32_t count, const Matrix &m) {
  PixelsTo422(
      dst, count, [&](Index i) { return m.Y(src + i * kSrcBytes); },
      [&](Index i) {
        const uint8_t *s = src + i * kSrcBytes;
        return Chroma{m.U(s), m.V(s)};
      });
}

// Byte 3 of each 4-byte source pixel into a key plane, one byte per pixel.
void ExtractKey(uint8_t *dstKey, const uint8_t *src, int32_t count) {
  const KeyAlpha<4, 3> alpha{src};
  for (Index i = 0; i < count; ++i) dstKey[i] = alpha(i);
}

}  // namespace
}  // namespace tqcs::portable

// The slots. Qualified definitions: each must match its declaration exactly.
namespace tqcs {

// RGB -> YUV, rounding pattern.
void portable::RGB32_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbToYuva<4>(dst, src, count, RoundedMatrix(r1, r2, r3), KeyAlpha<4, 3>{src});
}
void portable::RGB24_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_R3) {
  RgbToYuva<3>(dst, src, count, RoundedMatrix(r1, r2, r3), ConstAlpha{alpha});
}
void portable::RGB32_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                  int32_t count, TCS_R3) {
  RgbTo422<4>(PlanarWriter{dstY, dstU, dstV}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                  int32_t count, TCS_R3) {
  RgbTo422<3>(PlanarWriter{dstY, dstU, dstV}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<3>(PackedWriter<YUYV>{dst}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<3>(PackedWriter<UYVY>{dst}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_Gray_Row(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                int32_t count) {
  LumaRow<3>(dst, src, coef, count);
}

// RGB32 -> packed 4:2:2, pair pattern, truncating.
void portable::RGB32_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<4>(PackedWriter<YUYV>{dst}, src, count, PairMatrix(r1, r2, r3));
}
void portable::RGB32_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<4>(PackedWriter<UYVY>{dst}, src, count, PairMatrix(r1, r2, r3));
}
void portable::RGB32_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src,
                                    int32_t count, TCS_R3) {
  RgbTo422<4>(PackedWriter<YUYV>{dst}, src, count, PairMatrix(r1, r2, r3));
  ExtractKey(dstKey, src, count);
}
void portable::RGB32_2_UYVY_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src,
                                    int32_t count, TCS_R3) {
  RgbTo422<4>(PackedWriter<UYVY>{dst}, src, count, PairMatrix(r1, r2, r3));
  ExtractKey(dstKey, src, count);
}

}  // namespace tqcs
