// The AVX2 tier's byte rearrangements (compiled with -mavx2 only): the SSSE3
// tier's shuffles on 256-bit registers, 32 pixels a block. The shuffles keep
// bytes within each 128-bit lane; a dword permute joins the lanes where needed.
#include <immintrin.h>

#include "row_slots.hpp"
#include "x86/row.hpp"

namespace tqmp::avx2 {
namespace {

using x86::ByBlocks;

__m256i Load32(const uint8_t *p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
}
void Store32(uint8_t *p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v); }

__m256i Dwords(int a, int b, int c, int d, int e, int f, int g, int h) {
  return _mm256_setr_epi32(a, b, c, d, e, f, g, h);
}

// ChannelToLane in both 128-bit lanes.
__m256i ChannelToLanes(int32_t channel, int lane) {
  return _mm256_broadcastsi128_si256(x86::ChannelToLane(channel, lane));
}

}  // namespace

void ExtractChannel_Row(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel) {
  if (channel < 0 || channel > 3) return portable::ExtractChannel_Row(dst, src, count, channel);
  const __m256i m0 = ChannelToLanes(channel, 0), m1 = ChannelToLanes(channel, 1);
  const __m256i m2 = ChannelToLanes(channel, 2), m3 = ChannelToLanes(channel, 3);
  // Lane 0 holds pixels 0-3, 8-11, 16-19, 24-27; lane 1 the four after each.
  const __m256i order = Dwords(0, 4, 1, 5, 2, 6, 3, 7);
  ByBlocks<32, 4, 1>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        const __m256i ab = _mm256_or_si256(_mm256_shuffle_epi8(Load32(s), m0),
                                           _mm256_shuffle_epi8(Load32(s + 32), m1));
        const __m256i ce = _mm256_or_si256(_mm256_shuffle_epi8(Load32(s + 64), m2),
                                           _mm256_shuffle_epi8(Load32(s + 96), m3));
        Store32(d, _mm256_permutevar8x32_epi32(_mm256_or_si256(ab, ce), order));
      },
      [&](uint8_t *d, const uint8_t *s, int32_t n) {
        portable::ExtractChannel_Row(d, s, n, channel);
      });
}

void YUV16_Swap_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const __m256i swap = _mm256_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14, 1, 0,
                                        3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
  ByBlocks<32, 2, 2>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        const __m256i a = Load32(s), b = Load32(s + 32);
        Store32(d, _mm256_shuffle_epi8(a, swap));
        Store32(d + 32, _mm256_shuffle_epi8(b, swap));
      },
      portable::YUV16_Swap_Row);
}

void RGB32_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  // Per lane: four pixels' twelve bytes in dwords 0-2 (lane 0) and 4-6 (lane 1).
  const __m256i drop = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0,
                                        1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  // The 24 dwords of 32 pixels into three registers: each source's six dwords
  // moved to where its output register(s) take them, then blended.
  const __m256i toA = Dwords(0, 1, 2, 4, 5, 6, 0, 0), toB = Dwords(2, 4, 5, 6, 0, 0, 0, 1);
  const __m256i toC = Dwords(5, 6, 0, 0, 0, 1, 2, 4), toE = Dwords(0, 0, 0, 1, 2, 4, 5, 6);
  const auto take = [&](const uint8_t *s, __m256i to) {
    return _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(Load32(s), drop), to);
  };
  ByBlocks<32, 4, 3>(
      dst, src, count,
      [&](uint8_t *d, const uint8_t *s) {
        const __m256i a = take(s, toA), b = take(s + 32, toB);
        const __m256i c = take(s + 64, toC), e = take(s + 96, toE);
        Store32(d, _mm256_blend_epi32(a, b, 0xC0));
        Store32(d + 32, _mm256_blend_epi32(b, c, 0xF0));
        Store32(d + 64, _mm256_blend_epi32(c, e, 0xFC));
      },
      portable::RGB32_2_RGB24_Row);
}

}  // namespace tqmp::avx2
