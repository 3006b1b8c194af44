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
#include "kernels/x86/row.hpp"

namespace tqcs::sse41 {
namespace {

using Index = std::ptrdiff_t;

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

// Sixteen samples of each destination per step while i + 16 <= limit; src0
// ends on its last even byte, so the caller passes count - 1. Returns the
// samples done.
template <bool kAligned>
Index Deinterleave(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1,
                   Index limit) {
  const __m128i low = _mm_set1_epi16(0x00FF);
  Index i = 0;
  for (; i + 16 <= limit; i += 16) {
    const __m128i a0 = LoadBlock<kAligned>(src0 + 2 * i),
                  b0 = LoadBlock<kAligned>(src0 + 2 * i + 16);
    const __m128i a1 = LoadBlock<kAligned>(src1 + 2 * i),
                  b1 = LoadBlock<kAligned>(src1 + 2 * i + 16);
    StoreBlock<kAligned>(dst0 + i,
                         _mm_packus_epi16(_mm_and_si128(a0, low), _mm_and_si128(b0, low)));
    StoreBlock<kAligned>(dst1 + i, _mm_packus_epi16(_mm_srli_epi16(a1, 8), _mm_srli_epi16(b1, 8)));
  }
  return i;
}

inline bool Aligned16(const void *p) { return (reinterpret_cast<uintptr_t>(p) & 15) == 0; }

}  // namespace
}  // namespace tqcs::sse41

namespace tqcs {

void sse41::Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                           const uint8_t *src1, int32_t count) {
  const Index limit = Index{count} - 1;
  const Index i = Aligned16(dst0) && Aligned16(dst1) && Aligned16(src0) && Aligned16(src1)
                      ? Deinterleave<true>(dst0, dst1, src0, src1, limit)
                      : Deinterleave<false>(dst0, dst1, src0, src1, limit);
  portable::Deinterleave_Pairs_Row(dst0 + i, dst1 + i, src0 + 2 * i, src1 + 2 * i,
                                   count - static_cast<int32_t>(i));
  _mm_mfence();
}

}  // namespace tqcs
