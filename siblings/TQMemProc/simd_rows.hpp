// The row shape shared by the SIMD paths: whole blocks from the start of the
// row, then the portable routine for what is left, from where the blocks
// stopped. Internal linkage: every unit gets its own copy, compiled with its
// own flags only.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace tqmp {
namespace {

// Runs `block(dst, src)` over the whole blocks of `N` items of a row of
// `count` items (In source and Out destination bytes each) and then
// `rest(dst, src, items left)`. A block reads and writes only its own items,
// all of its reads before its writes, so rows that shrink in place stay
// intact.
template <int N, int In, int Out, class Block, class Rest>
inline void ByBlocks(uint8_t *dst, const uint8_t *src, int32_t count, Block block, Rest rest) {
  const int32_t whole = count >= N ? count - count % N : 0;
  for (int64_t i = 0; i < whole; i += N) block(dst + Out * i, src + In * i);
  rest(dst + int64_t{Out} * whole, src + int64_t{In} * whole, count - whole);
}

inline __m128i Load(const uint8_t *p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
}
inline void Store(uint8_t *p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }

// Four runs of twelve bytes (each at the bottom of its register, zeros above)
// stored as 48 consecutive bytes.
inline void StoreTwelves(uint8_t *d, __m128i a, __m128i b, __m128i c, __m128i e) {
  Store(d, _mm_or_si128(a, _mm_slli_si128(b, 12)));
  Store(d + 16, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
  Store(d + 32, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(e, 4)));
}

}  // namespace
}  // namespace tqmp
