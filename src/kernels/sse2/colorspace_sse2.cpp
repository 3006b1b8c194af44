// The SSE2 kernel object's own operations.
#include "kernels/colorspace.hpp"
#include "kernels/sse2/rgb_to_yuv_8bit.hpp"

namespace tqcs {

// Whole 16-pixel blocks in SSE2, the rest by the portable operation.
void ColorSpaceSSE2::RGB_2_YUV_Matrix(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                      int32_t count) {
  const int64_t done = sse2::RGB32_Luma_Blocks(dst, src, coef, count);
  ColorSpaceC::RGB_2_YUV_Matrix(dst + done, src + 4 * done, coef, count - done);
}

}  // namespace tqcs
