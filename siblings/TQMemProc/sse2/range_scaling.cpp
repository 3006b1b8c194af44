// The SSE2 tier's range scaling (the x86-64 baseline: no flags beyond the
// project's own), 16 bytes a block.
#include <emmintrin.h>

#include "row_slots.hpp"
#include "x86/row.hpp"

namespace tqmp::sse2 {
namespace {

using x86::Load;
using x86::Store;

// Range scaling on 16 bytes. Exact for every int16 gain and offset: with
// m = offset + 16,
//   (in * gain + 512 * m) >> 14 == (floor(in * gain / 512) + m) >> 5,
// the floor is the high half of (in << 7) * gain (within +-16320), the
// offsets hold m saturated to int16 and the sum saturates only where the clamp
// to 0..255 (the unsigned pack) gives the same byte as the exact sum.
struct Vec128 {
  using T = __m128i;
  static constexpr int kBytes = 16;
  static T Splat(int16_t c) { return _mm_set1_epi16(c); }
  static T Cycle(const int16_t *c) {
    return _mm_setr_epi16(c[0], c[1], c[2], c[3], c[0], c[1], c[2], c[3]);
  }
  static T Raise16(T offset) { return _mm_adds_epi16(offset, _mm_set1_epi16(16)); }
  static void Scale(uint8_t *d, const uint8_t *s, T gain, T offset) {
    const __m128i in = Load(s), zero = _mm_setzero_si128();
    const auto half = [&](__m128i words) {
      return _mm_srai_epi16(_mm_adds_epi16(_mm_mulhi_epi16(_mm_slli_epi16(words, 7), gain), offset),
                            5);
    };
    Store(d,
          _mm_packus_epi16(half(_mm_unpacklo_epi8(in, zero)), half(_mm_unpackhi_epi8(in, zero))));
  }
};

}  // namespace

TQMP_SCALING_ROUTINES(Vec128)

}  // namespace tqmp::sse2
