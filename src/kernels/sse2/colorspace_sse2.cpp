// The SSE2 kernel object's own operations.
#include "kernels/colorspace.hpp"

namespace tqcs {

void ColorSpaceSSE2::RGB_2_YUV_Matrix(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                      int32_t count) {
  ColorSpaceC::RGB_2_YUV_Matrix(dst, src, coef, count);
}

}  // namespace tqcs
