// Deep-colour YUV to RGB, SSE2 tier: 10-bit 4:2:2 (packed or planar) to
// 8-bit or 16-bit RGB, and 8-bit 4:1:1 to RGB32, which shares the chroma
// weights and the four-component store. The last pair (or group) of a row
// is always left to the portable routine, which applies its own rule to the
// row's end.
#include "kernels/kernel_slots.hpp"
#include "kernels/sse2/deep_pixels.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Load32;

// Centred chroma (-512..511, or -128..127) times an int16 weight fits
// _mm_madd_epi16 and a sum of two such products int32; the deltas after
// >> 14 are below 2^12 and Y + delta fits int16, so packs are exact and the
// clamp is done on words.

// The chroma weights as madd rows over interleaved U, V words (Rv reads V,
// Bu reads U, G reads both).
struct RgbWeights {
  __m128i r, g, b;
  RgbWeights(const int16_t *coefA, const int16_t *coefB)
      : r(Words(0, coefA[0], 0, coefA[0])),
        g(Words(coefB[0], coefA[1], coefB[0], coefA[1])),
        b(Words(coefB[1], 0, coefB[1], 0)) {}
};

// The delta of one colour for eight pixels in pixel order, from centred
// interleaved chroma: even holds each pixel pair's even pixel's U, V, odd its
// odd pixel's (four pairs).
inline __m128i Delta8(__m128i even, __m128i odd, __m128i w) {
  const __m128i round = _mm_set1_epi32(8192);
  const __m128i de = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(even, w), round), 14);
  const __m128i dd = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(odd, w), round), 14);
  return _mm_packs_epi32(_mm_unpacklo_epi32(de, dd), _mm_unpackhi_epi32(de, dd));
}

// Eight pixels' R, G, B words and the alpha words to four-component pixels,
// component 0 B when kBgr. 16-bit outputs are stored as they are, 8-bit ones
// through the unsigned saturating pack.
template <bool kBgr, class Out>
inline void StoreRgba8(Out *dst, __m128i r, __m128i g, __m128i b, __m128i a) {
  const __m128i c0 = kBgr ? b : r, c2 = kBgr ? r : b;
  const __m128i lo01 = _mm_unpacklo_epi16(c0, g), lo23 = _mm_unpacklo_epi16(c2, a);
  const __m128i hi01 = _mm_unpackhi_epi16(c0, g), hi23 = _mm_unpackhi_epi16(c2, a);
  Write8<4>(dst, Pixels8{{_mm_unpacklo_epi32(lo01, lo23), _mm_unpackhi_epi32(lo01, lo23),
                          _mm_unpacklo_epi32(hi01, hi23), _mm_unpackhi_epi32(hi01, hi23)}});
}

// Four pairs of a 4:2:2 row as 10-bit values: y the eight luma samples, c the
// pairs' U, V interleaved, next the same for the four pairs after them.
struct Pairs4 {
  __m128i y, c, next;
};

inline __m128i Low16(__m128i v) { return _mm_and_si128(v, _mm_set1_epi32(0xFFFF)); }
inline __m128i High16(__m128i v) { return _mm_srli_epi32(v, 16); }

// Packed 16-bit pairs; Y sits in the low word of each 32-bit lane for YUYV,
// in the high word for UYVY.
template <bool kUyvy>
struct PackedPairs16 {
  const uint16_t *src;
  static __m128i Luma(__m128i v) { return kUyvy ? High16(v) : Low16(v); }
  static __m128i Chroma(__m128i v) { return kUyvy ? Low16(v) : High16(v); }
  Pairs4 At(Index p) const {
    const __m128i a = _mm_srli_epi16(Load(src + 4 * p), 6);
    const __m128i b = _mm_srli_epi16(Load(src + 4 * p + 8), 6);
    const __m128i n = _mm_srli_epi16(Load64(src + 4 * p + 16), 6);  // pair p + 4
    const __m128i c = _mm_packs_epi32(Chroma(a), Chroma(b));
    const __m128i c4 = _mm_packs_epi32(Chroma(n), Chroma(n));
    return {_mm_packs_epi32(Luma(a), Luma(b)), c,
            _mm_or_si128(_mm_srli_si128(c, 4), _mm_slli_si128(c4, 12))};
  }
};

struct PlanarPairs16 {
  const uint16_t *y, *u, *v;
  static __m128i Chroma(const uint16_t *u, const uint16_t *v) {
    return _mm_srli_epi16(_mm_unpacklo_epi16(Load64(u), Load64(v)), 6);
  }
  Pairs4 At(Index p) const {
    return {_mm_srli_epi16(Load(y + 2 * p), 6), Chroma(u + p, v + p), Chroma(u + p + 1, v + p + 1)};
  }
};

// The whole blocks of four pairs that have a next pair inside the row (the
// last pair is always left to the portable routine); returns the pixels done.
// Output samples: 16-bit (value << 6, alpha kAlpha) or bytes (value >> 2,
// alpha 255).
template <bool kBgr, uint16_t kAlpha, class Out, class Reader>
int32_t Yuv10ToRgbBlocks(Out *dst, Reader src, int32_t count, const int16_t *coefA,
                         const int16_t *coefB) {
  const Index pairs = count / 2;
  if (pairs < 5) return 0;
  const RgbWeights w(coefA, coefB);
  const __m128i half = _mm_set1_epi16(512), top = _mm_set1_epi16(1023), zero = _mm_setzero_si128();
  const __m128i alpha = _mm_set1_epi16(static_cast<short>(kAlpha));
  Index p = 0;
  for (; p + 5 <= pairs; p += 4) {
    const Pairs4 s = src.At(p);
    const __m128i even = _mm_sub_epi16(s.c, half);
    const __m128i odd = _mm_sub_epi16(_mm_avg_epu16(s.c, s.next), half);
    __m128i rgb[3] = {Delta8(even, odd, w.r), Delta8(even, odd, w.g), Delta8(even, odd, w.b)};
    for (auto &v : rgb) {
      v = _mm_min_epi16(_mm_max_epi16(_mm_add_epi16(s.y, v), zero), top);
      v = sizeof(Out) == 2 ? _mm_slli_epi16(v, 6) : _mm_srli_epi16(v, 2);
    }
    StoreRgba8<kBgr>(dst + 8 * p, rgb[0], rgb[1], rgb[2], alpha);
  }
  return static_cast<int32_t>(2 * p);
}

// Packed 16-bit 4:2:2 to RGB: the blocks, then the rest.
template <bool kBgr, uint16_t kAlpha, bool kUyvy, class Out>
void Packed16ToRgb(void (*tail)(Out *, const uint16_t *, int32_t, const int16_t *, const int16_t *),
                   Out *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                   const int16_t *coefB) {
  const int32_t done =
      Yuv10ToRgbBlocks<kBgr, kAlpha>(dst, PackedPairs16<kUyvy>{src}, count, coefA, coefB);
  tail(dst + Index{4} * done, src + Index{2} * done, count - done, coefA, coefB);
}

template <bool kBgr, uint16_t kAlpha, class Out>
void Planar10ToRgb(void (*tail)(Out *, const uint16_t *, const uint16_t *, const uint16_t *,
                                int32_t, const int16_t *, const int16_t *),
                   Out *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV,
                   int32_t count, const int16_t *coefA, const int16_t *coefB) {
  const int32_t done =
      Yuv10ToRgbBlocks<kBgr, kAlpha>(dst, PlanarPairs16{srcY, srcU, srcV}, count, coefA, coefB);
  tail(dst + Index{4} * done, srcY + done, srcU + done / 2, srcV + done / 2, count - done, coefA,
       coefB);
}

// (w . c + 8192) >> 14 of four pixels of centred interleaved chroma.
inline __m128i Delta4(__m128i c, __m128i w) {
  return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(c, w), _mm_set1_epi32(8192)), 14);
}

// 4:1:1 chroma of the four pixels of group j (c: U, V words of four groups;
// next: of the four after them): ((4 - k) a + k b + 2) >> 2 less the centre,
// the centre folded into the rounding term (4 x 128 is a multiple of 4).
template <int kJ>
inline __m128i Chroma411(__m128i c, __m128i next) {
  const __m128i a = _mm_shuffle_epi32(c, kJ * 0x55), b = _mm_shuffle_epi32(next, kJ * 0x55);
  const __m128i sum = _mm_add_epi16(_mm_mullo_epi16(a, _mm_setr_epi16(4, 4, 3, 3, 2, 2, 1, 1)),
                                    _mm_mullo_epi16(b, _mm_setr_epi16(0, 0, 1, 1, 2, 2, 3, 3)));
  return _mm_srai_epi16(_mm_add_epi16(sum, _mm_set1_epi16(2 - 4 * 128)), 2);
}

// 4:1:1 to RGB32: blocks of four groups (16 pixels) that have a next group
// inside the row (the last group is always left to the portable routine).
template <bool kBgr>
void Yuv411ToRgb32(void (*tail)(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                                int32_t, const int16_t *, const int16_t *),
                   uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                   int32_t count, const int16_t *coefA, const int16_t *coefB) {
  const Index groups = count / 4;
  Index g = 0;
  if (groups >= 5) {
    const RgbWeights w(coefA, coefB);
    const __m128i zero = _mm_setzero_si128(), alpha = _mm_set1_epi16(255);
    // U, V words of the four groups from `at`, interleaved.
    auto chroma = [&](Index at) {
      return _mm_unpacklo_epi8(_mm_unpacklo_epi8(Load32(srcU + at), Load32(srcV + at)), zero);
    };
    for (; g + 5 <= groups; g += 4) {
      const __m128i c = chroma(g), n = chroma(g + 1);
      const __m128i q[4] = {Chroma411<0>(c, n), Chroma411<1>(c, n), Chroma411<2>(c, n),
                            Chroma411<3>(c, n)};
      const __m128i y = Load(srcY + 4 * g);
      const __m128i ys[2] = {_mm_unpacklo_epi8(y, zero), _mm_unpackhi_epi8(y, zero)};
      for (int h = 0; h < 2; ++h) {
        auto colour = [&](__m128i wc) {
          return _mm_add_epi16(ys[h],
                               _mm_packs_epi32(Delta4(q[2 * h], wc), Delta4(q[2 * h + 1], wc)));
        };
        // Y + delta is within int16; the byte pack clamps it to 0..255.
        StoreRgba8<kBgr>(dst + 16 * g + 32 * h, colour(w.r), colour(w.g), colour(w.b), alpha);
      }
    }
  }
  tail(dst + 16 * g, srcY + 4 * g, srcU + g, srcV + g, count - static_cast<int32_t>(4 * g), coefA,
       coefB);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---------------------------------------------------------------- YUV to RGB
// 16-bit outputs carry the constant alpha 0xFFA0 (packed sources) or 0xFC00
// (planar sources); 8-bit outputs 255.

void sse2::YUYV16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 0xFFA0, false>(&portable::YUYV16_2_RGB64_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 0xFFA0, true>(&portable::UYVY16_2_RGB64_Row, dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 0xFFA0, false>(&portable::YUYV16_2_BGR64_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 0xFFA0, true>(&portable::UYVY16_2_BGR64_Row, dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 255, false>(&portable::YUYV16_2_RGB32_Row, dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 255, false>(&portable::YUYV16_2_BGR32_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 255, true>(&portable::UYVY16_2_RGB32_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 255, true>(&portable::UYVY16_2_BGR32_Row, dst, src, count, coefA, coefB);
}

void sse2::YUV422_10Bit_2_RGB64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<false, 0xFC00>(&portable::YUV422_10Bit_2_RGB64_Row, dst, srcY, srcU, srcV, count,
                               coefA, coefB);
}

void sse2::YUV422_10Bit_2_BGR64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<true, 0xFC00>(&portable::YUV422_10Bit_2_BGR64_Row, dst, srcY, srcU, srcV, count,
                              coefA, coefB);
}

void sse2::YUV422_10Bit_2_RGB32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<false, 255>(&portable::YUV422_10Bit_2_RGB32_Row, dst, srcY, srcU, srcV, count,
                            coefA, coefB);
}

void sse2::YUV422_10Bit_2_BGR32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<true, 255>(&portable::YUV422_10Bit_2_BGR32_Row, dst, srcY, srcU, srcV, count, coefA,
                           coefB);
}

void sse2::YUV411_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv411ToRgb32<false>(&portable::YUV411_2_RGB32_Row, dst, srcY, srcU, srcV, count, coefA, coefB);
}

void sse2::YUV411_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv411ToRgb32<true>(&portable::YUV411_2_BGR32_Row, dst, srcY, srcU, srcV, count, coefA, coefB);
}

}  // namespace tqcs
