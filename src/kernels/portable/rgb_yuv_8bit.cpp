// 8-bit RGB <-> YUV matrix kernels, portable tier.
//
// Three families, each written once:
//  - an RGB-like source (3 or 4 bytes per pixel) to YUVA 4:4:4, packed 4:2:2
//    (either pair order, with or without a key plane) or planar 4:2:2;
//  - a 4:2:2 source (packed in either order, or planar) to 3- or 4-byte RGB,
//    R-first or B-first, alpha from an argument or a key plane;
//  - YUVA 4:4:4 to 3- or 4-byte RGB.
// Byte orders, sample layouts and the origin of alpha are small policy
// structs; the arithmetic exists once per direction.
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

// ---------------------------------------------------------------- YUV -> RGB

// Element 0 of the four rows: R from V, G from U, G from V, B from U.
ChromaWeights LoadRows(const int16_t *rv, const int16_t *gu, const int16_t *gv, const int16_t *bu) {
  return {rv[0], gu[0], gv[0], bu[0]};
}

template <int kBytesPerPixel, bool kBlueFirst>
struct RgbLayout {
  static constexpr int kBytes = kBytesPerPixel;
  static constexpr int kR = kBlueFirst ? 2 : 0;
  static constexpr int kB = kBlueFirst ? 0 : 2;
};
using RGB24 = RgbLayout<3, false>;
using BGR24 = RgbLayout<3, true>;
using RGB32 = RgbLayout<4, false>;
using BGR32 = RgbLayout<4, true>;

template <class Layout>
void PutRgb(uint8_t *d, int32_t y, const Deltas &c, uint8_t alpha) {
  d[Layout::kR] = Clamp8(y + c.r);
  d[1] = Clamp8(y + c.g);
  d[Layout::kB] = Clamp8(y + c.b);
  if constexpr (Layout::kBytes == 4) d[3] = alpha;
}

// count / 2 pairs; an odd last pixel has no chroma and is not written. The
// even pixel takes its pair's chroma, truncating; the odd pixel the sum of its
// pair's and the next pair's centred chroma with a shift of 15, also
// truncating. The last pair has no next pair and repeats its own chroma.
template <class Layout, class Reader, class Alpha>
void Yuv422ToRgb(uint8_t *dst, Reader s, int32_t count, Alpha alpha, const ChromaWeights &k) {
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    const Index n = NextOrLast(p, pairs);
    const int32_t u = s.U(p) - 128, v = s.V(p) - 128;
    const int32_t uSum = u + (s.U(n) - 128), vSum = v + (s.V(n) - 128);
    uint8_t *d = dst + 2 * p * Layout::kBytes;
    PutRgb<Layout>(d, s.Y0(p), ChromaDeltas(k, u, v, 14, 0), alpha(2 * p));
    PutRgb<Layout>(d + Layout::kBytes, s.Y1(p), ChromaDeltas(k, uSum, vSum, 15, 0),
                   alpha(2 * p + 1));
  }
}

// 4:4:4 rounds; alpha is the source's own (unused for 3-byte output).
template <class Layout>
void YuvaToRgb(uint8_t *dst, const uint8_t *src, int32_t count, const ChromaWeights &k) {
  for (Index i = 0; i < count; ++i) {
    const uint8_t *s = src + 4 * i;
    PutRgb<Layout>(dst + i * Layout::kBytes, s[0],
                   ChromaDeltas(k, s[1] - 128, s[2] - 128, 14, 8192), s[3]);
  }
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

// Packed 4:2:2 -> RGB.
void portable::YUYV_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<YUYV>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<YUYV>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<UYVY>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<UYVY>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PackedReader<YUYV>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PackedReader<YUYV>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PackedReader<UYVY>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PackedReader<UYVY>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}

// Packed 4:2:2 plus key plane -> RGB32 / BGR32, alpha from the key.
void portable::YUYV_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<YUYV>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<YUYV>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<UYVY>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<UYVY>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}

// Planar 4:2:2 -> RGB.
void portable::YUV422_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_RGB24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_BGR24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}

// YUVA 4:4:4 -> RGB, rounding.
void portable::YUVA_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<RGB32>(dst, src, count, LoadRows(rv, gu, gv, bu));
}
void portable::YUVA_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<BGR32>(dst, src, count, LoadRows(rv, gu, gv, bu));
}
void portable::YUVA_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<RGB24>(dst, src, count, LoadRows(rv, gu, gv, bu));
}
void portable::YUVA_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<BGR24>(dst, src, count, LoadRows(rv, gu, gv, bu));
}

}  // namespace tqcs
