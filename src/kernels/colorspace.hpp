// The kernel objects: an abstract interface of 23 row operations in a fixed
// order, implemented by the portable ColorSpaceC and by ColorSpaceSSE2.
// Pointers come first (destinations, then sources), pitches where two rows are
// involved (signed byte offsets), the pixel count last. Pitches of 16-bit
// planes are in bytes too.
#pragma once

#include <cstdint>

namespace tqcs {

// The 23 operations in their fixed order (the order of the interface's
// virtual functions): X(name, return type, parameter list). The interface and
// both implementations are declared from this one list.
// clang-format off
#define TQCS_COLORSPACE_OPS(X)                                                                  \
  /* 0, 1: planar 4:1:1 to packed 4:2:2, each chroma sample serving two pairs. */               \
  X(YUV411_2_YUYV, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,               \
                          const uint8_t *srcV, int32_t count))                                  \
  X(YUV411_2_UYVY, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,               \
                          const uint8_t *srcV, int32_t count))                                  \
  /* 2, 3: V210 words to 8-bit planes (each 10-bit field >> 2) and back (<< 2). */              \
  X(V210_2_YUV422, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,      \
                          int32_t count))                                                       \
  X(YUV422_2_V210, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,               \
                          const uint8_t *srcV, int32_t count))                                  \
  /* 4: two V210 rows (src and src + srcPitch) to two luma rows and one 4:2:0 */                \
  /* chroma row, chroma (3a + b + 2) >> 2. */                                                   \
  X(V210_2_YUV420, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,       \
                          const uint8_t *src, int64_t srcPitch, int32_t count))                 \
  /* 5: 4-byte pixels through one Q14 matrix row (elements 2, 3, 4 weigh bytes */               \
  /* 0, 1, 2), offset element << 13 added before the shift; one byte out per */                 \
  /* pixel. This is the operation the RGB32 grey drivers call. */                               \
  X(RGB_2_YUV_Matrix, void, (uint8_t *dst, const uint8_t *src, const int16_t *coef,             \
                             int32_t count))                                                    \
  /* 6, 7: 8-bit packed 4:2:2 to 16-bit planes (<< 8). */                                       \
  X(YUYV_2_YUV422_16, void, (uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,                    \
                             const uint8_t *src, int32_t count))                                \
  X(UYVY_2_YUV422_16, void, (uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,                    \
                             const uint8_t *src, int32_t count))                                \
  /* 8: each byte times a Q14 coefficient (coef[i % 8]), + 8192, >> 14, clamped. */             \
  X(Scale_Q14, void, (uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count))    \
  /* 9, 10: 16-bit RGB (10 significant bits) to 16-bit packed 4:2:2. */                         \
  X(RGB48_2_YUYV16_Matrix, void, (uint16_t *dst, const uint16_t *src, const int16_t *coefY,     \
                                  const int16_t *coefUV, int32_t count))                        \
  X(RGB48_2_UYVY16_Matrix, void, (uint16_t *dst, const uint16_t *src, const int16_t *coefY,     \
                                  const int16_t *coefUV, int32_t count))                        \
  /* 11, 12: two chroma rows (src, src + srcPitch) to one, (a + b + 1) >> 1. */                 \
  X(YUV422_2_YUV420_UV_Avg, void, (uint8_t *dst, const uint8_t *src, int64_t srcPitch,          \
                                   int32_t count))                                              \
  X(YUV422_16_2_YUV420_16_UV_Avg, void, (uint16_t *dst, const uint16_t *src, int64_t srcPitch,  \
                                         int32_t count))                                        \
  /* 13, 14: a new row between rows b and c of a, b, c, d (src + k * srcPitch): */              \
  /* (9(b + c) - a - d + 8) >> 4, clamped. */                                                   \
  X(UV_Interpolate_4Tap, void, (uint8_t *dst, const uint8_t *src, int64_t srcPitch,             \
                                int32_t count))                                                 \
  X(UV_Interpolate_4Tap_16, void, (uint16_t *dst, const uint16_t *src, int64_t srcPitch,        \
                                   int32_t count))                                              \
  /* 15 to 22: two packed rows (src, src + srcPitch) to two luma rows (dstY, */                 \
  /* dstY + dstYPitch) and one 4:2:0 chroma row, chroma averaged with rounding. */              \
  X(YUYV_2_YUV420_Avg, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,   \
                              const uint8_t *src, int64_t srcPitch, int32_t count))             \
  X(UYVY_2_YUV420_Avg, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,   \
                              const uint8_t *src, int64_t srcPitch, int32_t count))             \
  X(YUYV16_2_YUV420_16_Avg, void, (uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,           \
                                   uint16_t *dstV, const uint16_t *src, int64_t srcPitch,       \
                                   int32_t count))                                              \
  X(UYVY16_2_YUV420_16_Avg, void, (uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,           \
                                   uint16_t *dstV, const uint16_t *src, int64_t srcPitch,       \
                                   int32_t count))                                              \
  X(YUYV_2_YUV420_16, void, (uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV, \
                             const uint8_t *src, int64_t srcPitch, int32_t count))              \
  X(UYVY_2_YUV420_16, void, (uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV, \
                             const uint8_t *src, int64_t srcPitch, int32_t count))              \
  X(YUYV16_2_YUV420, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,     \
                            const uint16_t *src, int64_t srcPitch, int32_t count))              \
  X(UYVY16_2_YUV420, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,     \
                            const uint16_t *src, int64_t srcPitch, int32_t count))
// clang-format on

#define TQCS_COLORSPACE_PURE(name, ret, params) virtual ret name params = 0;
#define TQCS_COLORSPACE_OVERRIDE(name, ret, params) ret name params override;

class ColorSpace {
 public:
  TQCS_COLORSPACE_OPS(TQCS_COLORSPACE_PURE)

 protected:
  ColorSpace() = default;
  ~ColorSpace() = default;
};

// The portable implementation: the reference every other one matches.
class ColorSpaceC : public ColorSpace {
 public:
  TQCS_COLORSPACE_OPS(TQCS_COLORSPACE_OVERRIDE)
};

// The SSE2 kernel object (sse2/colorspace_sse2.cpp): every operation in
// SSE2 blocks, the rest of each row by the portable object's operation.
class ColorSpaceSSE2 : public ColorSpaceC {
 public:
  TQCS_COLORSPACE_OPS(TQCS_COLORSPACE_OVERRIDE)
};

#undef TQCS_COLORSPACE_PURE
#undef TQCS_COLORSPACE_OVERRIDE

// Selects (constructing on first need) the single instance of each class.
// Both share one guard byte: bit 1 marks ColorSpaceSSE2, bit 2 ColorSpaceC.
ColorSpace *ColorSpaceSSE2Instance();
ColorSpace *ColorSpaceCInstance();
uint8_t KernelObjectGuard();

}  // namespace tqcs
