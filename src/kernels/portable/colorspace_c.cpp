// Interim bodies of the portable kernel object; replaced by the real ones.
#include "kernels/colorspace.hpp"

#pragma GCC diagnostic ignored "-Wunused-parameter"

namespace tqcs {
void ColorSpaceC::YUV411_2_YUYV(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *, int32_t) {}
void ColorSpaceC::YUV411_2_UYVY(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *, int32_t) {}
void ColorSpaceC::V210_2_YUV422(uint8_t *, uint8_t *, uint8_t *, const uint8_t *, int32_t) {}
void ColorSpaceC::YUV422_2_V210(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *, int32_t) {}
void ColorSpaceC::V210_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::RGB_2_YUV_Matrix(uint8_t *, const uint8_t *, const int16_t *, int32_t) {}
void ColorSpaceC::YUYV_2_YUV422_16(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t) {}
void ColorSpaceC::UYVY_2_YUV422_16(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t) {}
void ColorSpaceC::Scale_Q14(uint8_t *, const uint8_t *, const int16_t *, int32_t) {}
void ColorSpaceC::RGB48_2_YUYV16_Matrix(uint16_t *, const uint16_t *, const int16_t *, const int16_t *, int32_t) {}
void ColorSpaceC::RGB48_2_UYVY16_Matrix(uint16_t *, const uint16_t *, const int16_t *, const int16_t *, int32_t) {}
void ColorSpaceC::YUV422_2_YUV420_UV_Avg(uint8_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::YUV422_16_2_YUV420_16_UV_Avg(uint16_t *, const uint16_t *, int64_t, int32_t) {}
void ColorSpaceC::UV_Interpolate_4Tap(uint8_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::UV_Interpolate_4Tap_16(uint16_t *, const uint16_t *, int64_t, int32_t) {}
void ColorSpaceC::YUYV_2_YUV420_Avg(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::UYVY_2_YUV420_Avg(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::YUYV16_2_YUV420_16_Avg(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint16_t *, int64_t, int32_t) {}
void ColorSpaceC::UYVY16_2_YUV420_16_Avg(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint16_t *, int64_t, int32_t) {}
void ColorSpaceC::YUYV_2_YUV420_16(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::UYVY_2_YUV420_16(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint8_t *, int64_t, int32_t) {}
void ColorSpaceC::YUYV16_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint16_t *, int64_t, int32_t) {}
void ColorSpaceC::UYVY16_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint16_t *, int64_t, int32_t) {}
}  // namespace tqcs
