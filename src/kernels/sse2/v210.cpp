// V210 row kernels, SSE2: V210 words to and from 8-bit and 16-bit packed
// 4:2:2, in blocks of 8 words (12 pixels, two whole six-pixel groups). The
// pairs after the last whole block, including a partial six-pixel group, go
// to the portable routine.
//
// 10-bit fields become 16-bit samples << 6 or bytes >> 2 (truncated), and come
// back from 16-bit samples >> 6 or bytes << 2. Bits 30-31 of a word are
// ignored on the way in and written zero.
#include "kernels/sse2/v210.hpp"

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"

namespace tqcs::sse2 {
namespace {

constexpr int kBlockPixels = 2 * kV210BlockPairs;

// V210 stream order is U Y V Y; kSwap turns it into Y U Y V.
template <K kSlot, class Sample, bool kSwap>
void V210ToPacked(Sample *dst, const uint8_t *src, int32_t count) {
  x86::InBlocks<kSlot, kBlockPixels>(
      [](Sample *out, const uint8_t *in) {
        __m128i s[3];
        LoadV210Block(in, s);
        if (kSwap)
          for (__m128i &v : s) v = SwapPairs16(v);
        if constexpr (sizeof(Sample) == 2) {
          for (int k = 0; k < 3; ++k) x86::Store(out + 8 * k, _mm_slli_epi16(s[k], 6));
        } else {
          for (__m128i &v : s) v = _mm_srli_epi16(v, 2);
          x86::Store(out, _mm_packus_epi16(s[0], s[1]));
          x86::Store64(out + 16, _mm_packus_epi16(s[2], s[2]));
        }
      },
      dst, src, count);
}

template <K kSlot, class Sample, bool kSwap>
void PackedToV210(uint8_t *dst, const Sample *src, int32_t count) {
  x86::InBlocks<kSlot, kBlockPixels>(
      [](uint8_t *out, const Sample *in) {
        __m128i s[3];
        if constexpr (sizeof(Sample) == 2) {
          for (int k = 0; k < 3; ++k) s[k] = _mm_srli_epi16(x86::Load(in + 8 * k), 6);
        } else {
          const __m128i zero = _mm_setzero_si128(), lo = x86::Load(in);
          s[0] = _mm_unpacklo_epi8(lo, zero);
          s[1] = _mm_unpackhi_epi8(lo, zero);
          s[2] = _mm_unpacklo_epi8(x86::Load64(in + 16), zero);
        }
        if (kSwap)
          for (__m128i &v : s) v = SwapPairs16(v);
        StoreV210Block<sizeof(Sample) == 2 ? 1 : 4>(out, s);
      },
      dst, src, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::V210_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<K::V210_2_YUYV16_Row, uint16_t, true>(dst, src, count);
}
void sse2::V210_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<K::V210_2_UYVY16_Row, uint16_t, false>(dst, src, count);
}
void sse2::YUYV16_2_V210_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToV210<K::YUYV16_2_V210_Row, uint16_t, true>(dst, src, count);
}
void sse2::UYVY16_2_V210_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToV210<K::UYVY16_2_V210_Row, uint16_t, false>(dst, src, count);
}

// The 8-bit pair: the plain form speaks YUYV, the B form UYVY.
void sse2::V210_2_YUV8_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<K::V210_2_YUV8_Row, uint8_t, true>(dst, src, count);
}
void sse2::V210_2_YUV8_B_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<K::V210_2_YUV8_B_Row, uint8_t, false>(dst, src, count);
}
void sse2::YUV8_2_V210_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackedToV210<K::YUV8_2_V210_Row, uint8_t, true>(dst, src, count);
}
void sse2::YUV8_2_V210_B_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackedToV210<K::YUV8_2_V210_B_Row, uint8_t, false>(dst, src, count);
}

}  // namespace tqcs
