// Blocks of eight deep-colour pixels in SSE2 registers, shared by the
// deep-colour units of this tier: two pixels to a vector, four words a pixel
// (component 0, 1, 2 and a fourth word for alpha or padding). Loads and
// stores cover only the block's own bytes. Internal linkage, as x86/row.hpp.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Load;
using x86::Load64;
using x86::Store;
using Index = std::ptrdiff_t;

constexpr int kBlock = 8;  // pixels per block

// Eight pixels, two to a vector, each pixel four words.
struct Pixels8 {
  __m128i v[4];
};

inline __m128i Words(short w0, short w1, short w2, short w3) {
  return _mm_setr_epi16(w0, w1, w2, w3, w0, w1, w2, w3);
}

// Words 0-2 of each pixel kept, word 3 cleared.
inline __m128i Colour(__m128i v) { return _mm_and_si128(v, Words(-1, -1, -1, 0)); }

// Twelve bytes (two 3-word pixels) in bytes 0-11 spread to two 4-word pixels;
// word 3 of each is left over from the neighbouring samples.
inline __m128i Spread3(__m128i p) { return _mm_unpacklo_epi64(p, _mm_srli_si128(p, 6)); }

// 48 bytes of 3-word pixels (three vectors) as eight 4-word pixels.
inline Pixels8 Spread3x8(__m128i a, __m128i b, __m128i c) {
  return {{Spread3(a), Spread3(_mm_or_si128(_mm_srli_si128(a, 12), _mm_slli_si128(b, 4))),
           Spread3(_mm_or_si128(_mm_srli_si128(b, 8), _mm_slli_si128(c, 8))),
           Spread3(_mm_srli_si128(c, 4))}};
}

// Eight 3-sample pixels (24 samples, 8 or 16 bits) as 24 words in memory
// order, values unshifted.
struct Words24 {
  __m128i v[3];
};

template <class In>
inline Words24 ReadWords24(const In *src) {
  if constexpr (sizeof(In) == 2) {
    return {{Load(src), Load(src + 8), Load(src + 16)}};
  } else {
    const __m128i zero = _mm_setzero_si128(), a = Load(src), b = Load64(src + 16);
    return {{_mm_unpacklo_epi8(a, zero), _mm_unpackhi_epi8(a, zero), _mm_unpacklo_epi8(b, zero)}};
  }
}

// Eight pixels of kStride samples (8 or 16 bits) as words, values unshifted.
template <int kStride, class In>
inline Pixels8 Read8(const In *src) {
  const __m128i zero = _mm_setzero_si128();
  if constexpr (kStride == 3 && sizeof(In) == 2) {
    // Each pair of pixels from its own load; the last load ends at the
    // block's end.
    return {{Spread3(Load(src)), Spread3(Load(src + 6)), Spread3(Load(src + 12)),
             Spread3(_mm_srli_si128(Load(src + 16), 4))}};
  } else if constexpr (kStride == 3) {
    const Words24 w = ReadWords24(src);
    return Spread3x8(w.v[0], w.v[1], w.v[2]);
  } else if constexpr (sizeof(In) == 2) {
    return {{Load(src), Load(src + 8), Load(src + 16), Load(src + 24)}};
  } else {
    const __m128i a = Load(src), b = Load(src + 16);
    return {{_mm_unpacklo_epi8(a, zero), _mm_unpackhi_epi8(a, zero), _mm_unpacklo_epi8(b, zero),
             _mm_unpackhi_epi8(b, zero)}};
  }
}

// Eight pixels of words to kStride samples; words bound for bytes are 0..255
// (or saturate there).
template <int kStride, class Out>
inline void Write8(Out *dst, const Pixels8 &p) {
  static_assert(kStride == 4, "3-sample rows are written by the stream path");
  if constexpr (sizeof(Out) == 2) {
    for (int j = 0; j < 4; ++j) Store(dst + 8 * j, p.v[j]);
  } else {
    Store(dst, _mm_packus_epi16(p.v[0], p.v[1]));
    Store(dst + 16, _mm_packus_epi16(p.v[2], p.v[3]));
  }
}

}  // namespace
}  // namespace tqcs::sse2
