// Deep-colour RGB to YUV, SSE2 tier: RGB (8-bit, or 16-bit carrying 10
// significant bits) to 16-bit YUV 4:2:2, packed or planar, in blocks of
// eight pixels; the pixels after the last whole block go to the portable
// routine.
#include "kernels/kernel_slots.hpp"
#include "kernels/sse2/deep_pixels.hpp"
#include "kernels/x86/in_blocks.hpp"

namespace tqcs::sse2 {
namespace {

using x86::ShiftWords;
using x86::Store64;

// Working values are the source bytes, or 16-bit samples >> 6 (0..1023), so
// every product fits _mm_madd_epi16 and every sum of three Q14 products
// (below 2^27) fits int32; after >> 14 (and the chroma offset) they fit int16,
// so the saturating pack is exact and the clamp is done on words.

// Lanes (a0 + a1, a2 + a3, b0 + b1, b2 + b3) of two madd results.
inline __m128i PairSums(__m128i a, __m128i b) {
  const __m128 fa = _mm_castsi128_ps(a), fb = _mm_castsi128_ps(b);
  return _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(2, 0, 2, 0))),
                       _mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(3, 1, 3, 1))));
}

// (w . c + 8192) >> 14 of four pixels (two vectors of two, word 3 holding 1
// against the weight 8192).
inline __m128i Weigh4(__m128i a, __m128i b, __m128i w) {
  return _mm_srai_epi32(PairSums(_mm_madd_epi16(a, w), _mm_madd_epi16(b, w)), 14);
}

// 0..2^kBits - 1, moved to the top of a 16-bit sample.
template <int kBits>
inline __m128i ClampUp(__m128i v) {
  v = _mm_min_epi16(_mm_max_epi16(v, _mm_setzero_si128()), _mm_set1_epi16((1 << kBits) - 1));
  return _mm_slli_epi16(v, 16 - kBits);
}

// The three weight rows: luma from elements 2-4 of coefY, U from 0-2 and V
// from 4-6 of coefUV, each with the rounding term.
struct YuvWeights {
  __m128i y, u, v;
  YuvWeights(const int16_t *cy, const int16_t *cuv)
      : y(Words(cy[2], cy[3], cy[4], 8192)),
        u(Words(cuv[0], cuv[1], cuv[2], 8192)),
        v(Words(cuv[4], cuv[5], cuv[6], 8192)) {}
};

// Eight pixels' outputs before the clamp: y the luma in pixel order, c the
// chroma of the four even pixels, U in words 0-3 and V in words 4-7.
struct Yuv8 {
  __m128i y, c;
};

template <int kStride, class In>
inline Yuv8 RgbToYuv8(const In *src, const YuvWeights &w) {
  constexpr int kBits = sizeof(In) == 1 ? 8 : 10;
  __m128i y, u, v;  // int32 results, four pixels a vector
  if constexpr (kStride == 4 && sizeof(In) == 1) {
    // 4-byte pixels stay 32-bit lanes: bytes 0 and 2 as one word pair, byte 1
    // with a 1 against the rounding term as another. No lanes to add.
    const __m128i b02 = _mm_set1_epi32(0x00FF00FF), one = _mm_set1_epi32(0x10000);
    const __m128i a = Load(src), b = Load(src + 16);
    const __m128i a02 = _mm_and_si128(a, b02), b02v = _mm_and_si128(b, b02);
    const __m128i a1 = _mm_or_si128(_mm_srli_epi32(_mm_slli_epi32(a, 16), 24), one);
    const __m128i b1 = _mm_or_si128(_mm_srli_epi32(_mm_slli_epi32(b, 16), 24), one);
    // Weights as (w0, w2) and (w1, 8192) word pairs.
    auto w02 = [](__m128i q) {
      return _mm_shufflehi_epi16(_mm_shufflelo_epi16(q, _MM_SHUFFLE(2, 0, 2, 0)),
                                 _MM_SHUFFLE(2, 0, 2, 0));
    };
    auto w1r = [](__m128i q) {
      return _mm_shufflehi_epi16(_mm_shufflelo_epi16(q, _MM_SHUFFLE(3, 1, 3, 1)),
                                 _MM_SHUFFLE(3, 1, 3, 1));
    };
    auto weigh = [&](__m128i c02, __m128i c1, __m128i q) {
      return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(c02, w02(q)), _mm_madd_epi16(c1, w1r(q))),
                            14);
    };
    y = _mm_packs_epi32(weigh(a02, a1, w.y), weigh(b02v, b1, w.y));
    auto even = [](__m128i x, __m128i z) {
      return _mm_castps_si128(
          _mm_shuffle_ps(_mm_castsi128_ps(x), _mm_castsi128_ps(z), _MM_SHUFFLE(2, 0, 2, 0)));
    };
    const __m128i e02 = even(a02, b02v), e1 = even(a1, b1);
    u = weigh(e02, e1, w.u);
    v = weigh(e02, e1, w.v);
  } else {
    Pixels8 p = Read8<kStride>(src);
    for (auto &q : p.v)
      q = _mm_or_si128(Colour(ShiftWords<(sizeof(In) == 1 ? 0 : -6)>(q)), Words(0, 0, 0, 1));
    y = _mm_packs_epi32(Weigh4(p.v[0], p.v[1], w.y), Weigh4(p.v[2], p.v[3], w.y));
    const __m128i even01 = _mm_unpacklo_epi64(p.v[0], p.v[1]),
                  even23 = _mm_unpacklo_epi64(p.v[2], p.v[3]);
    u = Weigh4(even01, even23, w.u);
    v = Weigh4(even01, even23, w.v);
  }
  return {y, _mm_add_epi16(_mm_packs_epi32(u, v), _mm_set1_epi16(1 << (kBits - 1)))};
}

// Packed 16-bit YUYV or UYVY: one block of eight pixels.
template <bool kUyvy, class In>
inline void StorePacked16(uint16_t *d, const Yuv8 &o) {
  if constexpr (sizeof(In) == 1) {
    // The byte pack is the clamp to 0..255; a byte under a zero byte is
    // its value << 8.
    const __m128i bytes = _mm_packus_epi16(o.y, o.c), zero = _mm_setzero_si128();
    const __m128i c = _mm_unpacklo_epi8(_mm_srli_si128(bytes, 8), _mm_srli_si128(bytes, 12));
    const __m128i yc = kUyvy ? _mm_unpacklo_epi8(c, bytes) : _mm_unpacklo_epi8(bytes, c);
    Store(d, _mm_unpacklo_epi8(zero, yc));
    Store(d + 8, _mm_unpackhi_epi8(zero, yc));
  } else {
    const __m128i y = ClampUp<10>(o.y), c = ClampUp<10>(o.c);
    const __m128i ci = _mm_unpacklo_epi16(c, _mm_srli_si128(c, 8));  // U0 V0 U1 V1 ...
    Store(d, kUyvy ? _mm_unpacklo_epi16(ci, y) : _mm_unpacklo_epi16(y, ci));
    Store(d + 8, kUyvy ? _mm_unpackhi_epi16(ci, y) : _mm_unpackhi_epi16(y, ci));
  }
}

// The weights are read only when a block runs.
template <K kSlot, int kStride, bool kUyvy, class In>
inline void RgbToPacked16(uint16_t *dst, const In *src, int32_t count, const int16_t *cy,
                          const int16_t *cuv) {
  x86::InBlocks<kSlot, kBlock>(x86::Prepare([=] {
                                 return [w = YuvWeights(cy, cuv)](uint16_t *d, const In *s) {
                                   StorePacked16<kUyvy, In>(d, RgbToYuv8<kStride>(s, w));
                                 };
                               }),
                               dst, src, count, cy, cuv);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---------------------------------------------------------------- RGB to YUV

void sse2::RGB48_2_YUYV16_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<K::RGB48_2_YUYV16_Row, 3, false>(dst, src, count, coefY, coefUV);
}

void sse2::RGB48_2_UYVY16_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<K::RGB48_2_UYVY16_Row, 3, true>(dst, src, count, coefY, coefUV);
}

void sse2::RGB24_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<K::RGB24_2_YUYV16_Row, 3, false>(dst, src, count, coefY, coefUV);
}

void sse2::RGB24_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<K::RGB24_2_UYVY16_Row, 3, true>(dst, src, count, coefY, coefUV);
}

void sse2::RGB32_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<K::RGB32_2_YUYV16_Row, 4, false>(dst, src, count, coefY, coefUV);
}

void sse2::RGB32_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<K::RGB32_2_UYVY16_Row, 4, true>(dst, src, count, coefY, coefUV);
}

void sse2::RGB48_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                 const uint16_t *src, int32_t count, const int16_t *coefY,
                                 const int16_t *coefUV) {
  x86::InBlocks<K::RGB48_2_YUV422_16_Row, kBlock>(x86::Prepare([=] {
                                                    return [w = YuvWeights(coefY, coefUV)](
                                                               uint16_t *y, uint16_t *u,
                                                               uint16_t *v, const uint16_t *s) {
                                                      const Yuv8 o = RgbToYuv8<3>(s, w);
                                                      const __m128i c = ClampUp<10>(o.c);
                                                      Store(y, ClampUp<10>(o.y));
                                                      Store64(u, c);
                                                      Store64(v, _mm_srli_si128(c, 8));
                                                    };
                                                  }),
                                                  dstY, dstU, dstV, src, count, coefY, coefUV);
}

}  // namespace tqcs
