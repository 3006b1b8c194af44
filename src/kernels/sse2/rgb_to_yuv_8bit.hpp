// What the SSE2 RGB to YUV unit shares with the SSE2 kernel object.
#pragma once

#include <cstdint>

namespace tqcs::sse2 {

// The luma of the whole 16-pixel blocks of a row of 4-byte pixels (elements 2,
// 3, 4 of coef weigh bytes 0, 1, 2, rounded, clamped); returns the number of
// pixels written, count rounded down to a multiple of 16 (0 below 16).
int32_t RGB32_Luma_Blocks(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count);

}  // namespace tqcs::sse2
