// Deep-colour row kernels, portable tier: RGB (8-bit, or 16-bit carrying 10
// significant bits) to 16-bit YUV 4:2:2, 10-bit and 4:1:1 YUV to RGB, and the
// plain repacks between 8-bit and 16-bit RGB layouts.
//
// Working values: an 8-bit sample is used as it is; a 16-bit sample holds a
// 10-bit value in bits 6-15 (value = sample >> 6, stored back as value << 6).
// 16-bit samples are read and written through memcpy, so no pointer needs any
// alignment.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels/kernel_slots.hpp"

namespace tqcs::portable {
namespace {

// ---------------------------------------------------------------- helpers

inline uint32_t Load(const uint8_t *p, ptrdiff_t i) { return p[i]; }

inline uint32_t Load(const uint16_t *p, ptrdiff_t i) {
  uint16_t v;
  std::memcpy(&v, p + i, sizeof v);
  return v;
}

inline void Store(uint8_t *p, ptrdiff_t i, uint32_t v) { p[i] = static_cast<uint8_t>(v); }

inline void Store(uint16_t *p, ptrdiff_t i, uint32_t v) {
  const uint16_t s = static_cast<uint16_t>(v);
  std::memcpy(p + i, &s, sizeof s);
}

inline int32_t Clamp(int32_t v, int32_t hi) { return v < 0 ? 0 : (v > hi ? hi : v); }

// Positive: shift left; negative: shift right.
template <int kShift>
inline uint32_t ShiftBy(uint32_t v) {
  if constexpr (kShift >= 0) {
    return v << kShift;
  } else {
    return v >> -kShift;
  }
}

// Sample positions inside one packed 4:2:2 pair (four samples).
enum class Pack { kYUYV, kUYVY };

template <Pack P>
struct PairLayout {
  static constexpr int kY0 = P == Pack::kYUYV ? 0 : 1;
  static constexpr int kY1 = kY0 + 2;
  static constexpr int kU = P == Pack::kYUYV ? 1 : 0;
  static constexpr int kV = kU + 2;
};

// ------------------------------------------------------- RGB to YUV 4:2:2
//
// Coefficient rows: coefY is laid out like the GBR luma row, so elements 2, 3,
// 4 weigh source components 0, 1, 2; coefUV holds the U weights in elements
// 0, 1, 2 and the V weights in elements 4, 5, 6. Every output rounds (+8192
// before >> 14); chroma is centred at half the range; each result is clamped
// to the value range of its depth and then moved into the top of a 16-bit
// sample. Chroma comes from the even pixel of each pair; the odd pixel's is
// dropped.

// One RGB row as working values. kStride counts samples per pixel.
template <typename In, int kStride>
struct RgbSource {
  static constexpr int kBits = sizeof(In) == 1 ? 8 : 10;
  const In *p;
  int32_t C(ptrdiff_t pixel, int c) const {
    return static_cast<int32_t>(Load(p, pixel * kStride + c) >> (sizeof(In) == 1 ? 0 : 6));
  }
};

template <int kBits>
struct YuvMath {
  static constexpr int32_t kMax = (1 << kBits) - 1;
  static constexpr int32_t kHalf = 1 << (kBits - 1);
  static constexpr int kUp = 16 - kBits;

  static uint32_t Out(int32_t v) { return static_cast<uint32_t>(Clamp(v, kMax)) << kUp; }
};

// Three consecutive weights w[0..2] applied to components 0, 1, 2, rounded.
template <class Src>
inline int32_t Weigh(const Src &s, ptrdiff_t i, const int16_t *w) {
  return (w[0] * s.C(i, 0) + w[1] * s.C(i, 1) + w[2] * s.C(i, 2) + 8192) >> 14;
}

template <class Src>
inline uint32_t LumaOf(const Src &s, ptrdiff_t i, const int16_t *cy) {
  return YuvMath<Src::kBits>::Out(Weigh(s, i, cy + 2));
}

struct Chroma16 {
  uint32_t u, v;
};

template <class Src>
inline Chroma16 ChromaOf(const Src &s, ptrdiff_t i, const int16_t *cuv) {
  using M = YuvMath<Src::kBits>;
  return {M::Out(Weigh(s, i, cuv) + M::kHalf), M::Out(Weigh(s, i, cuv + 4) + M::kHalf)};
}

// Packed output: ceil(count / 2) pairs. With an odd count the last pixel is
// written as a full pair carrying its own Y twice.
template <Pack P, class Src>
void RgbToPacked16(uint16_t *dst, Src src, int32_t count, const int16_t *cy, const int16_t *cuv) {
  using L = PairLayout<P>;
  const ptrdiff_t n = count;
  for (ptrdiff_t i = 0; i < n; i += 2) {
    uint16_t *d = dst + 2 * i;
    const uint32_t y0 = LumaOf(src, i, cy);
    const uint32_t y1 = i + 1 < n ? LumaOf(src, i + 1, cy) : y0;
    const Chroma16 c = ChromaOf(src, i, cuv);
    Store(d, L::kY0, y0);
    Store(d, L::kU, c.u);
    Store(d, L::kY1, y1);
    Store(d, L::kV, c.v);
  }
}

// Planar output: count luma samples and count / 2 chroma samples per plane;
// an odd last pixel gets its luma only, its chroma row has no place for it.
template <class Src>
void RgbToPlanar16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, Src src, int32_t count,
                   const int16_t *cy, const int16_t *cuv) {
  const ptrdiff_t n = count;
  for (ptrdiff_t i = 0; i < n; ++i) {
    Store(dstY, i, LumaOf(src, i, cy));
    if ((i & 1) == 0 && i + 1 < n) {
      const Chroma16 c = ChromaOf(src, i, cuv);
      Store(dstU, i / 2, c.u);
      Store(dstV, i / 2, c.v);
    }
  }
}

// ------------------------------------------------------- YUV to RGB
//
// coefA: element 0 = Rv, element 1 = Gv; coefB: element 0 = Gu, element 1 =
// Bu (Q14). u and v are centred (minus 512 for 10-bit values, 128 for 8-bit).
// R = Y + ((Rv v + 8192) >> 14), G = Y + ((Gu u + Gv v + 8192) >> 14),
// B = Y + ((Bu u + 8192) >> 14), each clamped to the depth's range.

struct Matrix {
  int32_t rv, gv, gu, bu;
};

inline Matrix MatrixOf(const int16_t *coefA, const int16_t *coefB) {
  return {coefA[0], coefA[1], coefB[0], coefB[1]};
}

// Four-component destination. kInBits is the depth of the arithmetic (10 or
// 8); the result is moved to the destination depth: << 6 into 16-bit samples,
// >> 2 from 10-bit into bytes. The V-derived term goes to R, the U-derived one
// to B, and kBgr puts B at component 0.
template <typename Out, int kInBits, bool kBgr, uint32_t kAlpha>
struct RgbaSink {
  static constexpr int32_t kMax = (1 << kInBits) - 1;
  static constexpr int kShift = static_cast<int>(sizeof(Out)) * 8 - kInBits;
  Out *p;

  void Put(ptrdiff_t i, int32_t y, int32_t u, int32_t v, const Matrix &m) const {
    const int32_t r = Clamp(y + ((m.rv * v + 8192) >> 14), kMax);
    const int32_t g = Clamp(y + ((m.gu * u + m.gv * v + 8192) >> 14), kMax);
    const int32_t b = Clamp(y + ((m.bu * u + 8192) >> 14), kMax);
    Out *d = p + 4 * i;
    Store(d, kBgr ? 2 : 0, ShiftBy<kShift>(static_cast<uint32_t>(r)));
    Store(d, 1, ShiftBy<kShift>(static_cast<uint32_t>(g)));
    Store(d, kBgr ? 0 : 2, ShiftBy<kShift>(static_cast<uint32_t>(b)));
    Store(d, 3, kAlpha);
  }
};

template <Pack P>
struct Packed16Source {
  using L = PairLayout<P>;
  const uint16_t *p;
  int32_t Y(ptrdiff_t pair, int k) const {
    return static_cast<int32_t>(Load(p, 4 * pair + (k ? L::kY1 : L::kY0)) >> 6);
  }
  int32_t U(ptrdiff_t pair) const { return static_cast<int32_t>(Load(p, 4 * pair + L::kU) >> 6); }
  int32_t V(ptrdiff_t pair) const { return static_cast<int32_t>(Load(p, 4 * pair + L::kV) >> 6); }
};

struct Planar10Source {
  const uint16_t *y, *u, *v;
  int32_t Y(ptrdiff_t pair, int k) const {
    return static_cast<int32_t>(Load(y, 2 * pair + k) >> 6);
  }
  int32_t U(ptrdiff_t pair) const { return static_cast<int32_t>(Load(u, pair) >> 6); }
  int32_t V(ptrdiff_t pair) const { return static_cast<int32_t>(Load(v, pair) >> 6); }
};

// count / 2 pairs: an odd last pixel has no chroma of its own and is not
// written. The odd pixel of a pair takes the rounded average of this pair's
// and the next pair's chroma; the last pair repeats its own.
template <class Src, class Sink>
void Yuv422_10ToRgb(Sink dst, Src src, int32_t count, const Matrix m) {
  constexpr int32_t kHalf = 512;
  const ptrdiff_t pairs = count / 2;
  for (ptrdiff_t i = 0; i < pairs; ++i) {
    const ptrdiff_t next = i + 1 < pairs ? i + 1 : i;
    const int32_t u = src.U(i), v = src.V(i);
    const int32_t uOdd = (u + src.U(next) + 1) >> 1;
    const int32_t vOdd = (v + src.V(next) + 1) >> 1;
    dst.Put(2 * i, src.Y(i, 0), u - kHalf, v - kHalf, m);
    dst.Put(2 * i + 1, src.Y(i, 1), uOdd - kHalf, vOdd - kHalf, m);
  }
}

// 4:1:1: count / 4 groups, each with one chroma sample; pixel k of a group
// interpolates between this group's sample and the next group's at quarter
// positions. The last group repeats its own; tail pixels past the last full
// group have no chroma sample and are not written.
template <bool kBgr>
void Yuv411ToRgb32(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                   int32_t count, const Matrix m) {
  const RgbaSink<uint8_t, 8, kBgr, 255> sink{dst};
  const ptrdiff_t groups = count / 4;
  for (ptrdiff_t g = 0; g < groups; ++g) {
    const ptrdiff_t next = g + 1 < groups ? g + 1 : g;
    const int32_t u0 = srcU[g], u1 = srcU[next], v0 = srcV[g], v1 = srcV[next];
    for (int k = 0; k < 4; ++k) {
      const int32_t u = ((4 - k) * u0 + k * u1 + 2) >> 2;
      const int32_t v = ((4 - k) * v0 + k * v1 + 2) >> 2;
      sink.Put(4 * g + k, srcY[4 * g + k], u - 128, v - 128, m);
    }
  }
}

// ------------------------------------------------------- plain repacks

enum class AlphaFrom { kSource, kKey, kConstant };

// One pixel of kIn components to kOut components, every sample shifted by
// kShift (left when positive), components 0 and 2 exchanged when kSwap. A
// fourth output component comes from the source, the key plane (shifted the
// same way) or the constant kAlpha. All inputs of a pixel are read before its
// first store, so a same-size repack may run in place.
template <typename In, int kIn, typename Out, int kOut, int kShift, bool kSwap,
          AlphaFrom kA = AlphaFrom::kConstant, uint32_t kAlpha = 0>
struct Repack {
  static void Pixel(Out *dst, const In *src, const uint8_t *key, ptrdiff_t i) {
    const In *s = src + kIn * i;
    uint32_t c[4] = {ShiftBy<kShift>(Load(s, 0)), ShiftBy<kShift>(Load(s, 1)),
                     ShiftBy<kShift>(Load(s, 2)), 0};
    if constexpr (kOut == 4) {
      if constexpr (kA == AlphaFrom::kSource) {
        c[3] = ShiftBy<kShift>(Load(s, 3));
      } else if constexpr (kA == AlphaFrom::kKey) {
        c[3] = ShiftBy<kShift>(key[i]);
      } else {
        c[3] = kAlpha;
      }
    }
    Out *d = dst + kOut * i;
    Store(d, 0, c[kSwap ? 2 : 0]);
    Store(d, 1, c[1]);
    Store(d, 2, c[kSwap ? 0 : 2]);
    if constexpr (kOut == 4) Store(d, 3, c[3]);
  }

  static void Row(Out *dst, const In *src, const uint8_t *key, int32_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) Pixel(dst, src, key, i);
  }
};

using Rgb24ToRgb48 = Repack<uint8_t, 3, uint16_t, 3, 8, false>;

}  // namespace

// ---------------------------------------------------------------- RGB to YUV

void RGB48_2_YUYV16_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbToPacked16<Pack::kYUYV>(dst, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

void RGB48_2_UYVY16_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbToPacked16<Pack::kUYVY>(dst, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

void RGB24_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbToPacked16<Pack::kYUYV>(dst, RgbSource<uint8_t, 3>{src}, count, coefY, coefUV);
}

void RGB24_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbToPacked16<Pack::kUYVY>(dst, RgbSource<uint8_t, 3>{src}, count, coefY, coefUV);
}

void RGB32_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbToPacked16<Pack::kYUYV>(dst, RgbSource<uint8_t, 4>{src}, count, coefY, coefUV);
}

void RGB32_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbToPacked16<Pack::kUYVY>(dst, RgbSource<uint8_t, 4>{src}, count, coefY, coefUV);
}

void RGB48_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                           int32_t count, const int16_t *coefY, const int16_t *coefUV) {
  RgbToPlanar16(dstY, dstU, dstV, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

// ---------------------------------------------------------------- YUV to RGB

// 16-bit outputs carry the constant alpha 0xFFA0 (packed sources) or 0xFC00
// (planar sources); 8-bit outputs 255. Kept as they stand for compatibility.
template <Pack P, bool kBgr>
void Packed16ToRgb64(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *a,
                     const int16_t *b) {
  Yuv422_10ToRgb(RgbaSink<uint16_t, 10, kBgr, 0xFFA0>{dst}, Packed16Source<P>{src}, count,
                 MatrixOf(a, b));
}

template <Pack P, bool kBgr>
void Packed16ToRgb32(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *a,
                     const int16_t *b) {
  Yuv422_10ToRgb(RgbaSink<uint8_t, 10, kBgr, 255>{dst}, Packed16Source<P>{src}, count,
                 MatrixOf(a, b));
}

void YUYV16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb64<Pack::kYUYV, false>(dst, src, count, coefA, coefB);
}

void UYVY16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb64<Pack::kUYVY, false>(dst, src, count, coefA, coefB);
}

void YUYV16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb64<Pack::kYUYV, true>(dst, src, count, coefA, coefB);
}

void UYVY16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb64<Pack::kUYVY, true>(dst, src, count, coefA, coefB);
}

void YUYV16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb32<Pack::kYUYV, false>(dst, src, count, coefA, coefB);
}

void YUYV16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb32<Pack::kYUYV, true>(dst, src, count, coefA, coefB);
}

void UYVY16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb32<Pack::kUYVY, false>(dst, src, count, coefA, coefB);
}

void UYVY16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Packed16ToRgb32<Pack::kUYVY, true>(dst, src, count, coefA, coefB);
}

void YUV422_10Bit_2_RGB64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv422_10ToRgb(RgbaSink<uint16_t, 10, false, 0xFC00>{dst}, Planar10Source{srcY, srcU, srcV},
                 count, MatrixOf(coefA, coefB));
}

void YUV422_10Bit_2_BGR64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv422_10ToRgb(RgbaSink<uint16_t, 10, true, 0xFC00>{dst}, Planar10Source{srcY, srcU, srcV}, count,
                 MatrixOf(coefA, coefB));
}

void YUV422_10Bit_2_RGB32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv422_10ToRgb(RgbaSink<uint8_t, 10, false, 255>{dst}, Planar10Source{srcY, srcU, srcV}, count,
                 MatrixOf(coefA, coefB));
}

void YUV422_10Bit_2_BGR32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv422_10ToRgb(RgbaSink<uint8_t, 10, true, 255>{dst}, Planar10Source{srcY, srcU, srcV}, count,
                 MatrixOf(coefA, coefB));
}

void YUV411_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                        int32_t count, const int16_t *coefA, const int16_t *coefB) {
  Yuv411ToRgb32<false>(dst, srcY, srcU, srcV, count, MatrixOf(coefA, coefB));
}

void YUV411_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                        int32_t count, const int16_t *coefA, const int16_t *coefB) {
  Yuv411ToRgb32<true>(dst, srcY, srcU, srcV, count, MatrixOf(coefA, coefB));
}

// ---------------------------------------------------------------- repacks

void RGB64_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 4, uint8_t, 4, -8, true, AlphaFrom::kSource>::Row(dst, src, nullptr, count);
}

void BGR32_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<uint8_t, 4, uint16_t, 4, 8, true, AlphaFrom::kSource>::Row(dst, src, nullptr, count);
}

void RGB64_SwapRB_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 4, uint16_t, 4, 0, true, AlphaFrom::kSource>::Row(dst, src, nullptr, count);
}

// The three components copied; the added alpha is fully opaque (0xFFFF).
void RGB48_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint16_t, 4, 0, false, AlphaFrom::kConstant, 0xFFFF>::Row(dst, src, nullptr,
                                                                                count);
}

void RGB48_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint16_t, 4, 0, true, AlphaFrom::kConstant, 0xFFFF>::Row(dst, src, nullptr,
                                                                               count);
}

void RGB24_2_RGB48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Rgb24ToRgb48::Row(dst, src, nullptr, count);
}

void RGB24_2_BGR48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<uint8_t, 3, uint16_t, 3, 8, true>::Row(dst, src, nullptr, count);
}

void RGB24_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<uint8_t, 3, uint16_t, 4, 8, false, AlphaFrom::kConstant, 0xFFA0>::Row(dst, src, nullptr,
                                                                               count);
}

void RGB24_2_BGR64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<uint8_t, 3, uint16_t, 4, 8, true, AlphaFrom::kConstant, 0xFFA0>::Row(dst, src, nullptr,
                                                                              count);
}

void RGB24_Key_2_RGB64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  Repack<uint8_t, 3, uint16_t, 4, 8, false, AlphaFrom::kKey>::Row(dst, src, key, count);
}

void RGB24_Key_2_BGR64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  Repack<uint8_t, 3, uint16_t, 4, 8, true, AlphaFrom::kKey>::Row(dst, src, key, count);
}

// The result of RGB24_2_RGB48_Row, nine samples (three pixels) per step and
// the remaining pixels one at a time.
void RGB24_2_RGB48_Expand_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  const ptrdiff_t n = count;
  ptrdiff_t i = 0;
  for (; i + 3 <= n; i += 3) {
    for (ptrdiff_t k = 3 * i; k < 3 * i + 9; ++k) Store(dst, k, Load(src, k) << 8);
  }
  for (; i < n; ++i) Rgb24ToRgb48::Pixel(dst, src, nullptr, i);
}

// Each component reduced to its 10 significant bits, order kept.
void RGB48_2_RGB30_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint16_t, 3, -6, false>::Row(dst, src, nullptr, count);
}

void RGB48_2_BGR24_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint8_t, 3, -8, true>::Row(dst, src, nullptr, count);
}

void RGB48_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint8_t, 4, -8, false, AlphaFrom::kConstant, 255>::Row(dst, src, nullptr,
                                                                             count);
}

void RGB48_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint8_t, 4, -8, true, AlphaFrom::kConstant, 255>::Row(dst, src, nullptr,
                                                                            count);
}

void RGB48_2_RGB64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint16_t, 4, 0, false, AlphaFrom::kConstant, 0xFFA0>::Row(dst, src, nullptr,
                                                                                count);
}

void RGB48_2_BGR64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<uint16_t, 3, uint16_t, 4, 0, true, AlphaFrom::kConstant, 0xFFA0>::Row(dst, src, nullptr,
                                                                               count);
}

}  // namespace tqcs::portable
