// The portable kernel object: every operation of ColorSpace in plain C++.
// These bodies are the reference that the SIMD object must reproduce exactly.
//
// Row extents (nothing is read or written outside them):
// - Packed 4:2:2 rows that are READ hold count / 2 pairs; an odd last pixel is
//   not written to any destination.
// - Packed 4:2:2 rows that are WRITTEN from a full-resolution source hold
//   ceil(count / 2) pairs; an odd last pixel becomes a whole pair with its own
//   luma twice and its own chroma.
// - Planar 4:2:2 / 4:2:0 chroma rows hold count / 2 samples, 4:1:1 count / 4.
// - V210 rows are packed 4:2:2 rows too: they hold the ceil(4 * (count / 2) / 3)
//   words that carry count / 2 pairs; an odd last pixel is not converted.
// - The chroma-row operations (11 to 14) count samples of the chroma row.
#include "kernels/colorspace.hpp"
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs {
namespace {

// The shared pixel helpers: sample access, pair readers and writers, V210.
using namespace portable;

// ---- Ops 0, 1: planar 4:1:1 to packed 4:2:2 ------------------------------
// Each chroma sample serves the two pairs of its group of four pixels. The
// 1 to 3 pixels after the last whole group have no chroma sample in the
// count / 4 chroma row and are not written.
template <class Order>
void Yuv411ToPacked(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                    int32_t count) {
  const PackedWriter<Order> out{dst};
  for (Index g = 0; g < count / 4; ++g) {
    const uint32_t u = srcU[g], v = srcV[g];
    const uint8_t *y = srcY + 4 * g;
    out.Pair(2 * g, y[0], u, y[1], v);
    out.Pair(2 * g + 1, y[2], u, y[3], v);
  }
}

// ---- Ops 2, 3, 4: V210 ---------------------------------------------------
// V210 is packed 4:2:2 (see pixels.hpp for the word layout): count / 2 pairs
// are converted (an odd last pixel is not), carried by ceil(4 * (count / 2) /
// 3) words. The 8-bit value of a 10-bit field is field >> 2, and back << 2.

// Chroma of the two rows: the 8-bit values weighted 3:1, (3a + b + 2) >> 2.
void V210ToYuv420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                  const uint8_t *src, int64_t srcPitch, int32_t count) {
  RowsTo420<Weigh31<2, 2>>(dstY, dstYPitch, dstU, dstV, V210Reader{src},
                           V210Reader{Step(src, srcPitch)}, count);
}

// ---- Op 8: per-sample Q14 gain -------------------------------------------
// count is the number of bytes; the eight coefficients repeat along the row.
void ScaleQ14(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  for (Index i = 0; i < count; ++i) dst[i] = Clamp8((src[i] * coef[i % 8] + 8192) >> 14);
}

// ---- Ops 11 to 14: chroma rows -------------------------------------------
inline uint32_t Avg(uint32_t a, uint32_t b) { return (a + b + 1) >> 1; }

template <class T>
void AverageRows(T *dst, const T *src, int64_t srcPitch, int32_t count) {
  const T *next = Step(src, srcPitch);
  for (Index i = 0; i < count; ++i) Store(dst, i, Avg(Load(src, i), Load(next, i)));
}

// A new row midway between rows b and c of a, b, c, d.
template <class T>
void Interpolate4Tap(T *dst, const T *src, int64_t srcPitch, int32_t count) {
  constexpr int kMax = T(~T(0));
  const T *a = src, *b = Step(a, srcPitch), *c = Step(b, srcPitch), *d = Step(c, srcPitch);
  for (Index i = 0; i < count; ++i) {
    const int sum = 9 * (Load(b, i) + Load(c, i)) - Load(a, i) - Load(d, i) + 8;
    Store(dst, i, Clamp(sum >> 4, kMax));
  }
}

// ---- Ops 15 to 22: two packed 4:2:2 rows to 4:2:0 ------------------------
// kShift moves each sample between depths: +8 for 8 to 16 bits, -8 for 16 to
// 8 bits, 0 to keep it. Chroma is averaged first and then moved, which makes
// the 16-to-8-bit chroma (a + b + 1) >> 9.
template <int kShift>
struct AverageThenShift {
  static uint32_t Luma(uint32_t s) { return ShiftBy<kShift>(s); }
  static uint32_t Chroma(uint32_t a, uint32_t b) { return ShiftBy<kShift>(Avg(a, b)); }
};

template <class Order, int kShift, class D, class S>
void PackedRowsTo420(D *dstY, int64_t dstYPitch, D *dstU, D *dstV, const S *src, int64_t srcPitch,
                     int32_t count) {
  RowsTo420<AverageThenShift<kShift>>(dstY, dstYPitch, dstU, dstV, PackedReader<Order, S>{src},
                                      PackedReader<Order, S>{Step(src, srcPitch)}, count);
}

}  // namespace

// ---- ColorSpaceC: one-line forwards --------------------------------------

void ColorSpaceC::YUV411_2_YUYV(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                const uint8_t *srcV, int32_t count) {
  Yuv411ToPacked<YUYV>(dst, srcY, srcU, srcV, count);
}
void ColorSpaceC::YUV411_2_UYVY(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                const uint8_t *srcV, int32_t count) {
  Yuv411ToPacked<UYVY>(dst, srcY, srcU, srcV, count);
}
void ColorSpaceC::V210_2_YUV422(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                int32_t count) {
  MovePairs<-2>(PlanarWriter{dstY, dstU, dstV}, V210Reader{src}, count);
}
void ColorSpaceC::YUV422_2_V210(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                const uint8_t *srcV, int32_t count) {
  WriteV210<2>(dst, PlanarReader{srcY, srcU, srcV}, count);
}
void ColorSpaceC::V210_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) {
  V210ToYuv420(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::RGB_2_YUV_Matrix(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                   int32_t count) {
  LumaRow<4>(dst, src, coef, count);
}
void ColorSpaceC::YUYV_2_YUV422_16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                   const uint8_t *src, int32_t count) {
  MovePairs<8>(PlanarWriter{dstY, dstU, dstV}, PackedReader<YUYV>{src}, count);
}
void ColorSpaceC::UYVY_2_YUV422_16(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                   const uint8_t *src, int32_t count) {
  MovePairs<8>(PlanarWriter{dstY, dstU, dstV}, PackedReader<UYVY>{src}, count);
}
void ColorSpaceC::Scale_Q14(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  ScaleQ14(dst, src, coef, count);
}
void ColorSpaceC::RGB48_2_YUYV16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                        const int16_t *coefUV, int32_t count) {
  portable::RGB48_2_YUYV16_Row(dst, src, count, coefY, coefUV);
}
void ColorSpaceC::RGB48_2_UYVY16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                        const int16_t *coefUV, int32_t count) {
  portable::RGB48_2_UYVY16_Row(dst, src, count, coefY, coefUV);
}
void ColorSpaceC::YUV422_2_YUV420_UV_Avg(uint8_t *dst, const uint8_t *src, int64_t srcPitch,
                                         int32_t count) {
  AverageRows(dst, src, srcPitch, count);
}
void ColorSpaceC::YUV422_16_2_YUV420_16_UV_Avg(uint16_t *dst, const uint16_t *src, int64_t srcPitch,
                                               int32_t count) {
  AverageRows(dst, src, srcPitch, count);
}
void ColorSpaceC::UV_Interpolate_4Tap(uint8_t *dst, const uint8_t *src, int64_t srcPitch,
                                      int32_t count) {
  Interpolate4Tap(dst, src, srcPitch, count);
}
void ColorSpaceC::UV_Interpolate_4Tap_16(uint16_t *dst, const uint16_t *src, int64_t srcPitch,
                                         int32_t count) {
  Interpolate4Tap(dst, src, srcPitch, count);
}
void ColorSpaceC::YUYV_2_YUV420_Avg(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                    const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<YUYV, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY_2_YUV420_Avg(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                    const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<UYVY, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::YUYV16_2_YUV420_16_Avg(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                         uint16_t *dstV, const uint16_t *src, int64_t srcPitch,
                                         int32_t count) {
  PackedRowsTo420<YUYV, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY16_2_YUV420_16_Avg(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                         uint16_t *dstV, const uint16_t *src, int64_t srcPitch,
                                         int32_t count) {
  PackedRowsTo420<UYVY, 0>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::YUYV_2_YUV420_16(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                   uint16_t *dstV, const uint8_t *src, int64_t srcPitch,
                                   int32_t count) {
  PackedRowsTo420<YUYV, 8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY_2_YUV420_16(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU,
                                   uint16_t *dstV, const uint8_t *src, int64_t srcPitch,
                                   int32_t count) {
  PackedRowsTo420<UYVY, 8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::YUYV16_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                  const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<YUYV, -8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}
void ColorSpaceC::UYVY16_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                  const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedRowsTo420<UYVY, -8>(dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

}  // namespace tqcs
