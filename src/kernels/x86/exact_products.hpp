// Exact Q14 products in 16-bit lanes for the SIMD tiers. Private to
// src/kernels/{sse2,ssse3,sse41}; internal linkage like row.hpp.
//
// The portable kernels compute floor(x * c / 2^s), with or without 2^(s-1)
// added first, on 32-bit ints. For a small x (a centred 8-bit sample, or the
// sum of two) and any int16 weight c, the same value comes out of one 16-bit
// multiply when x is scaled by 2^(16 - s) first: the high half of a 16 by 16
// product is floor(product / 2^16) exactly. The sum of two centred samples
// at a shift of 15 is the sum of their scaled inputs. Where two products are
// summed before the shift, _mm_madd_epi16 forms the exact 32-bit sum of the
// same scaled inputs. The rounding forms take the truncating one a bit
// further and halve it. tests/kernels/exact_products_test.cpp proves each
// form over the kernels' whole input range and every int16 weight.
#pragma once

#include <emmintrin.h>

namespace tqcs::x86 {
namespace {

// An 8-bit sample x held in the high byte of a 16-bit lane (low byte zero)
// as (x - 128) * 256: its top bit flipped.
inline __m128i Centred256(__m128i high) { return _mm_xor_si128(high, _mm_set1_epi16(-0x8000)); }

// x * 2^(16 - kShift) per 16-bit lane from x * 256 (|x| <= 128): the scaled
// input of the forms below for a shift of kShift (13 to 15).
template <int kShift>
inline __m128i ScaleFrom256(__m128i x256) {
  static_assert(kShift >= 9 && kShift <= 16);
  return _mm_srai_epi16(x256, kShift - 8);
}

// floor(scaled * c / 2^16) per 16-bit lane: floor(x * c / 2^s) of the
// unscaled x.
inline __m128i ProductHigh(__m128i scaled, __m128i c) { return _mm_mulhi_epi16(scaled, c); }

// floor((x0 * c0 + x1 * c1) / 2^16) per 32-bit lane holding the scaled pair
// (x0, x1) and the weights (c0, c1): the two-product form of ProductHigh, in
// 32-bit lanes. The madd sum is exact for scaled inputs of at most 2^15 - 1
// in magnitude.
inline __m128i PairSumHigh(__m128i scaled, __m128i c) {
  return _mm_srai_epi32(_mm_madd_epi16(scaled, c), 16);
}

// Rounding at a shift of s, plus a value y added after: with q the
// truncating form at a shift of s - 1 (inputs scaled for s - 1),
// floor((x c + 2^(s-1)) / 2^s) + y is (q + 2y + 1) >> 1. Twice y plus one:
inline __m128i TwicePlusOne(__m128i y) {
  return _mm_add_epi16(_mm_add_epi16(y, y), _mm_set1_epi16(1));
}
// and the halving of q + 2y + 1.
inline __m128i Halve(__m128i sum) { return _mm_srai_epi16(sum, 1); }

}  // namespace
}  // namespace tqcs::x86
