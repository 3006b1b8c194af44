// Deep-colour YUV to RGB, portable tier: 10-bit 4:2:2 (packed or planar) to
// 8-bit or 16-bit RGB, and 8-bit 4:1:1 to RGB32, which shares the chroma
// weights and the four-component sink.
//
// Working values: an 8-bit sample is used as it is; a 16-bit sample holds a
// 10-bit value in bits 6-15 (value = sample >> 6, stored back as value << 6).
// 16-bit samples are read and written through memcpy, so no pointer needs any
// alignment.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

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

}  // namespace

// 16-bit outputs carry the constant alpha 0xFFA0 (packed sources) or 0xFC00
// (planar sources); 8-bit outputs 255. Kept as they stand for compatibility.
// See docs/compatibility.md.
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

}  // namespace tqcs::portable
