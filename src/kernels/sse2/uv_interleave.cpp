// SSE2 chroma-plane kernels: two byte planes to and from one interleaved row,
// alternate bytes of two rows, and chroma doubling (4:2:2 to 4:4:4).
#include <emmintrin.h>

#include <cstddef>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Load;
using x86::LowBytes16;
using x86::Mean;
using x86::Store;

// Blocks of sixteen samples of each plane.
constexpr int kBlock = 16;

// dst0 takes the even bytes of src0, dst1 the odd bytes of src1.
inline void Deinterleave(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1) {
  const __m128i a0 = Load(src0), b0 = Load(src0 + 16);
  const __m128i a1 = Load(src1), b1 = Load(src1 + 16);
  Store(dst0, _mm_packus_epi16(_mm_and_si128(a0, LowBytes16()), _mm_and_si128(b0, LowBytes16())));
  Store(dst1, _mm_packus_epi16(_mm_srli_epi16(a1, 8), _mm_srli_epi16(b1, 8)));
}

inline void Interleave(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB) {
  const __m128i a = Load(srcA), b = Load(srcB);
  Store(dst, _mm_unpacklo_epi8(a, b));
  Store(dst + 16, _mm_unpackhi_epi8(a, b));
}

// Sixteen source samples to 32 outputs: each block reads the sample after it.
inline void DoubleChroma(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB) {
  for (int k = 0; k < 2; ++k) {
    const uint8_t *s = k == 0 ? srcA : srcB;
    uint8_t *d = k == 0 ? dstA : dstB;
    const __m128i here = Load(s), odd = Mean<0>(here, Load(s + 1));
    Store(d, _mm_unpacklo_epi8(here, odd));
    Store(d + 16, _mm_unpackhi_epi8(here, odd));
  }
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---- Chroma planes -------------------------------------------------------------------

// src0 is read up to its last even byte only, so the last sample is always
// the portable routine's.
void sse2::Deinterleave_Pairs_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                  const uint8_t *src1, int32_t count) {
  x86::InBlocks<K::Deinterleave_Pairs_Row, kBlock, 1>(Deinterleave, dst0, dst1, src0, src1, count);
}
// Below level 4 slot 144 runs slot 124's routine.
void sse2::Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                          const uint8_t *src1, int32_t count) {
  sse2::Deinterleave_Pairs_Row(dst0, dst1, src0, src1, count);
}
void sse2::UV_Deinterleave_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count) {
  x86::InBlocks<K::UV_Deinterleave_Row, kBlock>(
      [](uint8_t *a, uint8_t *b, const uint8_t *s) { Deinterleave(a, b, s, s); }, dstA, dstB, src,
      count);
}
void sse2::UV_Interleave_Row(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB,
                             int32_t count) {
  x86::InBlocks<K::UV_Interleave_Row, kBlock>(Interleave, dst, srcA, srcB, count);
}
// Blocks of 32 outputs; the last source sample is left to the portable
// routine's rule (kept: 1 output).
void sse2::UV_422_2_444_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                            int32_t count) {
  x86::InBlocks<K::UV_422_2_444_Row, 2 * kBlock, 1>(DoubleChroma, dstA, dstB, srcA, srcB, count);
}

}  // namespace tqcs
