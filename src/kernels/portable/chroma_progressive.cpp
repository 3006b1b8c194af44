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

template <class T>
void Down(T *dstU, T *dstV, const T *srcU, int64_t srcUPitch, const T *srcV, int64_t srcVPitch,
          int32_t width) {
  DownPlane(dstU, srcU, srcUPitch, width);
  DownPlane(dstV, srcV, srcVPitch, width);
}

// Which neighbours an up row reads; an edge stands in for the missing one.
enum class Edge { First, Last, Interior };

template <Edge E, class T>
void UpPlane(T *dst, int64_t dstPitch, const T *src, int64_t srcPitch, int32_t width) {
  const T *prev = E == Edge::First ? src : Step(src, -srcPitch);
  const T *next = E == Edge::Last ? src : Step(src, srcPitch);
  T *lower = Step(dst, dstPitch);
  for (Index i = 0; i < width; ++i) {
    const int a = In(Load(src, i)), p = In(Load(prev, i)), n = In(Load(next, i));
    Store(dst, i, Out<T>((3 * a + p + 2) >> 2));
    Store(lower, i, Out<T>((3 * a + n + 2) >> 2));
  }
}

template <Edge E, class T>
void Up(T *dstU, int64_t dstUPitch, T *dstV, int64_t dstVPitch, const T *srcU, int64_t srcUPitch,
        const T *srcV, int64_t srcVPitch, int32_t width) {
  UpPlane<E>(dstU, dstUPitch, srcU, srcUPitch, width);
  UpPlane<E>(dstV, dstVPitch, srcV, srcVPitch, width);
}

}  // namespace

void YUV422_2_YUV420_UV_Centred_Row(uint8_t *dstU, uint8_t *dstV, const uint8_t *srcU,
                                    int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch,
                                    int32_t width) {
  Down(dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}
void YUV422_16_2_YUV420_16_UV_Centred_Row(uint16_t *dstU, uint16_t *dstV, const uint16_t *srcU,
                                          int64_t srcUPitch, const uint16_t *srcV,
                                          int64_t srcVPitch, int32_t width) {
  Down(dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}

#define TQCS_CENTRED_UP(name, edge, T)                                                         \
  void name(T *dstU, int64_t dstUPitch, T *dstV, int64_t dstVPitch, const T *srcU,             \
            int64_t srcUPitch, const T *srcV, int64_t srcVPitch, int32_t width) {              \
    Up<Edge::edge>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width); \
  }
TQCS_CENTRED_UP(YUV420_2_YUV422_UV_Centred_FirstRow, First, uint8_t)
TQCS_CENTRED_UP(YUV420_2_YUV422_UV_Centred_LastRow, Last, uint8_t)
TQCS_CENTRED_UP(YUV420_2_YUV422_UV_Centred_Row, Interior, uint8_t)
TQCS_CENTRED_UP(YUV420_16_2_YUV422_16_UV_Centred_FirstRow, First, uint16_t)
TQCS_CENTRED_UP(YUV420_16_2_YUV422_16_UV_Centred_LastRow, Last, uint16_t)
TQCS_CENTRED_UP(YUV420_16_2_YUV422_16_UV_Centred_Row, Interior, uint16_t)
#undef TQCS_CENTRED_UP

}  // namespace tqcs::portable
