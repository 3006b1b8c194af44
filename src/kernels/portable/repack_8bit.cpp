// Portable 8-bit repacking kernels: 4:2:2 <-> 4:4:4 and packed <-> planar
// moves, 24/32-bit RGB repacks and swaps, chroma plane interleaving, HSV,
// histograms and zero fills. No colour matrix is involved anywhere here.
//
// Each family is one template; the slots differ only by a policy (byte order
// of the pair, where alpha comes from, where the samples go).
#include <cstring>

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

// ---- HSV -------------------------------------------------------------------

// kR / kB: byte positions of red and blue in the 3-byte source pixel.
template <int kR, int kB>
void RGBToHSV(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src, int32_t count) {
  for (Index i = 0; i < count; ++i) {
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
    Store(dstH, i, hue);
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
  Pairs422ToYUVA<1>(dst, PackedReader<YUYV>{src}, ConstAlpha{alpha}, count);
}
void UYVY_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  Pairs422ToYUVA<1>(dst, PackedReader<UYVY>{src}, ConstAlpha{alpha}, count);
}
// The key variants halve without the rounding one; kept for compatibility.
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

// ---- 24/32-bit RGB -----------------------------------------------------------

void RGB24_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  RepackRgb<3, 4, 0, false>(dst, src, count, ConstAlpha{alpha});
}
void RGB24_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  RepackRgb<3, 4, 0, true>(dst, src, count, ConstAlpha{alpha});
}
void RGB24_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRgb<3, 4, 0, true>(dst, src, count, KeyAlpha{key});
}
void RGB24_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRgb<3, 4, 0, false>(dst, src, count, KeyAlpha{key});
}
// Portable twin of the row copy that start-up takes from TQMemProc for slot 9.
void RGB32_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<4, 3, 0, false>(dst, src, count);
}
void RGB32_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<4, 3, 0, true>(dst, src, count);
}
void RGB32_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<4, 4, 0, true>(dst, src, count);
}
void RGB24_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 3, 0, true>(dst, src, count);
}

// ---- Chroma planes -------------------------------------------------------------

// Alternate bytes of two sources: the even bytes of the first, the odd bytes
// of the second. Slot 144's portable entry is this same routine.
void Deinterleave_Pairs_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1,
                            int32_t count) {
  for (Index i = 0; i < count; ++i) {
    dst0[i] = src0[2 * i];
    dst1[i] = src1[2 * i + 1];
  }
}
void Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                    const uint8_t *src1, int32_t count) {
  Deinterleave_Pairs_Row(dst0, dst1, src0, src1, count);
}

// count = samples per output plane (pairs of the interleaved row): both
// halves of each pair from the one source.
void UV_Deinterleave_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count) {
  Deinterleave_Pairs_Row(dstA, dstB, src, src, count);
}

// count = samples per source plane (pairs of the interleaved row).
void UV_Interleave_Row(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB, int32_t count) {
  for (Index i = 0; i < count; ++i) {
    dst[2 * i] = srcA[i];
    dst[2 * i + 1] = srcB[i];
  }
}

// Chroma doubling, count = output samples per plane; the sources hold
// (count + 1) / 2 samples. Odd outputs are (a + b) >> 1 with the next source
// sample; the last source sample has none and repeats itself.
void UV_422_2_444_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                      int32_t count) {
  const Index sources = (Index{count} + 1) / 2;
  for (Index j = 0; j < count; ++j) {
    const Index i = j / 2;
    if ((j & 1) == 0) {
      dstA[j] = srcA[i];
      dstB[j] = srcB[i];
    } else {
      const Index next = NextOrLast(i, sources);
      dstA[j] = static_cast<uint8_t>((srcA[i] + srcA[next]) >> 1);
      dstB[j] = static_cast<uint8_t>((srcB[i] + srcB[next]) >> 1);
    }
  }
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

// Adds to the counts already there; the caller clears the arrays, which
// need no particular alignment.
void RGB24_Histogram_Row(uint32_t *hist0, uint32_t *hist1, uint32_t *hist2, const uint8_t *src,
                         int32_t count) {
  for (Index i = 0; i < count; ++i) {
    Store(hist0, src[3 * i], Load(hist0, src[3 * i]) + 1u);
    Store(hist1, src[3 * i + 1], Load(hist1, src[3 * i + 1]) + 1u);
    Store(hist2, src[3 * i + 2], Load(hist2, src[3 * i + 2]) + 1u);
  }
}

// ---- Zero fills; the count unit differs per slot ----------------------------------

void Clear_Row_A(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<1>(dst, count); }
void Clear_Row_B(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<2>(dst, count); }
void Clear_Row_C(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<4>(dst, count); }
void Clear_Row_D(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<3>(dst, count); }
void Clear_Row_E(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<8>(dst, count); }

}  // namespace tqcs::portable
