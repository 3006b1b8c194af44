// Byte-shuffle 24/32-bit RGB repacks: one shuffle per 16-byte block.
#include <tmmintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::ssse3 {
namespace {

using x86::Load;
using x86::Store;

constexpr int8_t Z = -1;  // 0xFF: a zero byte

// Three bytes to four, alpha byte zero, for the OR of the alpha.
inline __m128i WidenSame() {
  return _mm_setr_epi8(0, 1, 2, Z, 3, 4, 5, Z, 6, 7, 8, Z, 9, 10, 11, Z);
}
inline __m128i WidenSwapped() {
  return _mm_setr_epi8(2, 1, 0, Z, 5, 4, 3, Z, 8, 7, 6, Z, 11, 10, 9, Z);
}
// The colour bytes reversed in 0-11, the four alpha bytes last.
inline __m128i NarrowSwapped() {
  return _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 3, 7, 11, 15);
}

// Sixteen 3-byte pixels to 32-bit pixels, a for the alpha bytes. With
// kStream the stores are non-temporal, dst must be 16-byte aligned, and the
// source a few blocks ahead is prefetched, never past `last` (the start of
// the row's last 48 bytes).
template <bool kSwap, bool kStream>
inline void RGB24ToRGB32(uint8_t *d, const uint8_t *s, __m128i a, const uint8_t *last = nullptr) {
  const __m128i widen = kSwap ? WidenSwapped() : WidenSame();
  if constexpr (kStream) {
    constexpr std::ptrdiff_t kAhead = 4 * 48;
    _mm_prefetch(reinterpret_cast<const char *>(last - s > kAhead ? s + kAhead : last),
                 _MM_HINT_NTA);
  }
  const __m128i l0 = Load(s), l1 = Load(s + 16), l2 = Load(s + 32);
  const __m128i g[4] = {l0, _mm_alignr_epi8(l1, l0, 12), _mm_alignr_epi8(l2, l1, 8),
                        _mm_srli_si128(l2, 4)};
  for (int k = 0; k < 4; ++k) {
    const __m128i x = _mm_or_si128(_mm_shuffle_epi8(g[k], widen), a);
    if constexpr (kStream) {
      _mm_stream_si128(reinterpret_cast<__m128i *>(d + 16 * k), x);
    } else {
      Store(d + 16 * k, x);
    }
  }
}

inline __m128i AlphaBytes(uint8_t alpha) {
  return _mm_set1_epi32(static_cast<int>(uint32_t{alpha} << 24));
}

inline void RGB32ToBGR24(uint8_t *d, const uint8_t *s) {
  const __m128i narrow = NarrowSwapped();
  __m128i c[4];
  for (int k = 0; k < 4; ++k) c[k] = _mm_shuffle_epi8(Load(s + 16 * k), narrow);
  // Each group's 12 colour bytes moved to the top, then joined with the
  // head of the next group; the alpha bytes fall out.
  Store(d, _mm_alignr_epi8(c[1], _mm_slli_si128(c[0], 4), 4));
  Store(d + 16, _mm_alignr_epi8(c[2], _mm_slli_si128(c[1], 4), 8));
  Store(d + 32, _mm_alignr_epi8(c[3], _mm_slli_si128(c[2], 4), 12));
}

}  // namespace
}  // namespace tqcs::ssse3

namespace tqcs {

// Non-temporal: the source is prefetched past the caches and the stores go
// around them, closed by a store fence. A destination that can reach 16-byte
// alignment on a pixel boundary gets there through the portable routine;
// one that cannot takes ordinary stores.
void ssse3::RGB24_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const __m128i a = AlphaBytes(alpha);
  const auto address = reinterpret_cast<uintptr_t>(dst);
  const auto head = static_cast<int32_t>((16 - address % 16) % 16 / 4);
  if (address % 4 != 0 || count < head + 16) {
    x86::InBlocks<K::RGB24_2_RGB32_Row, 16>(
        [&](uint8_t *d, const uint8_t *s) { RGB24ToRGB32<false, false>(d, s, a); }, dst, src, count,
        alpha);
    return;
  }
  const uint8_t *last = src + x86::RowBytes<K::RGB24_2_RGB32_Row>(1, count) - 48;
  x86::InBlocksAfter<K::RGB24_2_RGB32_Row, 16>(
      head, [&](uint8_t *d, const uint8_t *s) { RGB24ToRGB32<false, true>(d, s, a, last); }, dst,
      src, count, alpha);
  _mm_sfence();
}

void ssse3::RGB24_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const __m128i a = AlphaBytes(alpha);
  x86::InBlocks<K::RGB24_2_BGR32_Row, 16>(
      [&](uint8_t *d, const uint8_t *s) { RGB24ToRGB32<true, false>(d, s, a); }, dst, src, count,
      alpha);
}

void ssse3::RGB32_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  x86::InBlocks<K::RGB32_2_BGR24_Row, 16>(RGB32ToBGR24, dst, src, count);
}

}  // namespace tqcs
