// Deep-colour YUV to RGB, SSE2 tier: 10-bit 4:2:2 (packed or planar) to
// 8-bit or 16-bit RGB, and 8-bit 4:1:1 to RGB32, which shares the chroma
// weights and the four-component store. The last pair (or group) of a row
// is always left to the portable routine, which applies its own rule to the
// row's end.
#include <type_traits>

#include "kernels/kernel_slots.hpp"
#include "kernels/sse2/deep_pixels.hpp"
#include "kernels/x86/in_blocks.hpp"

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
  Pairs4 Read() const {
    const __m128i a = _mm_srli_epi16(Load(src), 6);
    const __m128i b = _mm_srli_epi16(Load(src + 8), 6);
    const __m128i n = _mm_srli_epi16(Load64(src + 16), 6);  // pair 4
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
  Pairs4 Read() const { return {_mm_srli_epi16(Load(y), 6), Chroma(u, v), Chroma(u + 1, v + 1)}; }
};

// Blocks of four pairs that have a next pair inside the row: the last pair
// (2 pixels) is always left to the portable routine. Output samples: 16-bit
// (value << 6, alpha kAlpha) or bytes (value >> 2, alpha 255). The body reads
// a block's source rows through reader(rows...); the weights (coefA, coefB,
// also among the slot's arguments) are read only when a block runs.
template <K kSlot, bool kBgr, uint16_t kAlpha, class Reader, class... A>
inline void Yuv10ToRgb(Reader reader, const int16_t *coefA, const int16_t *coefB, A... args) {
  x86::InBlocks<kSlot, kBlock, 2>(
      x86::Prepare([=] {
        return [reader, w = RgbWeights(coefA, coefB)](auto *d, auto... r) {
          using Out = std::remove_pointer_t<decltype(d)>;
          const __m128i half = _mm_set1_epi16(512), top = _mm_set1_epi16(1023);
          const __m128i zero = _mm_setzero_si128();
          const Pairs4 s = reader(r...).Read();
          const __m128i even = _mm_sub_epi16(s.c, half);
          const __m128i odd = _mm_sub_epi16(_mm_avg_epu16(s.c, s.next), half);
          __m128i rgb[3] = {Delta8(even, odd, w.r), Delta8(even, odd, w.g), Delta8(even, odd, w.b)};
          for (auto &v : rgb) {
            v = _mm_min_epi16(_mm_max_epi16(_mm_add_epi16(s.y, v), zero), top);
            v = sizeof(Out) == 2 ? _mm_slli_epi16(v, 6) : _mm_srli_epi16(v, 2);
          }
          StoreRgba8<kBgr>(d, rgb[0], rgb[1], rgb[2], _mm_set1_epi16(static_cast<short>(kAlpha)));
        };
      }),
      args...);
}

// Packed 16-bit 4:2:2 to RGB.
template <K kSlot, bool kBgr, uint16_t kAlpha, bool kUyvy, class Out>
inline void Packed16ToRgb(Out *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                          const int16_t *coefB) {
  Yuv10ToRgb<kSlot, kBgr, kAlpha>([](const uint16_t *s) { return PackedPairs16<kUyvy>{s}; }, coefA,
                                  coefB, dst, src, count, coefA, coefB);
}

template <K kSlot, bool kBgr, uint16_t kAlpha, class Out>
inline void Planar10ToRgb(Out *dst, const uint16_t *srcY, const uint16_t *srcU,
                          const uint16_t *srcV, int32_t count, const int16_t *coefA,
                          const int16_t *coefB) {
  Yuv10ToRgb<kSlot, kBgr, kAlpha>(
      [](const uint16_t *y, const uint16_t *u, const uint16_t *v) {
        return PlanarPairs16{y, u, v};
      },
      coefA, coefB, dst, srcY, srcU, srcV, count, coefA, coefB);
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
// inside the row; the last group (4 pixels) is always left to the portable
// routine. The weights are read only when a block runs.
template <K kSlot, bool kBgr>
inline void Yuv411ToRgb32(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                          const uint8_t *srcV, int32_t count, const int16_t *coefA,
                          const int16_t *coefB) {
  x86::InBlocks<kSlot, 16, 4>(
      x86::Prepare([=] {
        return [w = RgbWeights(coefA, coefB)](uint8_t *d, const uint8_t *y, const uint8_t *u,
                                              const uint8_t *v) {
          const __m128i zero = _mm_setzero_si128(), alpha = _mm_set1_epi16(255);
          // U, V words of the four groups from `at`, interleaved.
          auto chroma = [&](int at) {
            return _mm_unpacklo_epi8(_mm_unpacklo_epi8(Load32(u + at), Load32(v + at)), zero);
          };
          const __m128i c = chroma(0), n = chroma(1);
          const __m128i q[4] = {Chroma411<0>(c, n), Chroma411<1>(c, n), Chroma411<2>(c, n),
                                Chroma411<3>(c, n)};
          const __m128i luma = Load(y);
          const __m128i ys[2] = {_mm_unpacklo_epi8(luma, zero), _mm_unpackhi_epi8(luma, zero)};
          for (int h = 0; h < 2; ++h) {
            auto colour = [&](__m128i wc) {
              return _mm_add_epi16(ys[h],
                                   _mm_packs_epi32(Delta4(q[2 * h], wc), Delta4(q[2 * h + 1], wc)));
            };
            // Y + delta is within int16; the byte pack clamps it to 0..255.
            StoreRgba8<kBgr>(d + 32 * h, colour(w.r), colour(w.g), colour(w.b), alpha);
          }
        };
      }),
      dst, srcY, srcU, srcV, count, coefA, coefB);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---------------------------------------------------------------- YUV to RGB
// 16-bit outputs carry the constant alpha 0xFFA0 (packed sources) or 0xFC00
// (planar sources); 8-bit outputs 255.

void sse2::YUYV16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::YUYV16_2_RGB64_Row, false, 0xFFA0, false>(dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::UYVY16_2_RGB64_Row, false, 0xFFA0, true>(dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::YUYV16_2_BGR64_Row, true, 0xFFA0, false>(dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::UYVY16_2_BGR64_Row, true, 0xFFA0, true>(dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::YUYV16_2_RGB32_Row, false, 255, false>(dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::YUYV16_2_BGR32_Row, true, 255, false>(dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::UYVY16_2_RGB32_Row, false, 255, true>(dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<K::UYVY16_2_BGR32_Row, true, 255, true>(dst, src, count, coefA, coefB);
}

void sse2::YUV422_10Bit_2_RGB64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<K::YUV422_10Bit_2_RGB64_Row, false, 0xFC00>(dst, srcY, srcU, srcV, count, coefA,
                                                            coefB);
}

void sse2::YUV422_10Bit_2_BGR64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<K::YUV422_10Bit_2_BGR64_Row, true, 0xFC00>(dst, srcY, srcU, srcV, count, coefA,
                                                           coefB);
}

void sse2::YUV422_10Bit_2_RGB32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<K::YUV422_10Bit_2_RGB32_Row, false, 255>(dst, srcY, srcU, srcV, count, coefA,
                                                         coefB);
}

void sse2::YUV422_10Bit_2_BGR32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<K::YUV422_10Bit_2_BGR32_Row, true, 255>(dst, srcY, srcU, srcV, count, coefA, coefB);
}

void sse2::YUV411_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv411ToRgb32<K::YUV411_2_RGB32_Row, false>(dst, srcY, srcU, srcV, count, coefA, coefB);
}

void sse2::YUV411_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv411ToRgb32<K::YUV411_2_BGR32_Row, true>(dst, srcY, srcU, srcV, count, coefA, coefB);
}

}  // namespace tqcs
