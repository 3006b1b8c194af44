// The SSSE3 path (compiled with -mssse3 only): byte shuffles for channel
// extraction and the 4-to-3-byte copy; the pair swap and scaling are the SSE2
// path's (a shuffle gains nothing over their shifts and multiplies).
#include <tmmintrin.h>

#include "row_kernels.hpp"
#include "simd_rows.hpp"

namespace tqmp {
namespace ssse3 {

void ExtractChannelRow(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  if (channel < 0 || channel > 3) return portable::ExtractChannelRow(dst, src, count, channel);
  const __m128i m0 = ChannelToLane(channel, 0), m1 = ChannelToLane(channel, 1);
  const __m128i m2 = ChannelToLane(channel, 2), m3 = ChannelToLane(channel, 3);
  ByBlocks<16, 4, 1>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        Store(d, _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(Load(s), m0),
                                           _mm_shuffle_epi8(Load(s + 16), m1)),
                              _mm_or_si128(_mm_shuffle_epi8(Load(s + 32), m2),
                                           _mm_shuffle_epi8(Load(s + 48), m3))));
      },
      [&](uint8_t *d, const uint8_t *s, int32_t n) {
        portable::ExtractChannelRow(d, s, n, channel);
      });
}

void RGB32ToRGB24Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const __m128i drop = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  ByBlocks<16, 4, 3>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        const __m128i a = _mm_shuffle_epi8(Load(s), drop), b = _mm_shuffle_epi8(Load(s + 16), drop);
        const __m128i c = _mm_shuffle_epi8(Load(s + 32), drop);
        const __m128i e = _mm_shuffle_epi8(Load(s + 48), drop);
        StoreTwelves(d, a, b, c, e);
      },
      portable::RGB32ToRGB24Row);
}

}  // namespace ssse3
}  // namespace tqmp
