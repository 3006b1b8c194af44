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
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kernels/kernel_slots.hpp"

namespace tqcs::portable {
namespace {

using Index = std::ptrdiff_t;

inline uint8_t Clamp8(int32_t v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); }

// Alpha of pixel i: a constant, or one byte per pixel at a fixed stride (a key
// plane, or byte 3 of 4-byte source pixels).
struct ConstAlpha {
  uint8_t value;
  uint8_t operator()(Index) const { return value; }
};
struct StridedAlpha {
  const uint8_t *base;
  Index stride;
  Index offset;
  uint8_t operator()(Index i) const { return base[i * stride + offset]; }
};

// ---------------------------------------------------------------- RGB -> YUV

// Three weights applied to the first three bytes of a pixel, in memory order.
struct Weights {
  int32_t w0, w1, w2;
  int32_t Dot(const uint8_t *s) const { return w0 * s[0] + w1 * s[1] + w2 * s[2]; }
};

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

// Packed 4:2:2 byte positions within a pair.
struct YUYV {
  static constexpr int kY0 = 0, kU = 1, kY1 = 2, kV = 3;
};
struct UYVY {
  static constexpr int kU = 0, kY0 = 1, kV = 2, kY1 = 3;
};

template <class Order>
struct PackedSink {
  uint8_t *dst;
  void Pair(Index p, uint8_t y0, uint8_t y1, uint8_t u, uint8_t v) const {
    uint8_t *d = dst + 4 * p;
    d[Order::kY0] = y0;
    d[Order::kU] = u;
    d[Order::kY1] = y1;
    d[Order::kV] = v;
  }
  // An odd last pixel becomes a whole pair carrying its own Y twice.
  void Tail(Index p, uint8_t y, uint8_t u, uint8_t v) const { Pair(p, y, y, u, v); }
};

struct PlanarSink {
  uint8_t *dstY, *dstU, *dstV;
  void Pair(Index p, uint8_t y0, uint8_t y1, uint8_t u, uint8_t v) const {
    dstY[2 * p] = y0;
    dstY[2 * p + 1] = y1;
    dstU[p] = u;
    dstV[p] = v;
  }
  // The chroma rows hold count / 2 samples: an odd last pixel has luma only.
  void Tail(Index p, uint8_t y, uint8_t, uint8_t) const { dstY[2 * p] = y; }
};

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
template <int kSrcBytes, class Sink>
void RgbTo422(Sink sink, const uint8_t *src, int32_t count, const Matrix &m) {
  if (count < 1) return;
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    const uint8_t *s = src + 2 * p * kSrcBytes;
    sink.Pair(p, m.Y(s), m.Y(s + kSrcBytes), m.U(s), m.V(s));
  }
  if (count & 1) {
    const uint8_t *s = src + 2 * pairs * kSrcBytes;
    sink.Tail(pairs, m.Y(s), m.U(s), m.V(s));
  }
}

// Byte 3 of each 4-byte source pixel into a key plane, one byte per pixel.
void ExtractKey(uint8_t *dstKey, const uint8_t *src, int32_t count) {
  const StridedAlpha alpha{src, 4, 3};
  for (Index i = 0; i < count; ++i) dstKey[i] = alpha(i);
}

// ---------------------------------------------------------------- YUV -> RGB

// Element 0 of the four rows: R from V, G from U, G from V, B from U.
struct RgbRows {
  int32_t rv, gu, gv, bu;
};
RgbRows LoadRows(const int16_t *rv, const int16_t *gu, const int16_t *gv, const int16_t *bu) {
  return {rv[0], gu[0], gv[0], bu[0]};
}

// What each colour adds to Y for centred chroma u, v (or sums of two centred
// samples with a shift one larger). `add` is 8192 to round, 0 to truncate.
struct Deltas {
  int32_t r, g, b;
};
Deltas ChromaDeltas(const RgbRows &k, int32_t u, int32_t v, int shift, int32_t add) {
  return {(k.rv * v + add) >> shift, (k.gu * u + k.gv * v + add) >> shift,
          (k.bu * u + add) >> shift};
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

template <class Order>
struct PackedSource {
  const uint8_t *src;
  int32_t Y0(Index p) const { return src[4 * p + Order::kY0]; }
  int32_t Y1(Index p) const { return src[4 * p + Order::kY1]; }
  int32_t U(Index p) const { return src[4 * p + Order::kU] - 128; }
  int32_t V(Index p) const { return src[4 * p + Order::kV] - 128; }
};

struct PlanarSource {
  const uint8_t *srcY, *srcU, *srcV;
  int32_t Y0(Index p) const { return srcY[2 * p]; }
  int32_t Y1(Index p) const { return srcY[2 * p + 1]; }
  int32_t U(Index p) const { return srcU[p] - 128; }
  int32_t V(Index p) const { return srcV[p] - 128; }
};

// count / 2 pairs; an odd last pixel has no chroma and is not written. The
// even pixel takes its pair's chroma, truncating; the odd pixel the sum of its
// pair's and the next pair's centred chroma with a shift of 15, also
// truncating. The last pair has no next pair and repeats its own chroma.
template <class Layout, class Source, class Alpha>
void Yuv422ToRgb(uint8_t *dst, Source s, int32_t count, Alpha alpha, const RgbRows &k) {
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    const Index n = p + 1 < pairs ? p + 1 : p;
    const int32_t u = s.U(p), v = s.V(p);
    uint8_t *d = dst + 2 * p * Layout::kBytes;
    PutRgb<Layout>(d, s.Y0(p), ChromaDeltas(k, u, v, 14, 0), alpha(2 * p));
    PutRgb<Layout>(d + Layout::kBytes, s.Y1(p), ChromaDeltas(k, u + s.U(n), v + s.V(n), 15, 0),
                   alpha(2 * p + 1));
  }
}

// 4:4:4 rounds; alpha is the source's own (unused for 3-byte output).
template <class Layout>
void YuvaToRgb(uint8_t *dst, const uint8_t *src, int32_t count, const RgbRows &k) {
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
  RgbToYuva<4>(dst, src, count, RoundedMatrix(r1, r2, r3), StridedAlpha{src, 4, 3});
}
void portable::RGB24_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_R3) {
  RgbToYuva<3>(dst, src, count, RoundedMatrix(r1, r2, r3), ConstAlpha{alpha});
}
void portable::RGB32_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                  int32_t count, TCS_R3) {
  RgbTo422<4>(PlanarSink{dstY, dstU, dstV}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                  int32_t count, TCS_R3) {
  RgbTo422<3>(PlanarSink{dstY, dstU, dstV}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<3>(PackedSink<YUYV>{dst}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<3>(PackedSink<UYVY>{dst}, src, count, RoundedMatrix(r1, r2, r3));
}
void portable::RGB24_2_Gray_Row(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                int32_t count) {
  const Weights y{coef[2], coef[3], coef[4]};
  for (Index i = 0; i < count; ++i) dst[i] = Clamp8((y.Dot(src + 3 * i) + 8192) >> 14);
}

// RGB32 -> packed 4:2:2, pair pattern, truncating.
void portable::RGB32_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<4>(PackedSink<YUYV>{dst}, src, count, PairMatrix(r1, r2, r3));
}
void portable::RGB32_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  RgbTo422<4>(PackedSink<UYVY>{dst}, src, count, PairMatrix(r1, r2, r3));
}
void portable::RGB32_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src,
                                    int32_t count, TCS_R3) {
  RgbTo422<4>(PackedSink<YUYV>{dst}, src, count, PairMatrix(r1, r2, r3));
  ExtractKey(dstKey, src, count);
}
void portable::RGB32_2_UYVY_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src,
                                    int32_t count, TCS_R3) {
  RgbTo422<4>(PackedSink<UYVY>{dst}, src, count, PairMatrix(r1, r2, r3));
  ExtractKey(dstKey, src, count);
}

// Packed 4:2:2 -> RGB.
void portable::YUYV_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedSource<YUYV>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedSource<YUYV>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedSource<UYVY>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedSource<UYVY>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PackedSource<YUYV>{src}, count, ConstAlpha{0}, LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PackedSource<YUYV>{src}, count, ConstAlpha{0}, LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PackedSource<UYVY>{src}, count, ConstAlpha{0}, LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PackedSource<UYVY>{src}, count, ConstAlpha{0}, LoadRows(rv, gu, gv, bu));
}

// Packed 4:2:2 plus key plane -> RGB32 / BGR32, alpha from the key.
void portable::YUYV_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedSource<YUYV>{src}, count, StridedAlpha{key, 1, 0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedSource<YUYV>{src}, count, StridedAlpha{key, 1, 0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedSource<UYVY>{src}, count, StridedAlpha{key, 1, 0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedSource<UYVY>{src}, count, StridedAlpha{key, 1, 0},
                     LoadRows(rv, gu, gv, bu));
}

// Planar 4:2:2 -> RGB.
void portable::YUV422_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PlanarSource{srcY, srcU, srcV}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PlanarSource{srcY, srcU, srcV}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_RGB24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PlanarSource{srcY, srcU, srcV}, count, ConstAlpha{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_BGR24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PlanarSource{srcY, srcU, srcV}, count, ConstAlpha{0},
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
