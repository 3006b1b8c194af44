// Chroma-plane kernels, SSE4.1 tier in VEX encoding (level 4): the
// deinterleave of slot 144.
//
// The result is slot 124's: the even bytes of the first source and the odd
// bytes of the second. When all four rows start on 16-byte boundaries the
// body loads aligned and writes with non-temporal stores, which keep the
// output of a large frame out of the caches; otherwise it loads and stores
// unaligned. The routine ends with a full fence, so its stores are ordered
// before whatever the caller does next, loads included.
#include <smmintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse41 {
namespace {

template <bool kAligned>
inline __m128i LoadBlock(const uint8_t *p) {
  if constexpr (kAligned) return _mm_load_si128(reinterpret_cast<const __m128i *>(p));
  return x86::Load(p);
}
template <bool kAligned>
inline void StoreBlock(uint8_t *p, __m128i v) {
  if constexpr (kAligned) {
    _mm_stream_si128(reinterpret_cast<__m128i *>(p), v);
  } else {
    x86::Store(p, v);
  }
}

// Sixteen samples of each destination.
template <bool kAligned>
inline void Deinterleave(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1) {
  const __m128i low = _mm_set1_epi16(0x00FF);
  const __m128i a0 = LoadBlock<kAligned>(src0), b0 = LoadBlock<kAligned>(src0 + 16);
  const __m128i a1 = LoadBlock<kAligned>(src1), b1 = LoadBlock<kAligned>(src1 + 16);
  StoreBlock<kAligned>(dst0, _mm_packus_epi16(_mm_and_si128(a0, low), _mm_and_si128(b0, low)));
  StoreBlock<kAligned>(dst1, _mm_packus_epi16(_mm_srli_epi16(a1, 8), _mm_srli_epi16(b1, 8)));
}

inline bool Aligned16(const void *p) { return (reinterpret_cast<uintptr_t>(p) & 15) == 0; }

}  // namespace
}  // namespace tqcs::sse41

namespace tqcs {

// src0 ends on its last even byte, so the last sample is always the portable
// routine's.
void sse41::Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                           const uint8_t *src1, int32_t count) {
  constexpr K kSlot = K::Int32_2_Int16_Deinterleave_Row;
  if (Aligned16(dst0) && Aligned16(dst1) && Aligned16(src0) && Aligned16(src1)) {
    x86::InBlocks<kSlot, 16, 1>(Deinterleave<true>, dst0, dst1, src0, src1, count);
  } else {
    x86::InBlocks<kSlot, 16, 1>(Deinterleave<false>, dst0, dst1, src0, src1, count);
  }
  _mm_mfence();
}

}  // namespace tqcs
