// The portable kernel object: every operation of ColorSpace in plain C++.
// These bodies are the reference that the SIMD object must reproduce exactly.
//
// Row extents (nothing is read or written outside them):
// - Packed 4:2:2 rows that are READ hold count / 2 pairs; an odd last pixel is
//   not written to any destination.
// - Packed 4:2:2 rows that are WRITTEN from a full-resolution source hold
//   ceil(count / 2) pairs; an odd last pixel becomes a whole pair with its own
//   luma twice and its own chroma.
// - Planar 4:2:2 / 4:2:0 chroma rows hold count / 2 samples, 4:1:1 count / 4.
// - V210 rows are packed 4:2:2 rows too: they hold the ceil(4 * (count / 2) / 3)
//   words that carry count / 2 pairs; an odd last pixel is not converted.
// - The chroma-row operations (11 to 14) count samples of the chroma row.
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "kernels/colorspace.hpp"

namespace tqcs {
namespace {

// ---- Sample access -------------------------------------------------------
// Pointers may be unaligned, and pitches are byte offsets for every sample
// size, so 16-bit samples are moved with memcpy.

template <class T>
inline int Get(const T *row, ptrdiff_t i) {
  T v;
  std::memcpy(&v, reinterpret_cast<const unsigned char *>(row) + i * ptrdiff_t(sizeof(T)),
              sizeof v);
  return int(v);
}

template <class T>
inline void Put(T *row, ptrdiff_t i, int value) {
  const T v = T(value);
  std::memcpy(reinterpret_cast<unsigned char *>(row) + i * ptrdiff_t(sizeof(T)), &v, sizeof v);
}

template <class T>
inline T *Step(T *row, int64_t pitch) {
  using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
  return reinterpret_cast<T *>(reinterpret_cast<Byte *>(row) + pitch);
}

inline int Clamp(int v, int hi) { return v < 0 ? 0 : (v > hi ? hi : v); }

inline int Avg(int a, int b) { return (a + b + 1) >> 1; }

// ---- Packed 4:2:2 order --------------------------------------------------

enum class Order { YUYV, UYVY };

// Positions of Y0, U, Y1, V within a pair.
template <Order O>
struct Pair {
  static constexpr int y0 = O == Order::YUYV ? 0 : 1;
  static constexpr int u = O == Order::YUYV ? 1 : 0;
  static constexpr int y1 = O == Order::YUYV ? 2 : 3;
  static constexpr int v = O == Order::YUYV ? 3 : 2;
};

template <Order O, class T>
inline void PutPair(T *dst, ptrdiff_t pair, int y0, int u, int y1, int v) {
  Put(dst, 4 * pair + Pair<O>::y0, y0);
  Put(dst, 4 * pair + Pair<O>::u, u);
  Put(dst, 4 * pair + Pair<O>::y1, y1);
  Put(dst, 4 * pair + Pair<O>::v, v);
}

// ---- Ops 0, 1: planar 4:1:1 to packed 4:2:2 ------------------------------
// Each chroma sample serves the two pairs of its group of four pixels. The
// 1 to 3 pixels after the last whole group have no chroma sample in the
// count / 4 chroma row and are not written.
template <Order O>
void Yuv411ToPacked(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                    int32_t count) {
  for (ptrdiff_t g = 0; g < count / 4; ++g) {
    const int u = srcU[g], v = srcV[g];
    const uint8_t *y = srcY + 4 * g;
    PutPair<O>(dst, 2 * g, y[0], u, y[1], v);
    PutPair<O>(dst, 2 * g + 1, y[2], u, y[3], v);
  }
}

// ---- Ops 2, 3, 4: V210 ---------------------------------------------------
// A group of six pixels is four little-endian words, three 10-bit fields a
// word at bits 0, 10 and 20 (bits 30 and 31 zero): (Cb0 Y0 Cr0) (Y1 Cb1 Y2)
// (Cr1 Y3 Cb2) (Y4 Cr2 Y5). Read as one stream that is U Y V Y order, so
// component c of the row is field c % 3 of word c / 3, and pair p holds
// components 4p (U), 4p + 1 (Y0), 4p + 2 (V), 4p + 3 (Y1).
// V210 is packed 4:2:2: count / 2 pairs are converted (an odd last pixel is
// not), carried by ceil(4 * (count / 2) / 3) words.

inline int V210Field(const uint8_t *src, ptrdiff_t c) {
  const uint8_t *w = src + 4 * (c / 3);
  const uint32_t word =
      uint32_t(w[0]) | uint32_t(w[1]) << 8 | uint32_t(w[2]) << 16 | uint32_t(w[3]) << 24;
  return int(word >> (10 * (c % 3))) & 0x3FF;
}

// The 8-bit value of a field.
inline int V210Byte(const uint8_t *src, ptrdiff_t c) { return V210Field(src, c) >> 2; }

void V210ToPlanar(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count) {
  for (ptrdiff_t p = 0; p < count / 2; ++p) {
    dstU[p] = uint8_t(V210Byte(src, 4 * p));
    dstY[2 * p] = uint8_t(V210Byte(src, 4 * p + 1));
    dstV[p] = uint8_t(V210Byte(src, 4 * p + 2));
    dstY[2 * p + 1] = uint8_t(V210Byte(src, 4 * p + 3));
  }
}

// Writes the words that carry count / 2 pairs; the fields of the last word
// past the row's components are zero.
void PlanarToV210(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                  int32_t count) {
  const ptrdiff_t components = 4 * ptrdiff_t(count / 2);
  for (ptrdiff_t w = 0; w < (components + 2) / 3; ++w) {
    uint32_t word = 0;
    for (ptrdiff_t c = 3 * w; c < 3 * w + 3 && c < components; ++c) {
      const ptrdiff_t p = c / 4;
      const int value = c % 4 == 0 ? srcU[p] : c % 4 == 2 ? srcV[p] : srcY[2 * p + (c % 4 == 3)];
      word |= uint32_t(value << 2) << (10 * (c % 3));
    }
    for (int b = 0; b < 4; ++b) dst[4 * w + b] = uint8_t(word >> (8 * b));
  }
}

// Chroma of the two rows: the 8-bit values (field >> 2) weighted 3:1.
void V210ToYuv420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                  const uint8_t *src, int64_t srcPitch, int32_t count) {
  const uint8_t *src2 = Step(src, srcPitch);
  uint8_t *dstY2 = Step(dstY, dstYPitch);
  auto mix = [&](ptrdiff_t c) { return (3 * V210Byte(src, c) + V210Byte(src2, c) + 2) >> 2; };
  for (ptrdiff_t p = 0; p < count / 2; ++p) {
    dstU[p] = uint8_t(mix(4 * p));
    dstV[p] = uint8_t(mix(4 * p + 2));
    for (int k = 0; k < 2; ++k) {
      dstY[2 * p + k] = uint8_t(V210Byte(src, 4 * p + 1 + 2 * k));
      dstY2[2 * p + k] = uint8_t(V210Byte(src2, 4 * p + 1 + 2 * k));
    }
  }
}

// ---- Op 5: one Q14 matrix row over 4-byte pixels -------------------------
// Elements 2, 3, 4 weigh bytes 0, 1, 2; the fourth byte is ignored. The
// offset is the constant 1 << 13, so the result rounds like the grey kernel.
void MatrixRowOf32(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  const int c0 = coef[2], c1 = coef[3], c2 = coef[4];
  for (ptrdiff_t i = 0; i < count; ++i) {
    const uint8_t *s = src + 4 * i;
    dst[i] = uint8_t(Clamp((c0 * s[0] + c1 * s[1] + c2 * s[2] + (1 << 13)) >> 14, 255));
  }
}

// ---- Ops 6, 7: packed 4:2:2 to 16-bit planes -----------------------------
template <Order O>
void PackedToPlanar16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint8_t *src,
                      int32_t count) {
  using P = Pair<O>;
  for (ptrdiff_t p = 0; p < count / 2; ++p) {
    const uint8_t *s = src + 4 * p;
    Put(dstY, 2 * p, s[P::y0] << 8);
    Put(dstY, 2 * p + 1, s[P::y1] << 8);
    Put(dstU, p, s[P::u] << 8);
    Put(dstV, p, s[P::v] << 8);
  }
}

// ---- Op 8: per-sample Q14 gain -------------------------------------------
// count is the number of bytes; the eight coefficients repeat along the row.
void ScaleQ14(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  for (ptrdiff_t i = 0; i < count; ++i)
    dst[i] = uint8_t(Clamp((src[i] * coef[i % 8] + 8192) >> 14, 255));
}

// ---- Ops 9, 10: 10-bit RGB to 16-bit packed 4:2:2 ------------------------
// coefY elements 2, 3, 4 weigh components 0, 1, 2; coefUV elements 0-2 give U
// and 4-6 give V. The pair takes the chroma of its even pixel.
inline int Luma10(const int16_t *c, const int *s) {
  return Clamp((c[2] * s[0] + c[3] * s[1] + c[4] * s[2] + 8192) >> 14, 1023) << 6;
}
inline int Chroma10(const int16_t *c, const int *s) {
  return Clamp(((c[0] * s[0] + c[1] * s[1] + c[2] * s[2] + 8192) >> 14) + 512, 1023) << 6;
}

template <Order O>
void Rgb48ToPacked16(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                     const int16_t *coefUV, int32_t count) {
  for (ptrdiff_t i = 0; i < count; i += 2) {
    const int a[3] = {Get(src, 3 * i) >> 6, Get(src, 3 * i + 1) >> 6, Get(src, 3 * i + 2) >> 6};
    const int y0 = Luma10(coefY, a);
    int y1 = y0;  // an odd last pixel repeats its own luma
    if (i + 1 < count) {
      const int b[3] = {Get(src, 3 * i + 3) >> 6, Get(src, 3 * i + 4) >> 6,
                        Get(src, 3 * i + 5) >> 6};
      y1 = Luma10(coefY, b);
    }
    PutPair<O>(dst, i / 2, y0, Chroma10(coefUV, a), y1, Chroma10(coefUV + 4, a));
  }
}

// ---- Ops 11 to 14: chroma rows -------------------------------------------
template <class T>
void AverageRows(T *dst, const T *src, int64_t srcPitch, int32_t count) {
  const T *next = Step(src, srcPitch);
  for (ptrdiff_t i = 0; i < count; ++i) Put(dst, i, Avg(Get(src, i), Get(next, i)));
}

// A new row midway between rows b and c of a, b, c, d.
template <class T>
void Interpolate4Tap(T *dst, const T *src, int64_t srcPitch, int32_t count) {
  constexpr int kMax = T(~T(0));
  const T *a = src, *b = Step(a, srcPitch), *c = Step(b, srcPitch), *d = Step(c, srcPitch);
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int sum = 9 * (Get(b, i) + Get(c, i)) - Get(a, i) - Get(d, i) + 8;
    Put(dst, i, Clamp(sum >> 4, kMax));
  }
}

// ---- Ops 15 to 22: two packed 4:2:2 rows to 4:2:0 ------------------------
// Shift moves each sample between depths: +8 for 8 to 16 bits, -8 for 16 to
// 8 bits, 0 to keep it. Chroma is averaged first and then moved, which makes
// the 16-to-8-bit chroma (a + b + 1) >> 9.
template <int Shift>
inline int Depth(int v) {
  if constexpr (Shift > 0) return v << Shift;
  if constexpr (Shift < 0) return v >> -Shift;
  return v;
}

template <Order O, int Shift, class D, class S>
void PackedRowsTo420(D *dstY, int64_t dstYPitch, D *dstU, D *dstV, const S *src, int64_t srcPitch,
                     int32_t count) {
  using P = Pair<O>;
  const S *src2 = Step(src, srcPitch);
  D *dstY2 = Step(dstY, dstYPitch);
  for (ptrdiff_t p = 0; p < count / 2; ++p) {
    const ptrdiff_t s = 4 * p;
    Put(dstY, 2 * p, Depth<Shift>(Get(src, s + P::y0)));
    Put(dstY, 2 * p + 1, Depth<Shift>(Get(src, s + P::y1)));
    Put(dstY2, 2 * p, Depth<Shift>(Get(src2, s + P::y0)));
    Put(dstY2, 2 * p + 1, Depth<Shift>(Get(src2, s + P::y1)));
    Put(dstU, p, Depth<Shift>(Avg(Get(src, s + P::u), Get(src2, s + P::u))));
    Put(dstV, p, Depth<Shift>(Avg(Get(src, s + P::v), Get(src2, s + P::v))));
  }
}

}  // namespace

// ---- ColorSpaceC: one-line forwards --------------------------------------

void ColorSpaceC::YUV411_2_YUYV(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                const uint8_t *srcV, int32_t count) {
  Yuv411ToPacked<Order::YUYV>(dst, srcY, srcU, srcV, count);
}
void ColorSpaceC::YUV411_2_UYVY(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                const uint8_t *srcV, int32_t count) {
  Yuv411ToPacked<Order::UYVY>(dst, srcY, srcU, srcV, count);
}
void ColorSpaceC::V210_2_YUV422(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                int32_t count) {
  V210ToPlanar(dstY, dstU, dstV, src, count);
}
void ColorSpaceC::YUV422_2_V210(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                const uint8_t *srcV, int32_t count) {
  PlanarToV210(dst, srcY, srcU, srcV, count);
}
void ColorSpaceC::V210_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) {
  V210ToYuv420(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::RGB_2_YUV_Matrix(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                   int32_t count) {
  MatrixRowOf32(dst, src, coef, count);
}
void ColorSpaceC::YUYV_2_YUV422_16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                   const uint8_t *src, int32_t count) {
  PackedToPlanar16<Order::YUYV>(dstY, dstU, dstV, src, count);
}
void ColorSpaceC::UYVY_2_YUV422_16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                   const uint8_t *src, int32_t count) {
  PackedToPlanar16<Order::UYVY>(dstY, dstU, dstV, src, count);
}
void ColorSpaceC::Scale_Q14(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  ScaleQ14(dst, src, coef, count);
}
void ColorSpaceC::RGB48_2_YUYV16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                        const int16_t *coefUV, int32_t count) {
  Rgb48ToPacked16<Order::YUYV>(dst, src, coefY, coefUV, count);
}
void ColorSpaceC::RGB48_2_UYVY16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                        const int16_t *coefUV, int32_t count) {
  Rgb48ToPacked16<Order::UYVY>(dst, src, coefY, coefUV, count);
}
void ColorSpaceC::YUV422_2_YUV420_UV_Avg(uint8_t *dst, const uint8_t *src, int64_t srcPitch,
                                         int32_t count) {
  AverageRows(dst, src, srcPitch, count);
}
void ColorSpaceC::YUV422_16_2_YUV420_16_UV_Avg(uint16_t *dst, const uint16_t *src, int64_t srcPitch,
                                               int32_t count) {
  AverageRows(dst, src, srcPitch, count);
}
void ColorSpaceC::UV_Interpolate_4Tap(uint8_t *dst, const uint8_t *src, int64_t srcPitch,
                                      int32_t count) {
  Interpolate4Tap(dst, src, srcPitch, count);
}
void ColorSpaceC::UV_Interpolate_4Tap_16(uint16_t *dst, const uint16_t *src, int64_t srcPitch,
                                         int32_t count) {
  Interpolate4Tap(dst, src, srcPitch, count);
}
void ColorSpaceC::YUYV_2_YUV420_Avg(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                    const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<Order::YUYV, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY_2_YUV420_Avg(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                    const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<Order::UYVY, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::YUYV16_2_YUV420_16_Avg(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                         uint16_t *dstV, const uint16_t *src, int64_t srcPitch,
                                         int32_t count) {
  PackedRowsTo420<Order::YUYV, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY16_2_YUV420_16_Avg(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                         uint16_t *dstV, const uint16_t *src, int64_t srcPitch,
                                         int32_t count) {
  PackedRowsTo420<Order::UYVY, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::YUYV_2_YUV420_16(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                   uint16_t *dstV, const uint8_t *src, int64_t srcPitch,
                                   int32_t count) {
  PackedRowsTo420<Order::YUYV, 8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY_2_YUV420_16(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                   uint16_t *dstV, const uint8_t *src, int64_t srcPitch,
                                   int32_t count) {
  PackedRowsTo420<Order::UYVY, 8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::YUYV16_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                  const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<Order::YUYV, -8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY16_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                  const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<Order::UYVY, -8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

}  // namespace tqcs
