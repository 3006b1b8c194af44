// The SSSE3 tier's byte rearrangements (compiled with -mssse3 only): channel
// extraction and the 4-to-3-byte copy by byte shuffles, 16 pixels a block.
#include <tmmintrin.h>

#include "row_slots.hpp"
#include "x86/row.hpp"

namespace tqmp::ssse3 {

using x86::ByBlocks;
using x86::ChannelToLane;
using x86::Load;
using x86::Store;

void ExtractChannel_Row(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  if (channel < 0 || channel > 3) return portable::ExtractChannel_Row(dst, src, count, channel);
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
        portable::ExtractChannel_Row(d, s, n, channel);
      });
}

void RGB32_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const __m128i drop = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  ByBlocks<16, 4, 3>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        const __m128i a = _mm_shuffle_epi8(Load(s), drop), b = _mm_shuffle_epi8(Load(s + 16), drop);
        const __m128i c = _mm_shuffle_epi8(Load(s + 32), drop);
        const __m128i e = _mm_shuffle_epi8(Load(s + 48), drop);
        x86::StoreTwelves(d, a, b, c, e);
      },
      portable::RGB32_2_RGB24_Row);
}

}  // namespace tqmp::ssse3
