// Portable 8-bit 4:2:2 repacking kernels: packed pairs <-> Y,U,V,A (with or
// without a key plane) and planar <-> packed 4:2:2. No colour matrix is
// involved.
//
// Each family is one template; the slots differ only by a policy (byte order
// of the pair, where alpha comes from, where the samples go).
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// 4:2:2 to Y,U,V,A. The even pixel takes its pair's chroma, the odd pixel the
// mean of its pair's and the next pair's, (a + b + kRound) >> 1; the last
// pair has no successor and repeats its own. count / 2 pairs: an odd last
// pixel has no chroma of its own and is not written.
template <int kRound, class Reader, class Alpha>
void Pairs422ToYUVA(uint8_t *dst, Reader src, Alpha alpha, int32_t count) {
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    const Index next = NextOrLast(p, pairs);
    const unsigned u = src.U(p), v = src.V(p);
    uint8_t *d = dst + 8 * p;
    d[0] = src.Y0(p);
    d[1] = static_cast<uint8_t>(u);
    d[2] = static_cast<uint8_t>(v);
    d[3] = alpha(2 * p);
    d[4] = src.Y1(p);
    d[5] = static_cast<uint8_t>((u + src.U(next) + kRound) >> 1);
    d[6] = static_cast<uint8_t>((v + src.V(next) + kRound) >> 1);
    d[7] = alpha(2 * p + 1);
  }
}

// Y,U,V,A to 4:2:2: the even pixel's chroma is kept, the odd pixel's dropped.
// An odd last pixel goes to the writer's tail; the key variants also copy
// every pixel's alpha to the key plane.
template <class Writer>
void YUVAToPairs422(Writer dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  PixelsTo422(
      dst, count, [src](Index i) { return src[4 * i]; },
      [src](Index i) {
        return Chroma{src[4 * i + 1], src[4 * i + 2]};
      });
  if (dstKey != nullptr)
    for (Index i = 0; i < count; ++i) dstKey[i] = src[4 * i + 3];
}

}  // namespace

// ---- Packed 4:2:2 <-> Y,U,V,A ------------------------------------------------

void YUYV_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PackedReader<YUYV>{src}, ConstAlpha{alpha}, count);
}
void UYVY_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PackedReader<UYVY>{src}, ConstAlpha{alpha}, count);
}
// The key variants halve without the rounding one; kept for compatibility.
// See docs/compatibility.md.
void YUYV_Key_2_YUVA_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  Pairs422ToYUVA<0>(dst, PackedReader<YUYV>{src}, KeyAlpha{key}, count);
}
void UYVY_Key_2_YUVA_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  Pairs422ToYUVA<0>(dst, PackedReader<UYVY>{src}, KeyAlpha{key}, count);
}
void YUV422_2_YUVA_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                       int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PlanarReader{srcY, srcU, srcV}, ConstAlpha{alpha}, count);
}

void YUVA_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<YUYV>{dst}, nullptr, src, count);
}
void YUVA_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<UYVY>{dst}, nullptr, src, count);
}
void YUVA_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<YUYV>{dst}, dstKey, src, count);
}
void YUVA_2_UYVY_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<UYVY>{dst}, dstKey, src, count);
}
void YUVA_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                       int32_t count) {
  YUVAToPairs422(PlanarWriter{dstY, dstU, dstV}, nullptr, src, count);
}

// ---- Planar 4:2:2 <-> packed 4:2:2 -------------------------------------------

void YUV422_2_YUYV_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                       int32_t count) {
  MovePairs(PackedWriter<YUYV>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}
void YUV422_2_UYVY_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                       int32_t count) {
  MovePairs(PackedWriter<UYVY>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}
void YUYV_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                       int32_t count) {
  MovePairs(PlanarWriter{dstY, dstU, dstV}, PackedReader<YUYV>{src}, count);
}
void UYVY_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                       int32_t count) {
  MovePairs(PlanarWriter{dstY, dstU, dstV}, PackedReader<UYVY>{src}, count);
}

}  // namespace tqcs::portable
