// Chroma resampling between 4:2:0 and 4:2:2: the two-row kernels (up and down,
// 8-bit, 10-bit in 16-bit samples, and from packed 4:2:2 rows). The
// whole-plane routines that walk a frame or its fields with them are frame
// operations (frame/chroma_planes.cpp).
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// How a family sees its samples: In() is the value the weights apply to, Out()
// stores a result.
struct Bytes {
  using Src = uint8_t;
  using Dst = uint8_t;
  static int In(uint8_t s) { return s; }
  static uint8_t Out(int v) { return static_cast<uint8_t>(v); }
};

// 10-bit values in bits 6-15 of 16-bit samples.
struct TenBit16 {
  using Src = uint16_t;
  using Dst = uint16_t;
  static int In(uint16_t s) { return s >> 6; }
  static uint16_t Out(int v) { return static_cast<uint16_t>(v << 6); }
};

// Raw 16-bit samples, weighted as they stand.
struct Raw16 {
  using Src = uint16_t;
  using Dst = uint16_t;
  static int In(uint16_t s) { return s; }
  static uint16_t Out(int v) { return static_cast<uint16_t>(v); }
};

// Raw 16-bit samples to bytes. Kept for compatibility: the weighted raw sample
// is shifted by 5 in all (3 for the weights, 2 more), not by 3 + 8, so the
// result can reach 16383 and the stored byte is its low 8 bits (a plain
// truncating cast), not the top 8 bits of the 10-bit value. See docs/compatibility.md.
struct Raw16To8 {
  using Src = uint16_t;
  using Dst = uint8_t;
  static int In(uint16_t s) { return s; }
  static uint8_t Out(int v) { return static_cast<uint8_t>(v); }
};

// ---------------------------------------------------------------------------
// 4:2:0 -> 4:2:2: one chroma row `a` gives two destination rows.
//   First:    a,                  (5a + 3b + r) >> s   with b at +srcPitch
//   Last:     a,                  (7a + b + r) >> s    with b at +srcPitch
//   Interior: (7a + p + r) >> s,  (5a + 3n + r) >> s   with p at -srcPitch,
//                                                      n at +srcPitch
// The second destination row is at +dstPitch; r is half of 1 << s.
enum class Edge { First, Last, Interior };

template <Edge E, class P, int kShift>
void UpsamplePlane(typename P::Dst *dst, int64_t dstPitch, const typename P::Src *src,
                   int64_t srcPitch, int32_t width) {
  constexpr int kRound = 1 << (kShift - 1);
  typename P::Dst *dst2 = Step(dst, dstPitch);
  const typename P::Src *next = Step(src, srcPitch);
  for (int32_t i = 0; i < width; ++i) {
    const int a = P::In(Load(src, i));
    const int n = P::In(Load(next, i));
    if constexpr (E == Edge::Interior) {
      const int p = P::In(Load(Step(src, -srcPitch), i));
      Store(dst, i, P::Out((7 * a + p + kRound) >> kShift));
      Store(dst2, i, P::Out((5 * a + 3 * n + kRound) >> kShift));
    } else {
      constexpr int kWa = E == Edge::First ? 5 : 7;
      Store(dst, i, P::Out(a));
      Store(dst2, i, P::Out((kWa * a + (8 - kWa) * n + kRound) >> kShift));
    }
  }
}

template <Edge E, class P, int kShift = 3>
void Upsample(typename P::Dst *dstU, int64_t dstUPitch, typename P::Dst *dstV, int64_t dstVPitch,
              const typename P::Src *srcU, int64_t srcUPitch, const typename P::Src *srcV,
              int64_t srcVPitch, int32_t width) {
  UpsamplePlane<E, P, kShift>(dstU, dstUPitch, srcU, srcUPitch, width);
  UpsamplePlane<E, P, kShift>(dstV, dstVPitch, srcV, srcVPitch, width);
}

// 4:2:2 -> 4:2:0: (3a + b + 2) >> 2, a the given row, b the row at +srcPitch.
template <class P>
void DownsamplePlane(typename P::Dst *dst, const typename P::Src *src, int64_t srcPitch,
                     int32_t width) {
  const typename P::Src *b = Step(src, srcPitch);
  for (int32_t i = 0; i < width; ++i)
    Store(dst, i, P::Out((3 * P::In(Load(src, i)) + P::In(Load(b, i)) + 2) >> 2));
}

template <class P>
void Downsample(typename P::Dst *dstU, typename P::Dst *dstV, const typename P::Src *srcU,
                int64_t srcUPitch, const typename P::Src *srcV, int64_t srcVPitch, int32_t width) {
  DownsamplePlane<P>(dstU, srcU, srcUPitch, width);
  DownsamplePlane<P>(dstV, srcV, srcVPitch, width);
}

// Two packed 4:2:2 rows (src and src + srcPitch) to 4:2:0: both luma rows (to
// dstY and dstY + dstYPitch) and one chroma row (3a + b + kRound) >> 2, a from
// the first row. Every sample is shifted right by kDown first. count / 2 whole
// pairs: an odd last pixel is not written.
template <class Order, int kDown, int kRound, class Dst, class Src>
void PackedTo420(Dst *dstY, int64_t dstYPitch, Dst *dstU, Dst *dstV, const Src *src,
                 int64_t srcPitch, int32_t count) {
  RowsTo420<Weigh31<kDown, kRound>>(dstY, dstYPitch, dstU, dstV, PackedReader<Order, Src>{src},
                                    PackedReader<Order, Src>{Step(src, srcPitch)}, count);
}

}  // namespace

// 4:2:0 -> 4:2:2 chroma rows.
void YUV420_2_YUV422_UV_FirstRow(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                                 const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                                 int64_t srcVPitch, int32_t width) {
  Upsample<Edge::First, Bytes>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch,
                               width);
}

void YUV420_2_YUV422_UV_LastRow(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                                const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                                int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Last, Bytes>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch,
                              width);
}

void YUV420_2_YUV422_UV_Row(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                            const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV,
                            int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Interior, Bytes>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV,
                                  srcVPitch, width);
}

void YUV420_16_2_YUV422_16_UV_FirstRow(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                       int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                       const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::First, TenBit16>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV,
                                  srcVPitch, width);
}

void YUV420_16_2_YUV422_16_UV_LastRow(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                      int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                      const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Last, TenBit16>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch,
                                 width);
}

void YUV420_16_2_YUV422_16_UV_Row(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                  int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                  const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Interior, TenBit16>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV,
                                     srcVPitch, width);
}

// The interior rule on raw 16-bit samples, rounded by 16 and shifted by 5 into
// bytes (see Raw16To8).
void YUV420_10Bit_2_YUV422_UV_Row(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                  int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                  const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Interior, Raw16To8, 5>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV,
                                        srcVPitch, width);
}

// The interior rule on raw 16-bit samples. Kept for compatibility: the low six
// bits take part in the weighting and the result keeps whatever they give.
// See docs/compatibility.md.
void YUV420_10Bit_2_YUV422_10Bit_UV_Row(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                        int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                        const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Interior, Raw16>(dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV,
                                  srcVPitch, width);
}

// 4:2:2 -> 4:2:0 chroma rows.
void YUV422_2_YUV420_UV_Row(uint8_t *dstU, uint8_t *dstV, const uint8_t *srcU, int64_t srcUPitch,
                            const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Downsample<Bytes>(dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}

void YUV422_16_2_YUV420_16_UV_Row(uint16_t *dstU, uint16_t *dstV, const uint16_t *srcU,
                                  int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch,
                                  int32_t width) {
  Downsample<TenBit16>(dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}

// Two packed 4:2:2 rows to 4:2:0. The 8-bit kernels round the chroma merge;
// the 16-bit-source kernels do not (kept for compatibility). See docs/compatibility.md.
void YUYV_2_YUV420_UV_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                          const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<YUYV, 0, 2>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

void UYVY_2_YUV420_UV_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                          const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<UYVY, 0, 2>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

void YUYV16_2_YUV420_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                         const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<YUYV, 8, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

void UYVY16_2_YUV420_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                         const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<UYVY, 8, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

void UYVY16_2_YUV420_16_Row(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV,
                            const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<UYVY, 0, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

void YUYV16_2_YUV420_16_Row(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV,
                            const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<YUYV, 0, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

}  // namespace tqcs::portable
