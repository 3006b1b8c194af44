// SSE2 24/32-bit RGB row kernels without a colour matrix: repacks between
// 3- and 4-byte pixels (alpha from a constant or a key plane), swaps of red
// and blue, HSV and per-channel histograms.
#include <emmintrin.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Every32;
using x86::Every64;
using x86::Load;
using x86::Store;

// ---- 24/32-bit RGB ----------------------------------------------------------

// Bytes 0 and 2 of every 32-bit pixel exchanged.
inline __m128i SwapRB32(__m128i x) {
  const __m128i rb = Every32(0x00FF00FF);
  constexpr int kWordSwap = _MM_SHUFFLE(2, 3, 0, 1);
  const __m128i br =
      _mm_shufflehi_epi16(_mm_shufflelo_epi16(_mm_and_si128(x, rb), kWordSwap), kWordSwap);
  return _mm_or_si128(_mm_andnot_si128(rb, x), br);
}

// The four 3-byte pixels in bytes 0-11 of g as 32-bit pixels, byte 3 zero.
inline __m128i Widen3To4(__m128i g) {
  const __m128i q = _mm_unpacklo_epi64(g, _mm_srli_si128(g, 6));  // pixels 0, 1 | 2, 3
  return _mm_or_si128(_mm_and_si128(q, Every64(0x0000000000FFFFFF)),
                      _mm_and_si128(_mm_slli_epi64(q, 8), Every64(0x00FFFFFF00000000)));
}

// The four 32-bit pixels of x as 3-byte pixels in bytes 0-11, bytes 12-15 zero.
inline __m128i Narrow4To3(__m128i x) {
  const __m128i q = _mm_or_si128(_mm_and_si128(x, Every64(0x0000000000FFFFFF)),
                                 _mm_and_si128(_mm_srli_epi64(x, 8), Every64(0x0000FFFFFF000000)));
  return _mm_or_si128(_mm_move_epi64(q), _mm_slli_si128(_mm_srli_si128(q, 8), 6));
}

// Sixteen 3-byte pixels (48 bytes) as four groups of four in bytes 0-11.
struct Groups4 {
  __m128i g[4];
};
inline Groups4 ReadRGB24(const uint8_t *src) {
  const __m128i l0 = Load(src), l1 = Load(src + 16), l2 = Load(src + 32);
  return {{l0, _mm_or_si128(_mm_srli_si128(l0, 12), _mm_slli_si128(l1, 4)),
           _mm_or_si128(_mm_srli_si128(l1, 8), _mm_slli_si128(l2, 8)), _mm_srli_si128(l2, 4)}};
}
// Four groups with zero bytes 12-15 joined into 48 bytes.
inline void WriteRGB24(uint8_t *dst, const Groups4 &c) {
  Store(dst, _mm_or_si128(c.g[0], _mm_slli_si128(c.g[1], 12)));
  Store(dst + 16, _mm_or_si128(_mm_srli_si128(c.g[1], 4), _mm_slli_si128(c.g[2], 8)));
  Store(dst + 32, _mm_or_si128(_mm_srli_si128(c.g[2], 8), _mm_slli_si128(c.g[3], 4)));
}

// Alpha of sixteen pixels from i on as byte 3 of 32-bit lanes, four groups
// of four.
struct PixelAlphaConst {
  __m128i a;
  explicit PixelAlphaConst(uint8_t alpha) : a(Every32(uint32_t{alpha} << 24)) {}
  Groups4 operator()() const { return {{a, a, a, a}}; }
};
struct PixelAlphaKey {
  const uint8_t *key;
  Groups4 operator()() const {
    const __m128i zero = _mm_setzero_si128(), k = Load(key);
    const __m128i lo = _mm_unpacklo_epi8(zero, k), hi = _mm_unpackhi_epi8(zero, k);
    return {{_mm_unpacklo_epi16(zero, lo), _mm_unpackhi_epi16(zero, lo),
             _mm_unpacklo_epi16(zero, hi), _mm_unpackhi_epi16(zero, hi)}};
  }
};

// Blocks of sixteen pixels throughout.
constexpr int kPixelBlock = 16;

template <bool kSwap, class Alpha>
inline void RGB24ToRGB32(uint8_t *dst, const uint8_t *src, Alpha alpha) {
  const Groups4 s = ReadRGB24(src), a = alpha();
  for (int k = 0; k < 4; ++k) {
    const __m128i x = Widen3To4(s.g[k]);
    Store(dst + 16 * k, _mm_or_si128(kSwap ? SwapRB32(x) : x, a.g[k]));
  }
}

template <K kSlot, bool kSwap>
void RGB24ToRGB32Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const PixelAlphaConst a(alpha);
  x86::InBlocks<kSlot, kPixelBlock>(
      [&](uint8_t *d, const uint8_t *s) { RGB24ToRGB32<kSwap>(d, s, a); }, dst, src, count, alpha);
}

template <K kSlot, bool kSwap>
void RGB24KeyToRGB32(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  x86::InBlocks<kSlot, kPixelBlock>(
      [](uint8_t *d, const uint8_t *s, const uint8_t *k) {
        RGB24ToRGB32<kSwap>(d, s, PixelAlphaKey{k});
      },
      dst, src, key, count);
}

inline void RGB32ToBGR24(uint8_t *dst, const uint8_t *src) {
  Groups4 c;
  for (int k = 0; k < 4; ++k) c.g[k] = Narrow4To3(SwapRB32(Load(src + 16 * k)));
  WriteRGB24(dst, c);
}

// Which bytes of the k-th 16-byte vector of a 48-byte run of 3-byte pixels
// sit at position `at` of their pixel.
template <int kVector, int kAt>
constexpr std::array<uint8_t, 16> PixelBytes() {
  std::array<uint8_t, 16> m{};
  for (int j = 0; j < 16; ++j) m[j] = (16 * kVector + j) % 3 == kAt ? 0xFF : 0;
  return m;
}
template <int kVector, int kAt>
inline __m128i PixelByteMask() {
  static constexpr std::array<uint8_t, 16> kMask = PixelBytes<kVector, kAt>();
  return Load(kMask.data());
}

// One vector of a 48-byte run with bytes 0 and 2 of every pixel exchanged:
// byte 0 takes the byte two places on (ahead), byte 2 the one two places
// back (behind), byte 1 stays.
template <int kVector>
inline __m128i SwapRB24Vector(__m128i v, __m128i ahead, __m128i behind) {
  return _mm_or_si128(_mm_or_si128(_mm_and_si128(v, PixelByteMask<kVector, 1>()),
                                   _mm_and_si128(ahead, PixelByteMask<kVector, 0>())),
                      _mm_and_si128(behind, PixelByteMask<kVector, 2>()));
}

// Each 48-byte run is read whole before it is written, so dst may be src.
inline void SwapRB24(uint8_t *d, const uint8_t *s) {
  const __m128i v0 = Load(s), v1 = Load(s + 16), v2 = Load(s + 32);
  const __m128i o0 = SwapRB24Vector<0>(
      v0, _mm_or_si128(_mm_srli_si128(v0, 2), _mm_slli_si128(v1, 14)), _mm_slli_si128(v0, 2));
  const __m128i o1 =
      SwapRB24Vector<1>(v1, _mm_or_si128(_mm_srli_si128(v1, 2), _mm_slli_si128(v2, 14)),
                        _mm_or_si128(_mm_slli_si128(v1, 2), _mm_srli_si128(v0, 14)));
  const __m128i o2 = SwapRB24Vector<2>(v2, _mm_srli_si128(v2, 2),
                                       _mm_or_si128(_mm_slli_si128(v2, 2), _mm_srli_si128(v1, 14)));
  Store(d, o0);
  Store(d + 16, o1);
  Store(d + 32, o2);
}

// ---- HSV ----------------------------------------------------------------------
//
// The quotients are taken in single precision and truncated. That is exact:
// numerator n and denominator d are integers below 2^24, so both convert
// exactly, and the division is correctly rounded, |fl(n/d) - n/d| <= |n/d| *
// 2^-24. Here |n/d| <= 255 (hue: |60 * diff / range| <= 60 because both
// components lie between min and max; saturation: 255 * range / max <= 255),
// so the error is below 255 * 2^-24 < 1.6e-5. An exact quotient is an integer
// and is represented exactly; any other lies at least 1/d >= 1/255 > 3.9e-3
// from the nearest integer, so rounding cannot carry it across one and the
// truncation toward zero matches the integer division's.

struct Hsv4 {
  __m128i h, s, v;
};

// Four pixels given as 32-bit lanes s0 | s1 << 8 | s2 << 16.
template <int kR, int kB>
inline Hsv4 HsvOf4(__m128i px) {
  const __m128i byte = Every32(0xFF), one = Every32(1);
  const __m128i c[3] = {_mm_and_si128(px, byte), _mm_and_si128(_mm_srli_epi32(px, 8), byte),
                        _mm_srli_epi32(px, 16)};
  const __m128i r = c[kR], g = c[1], b = c[kB];
  // Values 0..255 in 32-bit lanes: the 16-bit max/min see zero high halves.
  const __m128i hi = _mm_max_epi16(_mm_max_epi16(r, g), b);
  const __m128i lo = _mm_min_epi16(_mm_min_epi16(r, g), b);
  const __m128i range = _mm_sub_epi32(hi, lo);
  // Ties for the largest go to red, then green. With range 0 all three are
  // equal: red's branch, a zero difference and a zero hue.
  const __m128i isR = _mm_cmpeq_epi32(hi, r);
  const __m128i isG = _mm_andnot_si128(isR, _mm_cmpeq_epi32(hi, g));
  const __m128i isB = _mm_andnot_si128(_mm_or_si128(isR, isG), _mm_cmpeq_epi32(hi, hi));
  const __m128i diff = _mm_or_si128(_mm_or_si128(_mm_and_si128(isR, _mm_sub_epi32(g, b)),
                                                 _mm_and_si128(isG, _mm_sub_epi32(b, r))),
                                    _mm_and_si128(isB, _mm_sub_epi32(r, g)));
  const __m128i sector =
      _mm_or_si128(_mm_and_si128(isG, Every32(120)), _mm_and_si128(isB, Every32(240)));
  const __m128 hueQ = _mm_div_ps(_mm_mul_ps(_mm_cvtepi32_ps(diff), _mm_set1_ps(60.0f)),
                                 _mm_cvtepi32_ps(_mm_max_epi16(range, one)));
  __m128i hue = _mm_add_epi32(_mm_cvttps_epi32(hueQ), sector);
  hue = _mm_add_epi32(hue, _mm_and_si128(_mm_cmplt_epi32(hue, _mm_setzero_si128()), Every32(360)));
  // max 0 means range 0: 0 / 1.
  const __m128 satQ = _mm_div_ps(_mm_mul_ps(_mm_cvtepi32_ps(range), _mm_set1_ps(255.0f)),
                                 _mm_cvtepi32_ps(_mm_max_epi16(hi, one)));
  return {hue, _mm_cvttps_epi32(satQ), hi};
}

// Sixteen 32-bit lanes of 0..255 as bytes.
inline __m128i Bytes16(__m128i a, __m128i b, __m128i c, __m128i d) {
  return _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
}

template <int kR, int kB>
inline void RGBToHSV(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src) {
  const Groups4 s = ReadRGB24(src);
  Hsv4 q[4];
  for (int k = 0; k < 4; ++k) q[k] = HsvOf4<kR, kB>(Widen3To4(s.g[k]));
  Store(dstH, _mm_packs_epi32(q[0].h, q[1].h));
  Store(dstH + 8, _mm_packs_epi32(q[2].h, q[3].h));
  Store(dstS, Bytes16(q[0].s, q[1].s, q[2].s, q[3].s));
  Store(dstV, Bytes16(q[0].v, q[1].v, q[2].v, q[3].v));
}

// ---- Histogram ----------------------------------------------------------------

// The arrays need no particular alignment.
inline void AddCount(uint32_t *hist, uint8_t bin, uint32_t n) {
  uint32_t c;
  std::memcpy(&c, hist + bin, sizeof c);
  c += n;
  std::memcpy(hist + bin, &c, sizeof c);
}

// True when the sixteen 3-byte pixels at s are all the first one's colour:
// every byte equals the byte three places on.
inline bool SameColour16(const uint8_t *s) {
  const __m128i v0 = Load(s), v1 = Load(s + 16), v2 = Load(s + 32);
  const __m128i e0 =
      _mm_cmpeq_epi8(v0, _mm_or_si128(_mm_srli_si128(v0, 3), _mm_slli_si128(v1, 13)));
  const __m128i e1 =
      _mm_cmpeq_epi8(v1, _mm_or_si128(_mm_srli_si128(v1, 3), _mm_slli_si128(v2, 13)));
  const __m128i e2 = _mm_cmpeq_epi8(v2, _mm_srli_si128(v2, 3));  // bytes 0-12 only
  const int same =
      _mm_movemask_epi8(_mm_and_si128(e0, e1)) << 13 | (_mm_movemask_epi8(e2) & 0x1FFF);
  return same == 0x1FFFFFFF;
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---- 24/32-bit RGB -----------------------------------------------------------

void sse2::RGB24_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  RGB24ToRGB32Row<K::RGB24_2_RGB32_Row, false>(dst, src, count, alpha);
}
void sse2::RGB24_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  RGB24ToRGB32Row<K::RGB24_2_BGR32_Row, true>(dst, src, count, alpha);
}
void sse2::RGB32_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  x86::InBlocks<K::RGB32_2_BGR24_Row, kPixelBlock>(RGB32ToBGR24, dst, src, count);
}
// Each vector is read before it is written, so dst may be src.
void sse2::RGB32_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  x86::InBlocks<K::RGB32_SwapRB_Row, kPixelBlock>(
      [](uint8_t *d, const uint8_t *s) {
        for (int k = 0; k < 4; ++k) Store(d + 16 * k, SwapRB32(Load(s + 16 * k)));
      },
      dst, src, count);
}
void sse2::RGB24_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  x86::InBlocks<K::RGB24_SwapRB_Row, kPixelBlock>(SwapRB24, dst, src, count);
}
void sse2::RGB24_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  RGB24KeyToRGB32<K::RGB24_Key_2_BGR32_Row, true>(dst, src, key, count);
}
void sse2::RGB24_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  RGB24KeyToRGB32<K::RGB24_Key_2_RGB32_Row, false>(dst, src, key, count);
}

// ---- HSV and histogram -----------------------------------------------------------

void sse2::RGB24_2_HSV_Row(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src,
                           int32_t count) {
  x86::InBlocks<K::RGB24_2_HSV_Row, kPixelBlock>(RGBToHSV<0, 2>, dstH, dstS, dstV, src, count);
}
void sse2::BGR24_2_HSV_Row(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src,
                           int32_t count) {
  x86::InBlocks<K::BGR24_2_HSV_Row, kPixelBlock>(RGBToHSV<2, 0>, dstH, dstS, dstV, src, count);
}

// One increment per sample is already as fast as the stores allow, so varied
// pixels stay with the portable loop, a run of varied blocks in one call.
// Runs of one colour (flat areas, borders, mattes) are found sixteen pixels at
// a time and counted with one add per channel instead of sixteen increments of
// the same entry, each waiting for the last. A cheap test of the last pixel
// against the first keeps varied blocks from paying for the full comparison.
// The counts only add up, so their order does not matter.
void sse2::RGB24_Histogram_Row(uint32_t *hist0, uint32_t *hist1, uint32_t *hist2,
                               const uint8_t *src, int32_t count) {
  const uint8_t *varied = nullptr;  // the first block of the pending varied run
  int32_t variedPixels = 0;
  const auto countVaried = [&] {
    if (variedPixels > 0) portable::RGB24_Histogram_Row(hist0, hist1, hist2, varied, variedPixels);
    variedPixels = 0;
  };
  x86::InBlocks<K::RGB24_Histogram_Row, kPixelBlock>(
      [&](uint32_t *h0, uint32_t *h1, uint32_t *h2, const uint8_t *s) {
        if (s[0] != s[45] || s[1] != s[46] || s[2] != s[47] || !SameColour16(s)) {
          if (variedPixels == 0) varied = s;
          variedPixels += kPixelBlock;
          return;
        }
        countVaried();
        AddCount(h0, s[0], 16);
        AddCount(h1, s[1], 16);
        AddCount(h2, s[2], 16);
      },
      hist0, hist1, hist2, src, count);
  countVaried();
}

}  // namespace tqcs
