#include "frame/chroma_planes.hpp"

#include "base/state.hpp"
#include "frame/views.hpp"
#include "frame/yuv420_rows.hpp"

namespace tqcs::frame {
namespace {

template <class D, class S>
using WidenKernel = void (*)(D *, int64_t, D *, int64_t, const S *, int64_t, const S *, int64_t,
                             int32_t);
template <class D, class S>
using MergeKernel = void (*)(D *, D *, const S *, int64_t, const S *, int64_t, int32_t);

template <class T>
Planes<2> ChromaPlanes(T *u, int64_t uPitch, T *v, int64_t vPitch) {
  return {Plane{Bytes(u), uPitch}, Plane{Bytes(v), vPitch}};
}

// 4:2:0 -> 4:2:2 chroma through the first-row, last-row and interior kernels,
// each field (or the progressive frame) walked from its sited edge. In an
// interlaced frame two rows left after the last group both take the last
// chroma row; a last single row of an odd height is not written. Flip writes
// the destination planes bottom-up.
template <class D, class S>
void WidenPlanes(WidenKernel<D, S> first, WidenKernel<D, S> last, WidenKernel<D, S> interior,
                 D *dstU, int64_t dstUPitch, D *dstV, int64_t dstVPitch, const S *srcU,
                 int64_t srcUPitch, const S *srcV, int64_t srcVPitch, int32_t width, int32_t height,
                 uint8_t interlaced, uint8_t flip) {
  const int32_t half = width / 2;
  if (half < 1 || height < 2) return;
  auto dst = ChromaPlanes(dstU, dstUPitch, dstV, dstVPitch);
  if (flip) TurnUpsideDown(dst, height);
  const FrameView out{dst};
  const FrameView in{ChromaPlanes(srcU, srcUPitch, srcV, srcVPitch)};
  const int64_t rest = ForEachWidenStep(height, interlaced, [&](const WidenStep &st) {
    const auto kernel = st.kind == Upsample::kFirst  ? first
                        : st.kind == Upsample::kLast ? last
                                                     : interior;
    Widen(kernel, st, out, 0, in, 0, half);
  });
  if (interlaced && (height & 2))
    Widen(last, WidenStep{Upsample::kLast, rest / 2, rest / 2, rest, rest + 1}, out, 0, in, 0,
          half);
}

// 4:2:2 -> 4:2:0 chroma through the one-row merge kernel (a weighted 3:1),
// pairs taken within each field of an interlaced frame. Flip writes the
// destination planes bottom-up.
template <class D, class S>
void MergePlanes(MergeKernel<D, S> merge, D *dstU, int64_t dstUPitch, D *dstV, int64_t dstVPitch,
                 const S *srcU, int64_t srcUPitch, const S *srcV, int64_t srcVPitch, int32_t width,
                 int32_t height, uint8_t interlaced, uint8_t flip) {
  const int32_t half = width / 2;
  const int32_t rows = height >> 1;
  if (half < 1 || rows < 1) return;
  auto dst = ChromaPlanes(dstU, dstUPitch, dstV, dstVPitch);
  if (flip) TurnUpsideDown(dst, rows);
  const FrameView out{dst};
  const FrameView in{ChromaPlanes(srcU, srcUPitch, srcV, srcVPitch)};
  ForEachMergePair(height, interlaced,
                   [&](const MergePair &m) { Merge(merge, m, out, 0, in, 0, half); });
}

}  // namespace

// Each reads the kernel table in use at every call.
void YUV420_2_YUV422_UV_Frame(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                              const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                              int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced,
                              uint8_t flip) {
  const TCS_KernelTable &k = Kernels();
  WidenPlanes(k.YUV420_2_YUV422_UV_FirstRow, k.YUV420_2_YUV422_UV_LastRow, k.YUV420_2_YUV422_UV_Row,
              dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width, height,
              interlaced, flip);
}

void YUV420_16_2_YUV422_16_UV_Frame(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                    int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                    const uint16_t *srcV, int64_t srcVPitch, int32_t width,
                                    int32_t height, uint8_t interlaced, uint8_t flip) {
  const TCS_KernelTable &k = Kernels();
  WidenPlanes(k.YUV420_16_2_YUV422_16_UV_FirstRow, k.YUV420_16_2_YUV422_16_UV_LastRow,
              k.YUV420_16_2_YUV422_16_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch,
              srcV, srcVPitch, width, height, interlaced, flip);
}

void YUV422_2_YUV420_UV_Frame(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                              const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                              int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced,
                              uint8_t flip) {
  MergePlanes(Kernels().YUV422_2_YUV420_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch,
              srcV, srcVPitch, width, height, interlaced, flip);
}

void YUV422_16_2_YUV420_16_UV_Frame(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                    int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                    const uint16_t *srcV, int64_t srcVPitch, int32_t width,
                                    int32_t height, uint8_t interlaced, uint8_t flip) {
  MergePlanes(Kernels().YUV422_16_2_YUV420_16_UV_Row, dstU, dstUPitch, dstV, dstVPitch, srcU,
              srcUPitch, srcV, srcVPitch, width, height, interlaced, flip);
}

}  // namespace tqcs::frame
