// SSE2 chroma-plane kernels: two byte planes to and from one interleaved row,
// alternate bytes of two rows, and chroma doubling (4:2:2 to 4:4:4).
#include <emmintrin.h>

#include <cstddef>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using Index = std::ptrdiff_t;
using x86::Load;
using x86::LowBytes16;
using x86::Mean;
using x86::Store;

// dst0 takes the even bytes of src0, dst1 the odd bytes of src1, sixteen of
// each per step while i + 16 <= limit: a caller whose src0 row ends on its
// last even byte passes count - 1, so no load reaches past it. Returns the
// samples done.
Index DeinterleaveBlocks(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1,
                         Index limit) {
  Index i = 0;
  for (; i + 16 <= limit; i += 16) {
    const __m128i a0 = Load(src0 + 2 * i), b0 = Load(src0 + 2 * i + 16);
    const __m128i a1 = Load(src1 + 2 * i), b1 = Load(src1 + 2 * i + 16);
    Store(dst0 + i,
          _mm_packus_epi16(_mm_and_si128(a0, LowBytes16()), _mm_and_si128(b0, LowBytes16())));
    Store(dst1 + i, _mm_packus_epi16(_mm_srli_epi16(a1, 8), _mm_srli_epi16(b1, 8)));
  }
  return i;
}

Index InterleaveBlocks(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB, int32_t count) {
  Index i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i a = Load(srcA + i), b = Load(srcB + i);
    Store(dst + 2 * i, _mm_unpacklo_epi8(a, b));
    Store(dst + 2 * i + 16, _mm_unpackhi_epi8(a, b));
  }
  return i;
}

// Sixteen source samples to 32 outputs per step: each step reads the sample
// after it, and the last source sample is left to the portable routine's
// rule. Returns the source samples done.
Index DoubleChromaBlocks(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                         int32_t count) {
  const Index sources = (Index{count} + 1) / 2;
  Index i = 0;
  for (; i + 17 <= sources; i += 16) {
    for (int k = 0; k < 2; ++k) {
      const uint8_t *s = k == 0 ? srcA : srcB;
      uint8_t *d = (k == 0 ? dstA : dstB) + 2 * i;
      const __m128i here = Load(s + i), odd = Mean<0>(here, Load(s + i + 1));
      Store(d, _mm_unpacklo_epi8(here, odd));
      Store(d + 16, _mm_unpackhi_epi8(here, odd));
    }
  }
  return i;
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---- Chroma planes -------------------------------------------------------------------

// src0 is read up to its last even byte only.
void sse2::Deinterleave_Pairs_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                  const uint8_t *src1, int32_t count) {
  const Index i = DeinterleaveBlocks(dst0, dst1, src0, src1, Index{count} - 1);
  portable::Deinterleave_Pairs_Row(dst0 + i, dst1 + i, src0 + 2 * i, src1 + 2 * i,
                                   count - static_cast<int32_t>(i));
}
// Below level 4 slot 144 runs slot 124's routine.
void sse2::Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                          const uint8_t *src1, int32_t count) {
  sse2::Deinterleave_Pairs_Row(dst0, dst1, src0, src1, count);
}
void sse2::UV_Deinterleave_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count) {
  const Index i = DeinterleaveBlocks(dstA, dstB, src, src, count);
  portable::UV_Deinterleave_Row(dstA + i, dstB + i, src + 2 * i, count - static_cast<int32_t>(i));
}
void sse2::UV_Interleave_Row(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB,
                             int32_t count) {
  const Index i = InterleaveBlocks(dst, srcA, srcB, count);
  portable::UV_Interleave_Row(dst + 2 * i, srcA + i, srcB + i, count - static_cast<int32_t>(i));
}
void sse2::UV_422_2_444_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                            int32_t count) {
  const Index i = DoubleChromaBlocks(dstA, dstB, srcA, srcB, count);
  portable::UV_422_2_444_Row(dstA + 2 * i, dstB + 2 * i, srcA + i, srcB + i,
                             count - static_cast<int32_t>(2 * i));
}

}  // namespace tqcs
