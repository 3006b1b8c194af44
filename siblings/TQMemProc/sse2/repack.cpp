// The SSE2 tier's byte rearrangements (the x86-64 baseline: no flags beyond
// the project's own): channel extraction, the pair swap and the 4-to-3-byte
// copy by shifts and masks, 16 pixels a block.
#include <emmintrin.h>

#include "row_slots.hpp"
#include "x86/row.hpp"

namespace tqmp::sse2 {
namespace {

using x86::ByBlocks;
using x86::Load;
using x86::Store;

// Four pixels b0 b1 b2 x to twelve bytes at the bottom of the register.
__m128i DropFourth(__m128i px) {
  const __m128i first = _mm_set_epi32(0, 0x00FFFFFF, 0, 0x00FFFFFF);
  const __m128i second = _mm_set_epi32(0x0000FFFF, static_cast<int>(0xFF000000), 0x0000FFFF,
                                       static_cast<int>(0xFF000000));
  // Six bytes at the bottom of each half, then the upper half moved down by two.
  const __m128i halves =
      _mm_or_si128(_mm_and_si128(px, first), _mm_and_si128(_mm_srli_epi64(px, 8), second));
  const __m128i lowHalf = _mm_set_epi32(0, 0, -1, -1);
  return _mm_or_si128(_mm_and_si128(halves, lowHalf),
                      _mm_srli_si128(_mm_andnot_si128(lowHalf, halves), 2));
}

}  // namespace

void ExtractChannel_Row(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  if (channel < 0 || channel > 3) return portable::ExtractChannel_Row(dst, src, count, channel);
  const __m128i shift = _mm_cvtsi32_si128(8 * channel);
  const __m128i low = _mm_set1_epi32(0xFF);
  const auto pick = [&](const uint8_t *s) {
    return _mm_and_si128(_mm_srl_epi32(Load(s), shift), low);
  };
  ByBlocks<16, 4, 1>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        Store(d, _mm_packus_epi16(_mm_packs_epi32(pick(s), pick(s + 16)),
                                  _mm_packs_epi32(pick(s + 32), pick(s + 48))));
      },
      [&](uint8_t *d, const uint8_t *s, int32_t n) {
        portable::ExtractChannel_Row(d, s, n, channel);
      });
}

void YUV16_Swap_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  ByBlocks<16, 2, 2>(
      dst, src, count,
      [](uint8_t *d, const uint8_t *s) {
        const __m128i a = Load(s), b = Load(s + 16);
        Store(d, _mm_or_si128(_mm_slli_epi16(a, 8), _mm_srli_epi16(a, 8)));
        Store(d + 16, _mm_or_si128(_mm_slli_epi16(b, 8), _mm_srli_epi16(b, 8)));
      },
      portable::YUV16_Swap_Row);
}

void RGB32_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  ByBlocks<16, 4, 3>(
      dst, src, count,
      [](uint8_t *d, const uint8_t *s) {
        const __m128i a = DropFourth(Load(s)), b = DropFourth(Load(s + 16));
        const __m128i c = DropFourth(Load(s + 32)), e = DropFourth(Load(s + 48));
        x86::StoreTwelves(d, a, b, c, e);
      },
      portable::RGB32_2_RGB24_Row);
}

}  // namespace tqmp::sse2
