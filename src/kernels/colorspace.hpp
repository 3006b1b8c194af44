// The kernel objects: an abstract interface of 23 row operations in a fixed
// order, implemented by the portable ColorSpaceC and by ColorSpaceSSE2.
// Pointers come first (destinations, then sources), pitches where two rows are
// involved (signed byte offsets), the pixel count last. Pitches of 16-bit
// planes are in bytes too.
#pragma once

#include <cstdint>

namespace tqcs {

class ColorSpace {
 public:
  // 0, 1: planar 4:1:1 to packed 4:2:2, each chroma sample serving two pairs.
  virtual void YUV411_2_YUYV(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) = 0;
  virtual void YUV411_2_UYVY(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) = 0;
  // 2, 3: V210 words to 8-bit planes (each 10-bit field >> 2) and back (<< 2).
  virtual void V210_2_YUV422(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) = 0;
  virtual void YUV422_2_V210(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) = 0;
  // 4: two V210 rows (src and src + srcPitch) to two luma rows and one 4:2:0
  // chroma row, chroma (3a + b + 2) >> 2.
  virtual void V210_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                             const uint8_t *src, int64_t srcPitch, int32_t count) = 0;
  // 5: 4-byte pixels through one Q14 matrix row (elements 2, 3, 4 weigh bytes
  // 0, 1, 2), offset element << 13 added before the shift; one byte out per
  // pixel. This is the operation the RGB32 grey drivers call.
  virtual void RGB_2_YUV_Matrix(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                int32_t count) = 0;
  // 6, 7: 8-bit packed 4:2:2 to 16-bit planes (<< 8).
  virtual void YUYV_2_YUV422_16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint8_t *src,
                                int32_t count) = 0;
  virtual void UYVY_2_YUV422_16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint8_t *src,
                                int32_t count) = 0;
  // 8: each byte times a Q14 coefficient (coef[i % 8]), + 8192, >> 14, clamped.
  virtual void Scale_Q14(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) = 0;
  // 9, 10: 16-bit RGB (10 significant bits) to 16-bit packed 4:2:2.
  virtual void RGB48_2_YUYV16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                     const int16_t *coefUV, int32_t count) = 0;
  virtual void RGB48_2_UYVY16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                     const int16_t *coefUV, int32_t count) = 0;
  // 11, 12: two chroma rows (src, src + srcPitch) to one, (a + b + 1) >> 1.
  virtual void YUV422_2_YUV420_UV_Avg(uint8_t *dst, const uint8_t *src, int64_t srcPitch,
                                      int32_t count) = 0;
  virtual void YUV422_16_2_YUV420_16_UV_Avg(uint16_t *dst, const uint16_t *src, int64_t srcPitch,
                                            int32_t count) = 0;
  // 13, 14: a new row between rows b and c of a, b, c, d (src + k * srcPitch):
  // (9(b + c) - a - d + 8) >> 4, clamped.
  virtual void UV_Interpolate_4Tap(uint8_t *dst, const uint8_t *src, int64_t srcPitch,
                                   int32_t count) = 0;
  virtual void UV_Interpolate_4Tap_16(uint16_t *dst, const uint16_t *src, int64_t srcPitch,
                                      int32_t count) = 0;
  // 15 to 22: two packed rows (src, src + srcPitch) to two luma rows (dstY,
  // dstY + dstYPitch) and one 4:2:0 chroma row, chroma averaged with rounding.
  virtual void YUYV_2_YUV420_Avg(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                 const uint8_t *src, int64_t srcPitch, int32_t count) = 0;
  virtual void UYVY_2_YUV420_Avg(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                 const uint8_t *src, int64_t srcPitch, int32_t count) = 0;
  virtual void YUYV16_2_YUV420_16_Avg(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                      uint16_t *dstV, const uint16_t *src, int64_t srcPitch,
                                      int32_t count) = 0;
  virtual void UYVY16_2_YUV420_16_Avg(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                      uint16_t *dstV, const uint16_t *src, int64_t srcPitch,
                                      int32_t count) = 0;
  virtual void YUYV_2_YUV420_16(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) = 0;
  virtual void UYVY_2_YUV420_16(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) = 0;
  virtual void YUYV16_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                               const uint16_t *src, int64_t srcPitch, int32_t count) = 0;
  virtual void UYVY16_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                               const uint16_t *src, int64_t srcPitch, int32_t count) = 0;

 protected:
  ColorSpace() = default;
  ~ColorSpace() = default;
};

// The portable implementation: the reference every other one matches.
class ColorSpaceC : public ColorSpace {
 public:
  void YUV411_2_YUYV(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                     int32_t) override;
  void YUV411_2_UYVY(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                     int32_t) override;
  void V210_2_YUV422(uint8_t *, uint8_t *, uint8_t *, const uint8_t *, int32_t) override;
  void YUV422_2_V210(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                     int32_t) override;
  void V210_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
                     int32_t) override;
  void RGB_2_YUV_Matrix(uint8_t *, const uint8_t *, const int16_t *, int32_t) override;
  void YUYV_2_YUV422_16(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t) override;
  void UYVY_2_YUV422_16(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t) override;
  void Scale_Q14(uint8_t *, const uint8_t *, const int16_t *, int32_t) override;
  void RGB48_2_YUYV16_Matrix(uint16_t *, const uint16_t *, const int16_t *, const int16_t *,
                             int32_t) override;
  void RGB48_2_UYVY16_Matrix(uint16_t *, const uint16_t *, const int16_t *, const int16_t *,
                             int32_t) override;
  void YUV422_2_YUV420_UV_Avg(uint8_t *, const uint8_t *, int64_t, int32_t) override;
  void YUV422_16_2_YUV420_16_UV_Avg(uint16_t *, const uint16_t *, int64_t, int32_t) override;
  void UV_Interpolate_4Tap(uint8_t *, const uint8_t *, int64_t, int32_t) override;
  void UV_Interpolate_4Tap_16(uint16_t *, const uint16_t *, int64_t, int32_t) override;
  void YUYV_2_YUV420_Avg(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
                         int32_t) override;
  void UYVY_2_YUV420_Avg(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
                         int32_t) override;
  void YUYV16_2_YUV420_16_Avg(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint16_t *,
                              int64_t, int32_t) override;
  void UYVY16_2_YUV420_16_Avg(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint16_t *,
                              int64_t, int32_t) override;
  void YUYV_2_YUV420_16(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint8_t *, int64_t,
                        int32_t) override;
  void UYVY_2_YUV420_16(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint8_t *, int64_t,
                        int32_t) override;
  void YUYV16_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint16_t *, int64_t,
                       int32_t) override;
  void UYVY16_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint16_t *, int64_t,
                       int32_t) override;
};

// The SSE2 kernel object (sse2/colorspace_sse2.cpp): every operation in
// SSE2 blocks, the rest of each row by the portable object's operation.
class ColorSpaceSSE2 : public ColorSpaceC {
 public:
  void YUV411_2_YUYV(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                     int32_t) override;
  void YUV411_2_UYVY(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                     int32_t) override;
  void V210_2_YUV422(uint8_t *, uint8_t *, uint8_t *, const uint8_t *, int32_t) override;
  void YUV422_2_V210(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                     int32_t) override;
  void V210_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
                     int32_t) override;
  void RGB_2_YUV_Matrix(uint8_t *, const uint8_t *, const int16_t *, int32_t) override;
  void YUYV_2_YUV422_16(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t) override;
  void UYVY_2_YUV422_16(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t) override;
  void Scale_Q14(uint8_t *, const uint8_t *, const int16_t *, int32_t) override;
  void RGB48_2_YUYV16_Matrix(uint16_t *, const uint16_t *, const int16_t *, const int16_t *,
                             int32_t) override;
  void RGB48_2_UYVY16_Matrix(uint16_t *, const uint16_t *, const int16_t *, const int16_t *,
                             int32_t) override;
  void YUV422_2_YUV420_UV_Avg(uint8_t *, const uint8_t *, int64_t, int32_t) override;
  void YUV422_16_2_YUV420_16_UV_Avg(uint16_t *, const uint16_t *, int64_t, int32_t) override;
  void UV_Interpolate_4Tap(uint8_t *, const uint8_t *, int64_t, int32_t) override;
  void UV_Interpolate_4Tap_16(uint16_t *, const uint16_t *, int64_t, int32_t) override;
  void YUYV_2_YUV420_Avg(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
                         int32_t) override;
  void UYVY_2_YUV420_Avg(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
                         int32_t) override;
  void YUYV16_2_YUV420_16_Avg(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint16_t *,
                              int64_t, int32_t) override;
  void UYVY16_2_YUV420_16_Avg(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint16_t *,
                              int64_t, int32_t) override;
  void YUYV_2_YUV420_16(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint8_t *, int64_t,
                        int32_t) override;
  void UYVY_2_YUV420_16(uint16_t *, int64_t, uint16_t *, uint16_t *, const uint8_t *, int64_t,
                        int32_t) override;
  void YUYV16_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint16_t *, int64_t,
                       int32_t) override;
  void UYVY16_2_YUV420(uint8_t *, int64_t, uint8_t *, uint8_t *, const uint16_t *, int64_t,
                       int32_t) override;
};

// Selects (constructing on first need) the single instance of each class.
// Both share one guard byte: bit 1 marks ColorSpaceSSE2, bit 2 ColorSpaceC.
ColorSpace *ColorSpaceSSE2Instance();
ColorSpace *ColorSpaceCInstance();
uint8_t KernelObjectGuard();

}  // namespace tqcs
