// The row shape shared by the SIMD paths: whole blocks from the start of the
// row, then a lower path's routine for what is left, from where the blocks
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

// The byte shuffle that moves byte `channel` of the four pixels of 16 bytes
// to their 32-bit lane `lane`, zeroing the rest.
inline __m128i ChannelToLane(int32_t channel, int lane) {
  int8_t m[16];
  for (int i = 0; i < 16; ++i)
    m[i] = i / 4 == lane ? static_cast<int8_t>(4 * (i % 4) + channel) : -1;
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(m));
}

// Range scaling over whole blocks of the vector type `V` (V::kBytes bytes a
// block; V::Cycle spreads four coefficients, V::Splat one; V::Scale scales a
// block with the offsets already raised by 16), the rest to the lower path.
template <class V, auto LowerRow, auto LowerRun>
struct Scaling {
  using T = typename V::T;

  static void Row(uint8_t *dst, const uint8_t *src, const int16_t *gain, const int16_t *offset,
                  int32_t bytes) {
    if (bytes < V::kBytes) return LowerRow(dst, src, gain, offset, bytes);
    Blocks(dst, src, V::Cycle(gain), V::Cycle(offset), bytes,
           [&](uint8_t *d, const uint8_t *s, int32_t n) { LowerRow(d, s, gain, offset, n); });
  }

  static void Run(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes) {
    Blocks(dst, src, V::Splat(gain), V::Splat(offset), bytes,
           [&](uint8_t *d, const uint8_t *s, int32_t n) { LowerRun(d, s, gain, offset, n); });
  }

  template <class Rest>
  static void Blocks(uint8_t *dst, const uint8_t *src, T gain, T offset, int32_t bytes, Rest rest) {
    const T raised = V::Raise16(offset);
    ByBlocks<V::kBytes, 1, 1>(
        dst, src, bytes, [&](uint8_t *d, const uint8_t *s) { V::Scale(d, s, gain, raised); }, rest);
  }
};

}  // namespace
}  // namespace tqmp
