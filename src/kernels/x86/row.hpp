// Small load, store and row-loop helpers for the SIMD tiers. Private to
// src/kernels/{sse2,ssse3,sse41}: portable units never include it.
//
// Everything here has internal linkage (an unnamed namespace), so each unit
// keeps its own copy compiled with its own instruction set: an SSSE3 unit's
// copy can never be linked into an SSE2 path.
//
// The shape of every row kernel (x86/in_blocks.hpp runs it):
//   1. a main body over whole blocks of pixels, with unaligned loads and
//      stores that stay inside the block's own bytes;
//   2. the remaining pixels (fewer than a block, or the pairs a kernel must
//      leave to its last-pair rule) handed to the portable routine of the
//      same slot at the pixel where the body stopped.
// No load or store ever touches a byte outside the caller's row, even inside
// the same page: the body stops where the next whole block would need one
// byte more than the row holds.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tqcs::x86 {
namespace {

inline __m128i Load(const void *p) { return _mm_loadu_si128(static_cast<const __m128i *>(p)); }
inline void Store(void *p, __m128i v) { _mm_storeu_si128(static_cast<__m128i *>(p), v); }
// The low 8 bytes, the rest zero.
inline __m128i Load64(const void *p) { return _mm_loadl_epi64(static_cast<const __m128i *>(p)); }
inline void Store64(void *p, __m128i v) { _mm_storel_epi64(static_cast<__m128i *>(p), v); }
// The high 8 bytes.
inline void StoreHigh64(void *p, __m128i v) {
  _mm_storeh_pi(static_cast<__m64 *>(p), _mm_castsi128_ps(v));
}
// 4 bytes in lane 0, the rest zero.
inline __m128i Load32(const void *p) {
  int32_t v;
  std::memcpy(&v, p, sizeof v);
  return _mm_cvtsi32_si128(v);
}
inline void Store32(void *p, __m128i v) {
  const int32_t s = _mm_cvtsi128_si32(v);
  std::memcpy(p, &s, sizeof s);
}

// The same 32-bit or 64-bit value in every lane; 0x00FF in every 16-bit lane.
inline __m128i Every32(uint32_t v) { return _mm_set1_epi32(static_cast<int>(v)); }
inline __m128i Every64(uint64_t v) { return _mm_set1_epi64x(static_cast<long long>(v)); }
inline __m128i LowBytes16() { return _mm_set1_epi16(0x00FF); }

// The mean of a and b per byte, (a + b + kRound) >> 1.
template <int kRound>
inline __m128i Mean(__m128i a, __m128i b) {
  const __m128i up = _mm_avg_epu8(a, b);  // (a + b + 1) >> 1
  if constexpr (kRound == 1) return up;
  return _mm_sub_epi8(up, _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1)));
}

// Byte pointer arithmetic for rows of any sample type.
template <class T>
inline T *Advance(T *p, int64_t bytes) {
  using Byte = std::conditional_t<std::is_const_v<T>, const uint8_t, uint8_t>;
  return reinterpret_cast<T *>(reinterpret_cast<Byte *>(p) + bytes);
}

// Neighbouring bytes exchanged (the two bytes of every 16-bit lane).
inline __m128i SwapBytes(__m128i s) {
  return _mm_or_si128(_mm_srli_epi16(s, 8), _mm_slli_epi16(s, 8));
}

// 8 pairs of planar 4:2:2 samples in 16-bit lanes (luma y[0], y[1]; chroma
// u, v) as 32 samples of packed pairs in out[0..3]: Y0 U Y1 V, or U Y0 V Y1
// when kChromaFirst.
template <bool kChromaFirst>
inline void InterleavePairs(const __m128i y[2], __m128i u, __m128i v, __m128i out[4]) {
  const __m128i uv[2] = {_mm_unpacklo_epi16(u, v), _mm_unpackhi_epi16(u, v)};
  for (int k = 0; k < 2; ++k) {
    const __m128i first = kChromaFirst ? uv[k] : y[k], second = kChromaFirst ? y[k] : uv[k];
    out[2 * k] = _mm_unpacklo_epi16(first, second);
    out[2 * k + 1] = _mm_unpackhi_epi16(first, second);
  }
}

// A depth change of every 16-bit lane: left by kShift bits when positive,
// right (logical) when negative.
template <int kShift>
inline __m128i ShiftWords(__m128i v) {
  if constexpr (kShift > 0) {
    return _mm_slli_epi16(v, kShift);
  } else if constexpr (kShift < 0) {
    return _mm_srli_epi16(v, -kShift);
  } else {
    return v;
  }
}

// The number of whole blocks of kBlock units in `count` units (0 for counts
// below one block, and for negative counts).
template <int kBlock>
inline int32_t WholeBlocks(int32_t count) {
  return count >= kBlock ? count / kBlock : 0;
}

}  // namespace
}  // namespace tqcs::x86
