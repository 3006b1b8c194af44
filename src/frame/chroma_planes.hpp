// The whole-plane chroma routines of kernel slots 133 to 136: the chroma
// planes of a frame resampled between 4:2:0 and 4:2:2, walked progressively
// or field by field with the two-row kernels of the table in use.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>

namespace tqcs::frame {

void YUV420_2_YUV422_UV_Frame(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                              const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                              int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced,
                              uint8_t flip);
void YUV420_16_2_YUV422_16_UV_Frame(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                    int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                    const uint16_t *srcV, int64_t srcVPitch, int32_t width,
                                    int32_t height, uint8_t interlaced, uint8_t flip);
void YUV422_2_YUV420_UV_Frame(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                              const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                              int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced,
                              uint8_t flip);
void YUV422_16_2_YUV420_16_UV_Frame(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                    int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                    const uint16_t *srcV, int64_t srcVPitch, int32_t width,
                                    int32_t height, uint8_t interlaced, uint8_t flip);

}  // namespace tqcs::frame
