// Deep-colour RGB repacks, SSE2 tier: between 8-bit and 16-bit RGB layouts
// of three and four components, with depth changes and swaps of the first
// and third component. Blocks of eight pixels (sixteen where three samples
// stay three); the pixels after the last whole block go to the portable
// routine.
#include "kernels/kernel_slots.hpp"
#include "kernels/sse2/deep_pixels.hpp"
#include "kernels/x86/in_blocks.hpp"

namespace tqcs::sse2 {
namespace {

using x86::ShiftWords;

// Components 0 and 2 of every pixel exchanged.
inline __m128i SwapRB(__m128i v) {
  v = _mm_shufflelo_epi16(v, _MM_SHUFFLE(3, 0, 1, 2));
  return _mm_shufflehi_epi16(v, _MM_SHUFFLE(3, 0, 1, 2));
}

// Samples 0 and 2 of sixteen 3-byte pixels (three vectors) exchanged: a byte
// takes the one two places right (sample 0), two places left (sample 2) or
// keeps its own (sample 1); each vector starts at its own pixel phase.
inline void SwapRB3Bytes(__m128i v[3]) {
  const __m128i m0 = _mm_setr_epi8(-1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1);
  const __m128i m1 = _mm_slli_si128(m0, 1), m2 = _mm_slli_si128(m0, 2);
  const __m128i a = v[0], b = v[1], c = v[2];
  // own where `mine`, the byte two right where `r`, two left where `l`.
  auto pick = [](__m128i own, __m128i right, __m128i left, __m128i mine, __m128i r, __m128i l) {
    return _mm_or_si128(_mm_and_si128(own, mine),
                        _mm_or_si128(_mm_and_si128(right, r), _mm_and_si128(left, l)));
  };
  // Byte 0 of a is sample 0, of b sample 1, of c sample 2.
  v[0] = pick(a, _mm_or_si128(_mm_srli_si128(a, 2), _mm_slli_si128(b, 14)), _mm_slli_si128(a, 2),
              m1, m0, m2);
  v[1] = pick(b, _mm_or_si128(_mm_srli_si128(b, 2), _mm_slli_si128(c, 14)),
              _mm_or_si128(_mm_slli_si128(b, 2), _mm_srli_si128(a, 14)), m0, m2, m1);
  v[2] = pick(c, _mm_srli_si128(c, 2), _mm_or_si128(_mm_slli_si128(c, 2), _mm_srli_si128(b, 14)),
              m2, m1, m0);
}

// Sixteen 3-sample pixels to 3-sample pixels (48 samples): a depth shift,
// and the exchange of samples 0 and 2 (done on bytes; every swapping kernel
// of this kind has an 8-bit side). Each vector is read before the bytes it
// covers are stored, so 16-bit to 16-bit runs in place.
template <int kShift, bool kSwap, class Out, class In>
inline void Repack48(Out *dst, const In *src) {
  if constexpr (sizeof(In) == 2 && sizeof(Out) == 2) {
    static_assert(!kSwap);
    for (int j = 0; j < 6; ++j) Store(dst + 8 * j, ShiftWords<kShift>(Load(src + 8 * j)));
  } else {
    static_assert(sizeof(In) != sizeof(Out) && kShift == (sizeof(In) == 1 ? 8 : -8));
    __m128i v[3];
    for (int j = 0; j < 3; ++j) {
      if constexpr (sizeof(In) == 1) {
        v[j] = Load(src + 16 * j);
      } else {
        v[j] = _mm_packus_epi16(_mm_srli_epi16(Load(src + 16 * j), 8),
                                _mm_srli_epi16(Load(src + 16 * j + 8), 8));
      }
    }
    if constexpr (kSwap) SwapRB3Bytes(v);
    const __m128i zero = _mm_setzero_si128();
    for (int j = 0; j < 3; ++j) {
      if constexpr (sizeof(Out) == 1) {
        Store(dst + 16 * j, v[j]);
      } else {  // a byte under a zero byte: its value << 8
        Store(dst + 16 * j, _mm_unpacklo_epi8(zero, v[j]));
        Store(dst + 16 * j + 8, _mm_unpackhi_epi8(zero, v[j]));
      }
    }
  }
}

// ------------------------------------------------------------ alpha sources
// Each gives, for the block at pixel i, the alpha words (words 3 and 7 of
// each vector, the rest zero) already at the destination depth.

struct SourceAlpha {};  // a four-sample source keeps its own fourth sample

struct ConstAlpha {
  __m128i words;
  explicit ConstAlpha(uint16_t a) : words(Words(0, 0, 0, static_cast<short>(a))) {}
  void Get(__m128i a[4]) const {
    for (int j = 0; j < 4; ++j) a[j] = words;
  }
};

// A key plane's bytes moved up to 16 bits.
struct KeyAlpha16 {
  const uint8_t *key;
  void Get(__m128i a[4]) const {
    const __m128i zero = _mm_setzero_si128();
    const __m128i k = _mm_unpacklo_epi8(zero, Load64(key));  // k << 8, eight words
    const __m128i lo = _mm_unpacklo_epi16(zero, k), hi = _mm_unpackhi_epi16(zero, k);
    a[0] = _mm_unpacklo_epi32(zero, lo);
    a[1] = _mm_unpackhi_epi32(zero, lo);
    a[2] = _mm_unpacklo_epi32(zero, hi);
    a[3] = _mm_unpackhi_epi32(zero, hi);
  }
};

// One block of a repack (see portable RepackRgb): sixteen pixels where three
// samples stay three, else eight.
template <int kIn, int kOut>
constexpr int kRepackBlock = kIn == 3 && kOut == 3 ? 16 : kBlock;

template <int kIn, int kOut, int kShift, bool kSwap, class Out, class In, class Alpha>
inline void RepackBlock(Out *dst, const In *src, const Alpha &alpha) {
  if constexpr (kRepackBlock<kIn, kOut> == 16) {
    Repack48<kShift, kSwap>(dst, src);
  } else {
    Pixels8 p = Read8<kIn>(src);
    if constexpr (kOut == 4 && kIn == 3) {
      __m128i a[4];
      alpha.Get(a);
      for (int j = 0; j < 4; ++j) p.v[j] = _mm_or_si128(Colour(ShiftWords<kShift>(p.v[j])), a[j]);
    } else {
      for (auto &v : p.v) v = ShiftWords<kShift>(v);
    }
    if constexpr (kSwap) {
      for (auto &v : p.v) v = SwapRB(v);
    }
    Write8<kOut>(dst, p);
  }
}

// A repack slot of kIn samples in, kOut out.
template <K kSlot, int kIn, int kOut, int kShift, bool kSwap, class Out, class In,
          class Alpha = SourceAlpha>
inline void Repack(Out *dst, const In *src, int32_t count, const Alpha &alpha = {}) {
  x86::InBlocks<kSlot, kRepackBlock<kIn, kOut>>(
      [&](Out *d, const In *s) { RepackBlock<kIn, kOut, kShift, kSwap>(d, s, alpha); }, dst, src,
      count);
}

template <K kSlot, bool kSwap>
inline void RepackKey(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  x86::InBlocks<kSlot, kBlock>(
      [](uint16_t *d, const uint8_t *s, const uint8_t *k) {
        RepackBlock<3, 4, 8, kSwap>(d, s, KeyAlpha16{k});
      },
      dst, src, key, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---------------------------------------------------------------- repacks

void sse2::RGB64_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB64_2_BGR32_Row, 4, 4, -8, true>(dst, src, count);
}

void sse2::BGR32_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<K::BGR32_2_RGB64_Row, 4, 4, 8, true>(dst, src, count);
}

void sse2::RGB64_SwapRB_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB64_SwapRB_Row, 4, 4, 0, true>(dst, src, count);
}

void sse2::RGB48_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_RGB64_Row, 3, 4, 0, false>(dst, src, count, ConstAlpha{0xFFFF});
}

void sse2::RGB48_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_BGR64_Row, 3, 4, 0, true>(dst, src, count, ConstAlpha{0xFFFF});
}

void sse2::RGB24_2_RGB48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<K::RGB24_2_RGB48_Row, 3, 3, 8, false>(dst, src, count);
}

void sse2::RGB24_2_BGR48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<K::RGB24_2_BGR48_Row, 3, 3, 8, true>(dst, src, count);
}

void sse2::RGB24_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<K::RGB24_2_RGB64_Row, 3, 4, 8, false>(dst, src, count, ConstAlpha{0xFFA0});
}

void sse2::RGB24_2_BGR64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<K::RGB24_2_BGR64_Row, 3, 4, 8, true>(dst, src, count, ConstAlpha{0xFFA0});
}

void sse2::RGB24_Key_2_RGB64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  RepackKey<K::RGB24_Key_2_RGB64_Row, false>(dst, src, key, count);
}

void sse2::RGB24_Key_2_BGR64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  RepackKey<K::RGB24_Key_2_BGR64_Row, true>(dst, src, key, count);
}

void sse2::RGB48_2_RGB30_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_RGB30_Row, 3, 3, -6, false>(dst, src, count);
}

void sse2::RGB48_2_BGR24_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_BGR24_Row, 3, 3, -8, true>(dst, src, count);
}

void sse2::RGB48_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_RGB32_Row, 3, 4, -8, false>(dst, src, count, ConstAlpha{255});
}

void sse2::RGB48_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_BGR32_Row, 3, 4, -8, true>(dst, src, count, ConstAlpha{255});
}

void sse2::RGB48_2_RGB64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_RGB64_Opaque_Row, 3, 4, 0, false>(dst, src, count, ConstAlpha{0xFFA0});
}

void sse2::RGB48_2_BGR64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<K::RGB48_2_BGR64_Opaque_Row, 3, 4, 0, true>(dst, src, count, ConstAlpha{0xFFA0});
}

}  // namespace tqcs
