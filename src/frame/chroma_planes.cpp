#include "frame/chroma_planes.hpp"

#include "base/state.hpp"
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::frame {
namespace {

using portable::Step;

// ---------------------------------------------------------------------------
// Whole planes. width and height are luma dimensions: chroma rows hold
// width / 2 samples. Flip starts the destination planes at their last row and
// walks them with negated pitches.

// 4:2:0 -> 4:2:2 chroma, through the first-row, last-row and interior kernels.
// Interlaced: each field's chroma rows are walked with doubled pitches; the
// bottom field of the interior and last groups is walked bottom-up.
template <class Dst, class Src, class Kernel>
void UpsampleFrame(Kernel first, Kernel last, Kernel interior, Dst *dstU, int64_t dstUPitch,
                   Dst *dstV, int64_t dstVPitch, const Src *srcU, int64_t srcUPitch,
                   const Src *srcV, int64_t srcVPitch, int32_t width, int32_t height,
                   uint8_t interlaced, uint8_t flip) {
  const int32_t chromaWidth = width / 2;
  if (chromaWidth < 1 || height < 2) return;
  if (flip) {
    dstU = Step(dstU, int64_t{height - 1} * dstUPitch);
    dstV = Step(dstV, int64_t{height - 1} * dstVPitch);
    dstUPitch = -dstUPitch;
    dstVPitch = -dstVPitch;
  }
  // One kernel call: destination row and row step, source row and row step.
  auto call = [&](Kernel kernel, int64_t dstRow, int64_t dstStep, int64_t srcRow, int64_t srcStep) {
    kernel(Step(dstU, dstRow * dstUPitch), dstStep * dstUPitch, Step(dstV, dstRow * dstVPitch),
           dstStep * dstVPitch, Step(srcU, srcRow * srcUPitch), srcStep * srcUPitch,
           Step(srcV, srcRow * srcVPitch), srcStep * srcVPitch, chromaWidth);
  };
  if (interlaced) {
    // Group g: 4:2:2 rows 4g..4g+3 from top-field row 2g and bottom-field row
    // 2g + 1 of the 4:2:0 plane.
    const int64_t groups = height >> 2;
    for (int64_t g = 0; g < groups; ++g) {
      const int64_t top = 2 * g, bottom = 2 * g + 1;
      if (groups == 1) {
        // A field with one chroma row copies it to both of its rows.
        call(first, 0, 2, top, 0);
        call(last, 1, 2, bottom, 0);
      } else if (g == 0) {
        call(first, 4 * g, 2, top, 2);
        call(last, 4 * g + 1, 2, bottom, 2);
      } else if (g == groups - 1) {
        call(last, 4 * g + 2, -2, top, -2);
        call(first, 4 * g + 3, -2, bottom, -2);
      } else {
        call(interior, 4 * g, 2, top, 2);
        call(interior, 4 * g + 3, -2, bottom, -2);
      }
    }
    // Two remaining rows both copy the last 4:2:0 chroma row; a last single
    // row of an odd height is not written.
    if (height & 2) call(last, 4 * groups, 1, 2 * groups, 0);
  } else {
    // Chroma row c serves rows 2c and 2c + 1; the last one is walked upward.
    const int64_t rows = height >> 1;
    if (rows == 1) {
      call(first, 0, 1, 0, 0);
      return;
    }
    for (int64_t c = 0; c < rows; ++c) {
      if (c == 0)
        call(first, 0, 1, 0, 1);
      else if (c == rows - 1)
        call(last, 2 * c + 1, -1, c, -1);
      else
        call(interior, 2 * c, 1, c, 1);
    }
  }
}

// 4:2:2 -> 4:2:0 chroma through the one-row merge kernel (a weighted 3:1).
// Interlaced: destination row 2g from source rows 4g (a) and 4g + 2, row
// 2g + 1 from rows 4g + 3 (a) and 4g + 1, so chroma never mixes fields; two
// remaining rows merge as a progressive pair.
template <class Dst, class Src, class Kernel>
void DownsampleFrame(Kernel merge, Dst *dstU, int64_t dstUPitch, Dst *dstV, int64_t dstVPitch,
                     const Src *srcU, int64_t srcUPitch, const Src *srcV, int64_t srcVPitch,
                     int32_t width, int32_t height, uint8_t interlaced, uint8_t flip) {
  const int32_t chromaWidth = width / 2;
  const int32_t rows = height >> 1;
  if (chromaWidth < 1 || rows < 1) return;
  if (flip) {
    dstU = Step(dstU, int64_t{rows - 1} * dstUPitch);
    dstV = Step(dstV, int64_t{rows - 1} * dstVPitch);
    dstUPitch = -dstUPitch;
    dstVPitch = -dstVPitch;
  }
  auto call = [&](int64_t dstRow, int64_t srcRow, int64_t srcStep) {
    merge(Step(dstU, dstRow * dstUPitch), Step(dstV, dstRow * dstVPitch),
          Step(srcU, srcRow * srcUPitch), srcStep * srcUPitch, Step(srcV, srcRow * srcVPitch),
          srcStep * srcVPitch, chromaWidth);
  };
  if (interlaced) {
    const int64_t groups = height >> 2;
    for (int64_t g = 0; g < groups; ++g) {
      call(2 * g, 4 * g, 2);
      call(2 * g + 1, 4 * g + 3, -2);
    }
    if (height & 2) call(2 * groups, 4 * groups, 1);
  } else {
    for (int64_t c = 0; c < rows; ++c) call(c, 2 * c, 1);
  }
}

}  // namespace

void YUV420_2_YUV422_UV_Frame(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                              const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                              int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced,
                              uint8_t flip) {
  const TCS_KernelTable &k = Kernels();
  UpsampleFrame(k.YUV420_2_YUV422_UV_FirstRow, k.YUV420_2_YUV422_UV_LastRow,
                k.YUV420_2_YUV422_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV,
                srcVPitch, width, height, interlaced, flip);
}

void YUV420_16_2_YUV422_16_UV_Frame(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                    int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                    const uint16_t *srcV, int64_t srcVPitch, int32_t width,
                                    int32_t height, uint8_t interlaced, uint8_t flip) {
  const TCS_KernelTable &k = Kernels();
  UpsampleFrame(k.YUV420_16_2_YUV422_16_UV_FirstRow, k.YUV420_16_2_YUV422_16_UV_LastRow,
                k.YUV420_16_2_YUV422_16_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch,
                srcV, srcVPitch, width, height, interlaced, flip);
}

void YUV422_2_YUV420_UV_Frame(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                              const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                              int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced,
                              uint8_t flip) {
  DownsampleFrame(Kernels().YUV422_2_YUV420_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU,
                  srcUPitch, srcV, srcVPitch, width, height, interlaced, flip);
}

void YUV422_16_2_YUV420_16_UV_Frame(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                    int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                    const uint16_t *srcV, int64_t srcVPitch, int32_t width,
                                    int32_t height, uint8_t interlaced, uint8_t flip) {
  DownsampleFrame(Kernels().YUV422_16_2_YUV420_16_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU,
                  srcUPitch, srcV, srcVPitch, width, height, interlaced, flip);
}

}  // namespace tqcs::frame
