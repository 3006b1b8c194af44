// Portable 8-bit repacking kernels: 4:2:2 <-> 4:4:4 and packed <-> planar
// moves, 24/32-bit RGB repacks and swaps, chroma plane interleaving, HSV,
// histograms and zero fills. No colour matrix is involved anywhere here.
//
// Each family is one template; the slots differ only by a policy (byte order
// of the pair, where alpha comes from, where the samples go).
#include <cstddef>
#include <cstring>

#include "kernels/kernel_slots.hpp"

namespace tqcs::portable {
namespace {

// ---- Byte positions inside a packed 4:2:2 pair ----------------------------

struct OrderYUYV {
  static constexpr size_t kY0 = 0, kU = 1, kY1 = 2, kV = 3;
};
struct OrderUYVY {
  static constexpr size_t kY0 = 1, kU = 0, kY1 = 3, kV = 2;
};

// ---- Alpha sources ---------------------------------------------------------

struct ConstAlpha {
  uint8_t value;
  uint8_t At(size_t) const { return value; }
};
struct KeyAlpha {
  const uint8_t *key;
  uint8_t At(size_t i) const { return key[i]; }
};

// ---- 4:2:2 readers: luma by pixel, chroma by pair --------------------------

template <class Order>
struct PackedReader {
  const uint8_t *src;
  uint8_t Y0(size_t p) const { return src[4 * p + Order::kY0]; }
  uint8_t Y1(size_t p) const { return src[4 * p + Order::kY1]; }
  uint8_t U(size_t p) const { return src[4 * p + Order::kU]; }
  uint8_t V(size_t p) const { return src[4 * p + Order::kV]; }
};

struct PlanarReader {
  const uint8_t *y, *u, *v;
  uint8_t Y0(size_t p) const { return y[2 * p]; }
  uint8_t Y1(size_t p) const { return y[2 * p + 1]; }
  uint8_t U(size_t p) const { return u[p]; }
  uint8_t V(size_t p) const { return v[p]; }
};

// ---- 4:2:2 writers ---------------------------------------------------------

template <class Order>
struct PackedWriter {
  uint8_t *dst;
  void Pair(size_t p, uint8_t y0, uint8_t u, uint8_t y1, uint8_t v) const {
    uint8_t *d = dst + 4 * p;
    d[Order::kY0] = y0;
    d[Order::kU] = u;
    d[Order::kY1] = y1;
    d[Order::kV] = v;
  }
  // A lone last pixel becomes a whole pair carrying its own luma twice.
  void Tail(size_t p, uint8_t y, uint8_t u, uint8_t v) const { Pair(p, y, u, y, v); }
};

struct PlanarWriter {
  uint8_t *y, *u, *v;
  void Pair(size_t p, uint8_t y0, uint8_t cu, uint8_t y1, uint8_t cv) const {
    y[2 * p] = y0;
    y[2 * p + 1] = y1;
    u[p] = cu;
    v[p] = cv;
  }
  // The chroma rows hold count / 2 samples: a lone last pixel has its luma only.
  void Tail(size_t p, uint8_t luma, uint8_t, uint8_t) const { y[2 * p] = luma; }
};

// ---- Key (alpha plane) outputs ---------------------------------------------

struct NoKeyOut {
  void Store(size_t, uint8_t) const {}
};
struct KeyOut {
  uint8_t *key;
  void Store(size_t i, uint8_t a) const { key[i] = a; }
};

// 4:2:2 to Y,U,V,A. The even pixel takes its pair's chroma, the odd pixel the
// mean of its pair's and the next pair's, (a + b + kRound) >> 1; the last
// pair has no successor and repeats its own. count / 2 pairs: an odd last
// pixel has no chroma of its own and is not written.
template <int kRound, class Reader, class Alpha>
void Pairs422ToYUVA(uint8_t *dst, Reader src, Alpha alpha, int32_t count) {
  if (count < 2) return;
  const size_t pairs = static_cast<size_t>(count) / 2;
  for (size_t p = 0; p < pairs; ++p) {
    const size_t next = p + 1 < pairs ? p + 1 : p;
    const unsigned u = src.U(p), v = src.V(p);
    uint8_t *d = dst + 8 * p;
    d[0] = src.Y0(p);
    d[1] = static_cast<uint8_t>(u);
    d[2] = static_cast<uint8_t>(v);
    d[3] = alpha.At(2 * p);
    d[4] = src.Y1(p);
    d[5] = static_cast<uint8_t>((u + src.U(next) + kRound) >> 1);
    d[6] = static_cast<uint8_t>((v + src.V(next) + kRound) >> 1);
    d[7] = alpha.At(2 * p + 1);
  }
}

// Y,U,V,A to 4:2:2: the even pixel's chroma is kept, the odd pixel's dropped.
// An odd last pixel goes to the writer's tail; alpha goes to the key output.
template <class Writer, class Key>
void YUVAToPairs422(Writer dst, Key key, const uint8_t *src, int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t p = 0; p < n / 2; ++p) {
    const uint8_t *s = src + 8 * p;
    dst.Pair(p, s[0], s[1], s[4], s[2]);
  }
  if (n & 1) {
    const uint8_t *s = src + 4 * (n - 1);
    dst.Tail(n / 2, s[0], s[1], s[2]);
  }
  for (size_t i = 0; i < n; ++i) key.Store(i, src[4 * i + 3]);
}

// 4:2:2 to 4:2:2 in another layout, count / 2 whole pairs.
template <class Writer, class Reader>
void Repack422(Writer dst, Reader src, int32_t count) {
  if (count < 2) return;
  const size_t pairs = static_cast<size_t>(count) / 2;
  for (size_t p = 0; p < pairs; ++p) dst.Pair(p, src.Y0(p), src.U(p), src.Y1(p), src.V(p));
}

// ---- 24/32-bit RGB repacks -------------------------------------------------

struct NoAlpha {};

// Moves three colour bytes, reversed when kReverse, from kSrc-byte to kDst-byte
// pixels. A 4-byte destination takes its fourth byte from the source's when
// the source has one, otherwise from `alpha`. Each pixel is read whole before
// it is written, so dst may equal src.
template <size_t kSrc, size_t kDst, bool kReverse, class Alpha = NoAlpha>
void RepackRGB(uint8_t *dst, const uint8_t *src, int32_t count, Alpha alpha = {}) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t i = 0; i < n; ++i) {
    const uint8_t *s = src + kSrc * i;
    const uint8_t c0 = s[0], c1 = s[1], c2 = s[2];
    uint8_t *d = dst + kDst * i;
    if constexpr (kDst == 4) {
      uint8_t a;
      if constexpr (kSrc == 4)
        a = s[3];
      else
        a = alpha.At(i);
      d[3] = a;
    }
    d[0] = kReverse ? c2 : c0;
    d[1] = c1;
    d[2] = kReverse ? c0 : c2;
  }
}

// ---- HSV -------------------------------------------------------------------

// kR / kB: byte positions of red and blue in the 3-byte source pixel.
template <size_t kR, size_t kB>
void RGBToHSV(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src, int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t i = 0; i < n; ++i) {
    const uint8_t *s = src + 3 * i;
    const int r = s[kR], g = s[1], b = s[kB];
    const int hi = r > g ? (r > b ? r : b) : (g > b ? g : b);
    const int lo = r < g ? (r < b ? r : b) : (g < b ? g : b);
    const int range = hi - lo;
    int hue = 0;
    if (range != 0) {
      // Ties for the largest go to red, then green; each branch gives the
      // same hue on a tie.
      if (hi == r)
        hue = 60 * (g - b) / range;
      else if (hi == g)
        hue = 60 * (b - r) / range + 120;
      else
        hue = 60 * (r - g) / range + 240;
      if (hue < 0) hue += 360;
    }
    dstH[i] = static_cast<uint16_t>(hue);
    dstS[i] = static_cast<uint8_t>(hi != 0 ? 255 * range / hi : 0);
    dstV[i] = static_cast<uint8_t>(hi);
  }
}

// ---- Zero fills --------------------------------------------------------------

template <size_t kUnit>
void ClearUnits(uint8_t *dst, int32_t count) {
  if (count < 1) return;
  std::memset(dst, 0, kUnit * static_cast<size_t>(count));
}

}  // namespace

// ---- Packed 4:2:2 <-> Y,U,V,A ------------------------------------------------

void YUYV_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PackedReader<OrderYUYV>{src}, ConstAlpha{alpha}, count);
}
void UYVY_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PackedReader<OrderUYVY>{src}, ConstAlpha{alpha}, count);
}
// The key variants halve without the rounding one; kept for compatibility.
void YUYV_Key_2_YUVA_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  Pairs422ToYUVA<0>(dst, PackedReader<OrderYUYV>{src}, KeyAlpha{key}, count);
}
void UYVY_Key_2_YUVA_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  Pairs422ToYUVA<0>(dst, PackedReader<OrderUYVY>{src}, KeyAlpha{key}, count);
}
void YUV422_2_YUVA_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                       int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PlanarReader{srcY, srcU, srcV}, ConstAlpha{alpha}, count);
}

void YUVA_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<OrderYUYV>{dst}, NoKeyOut{}, src, count);
}
void YUVA_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<OrderUYVY>{dst}, NoKeyOut{}, src, count);
}
void YUVA_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<OrderYUYV>{dst}, KeyOut{dstKey}, src, count);
}
void YUVA_2_UYVY_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  YUVAToPairs422(PackedWriter<OrderUYVY>{dst}, KeyOut{dstKey}, src, count);
}
void YUVA_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                       int32_t count) {
  YUVAToPairs422(PlanarWriter{dstY, dstU, dstV}, NoKeyOut{}, src, count);
}

// ---- Planar 4:2:2 <-> packed 4:2:2 -------------------------------------------

void YUV422_2_YUYV_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                       int32_t count) {
  Repack422(PackedWriter<OrderYUYV>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}
void YUV422_2_UYVY_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                       int32_t count) {
  Repack422(PackedWriter<OrderUYVY>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}
void YUYV_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                       int32_t count) {
  Repack422(PlanarWriter{dstY, dstU, dstV}, PackedReader<OrderYUYV>{src}, count);
}
void UYVY_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                       int32_t count) {
  Repack422(PlanarWriter{dstY, dstU, dstV}, PackedReader<OrderUYVY>{src}, count);
}

// ---- 24/32-bit RGB -----------------------------------------------------------

void RGB24_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  RepackRGB<3, 4, false>(dst, src, count, ConstAlpha{alpha});
}
void RGB24_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  RepackRGB<3, 4, true>(dst, src, count, ConstAlpha{alpha});
}
void RGB24_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRGB<3, 4, true>(dst, src, count, KeyAlpha{key});
}
void RGB24_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRGB<3, 4, false>(dst, src, count, KeyAlpha{key});
}
// Portable twin of the row copy that start-up takes from TQMemProc for slot 9.
void RGB32_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRGB<4, 3, false>(dst, src, count);
}
void RGB32_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRGB<4, 3, true>(dst, src, count);
}
void RGB32_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRGB<4, 4, true>(dst, src, count);
}
void RGB24_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRGB<3, 3, true>(dst, src, count);
}

// ---- Chroma planes -------------------------------------------------------------

// count = samples per output plane (pairs of the interleaved row).
void UV_Deinterleave_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t i = 0; i < n; ++i) {
    dstA[i] = src[2 * i];
    dstB[i] = src[2 * i + 1];
  }
}

// count = samples per source plane (pairs of the interleaved row).
void UV_Interleave_Row(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB, int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t i = 0; i < n; ++i) {
    dst[2 * i] = srcA[i];
    dst[2 * i + 1] = srcB[i];
  }
}

// Chroma doubling, count = output samples per plane; the sources hold
// (count + 1) / 2 samples. Odd outputs are (a + b) >> 1 with the next source
// sample; the last source sample has none and repeats itself.
void UV_422_2_444_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                      int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  const size_t last = (n + 1) / 2 - 1;
  for (size_t j = 0; j < n; ++j) {
    const size_t i = j / 2;
    if ((j & 1) == 0) {
      dstA[j] = srcA[i];
      dstB[j] = srcB[i];
    } else {
      const size_t next = i < last ? i + 1 : i;
      dstA[j] = static_cast<uint8_t>((srcA[i] + srcA[next]) >> 1);
      dstB[j] = static_cast<uint8_t>((srcB[i] + srcB[next]) >> 1);
    }
  }
}

// Alternate bytes of two sources: the even bytes of the first, the odd bytes
// of the second. Slot 144's portable entry is this same routine.
void Deinterleave_Pairs_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1,
                            int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t i = 0; i < n; ++i) {
    dst0[i] = src0[2 * i];
    dst1[i] = src1[2 * i + 1];
  }
}
void Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                    const uint8_t *src1, int32_t count) {
  Deinterleave_Pairs_Row(dst0, dst1, src0, src1, count);
}

// ---- HSV and histogram -----------------------------------------------------------

// H in degrees 0..359 (16-bit), S = 255 * (max - min) / max, V = max.
void RGB24_2_HSV_Row(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src,
                     int32_t count) {
  RGBToHSV<0, 2>(dstH, dstS, dstV, src, count);
}
void BGR24_2_HSV_Row(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src,
                     int32_t count) {
  RGBToHSV<2, 0>(dstH, dstS, dstV, src, count);
}

// Adds to the counts already there; the caller clears the arrays.
void RGB24_Histogram_Row(uint32_t *hist0, uint32_t *hist1, uint32_t *hist2, const uint8_t *src,
                         int32_t count) {
  if (count < 1) return;
  const size_t n = static_cast<size_t>(count);
  for (size_t i = 0; i < n; ++i) {
    ++hist0[src[3 * i]];
    ++hist1[src[3 * i + 1]];
    ++hist2[src[3 * i + 2]];
  }
}

// ---- Zero fills; the count unit differs per slot ----------------------------------

void Clear_Row_A(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<1>(dst, count); }
void Clear_Row_B(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<2>(dst, count); }
void Clear_Row_C(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<4>(dst, count); }
void Clear_Row_D(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<3>(dst, count); }
void Clear_Row_E(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<8>(dst, count); }

}  // namespace tqcs::portable
