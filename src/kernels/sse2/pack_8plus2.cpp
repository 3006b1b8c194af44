// 8+2 row kernels, SSE2: 10-bit samples in blocks of 32, the 32 high bytes
// (value >> 2) followed by 8 bytes of 2-bit low parts, sample k's at bits
// 2 * (k % 4) of low byte k / 4.
//
// The body does whole blocks of 32 samples (40 bytes); a partial last block,
// whose low bytes follow its shorter run of high bytes, is left to the
// portable routine together with everything after the last whole block.
// Blocks start at even samples, so the pair swaps of the rest are the same
// whether counted from the row's start or from the block's.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

constexpr int kBlock = 32;  // samples: 32 high bytes, 8 low bytes

using x86::SwapBytes;

// One block: 32 high bytes and the 8 low bytes (in the low half of `low`).
inline void StoreBlock(uint8_t *dst, __m128i high0, __m128i high1, __m128i low) {
  x86::Store(dst, high0);
  x86::Store(dst + 16, high1);
  x86::Store64(dst + 32, low);
}

// A block of 32 16-bit samples, each taken to its 10-bit value by >> 6: the
// high byte is the sample's top byte, the low part its bits 6-7. The low
// parts of four neighbours are gathered into one byte by weights 1, 4, 16, 64
// (a sum of disjoint bit pairs).
inline void Split16(uint8_t *dst, const __m128i s[4]) {
  const __m128i three = _mm_set1_epi16(3), one = _mm_set1_epi16(1);
  const __m128i weights = _mm_setr_epi16(1, 4, 16, 64, 1, 4, 16, 64);
  __m128i bytes[2];  // 32-bit lanes: low bytes 0-3, 4-7
  for (int k = 0; k < 2; ++k) {
    __m128i pairs[2];  // 32-bit lanes: the parts of samples 4q, 4q + 1 and of 4q + 2, 4q + 3
    for (int j = 0; j < 2; ++j) {
      const __m128i low = _mm_and_si128(_mm_srli_epi16(s[2 * k + j], 6), three);
      pairs[j] = _mm_madd_epi16(low, weights);
    }
    bytes[k] = _mm_madd_epi16(_mm_packs_epi32(pairs[0], pairs[1]), one);
  }
  const __m128i low = _mm_packus_epi16(_mm_packs_epi32(bytes[0], bytes[1]), _mm_setzero_si128());
  StoreBlock(dst, _mm_packus_epi16(_mm_srli_epi16(s[0], 8), _mm_srli_epi16(s[1], 8)),
             _mm_packus_epi16(_mm_srli_epi16(s[2], 8), _mm_srli_epi16(s[3], 8)), low);
}

// 8-bit samples moved into 8+2 blocks (kPack: value << 2, low parts zero) or
// out of them (kPack false: the high bytes only, the low parts skipped
// unread), each pair's bytes exchanged when kSwap.
template <K kSlot, bool kPack, bool kSwap>
void MoveBytes(uint8_t *dst, const uint8_t *src, int32_t count) {
  const auto order = [](__m128i s) { return kSwap ? SwapBytes(s) : s; };
  x86::InBlocks<kSlot, kBlock>(
      [&](uint8_t *d, const uint8_t *s) {
        const __m128i high0 = x86::Load(s), high1 = x86::Load(s + 16);
        x86::Store(d, order(high0));
        x86::Store(d + 16, order(high1));
        if constexpr (kPack) x86::Store64(d + 32, _mm_setzero_si128());
      },
      dst, src, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::Split16To8Plus2_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  x86::InBlocks<K::Split16To8Plus2_Row, kBlock>(
      [](uint8_t *d, const uint16_t *s) {
        const __m128i samples[4] = {x86::Load(s), x86::Load(s + 8), x86::Load(s + 16),
                                    x86::Load(s + 24)};
        Split16(d, samples);
      },
      dst, src, count);
}

// Each 16-bit sample is high << 8 | low part << 6. The low byte of each group
// of four samples is spread over their lanes and each lane's bit pair moved
// to bits 6-7 by a multiply.
void sse2::Join8Plus2To16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  const __m128i zero = _mm_setzero_si128(), bits67 = _mm_set1_epi16(0xC0);
  const __m128i toBit6 = _mm_setr_epi16(64, 16, 4, 1, 64, 16, 4, 1);
  x86::InBlocks<K::Join8Plus2To16_Row, kBlock>(
      [&](uint16_t *d, const uint8_t *s) {
        const __m128i high[2] = {x86::Load(s), x86::Load(s + 16)};
        const __m128i lows = _mm_unpacklo_epi8(x86::Load64(s + 32), zero);
        // Low bytes 0-3 and 4-7, each twice in a 32-bit lane.
        const __m128i twice[2] = {_mm_unpacklo_epi16(lows, lows), _mm_unpackhi_epi16(lows, lows)};
        for (int j = 0; j < 4; ++j) {
          const __m128i h =
              j % 2 ? _mm_unpackhi_epi8(zero, high[j / 2]) : _mm_unpacklo_epi8(zero, high[j / 2]);
          // Low bytes 2j and 2j + 1, each in four lanes.
          const __m128i four = j % 2 ? _mm_unpackhi_epi32(twice[j / 2], twice[j / 2])
                                     : _mm_unpacklo_epi32(twice[j / 2], twice[j / 2]);
          const __m128i low = _mm_and_si128(_mm_mullo_epi16(four, toBit6), bits67);
          x86::Store(d + 8 * j, _mm_or_si128(h, low));
        }
      },
      dst, src, count);
}

void sse2::Pack8To8Plus2_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  MoveBytes<K::Pack8To8Plus2_Row, true, false>(dst, src, count);
}

void sse2::Pack8To8Plus2_SwapPairs_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  MoveBytes<K::Pack8To8Plus2_SwapPairs_Row, true, true>(dst, src, count);
}

void sse2::Unpack8Plus2To8_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  MoveBytes<K::Unpack8Plus2To8_Row, false, false>(dst, src, count);
}

void sse2::Unpack8Plus2To8_SwapPairs_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  MoveBytes<K::Unpack8Plus2To8_SwapPairs_Row, false, true>(dst, src, count);
}

// Planar 4:2:2: a block is 8 pairs (16 pixels, 32 samples) interleaved Y0 U
// Y1 V; count / 2 whole pairs (the odd last pixel is not written).
void sse2::YUV422_16_2_YUYV_8Plus2_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                       const uint16_t *srcV, int32_t count) {
  x86::InBlocks<K::YUV422_16_2_YUYV_8Plus2_Row, kBlock / 2>(
      [](uint8_t *d, const uint16_t *y, const uint16_t *u, const uint16_t *v) {
        const __m128i luma[2] = {x86::Load(y), x86::Load(y + 8)};
        __m128i pairs[4];
        x86::InterleavePairs<false>(luma, x86::Load(u), x86::Load(v), pairs);
        Split16(d, pairs);
      },
      dst, srcY, srcU, srcV, count);
}

}  // namespace tqcs
