// V210 blocks in SSE2, shared by the V210 row kernels and the SSE2 kernel
// object. A block is 8 words: 24 components of the row's U Y V Y stream
// (6 pairs, 12 pixels), three 16-bit lanes vectors of 8 components each.
// Internal linkage, SSE2 units only.
#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

constexpr int kV210BlockPairs = 6;
constexpr int kV210BlockBytes = 32;

// Exchanges the two 16-bit lanes of every 32-bit lane: U Y V Y <-> Y U Y V.
inline __m128i SwapPairs16(__m128i v) {
  return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xB1), 0xB1);
}

// Even and odd 16-bit lanes of two vectors, each packed into one vector.
// Exact for any 16-bit values: the lanes are sign-extended before the
// saturating pack.
inline void Split16(__m128i v0, __m128i v1, __m128i &even, __m128i &odd) {
  even = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(v0, 16), 16),
                         _mm_srai_epi32(_mm_slli_epi32(v1, 16), 16));
  odd = _mm_packs_epi32(_mm_srai_epi32(v0, 16), _mm_srai_epi32(v1, 16));
}

// Four words to two halves of three fields each: [a0 a1 a2 b0 b1 b2 0 0]
// and [c0 c1 c2 d0 d1 d2 0 0] in 16-bit lanes. Bits 30-31 are ignored.
inline void V210Fields(__m128i w, __m128i &first, __m128i &second) {
  const __m128i lo2 = _mm_or_si128(_mm_and_si128(w, _mm_set1_epi32(0x3FF)),
                                   _mm_and_si128(_mm_slli_epi32(w, 6), _mm_set1_epi32(0x3FF0000)));
  const __m128i hi = _mm_and_si128(_mm_srli_epi32(w, 20), _mm_set1_epi32(0x3FF));
  const __m128i r[2] = {_mm_unpacklo_epi32(lo2, hi), _mm_unpackhi_epi32(lo2, hi)};
  __m128i *out[2] = {&first, &second};
  for (int k = 0; k < 2; ++k)
    *out[k] = _mm_or_si128(_mm_move_epi64(r[k]), _mm_slli_si128(_mm_srli_si128(r[k], 8), 6));
}

// One block of 8 words to its 24 10-bit components, in stream order.
inline void LoadV210Block(const uint8_t *src, __m128i s[3]) {
  __m128i p[4];
  V210Fields(x86::Load(src), p[0], p[1]);
  V210Fields(x86::Load(src + 16), p[2], p[3]);
  s[0] = _mm_or_si128(p[0], _mm_slli_si128(p[1], 12));
  s[1] = _mm_or_si128(_mm_srli_si128(p[1], 4), _mm_slli_si128(p[2], 8));
  s[2] = _mm_or_si128(_mm_srli_si128(p[2], 8), _mm_slli_si128(p[3], 4));
}

// 24 stream components (each below 1024 / kScale, 16-bit lanes) to 8 words,
// every component multiplied by kScale (1, or 4 for 8-bit values).
//
// Each word's components are brought into one 64-bit lane, starting at the
// word's first component for even words and one component earlier for odd
// words, so that a pair of words covers exactly its own six components. One
// multiply-add per two words then makes c0 + (c1 << 10) and the upper part
// (c2 << 10) or c1 + (c2 << 10); the word is the first plus the second << 10.
template <int kScale>
inline void StoreV210Block(uint8_t *dst, const __m128i s[3]) {
  const __m128i x[4] = {
      _mm_unpacklo_epi64(s[0], _mm_srli_si128(s[0], 4)),
      _mm_unpacklo_epi64(_mm_or_si128(_mm_srli_si128(s[0], 12), _mm_slli_si128(s[1], 4)), s[1]),
      _mm_unpackhi_epi64(s[1], _mm_or_si128(_mm_srli_si128(s[1], 4), _mm_slli_si128(s[2], 12))),
      _mm_unpackhi_epi64(_mm_slli_si128(s[2], 4), s[2])};
  const __m128i weights =
      _mm_setr_epi16(kScale, 1024 * kScale, 1024 * kScale, 0, 0, kScale, kScale, 1024 * kScale);
  __m128i w[4];
  for (int k = 0; k < 4; ++k) {
    const __m128i m = _mm_madd_epi16(x[k], weights);
    w[k] = _mm_add_epi32(m, _mm_srli_epi64(m, 22));
  }
  for (int k = 0; k < 2; ++k) {
    x86::Store(dst + 16 * k,
               _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(w[2 * k]),
                                               _mm_castsi128_ps(w[2 * k + 1]), 0x88)));
  }
}

}  // namespace
}  // namespace tqcs::sse2
