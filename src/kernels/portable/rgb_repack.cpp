// Portable 24/32-bit RGB row kernels without a colour matrix: repacks between
// 3- and 4-byte pixels (alpha from a constant or a key plane), swaps of red
// and blue, HSV and per-channel histograms.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

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

}  // namespace

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

}  // namespace tqcs::portable
