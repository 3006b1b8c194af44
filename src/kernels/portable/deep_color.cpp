// Deep-colour row kernels, portable tier: RGB (8-bit, or 16-bit carrying 10
// significant bits) to 16-bit YUV 4:2:2, 10-bit and 4:1:1 YUV to RGB, and the
// plain repacks between 8-bit and 16-bit RGB layouts.
//
// Working values: an 8-bit sample is used as it is; a 16-bit sample holds a
// 10-bit value in bits 6-15 (value = sample >> 6, stored back as value << 6).
// 16-bit samples are read and written through memcpy, so no pointer needs any
// alignment.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

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
  int32_t C(Index pixel, int c) const {
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
inline int32_t Weigh(const Src &s, Index i, const int16_t *w) {
  return (w[0] * s.C(i, 0) + w[1] * s.C(i, 1) + w[2] * s.C(i, 2) + 8192) >> 14;
}

template <class Src>
inline uint32_t LumaOf(const Src &s, Index i, const int16_t *cy) {
  return YuvMath<Src::kBits>::Out(Weigh(s, i, cy + 2));
}

template <class Src>
inline Chroma ChromaOf(const Src &s, Index i, const int16_t *cuv) {
  using M = YuvMath<Src::kBits>;
  return {M::Out(Weigh(s, i, cuv) + M::kHalf), M::Out(Weigh(s, i, cuv + 4) + M::kHalf)};
}

// count luma samples; the chroma of each pair from its even pixel. Packed
// output has ceil(count / 2) pairs, an odd last pixel written as a full pair
// carrying its own Y twice; planar output has count / 2 chroma samples per
// plane, an odd last pixel its luma only.
template <class Writer, class Src>
void RgbTo422_16(Writer dst, Src src, int32_t count, const int16_t *cy, const int16_t *cuv) {
  PixelsTo422(
      dst, count, [&](Index i) { return LumaOf(src, i, cy); },
      [&](Index i) { return ChromaOf(src, i, cuv); });
}

// ------------------------------------------------------- YUV to RGB
//
// coefA: element 0 = Rv, element 1 = Gv; coefB: element 0 = Gu, element 1 =
// Bu (Q14). u and v are centred (minus 512 for 10-bit values, 128 for 8-bit).
// R = Y + ((Rv v + 8192) >> 14), G = Y + ((Gu u + Gv v + 8192) >> 14),
// B = Y + ((Bu u + 8192) >> 14), each clamped to the depth's range.

inline ChromaWeights MatrixOf(const int16_t *coefA, const int16_t *coefB) {
  return {coefA[0], coefB[0], coefA[1], coefB[1]};
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

  void Put(Index i, int32_t y, int32_t u, int32_t v, const ChromaWeights &m) const {
    const Deltas c = ChromaDeltas(m, u, v, 14, 8192);
    const int32_t r = Clamp(y + c.r, kMax);
    const int32_t g = Clamp(y + c.g, kMax);
    const int32_t b = Clamp(y + c.b, kMax);
    Out *d = p + 4 * i;
    Store(d, kBgr ? 2 : 0, ShiftBy<kShift>(static_cast<uint32_t>(r)));
    Store(d, 1, ShiftBy<kShift>(static_cast<uint32_t>(g)));
    Store(d, kBgr ? 0 : 2, ShiftBy<kShift>(static_cast<uint32_t>(b)));
    Store(d, 3, kAlpha);
  }
};

// count / 2 pairs: an odd last pixel has no chroma of its own and is not
// written. The odd pixel of a pair takes the rounded average of this pair's
// and the next pair's chroma; the last pair repeats its own.
template <class Reader, class Sink>
void Yuv422_10ToRgb(Sink dst, Reader src, int32_t count, const ChromaWeights m) {
  constexpr int32_t kHalf = 512;
  const Index pairs = count / 2;
  for (Index i = 0; i < pairs; ++i) {
    const Index next = NextOrLast(i, pairs);
    const int32_t u = src.U(i) >> 6, v = src.V(i) >> 6;
    const int32_t uOdd = (u + (src.U(next) >> 6) + 1) >> 1;
    const int32_t vOdd = (v + (src.V(next) >> 6) + 1) >> 1;
    dst.Put(2 * i, src.Y0(i) >> 6, u - kHalf, v - kHalf, m);
    dst.Put(2 * i + 1, src.Y1(i) >> 6, uOdd - kHalf, vOdd - kHalf, m);
  }
}

// 4:1:1: count / 4 groups, each with one chroma sample; pixel k of a group
// interpolates between this group's sample and the next group's at quarter
// positions. The last group repeats its own; tail pixels past the last full
// group have no chroma sample and are not written.
template <bool kBgr>
void Yuv411ToRgb32(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                   int32_t count, const ChromaWeights m) {
  const RgbaSink<uint8_t, 8, kBgr, 255> sink{dst};
  const Index groups = count / 4;
  for (Index g = 0; g < groups; ++g) {
    const Index next = NextOrLast(g, groups);
    const int32_t u0 = srcU[g], u1 = srcU[next], v0 = srcV[g], v1 = srcV[next];
    for (int k = 0; k < 4; ++k) {
      const int32_t u = ((4 - k) * u0 + k * u1 + 2) >> 2;
      const int32_t v = ((4 - k) * v0 + k * v1 + 2) >> 2;
      sink.Put(4 * g + k, srcY[4 * g + k], u - 128, v - 128, m);
    }
  }
}

// ------------------------------------------------------- plain repacks

// The key plane's bytes moved to 16 bits like the colour samples.
struct Key16 {
  const uint8_t *key;
  uint32_t operator()(Index i) const { return ShiftBy<8>(key[i]); }
};

}  // namespace

// ---------------------------------------------------------------- RGB to YUV

void RGB48_2_YUYV16_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<YUYV, uint16_t>{dst}, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

void RGB48_2_UYVY16_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<UYVY, uint16_t>{dst}, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

void RGB24_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<YUYV, uint16_t>{dst}, RgbSource<uint8_t, 3>{src}, count, coefY, coefUV);
}

void RGB24_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<UYVY, uint16_t>{dst}, RgbSource<uint8_t, 3>{src}, count, coefY, coefUV);
}

void RGB32_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<YUYV, uint16_t>{dst}, RgbSource<uint8_t, 4>{src}, count, coefY, coefUV);
}

void RGB32_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<UYVY, uint16_t>{dst}, RgbSource<uint8_t, 4>{src}, count, coefY, coefUV);
}

void RGB48_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                           int32_t count, const int16_t *coefY, const int16_t *coefUV) {
  RgbTo422_16(PlanarWriter{dstY, dstU, dstV}, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

// ---------------------------------------------------------------- YUV to RGB

// 16-bit outputs carry the constant alpha 0xFFA0 (packed sources) or 0xFC00
// (planar sources); 8-bit outputs 255. Kept as they stand for compatibility.
template <bool kBgr, uint32_t kAlpha, class Out, class Reader>
void Yuv10ToRgb(Out *dst, Reader src, int32_t count, const int16_t *coefA, const int16_t *coefB) {
  Yuv422_10ToRgb(RgbaSink<Out, 10, kBgr, kAlpha>{dst}, src, count, MatrixOf(coefA, coefB));
}

void YUYV16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<false, 0xFFA0>(dst, PackedReader<YUYV, uint16_t>{src}, count, coefA, coefB);
}

void UYVY16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<false, 0xFFA0>(dst, PackedReader<UYVY, uint16_t>{src}, count, coefA, coefB);
}

void YUYV16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<true, 0xFFA0>(dst, PackedReader<YUYV, uint16_t>{src}, count, coefA, coefB);
}

void UYVY16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<true, 0xFFA0>(dst, PackedReader<UYVY, uint16_t>{src}, count, coefA, coefB);
}

void YUYV16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<false, 255>(dst, PackedReader<YUYV, uint16_t>{src}, count, coefA, coefB);
}

void YUYV16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<true, 255>(dst, PackedReader<YUYV, uint16_t>{src}, count, coefA, coefB);
}

void UYVY16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<false, 255>(dst, PackedReader<UYVY, uint16_t>{src}, count, coefA, coefB);
}

void UYVY16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                        const int16_t *coefB) {
  Yuv10ToRgb<true, 255>(dst, PackedReader<UYVY, uint16_t>{src}, count, coefA, coefB);
}

void YUV422_10Bit_2_RGB64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv10ToRgb<false, 0xFC00>(dst, PlanarReader{srcY, srcU, srcV}, count, coefA, coefB);
}

void YUV422_10Bit_2_BGR64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv10ToRgb<true, 0xFC00>(dst, PlanarReader{srcY, srcU, srcV}, count, coefA, coefB);
}

void YUV422_10Bit_2_RGB32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv10ToRgb<false, 255>(dst, PlanarReader{srcY, srcU, srcV}, count, coefA, coefB);
}

void YUV422_10Bit_2_BGR32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                              const uint16_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv10ToRgb<true, 255>(dst, PlanarReader{srcY, srcU, srcV}, count, coefA, coefB);
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
// RepackRgb<source samples, destination samples, shift, swap>: 16 to 8 bits
// keeps the top byte, 8 to 16 bits moves a byte up, 16 to 10 bits keeps the
// 10 significant bits.

void RGB64_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<4, 4, -8, true>(dst, src, count);
}

void BGR32_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<4, 4, 8, true>(dst, src, count);
}

void RGB64_SwapRB_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<4, 4, 0, true>(dst, src, count);
}

// The three components copied; the added alpha is fully opaque (0xFFFF).
void RGB48_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, false>(dst, src, count, ConstAlpha<uint16_t>{0xFFFF});
}

void RGB48_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, true>(dst, src, count, ConstAlpha<uint16_t>{0xFFFF});
}

void RGB24_2_RGB48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 3, 8, false>(dst, src, count);
}

void RGB24_2_BGR48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 3, 8, true>(dst, src, count);
}

void RGB24_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 4, 8, false>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

void RGB24_2_BGR64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 4, 8, true>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

void RGB24_Key_2_RGB64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRgb<3, 4, 8, false>(dst, src, count, Key16{key});
}

void RGB24_Key_2_BGR64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRgb<3, 4, 8, true>(dst, src, count, Key16{key});
}

// The result of RGB24_2_RGB48_Row, nine samples (three pixels) per step and
// the remaining pixels one at a time.
void RGB24_2_RGB48_Expand_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  const Index n = count;
  Index i = 0;
  for (; i + 3 <= n; i += 3) {
    for (Index k = 3 * i; k < 3 * i + 9; ++k) Store(dst, k, ShiftBy<8>(Load(src, k)));
  }
  for (; i < n; ++i) RepackPixel<3, 3, 8, false>(dst, src, i, NoAlpha{});
}

// Each component reduced to its 10 significant bits, order kept.
void RGB48_2_RGB30_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 3, -6, false>(dst, src, count);
}

void RGB48_2_BGR24_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 3, -8, true>(dst, src, count);
}

void RGB48_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, -8, false>(dst, src, count, ConstAlpha<uint8_t>{255});
}

void RGB48_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, -8, true>(dst, src, count, ConstAlpha<uint8_t>{255});
}

void RGB48_2_RGB64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, false>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

void RGB48_2_BGR64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, true>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

}  // namespace tqcs::portable
