// 8+2 row kernels: 10-bit samples stored in blocks of 32, first the 32 high
// bytes (value >> 2), then 8 bytes of 2-bit low parts, sample k's low bits at
// bits 2 * (k % 4) of low byte k / 4.
//
// A partial last block of n samples (n = samples % 32) keeps the same shape,
// only shorter: its n high bytes, then its ceil(n / 4) low bytes directly
// after them, unused bit pairs of its last low byte zero. So a row of S
// samples is exactly S + ceil(S / 4) bytes, with no holes; nothing beyond it
// is read or written.
//
// All kernels are one packer and one unpacker, told how to fetch or store the
// 10-bit value of the k-th sample of the row.
#include <algorithm>

#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

constexpr int64_t kBlock = 32;

// Writes the 10-bit values value(0) .. value(samples - 1) as 8+2 blocks.
template <class Value>
void PackBlocks(uint8_t *dst, int64_t samples, Value value) {
  for (int64_t base = 0; base < samples; base += kBlock) {
    const int n = static_cast<int>(std::min(kBlock, samples - base));
    uint8_t *low = dst + n;
    for (int i = 0; i < n; i += 4) {
      const int end = std::min(i + 4, n);
      uint32_t bits = 0;
      for (int j = i; j < end; ++j) {
        const uint32_t v = value(base + j);
        dst[j] = static_cast<uint8_t>(v >> 2);
        bits |= (v & 3) << (2 * (j - i));
      }
      low[i / 4] = static_cast<uint8_t>(bits);
    }
    dst += n + (n + 3) / 4;
  }
}

// Reads `samples` values from 8+2 blocks and hands store(k, value10) each
// one. Without kWithLow the low-bit bytes are skipped unread (value's low two
// bits are then zero).
template <bool kWithLow, class Store>
void UnpackBlocks(const uint8_t *src, int64_t samples, Store store) {
  for (int64_t base = 0; base < samples; base += kBlock) {
    const int n = static_cast<int>(std::min(kBlock, samples - base));
    const uint8_t *low = src + n;
    for (int j = 0; j < n; ++j) {
      uint32_t v = uint32_t{src[j]} << 2;
      if constexpr (kWithLow) v |= (uint32_t{low[j / 4]} >> (2 * (j % 4))) & 3;
      store(base + j, v);
    }
    src += n + (n + 3) / 4;
  }
}

// The sample that sample k trades places with when byte pairs are swapped.
// With an odd count the lone last sample has no partner and keeps its place.
int64_t Partner(int64_t k, int64_t samples) { return (k ^ 1) < samples ? (k ^ 1) : k; }

}  // namespace

void Split16To8Plus2_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackBlocks(dst, count, [src](int64_t k) { return uint32_t{Load(src, k)} >> 6; });
}

void Join8Plus2To16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  UnpackBlocks<true>(src, count, [dst](int64_t k, uint32_t v) { Store(dst, k, v << 6); });
}

void Pack8To8Plus2_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackBlocks(dst, count, [src](int64_t k) { return uint32_t{src[k]} << 2; });
}

void Pack8To8Plus2_SwapPairs_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const int64_t samples = count;
  PackBlocks(dst, samples,
             [src, samples](int64_t k) { return uint32_t{src[Partner(k, samples)]} << 2; });
}

void Unpack8Plus2To8_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  UnpackBlocks<false>(src, count,
                      [dst](int64_t k, uint32_t v) { dst[k] = static_cast<uint8_t>(v >> 2); });
}

void Unpack8Plus2To8_SwapPairs_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const int64_t samples = count;
  UnpackBlocks<false>(src, samples, [dst, samples](int64_t k, uint32_t v) {
    dst[Partner(k, samples)] = static_cast<uint8_t>(v >> 2);
  });
}

// Planar 4:2:2 source: count / 2 whole pairs (the odd last pixel has no
// chroma sample and is not written), interleaved Y0 U Y1 V, 4 samples a pair.
void YUV422_16_2_YUYV_8Plus2_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                 const uint16_t *srcV, int32_t count) {
  const int64_t samples = count < 2 ? 0 : int64_t{count / 2} * 4;
  const PlanarReader<uint16_t> src{srcY, srcU, srcV};
  PackBlocks(dst, samples, [src](int64_t k) { return uint32_t{PairSample<YUYV>(src, k)} >> 6; });
}

}  // namespace tqcs::portable
