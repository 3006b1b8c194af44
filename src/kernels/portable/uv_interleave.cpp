// Portable chroma-plane kernels: two byte planes to and from one interleaved
// row, alternate bytes of two rows, and chroma doubling (4:2:2 to 4:4:4).
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {

// Alternate bytes of two sources: the even bytes of the first, the odd bytes
// of the second. Slot 144's portable entry is this same routine.
void Deinterleave_Pairs_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1,
                            int32_t count) {
  for (Index i = 0; i < count; ++i) {
    dst0[i] = src0[2 * i];
    dst1[i] = src1[2 * i + 1];
  }
}
void Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                    const uint8_t *src1, int32_t count) {
  Deinterleave_Pairs_Row(dst0, dst1, src0, src1, count);
}

// count = samples per output plane (pairs of the interleaved row): both
// halves of each pair from the one source.
void UV_Deinterleave_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count) {
  Deinterleave_Pairs_Row(dstA, dstB, src, src, count);
}

// count = samples per source plane (pairs of the interleaved row).
void UV_Interleave_Row(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB, int32_t count) {
  for (Index i = 0; i < count; ++i) {
    dst[2 * i] = srcA[i];
    dst[2 * i + 1] = srcB[i];
  }
}

// Chroma doubling, count = output samples per plane; the sources hold
// (count + 1) / 2 samples. Odd outputs are (a + b) >> 1 with the next source
// sample; the last source sample has none and repeats itself.
void UV_422_2_444_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                      int32_t count) {
  const Index sources = (Index{count} + 1) / 2;
  for (Index j = 0; j < count; ++j) {
    const Index i = j / 2;
    if ((j & 1) == 0) {
      dstA[j] = srcA[i];
      dstB[j] = srcB[i];
    } else {
      const Index next = NextOrLast(i, sources);
      dstA[j] = static_cast<uint8_t>((srcA[i] + srcA[next]) >> 1);
      dstB[j] = static_cast<uint8_t>((srcB[i] + srcB[next]) >> 1);
    }
  }
}

}  // namespace tqcs::portable
