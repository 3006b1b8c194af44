// Portable chroma resampling with the chroma sited on the frame (see
// kernels/chroma_progressive.hpp for the filters and arguments).
#include "kernels/chroma_progressive.hpp"

#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// The value the weights apply to, and the stored sample of a result: 10-bit
// values in bits 6-15 of 16-bit samples.
template <class T>
constexpr int kDrop = sizeof(T) == 2 ? 6 : 0;
template <class T>
int In(T s) {
  return s >> kDrop<T>;
}
template <class T>
T Out(int v) {
  return static_cast<T>(v << kDrop<T>);
}

template <class T>
void DownPlane(T *dst, const T *src, int64_t srcPitch, int32_t width) {
  const T *b = Step(src, srcPitch);
  for (Index i = 0; i < width; ++i)
    Store(dst, i, Out<T>((In(Load(src, i)) + In(Load(b, i)) + 1) >> 1));
}

template <auto kTwin, class T>
void CentredDown(T *dstU, T *dstV, const T *srcU, int64_t srcUPitch, const T *srcV,
                 int64_t srcVPitch, int32_t width) {
  DownPlane(dstU, srcU, srcUPitch, width);
  DownPlane(dstV, srcV, srcVPitch, width);
}

template <CentredEdge E, class T>
void UpPlane(T *dst, int64_t dstPitch, const T *src, int64_t srcPitch, int32_t width) {
  const T *prev = E == CentredEdge::First ? src : Step(src, -srcPitch);
  const T *next = E == CentredEdge::Last ? src : Step(src, srcPitch);
  T *lower = Step(dst, dstPitch);
  for (Index i = 0; i < width; ++i) {
    const int a = In(Load(src, i)), p = In(Load(prev, i)), n = In(Load(next, i));
    Store(dst, i, Out<T>((3 * a + p + 2) >> 2));
    Store(lower, i, Out<T>((3 * a + n + 2) >> 2));
  }
}

template <auto kTwin, CentredEdge E, class T>
void CentredUp(T *dstU, int64_t dstUPitch, T *dstV, int64_t dstVPitch, const T *srcU,
               int64_t srcUPitch, const T *srcV, int64_t srcVPitch, int32_t width) {
  UpPlane<E>(dstU, dstUPitch, srcU, srcUPitch, width);
  UpPlane<E>(dstV, dstVPitch, srcV, srcVPitch, width);
}

}  // namespace

// The portable tier is its own twin.
TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_DEFINE_CENTRED)

}  // namespace tqcs::portable
