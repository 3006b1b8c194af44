// 8-bit YUV to RGB matrix kernels, portable tier: a 4:2:2 source (packed in
// either order, or planar) or YUVA 4:4:4 to 3- or 4-byte RGB, R-first or
// B-first, alpha from an argument, a key plane or the source. The byte order
// and the origin of alpha are small policy structs; the arithmetic exists once
// per chroma layout.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {
// ---------------------------------------------------------------- YUV -> RGB

// Element 0 of the four rows: R from V, G from U, G from V, B from U.
ChromaWeights LoadRows(const int16_t *rv, const int16_t *gu, const int16_t *gv, const int16_t *bu) {
  return {rv[0], gu[0], gv[0], bu[0]};
}

template <int kBytesPerPixel, bool kBlueFirst>
struct RgbLayout {
  static constexpr int kBytes = kBytesPerPixel;
  static constexpr int kR = kBlueFirst ? 2 : 0;
  static constexpr int kB = kBlueFirst ? 0 : 2;
};
using RGB24 = RgbLayout<3, false>;
using BGR24 = RgbLayout<3, true>;
using RGB32 = RgbLayout<4, false>;
using BGR32 = RgbLayout<4, true>;

template <class Layout>
void PutRgb(uint8_t *d, int32_t y, const Deltas &c, uint8_t alpha) {
  d[Layout::kR] = Clamp8(y + c.r);
  d[1] = Clamp8(y + c.g);
  d[Layout::kB] = Clamp8(y + c.b);
  if constexpr (Layout::kBytes == 4) d[3] = alpha;
}

// count / 2 pairs; an odd last pixel has no chroma and is not written. The
// even pixel takes its pair's chroma, truncating; the odd pixel the sum of its
// pair's and the next pair's centred chroma with a shift of 15, also
// truncating. The last pair has no next pair and repeats its own chroma.
template <class Layout, class Reader, class Alpha>
void Yuv422ToRgb(uint8_t *dst, Reader s, int32_t count, Alpha alpha, const ChromaWeights &k) {
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    const Index n = NextOrLast(p, pairs);
    const int32_t u = s.U(p) - 128, v = s.V(p) - 128;
    const int32_t uSum = u + (s.U(n) - 128), vSum = v + (s.V(n) - 128);
    uint8_t *d = dst + 2 * p * Layout::kBytes;
    PutRgb<Layout>(d, s.Y0(p), ChromaDeltas(k, u, v, 14, 0), alpha(2 * p));
    PutRgb<Layout>(d + Layout::kBytes, s.Y1(p), ChromaDeltas(k, uSum, vSum, 15, 0),
                   alpha(2 * p + 1));
  }
}

// 4:4:4 rounds; alpha is the source's own (unused for 3-byte output).
template <class Layout>
void YuvaToRgb(uint8_t *dst, const uint8_t *src, int32_t count, const ChromaWeights &k) {
  for (Index i = 0; i < count; ++i) {
    const uint8_t *s = src + 4 * i;
    PutRgb<Layout>(dst + i * Layout::kBytes, s[0],
                   ChromaDeltas(k, s[1] - 128, s[2] - 128, 14, 8192), s[3]);
  }
}

}  // namespace
}  // namespace tqcs::portable

// The slots. Qualified definitions: each must match its declaration exactly.
namespace tqcs {

// Packed 4:2:2 -> RGB.
void portable::YUYV_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<YUYV>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<YUYV>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<UYVY>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                                TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<UYVY>{src}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PackedReader<YUYV>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PackedReader<YUYV>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PackedReader<UYVY>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PackedReader<UYVY>{src}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}

// Packed 4:2:2 plus key plane -> RGB32 / BGR32, alpha from the key.
void portable::YUYV_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<YUYV>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}
void portable::YUYV_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<YUYV>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PackedReader<UYVY>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}
void portable::UYVY_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                    int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PackedReader<UYVY>{src}, count, KeyAlpha{key}, LoadRows(rv, gu, gv, bu));
}

// Planar 4:2:2 -> RGB.
void portable::YUV422_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  Yuv422ToRgb<RGB32>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  Yuv422ToRgb<BGR32>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha{alpha},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_RGB24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, TCS_T4) {
  Yuv422ToRgb<RGB24>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}
void portable::YUV422_2_BGR24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                  const uint8_t *srcV, int32_t count, TCS_T4) {
  Yuv422ToRgb<BGR24>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha<uint8_t>{0},
                     LoadRows(rv, gu, gv, bu));
}

// YUVA 4:4:4 -> RGB, rounding.
void portable::YUVA_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<RGB32>(dst, src, count, LoadRows(rv, gu, gv, bu));
}
void portable::YUVA_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<BGR32>(dst, src, count, LoadRows(rv, gu, gv, bu));
}
void portable::YUVA_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<RGB24>(dst, src, count, LoadRows(rv, gu, gv, bu));
}
void portable::YUVA_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaToRgb<BGR24>(dst, src, count, LoadRows(rv, gu, gv, bu));
}

}  // namespace tqcs
