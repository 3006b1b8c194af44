// The SSE2 path (the x86-64 baseline): no flags beyond the project's own.
#include <emmintrin.h>

#include "row_kernels.hpp"
#include "simd_rows.hpp"

namespace tqmp {
namespace sse2 {
namespace {

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
using Scaling128 = Scaling<Vec128, portable::ScaleRow, portable::ScaleRun>;

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

void ExtractChannelRow(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  if (channel < 0 || channel > 3) return portable::ExtractChannelRow(dst, src, count, channel);
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
        portable::ExtractChannelRow(d, s, n, channel);
      });
}

void SwapRow(uint8_t *dst, const uint8_t *src, int32_t count) {
  ByBlocks<16, 2, 2>(
      dst, src, count,
      [](uint8_t *d, const uint8_t *s) {
        const __m128i a = Load(s), b = Load(s + 16);
        Store(d, _mm_or_si128(_mm_slli_epi16(a, 8), _mm_srli_epi16(a, 8)));
        Store(d + 16, _mm_or_si128(_mm_slli_epi16(b, 8), _mm_srli_epi16(b, 8)));
      },
      portable::SwapRow);
}

void ScaleRow(uint8_t *dst, const uint8_t *src, const int16_t *gain, const int16_t *offset,
              int32_t bytes) {
  Scaling128::Row(dst, src, gain, offset, bytes);
}

void ScaleRun(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset, int32_t bytes) {
  Scaling128::Run(dst, src, gain, offset, bytes);
}

void RGB32ToRGB24Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  ByBlocks<16, 4, 3>(
      dst, src, count,
      [](uint8_t *d, const uint8_t *s) {
        const __m128i a = DropFourth(Load(s)), b = DropFourth(Load(s + 16));
        const __m128i c = DropFourth(Load(s + 32)), e = DropFourth(Load(s + 48));
        StoreTwelves(d, a, b, c, e);
      },
      portable::RGB32ToRGB24Row);
}

}  // namespace sse2
}  // namespace tqmp
