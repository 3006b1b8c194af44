// Load, store and row-loop helpers for TQMemProc's SIMD tiers, the shape of
// every SIMD row routine: whole blocks from the start of the row, then the
// portable routine of the same slot for what is left, from where the blocks
// stopped. Internal linkage (an unnamed namespace): every unit keeps its own
// copy, compiled with its own instruction set only.
#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "row_slots.hpp"

namespace tqmp::x86 {
namespace {

// Runs `block(dst, src)` over the whole blocks of `N` items of a row of
// `count` items (In source and Out destination bytes each) and then
// `rest(dst, src, items left)`, the portable routine, when items are left. A block reads and writes
// only its own items, all of its reads before its writes, so rows that shrink
// in place stay intact.
template <int N, int In, int Out, class Block, class Rest>
inline void ByBlocks(uint8_t *dst, const uint8_t *src, int32_t count, Block block, Rest rest) {
  const int32_t whole = count >= N ? count - count % N : 0;
  for (int64_t i = 0; i < whole; i += N) block(dst + Out * i, src + In * i);
  if (whole < count) rest(dst + int64_t{Out} * whole, src + int64_t{In} * whole, count - whole);
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
// block with the offsets already raised by 16), the rest by the portable
// routines.
template <class V>
struct Scaling {
  using T = typename V::T;

  static void Row(uint8_t *dst, const uint8_t *src, const int16_t *gain, const int16_t *offset,
                  int32_t bytes) {
    // A row shorter than a block may take fewer than four coefficients: only
    // those it takes are read.
    if (bytes < V::kBytes) return portable::Scale_Row(dst, src, gain, offset, bytes);
    Blocks(dst, src, V::Cycle(gain), V::Cycle(offset), bytes,
           [&](uint8_t *d, const uint8_t *s, int32_t n) {
             portable::Scale_Row(d, s, gain, offset, n);
           });
  }

  static void Run(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes) {
    Blocks(dst, src, V::Splat(gain), V::Splat(offset), bytes,
           [&](uint8_t *d, const uint8_t *s, int32_t n) {
             portable::Scale_Run(d, s, gain, offset, n);
           });
  }

  template <class Rest>
  static void Blocks(uint8_t *dst, const uint8_t *src, T gain, T offset, int32_t bytes, Rest rest) {
    const T raised = V::Raise16(offset);
    ByBlocks<V::kBytes, 1, 1>(
        dst, src, bytes, [&](uint8_t *d, const uint8_t *s) { V::Scale(d, s, gain, raised); }, rest);
  }
};

}  // namespace
}  // namespace tqmp::x86

// A tier's two range-scaling routines, Scale_Row and Scale_Run, over whole
// blocks of the vector type V (see Scaling).
#define TQMP_SCALING_ROUTINES(V)                                                                  \
  void Scale_Row(uint8_t *dst, const uint8_t *src, const int16_t *gain, const int16_t *offset,    \
                 int32_t bytes) {                                                                 \
    ::tqmp::x86::Scaling<V>::Row(dst, src, gain, offset, bytes);                                  \
  }                                                                                               \
  void Scale_Run(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes) { \
    ::tqmp::x86::Scaling<V>::Run(dst, src, gain, offset, bytes);                                  \
  }
