// Row moves of 16-bit samples that the descriptor conversions need and no
// slot of the kernel table offers: interleaving and splitting a 16-bit chroma
// pair plane, dropping the fourth component of 16-bit RGBA, and moving 10-bit
// values from the low bits of a sample to its top. Internal routines of the
// kernel layer, pure row arithmetic: each reads and writes exactly the samples
// its count names, through memcpy, so no pointer needs any alignment.
#pragma once

#include <cstdint>
#include <cstring>

namespace tqcs::moves {

inline uint16_t Load16(const uint8_t *p, int64_t i) {
  uint16_t v;
  std::memcpy(&v, p + 2 * i, 2);
  return v;
}
inline void Store16(uint8_t *p, int64_t i, uint16_t v) { std::memcpy(p + 2 * i, &v, 2); }

// count U samples and count V samples into 2 x count samples, U first.
inline void InterleaveUV16(uint8_t *dst, const uint8_t *srcU, const uint8_t *srcV, int32_t count) {
  for (int64_t i = 0; i < count; ++i) {
    Store16(dst, 2 * i, Load16(srcU, i));
    Store16(dst, 2 * i + 1, Load16(srcV, i));
  }
}

// The inverse: 2 x count samples, U first, into count U and count V samples.
inline void DeinterleaveUV16(uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count) {
  for (int64_t i = 0; i < count; ++i) {
    Store16(dstU, i, Load16(src, 2 * i));
    Store16(dstV, i, Load16(src, 2 * i + 1));
  }
}

// count pixels of four 16-bit components to three, the fourth dropped;
// kSwap exchanges the first and third.
template <bool kSwap>
void DropFourth16(uint8_t *dst, const uint8_t *src, int32_t count) {
  for (int64_t i = 0; i < count; ++i) {
    Store16(dst, 3 * i, Load16(src, 4 * i + (kSwap ? 2 : 0)));
    Store16(dst, 3 * i + 1, Load16(src, 4 * i + 1));
    Store16(dst, 3 * i + 2, Load16(src, 4 * i + (kSwap ? 0 : 2)));
  }
}

// count samples holding a 10-bit value in bits 0-9 moved to bits 6-15; bits
// above the tenth are dropped.
inline void LowToHigh10(uint8_t *dst, const uint8_t *src, int32_t count) {
  for (int64_t i = 0; i < count; ++i)
    Store16(dst, i, static_cast<uint16_t>((Load16(src, i) & 0x3FF) << 6));
}

}  // namespace tqcs::moves
