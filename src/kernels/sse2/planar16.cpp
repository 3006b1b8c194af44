// 16-bit sample kernels, SSE2: 10-bit planes to 8-bit packed 4:2:2 and a
// 10-bit plane to bytes.
//
// Kept for compatibility: each sample is shifted right (by 2 for the packed
// rows, by 6 for the single plane) and the byte stored is the low 8 bits of
// the shifted sample, so a value above 255 wraps. The lanes are masked to
// their low byte before any saturating pack.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::WholeBlocks;

// Low 8 bits of each 16-bit sample shifted right by kDown, in 16-bit lanes.
template <int kDown>
inline __m128i LowByte(__m128i s) {
  return _mm_and_si128(_mm_srli_epi16(s, kDown), _mm_set1_epi16(0xFF));
}

// The same byte moved to the high half of its 16-bit lane.
template <int kDown>
inline __m128i HighByte(__m128i s) {
  return _mm_slli_epi16(_mm_srli_epi16(s, kDown), 8);
}

// 16-bit planes to 8-bit packed pairs, each sample >> kDown. Blocks of 8
// pairs: 16 luma and 8 of each chroma sample in, 32 bytes out. Each lane of
// the output is one luma byte and one chroma byte (U, V alternating); the
// chroma byte comes first when kChromaFirst (UYVY).
template <bool kChromaFirst, int kDown, auto kTail>
void PlanarToPacked(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV,
                    int32_t count) {
  constexpr int kPairs = 8;
  const int32_t blocks = WholeBlocks<2 * kPairs>(count);
  for (int32_t b = 0; b < blocks; ++b) {
    const int64_t p = int64_t{b} * kPairs;
    const __m128i y[2] = {x86::Load(srcY + 2 * p), x86::Load(srcY + 2 * p + 8)};
    const __m128i u = x86::Load(srcU + p), v = x86::Load(srcV + p);
    const __m128i uv[2] = {_mm_unpacklo_epi16(u, v), _mm_unpackhi_epi16(u, v)};
    for (int k = 0; k < 2; ++k) {
      const __m128i out = kChromaFirst ? _mm_or_si128(LowByte<kDown>(uv[k]), HighByte<kDown>(y[k]))
                                       : _mm_or_si128(LowByte<kDown>(y[k]), HighByte<kDown>(uv[k]));
      x86::Store(dst + 4 * p + 16 * k, out);
    }
  }
  const int64_t done = int64_t{blocks} * kPairs;
  if (count - 2 * done >= 2)
    kTail(dst + 4 * done, srcY + 2 * done, srcU + done, srcV + done,
          static_cast<int32_t>(count - 2 * done));
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::YUV422_10Bit_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                   const uint16_t *srcV, int32_t count) {
  PlanarToPacked<false, 2, portable::YUV422_10Bit_2_YUYV_Row>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_10Bit_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                   const uint16_t *srcV, int32_t count) {
  PlanarToPacked<true, 2, portable::YUV422_10Bit_2_UYVY_Row>(dst, srcY, srcU, srcV, count);
}

// 16 samples a block: two loads, one 16-byte store.
void sse2::Y10Bit_2_Y8_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  constexpr int kBlock = 16;
  const int32_t blocks = WholeBlocks<kBlock>(count);
  for (int32_t b = 0; b < blocks; ++b) {
    const int64_t i = int64_t{b} * kBlock;
    x86::Store(dst + i, _mm_packus_epi16(LowByte<6>(x86::Load(src + i)),
                                         LowByte<6>(x86::Load(src + i + 8))));
  }
  const int64_t done = int64_t{blocks} * kBlock;
  if (done < count)
    portable::Y10Bit_2_Y8_Row(dst + done, src + done, static_cast<int32_t>(count - done));
}

}  // namespace tqcs
