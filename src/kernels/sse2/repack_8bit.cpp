// SSE2 8-bit repacking kernels: 4:2:2 <-> 4:4:4 and packed <-> planar moves,
// 24/32-bit RGB repacks and swaps, HSV and histograms, chroma plane
// (de)interleaving and doubling, and zero fills.
//
// The 4:2:2 families meet in one register form, sixteen pairs held as luma
// vectors and interleaved chroma vectors (Pairs16); readers build it from a
// layout and writers store it into one, so every slot of a family is one
// reader and one writer around the same body. Where alpha comes from (an
// argument or a key plane) and whether the odd pixel's chroma mean rounds
// are policies of the same bodies.
#include <emmintrin.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using Index = std::ptrdiff_t;
using x86::Load;
using x86::Store;

inline __m128i Every32(uint32_t v) { return _mm_set1_epi32(static_cast<int>(v)); }
inline __m128i Every64(uint64_t v) { return _mm_set1_epi64x(static_cast<long long>(v)); }
inline __m128i LowBytes16() { return _mm_set1_epi16(0x00FF); }

// ---- 4:2:2 pairs ----------------------------------------------------------

// Sixteen pairs in two halves: y[h] = Y0 .. Y15 of pairs 8h .. 8h + 7,
// uv[h] = U0 V0 U1 V1 .. U7 V7 of the same pairs.
struct Pairs16 {
  __m128i y[2], uv[2];
};

// Packed pairs, luma first (YUYV) or chroma first (UYVY).
template <bool kLumaFirst>
struct PackedReader {
  const uint8_t *src;
  Pairs16 Read(Index p) const {
    Pairs16 s;
    for (int h = 0; h < 2; ++h) {
      const __m128i a = Load(src + 4 * p + 32 * h), b = Load(src + 4 * p + 32 * h + 16);
      const __m128i even =
          _mm_packus_epi16(_mm_and_si128(a, LowBytes16()), _mm_and_si128(b, LowBytes16()));
      const __m128i odd = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
      s.y[h] = kLumaFirst ? even : odd;
      s.uv[h] = kLumaFirst ? odd : even;
    }
    return s;
  }
  // The chroma of pair p alone, U | V << 8 in lane 0.
  __m128i Chroma(Index p) const {
    const __m128i x = x86::Load32(src + 4 * p);
    const __m128i c = kLumaFirst ? _mm_srli_epi16(x, 8) : _mm_and_si128(x, LowBytes16());
    return _mm_packus_epi16(c, c);
  }
};

template <bool kLumaFirst>
struct PackedWriter {
  uint8_t *dst;
  void Write(Index p, const Pairs16 &s) const {
    for (int h = 0; h < 2; ++h) {
      const __m128i first = kLumaFirst ? s.y[h] : s.uv[h], second = kLumaFirst ? s.uv[h] : s.y[h];
      Store(dst + 4 * p + 32 * h, _mm_unpacklo_epi8(first, second));
      Store(dst + 4 * p + 32 * h + 16, _mm_unpackhi_epi8(first, second));
    }
  }
};

struct PlanarReader {
  const uint8_t *y, *u, *v;
  Pairs16 Read(Index p) const {
    const __m128i cu = Load(u + p), cv = Load(v + p);
    return {{Load(y + 2 * p), Load(y + 2 * p + 16)},
            {_mm_unpacklo_epi8(cu, cv), _mm_unpackhi_epi8(cu, cv)}};
  }
  __m128i Chroma(Index p) const { return _mm_cvtsi32_si128(u[p] | v[p] << 8); }
};

struct PlanarWriter {
  uint8_t *y, *u, *v;
  void Write(Index p, const Pairs16 &s) const {
    Store(y + 2 * p, s.y[0]);
    Store(y + 2 * p + 16, s.y[1]);
    Store(u + p, _mm_packus_epi16(_mm_and_si128(s.uv[0], LowBytes16()),
                                  _mm_and_si128(s.uv[1], LowBytes16())));
    Store(v + p, _mm_packus_epi16(_mm_srli_epi16(s.uv[0], 8), _mm_srli_epi16(s.uv[1], 8)));
  }
};

// Thirty-two Y,U,V,A pixels as pairs: every luma, the chroma of the even
// pixels.
inline Pairs16 ReadYUVA(const uint8_t *src) {
  const __m128i luma = Every32(0xFF);
  constexpr int kEvenFirst = _MM_SHUFFLE(3, 1, 2, 0);
  Pairs16 s;
  for (int h = 0; h < 2; ++h) {
    const uint8_t *q = src + 64 * h;
    const __m128i a0 = Load(q), a1 = Load(q + 16), a2 = Load(q + 32), a3 = Load(q + 48);
    s.y[h] = _mm_packus_epi16(_mm_packs_epi32(_mm_and_si128(a0, luma), _mm_and_si128(a1, luma)),
                              _mm_packs_epi32(_mm_and_si128(a2, luma), _mm_and_si128(a3, luma)));
    // Pixels 0, 2, 4, 6 and 8, 10, 12, 14, whole.
    const __m128i e0 =
        _mm_unpacklo_epi64(_mm_shuffle_epi32(a0, kEvenFirst), _mm_shuffle_epi32(a1, kEvenFirst));
    const __m128i e1 =
        _mm_unpacklo_epi64(_mm_shuffle_epi32(a2, kEvenFirst), _mm_shuffle_epi32(a3, kEvenFirst));
    // U | V << 8 sign-extended, so the signed pack keeps it whole.
    s.uv[h] = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(e0, 8), 16),
                              _mm_srai_epi32(_mm_slli_epi32(e1, 8), 16));
  }
  return s;
}

// Alpha of the 32 pixels of pairs p to p + 15 as the high bytes of 16-bit
// lanes, the even pixels' and the odd pixels' of half h apart.
struct AlphaWords {
  __m128i even, odd;
};
struct ConstAlpha {
  __m128i a;
  explicit ConstAlpha(uint8_t alpha) : a(_mm_set1_epi16(static_cast<int16_t>(alpha << 8))) {}
  AlphaWords operator()(Index, int) const { return {a, a}; }
};
// One byte per pixel from a key plane.
struct KeyAlpha {
  const uint8_t *key;
  AlphaWords operator()(Index p, int h) const {
    const __m128i k = Load(key + 2 * p + 16 * h);
    return {_mm_slli_epi16(k, 8), _mm_andnot_si128(LowBytes16(), k)};
  }
};

// The mean of a and b per byte, (a + b + kRound) >> 1.
template <int kRound>
inline __m128i Mean(__m128i a, __m128i b) {
  const __m128i up = _mm_avg_epu8(a, b);  // (a + b + 1) >> 1
  if constexpr (kRound == 1) return up;
  return _mm_sub_epi8(up, _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1)));
}

// Returns the pairs done. Each block also reads the chroma of the pair after
// it, and the last pair is left to the portable routine's last-pair rule.
template <int kRound, class Reader, class Alpha>
Index PairsToYUVA(uint8_t *dst, Reader src, int32_t count, Alpha alpha) {
  const Index pairs = count / 2;
  Index p = 0;
  for (; p + 17 <= pairs; p += 16) {
    const Pairs16 s = src.Read(p);
    // The chroma of pairs p + 1 to p + 16.
    const __m128i next[2] = {
        _mm_or_si128(_mm_srli_si128(s.uv[0], 2), _mm_slli_si128(s.uv[1], 14)),
        _mm_or_si128(_mm_srli_si128(s.uv[1], 2), _mm_slli_si128(src.Chroma(p + 16), 14))};
    for (int h = 0; h < 2; ++h) {
      const __m128i y = s.y[h], uv = s.uv[h];
      const __m128i odd = Mean<kRound>(uv, next[h]);
      const AlphaWords a = alpha(p, h);
      // Per pixel two words: Y | U << 8 and V | A << 8.
      const __m128i e0 = _mm_or_si128(_mm_and_si128(y, LowBytes16()), _mm_slli_epi16(uv, 8));
      const __m128i e1 = _mm_or_si128(_mm_srli_epi16(uv, 8), a.even);
      const __m128i o0 = _mm_or_si128(_mm_srli_epi16(y, 8), _mm_slli_epi16(odd, 8));
      const __m128i o1 = _mm_or_si128(_mm_srli_epi16(odd, 8), a.odd);
      const __m128i evenLo = _mm_unpacklo_epi16(e0, e1), evenHi = _mm_unpackhi_epi16(e0, e1);
      const __m128i oddLo = _mm_unpacklo_epi16(o0, o1), oddHi = _mm_unpackhi_epi16(o0, o1);
      uint8_t *d = dst + 8 * p + 64 * h;
      Store(d, _mm_unpacklo_epi32(evenLo, oddLo));
      Store(d + 16, _mm_unpackhi_epi32(evenLo, oddLo));
      Store(d + 32, _mm_unpacklo_epi32(evenHi, oddHi));
      Store(d + 48, _mm_unpackhi_epi32(evenHi, oddHi));
    }
  }
  return p;
}

// Byte 3 of the sixteen 4-byte pixels at src.
inline __m128i FourthBytes16(const uint8_t *src) {
  __m128i a[4];
  for (int k = 0; k < 4; ++k) a[k] = _mm_srli_epi32(Load(src + 16 * k), 24);
  return _mm_packus_epi16(_mm_packs_epi32(a[0], a[1]), _mm_packs_epi32(a[2], a[3]));
}

// Returns the pixels done (a multiple of 32); an odd tail is the portable
// routine's. With a key plane, every pixel's alpha is also copied there.
template <class Writer>
Index YUVAToPairs(Writer dst, const uint8_t *src, int32_t count, uint8_t *dstKey = nullptr) {
  Index i = 0;
  for (; i + 32 <= count; i += 32) {
    // Everything is read before anything is stored.
    const Pairs16 s = ReadYUVA(src + 4 * i);
    if (dstKey != nullptr) {
      const __m128i k0 = FourthBytes16(src + 4 * i), k1 = FourthBytes16(src + 4 * i + 64);
      Store(dstKey + i, k0);
      Store(dstKey + i + 16, k1);
    }
    dst.Write(i / 2, s);
  }
  return i;
}

// Returns the pairs done.
template <class Writer, class Reader>
Index MovePairs(Writer dst, Reader src, int32_t count) {
  const Index pairs = count / 2;
  Index p = 0;
  for (; p + 16 <= pairs; p += 16) dst.Write(p, src.Read(p));
  return p;
}

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
  Groups4 operator()(Index) const { return {{a, a, a, a}}; }
};
struct PixelAlphaKey {
  const uint8_t *key;
  Groups4 operator()(Index i) const {
    const __m128i zero = _mm_setzero_si128(), k = Load(key + i);
    const __m128i lo = _mm_unpacklo_epi8(zero, k), hi = _mm_unpackhi_epi8(zero, k);
    return {{_mm_unpacklo_epi16(zero, lo), _mm_unpackhi_epi16(zero, lo),
             _mm_unpacklo_epi16(zero, hi), _mm_unpackhi_epi16(zero, hi)}};
  }
};

// Returns the pixels done.
template <bool kSwap, class Alpha>
Index RGB24ToRGB32(uint8_t *dst, const uint8_t *src, int32_t count, Alpha alpha) {
  Index i = 0;
  for (; i + 16 <= count; i += 16) {
    const Groups4 s = ReadRGB24(src + 3 * i), a = alpha(i);
    for (int k = 0; k < 4; ++k) {
      const __m128i x = Widen3To4(s.g[k]);
      Store(dst + 4 * i + 16 * k, _mm_or_si128(kSwap ? SwapRB32(x) : x, a.g[k]));
    }
  }
  return i;
}

Index RGB32ToBGR24(uint8_t *dst, const uint8_t *src, int32_t count) {
  Index i = 0;
  for (; i + 16 <= count; i += 16) {
    Groups4 c;
    for (int k = 0; k < 4; ++k) c.g[k] = Narrow4To3(SwapRB32(Load(src + 4 * i + 16 * k)));
    WriteRGB24(dst + 3 * i, c);
  }
  return i;
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
Index SwapRB24(uint8_t *dst, const uint8_t *src, int32_t count) {
  Index i = 0;
  for (; i + 16 <= count; i += 16) {
    const uint8_t *s = src + 3 * i;
    const __m128i v0 = Load(s), v1 = Load(s + 16), v2 = Load(s + 32);
    const __m128i o0 = SwapRB24Vector<0>(
        v0, _mm_or_si128(_mm_srli_si128(v0, 2), _mm_slli_si128(v1, 14)), _mm_slli_si128(v0, 2));
    const __m128i o1 =
        SwapRB24Vector<1>(v1, _mm_or_si128(_mm_srli_si128(v1, 2), _mm_slli_si128(v2, 14)),
                          _mm_or_si128(_mm_slli_si128(v1, 2), _mm_srli_si128(v0, 14)));
    const __m128i o2 = SwapRB24Vector<2>(
        v2, _mm_srli_si128(v2, 2), _mm_or_si128(_mm_slli_si128(v2, 2), _mm_srli_si128(v1, 14)));
    uint8_t *d = dst + 3 * i;
    Store(d, o0);
    Store(d + 16, o1);
    Store(d + 32, o2);
  }
  return i;
}

// Sixteen pixels per step, each vector read before it is written.
Index SwapRB32Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  Index i = 0;
  for (; i + 16 <= count; i += 16)
    for (int k = 0; k < 4; ++k) Store(dst + 4 * i + 16 * k, SwapRB32(Load(src + 4 * i + 16 * k)));
  for (; i + 4 <= count; i += 4) Store(dst + 4 * i, SwapRB32(Load(src + 4 * i)));
  return i;
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
Index RGBToHSV(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src, int32_t count) {
  Index i = 0;
  for (; i + 16 <= count; i += 16) {
    const Groups4 s = ReadRGB24(src + 3 * i);
    Hsv4 q[4];
    for (int k = 0; k < 4; ++k) q[k] = HsvOf4<kR, kB>(Widen3To4(s.g[k]));
    Store(dstH + i, _mm_packs_epi32(q[0].h, q[1].h));
    Store(dstH + i + 8, _mm_packs_epi32(q[2].h, q[3].h));
    Store(dstS + i, Bytes16(q[0].s, q[1].s, q[2].s, q[3].s));
    Store(dstV + i, Bytes16(q[0].v, q[1].v, q[2].v, q[3].v));
  }
  return i;
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

// ---- Chroma planes --------------------------------------------------------------

// dst0 takes the even bytes of src0, dst1 the odd bytes of src1, sixteen of
// each per step while i + 16 <= limit: a caller whose src0 row ends on its
// last even byte passes count - 1, so no load reaches past it. Returns the
// samples done.
Index DeinterleaveBlocks(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1,
                         Index limit) {
  Index i = 0;
  for (; i + 16 <= limit; i += 16) {
    const __m128i a0 = Load(src0 + 2 * i), b0 = Load(src0 + 2 * i + 16);
    const __m128i a1 = Load(src1 + 2 * i), b1 = Load(src1 + 2 * i + 16);
    Store(dst0 + i,
          _mm_packus_epi16(_mm_and_si128(a0, LowBytes16()), _mm_and_si128(b0, LowBytes16())));
    Store(dst1 + i, _mm_packus_epi16(_mm_srli_epi16(a1, 8), _mm_srli_epi16(b1, 8)));
  }
  return i;
}

Index InterleaveBlocks(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB, int32_t count) {
  Index i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i a = Load(srcA + i), b = Load(srcB + i);
    Store(dst + 2 * i, _mm_unpacklo_epi8(a, b));
    Store(dst + 2 * i + 16, _mm_unpackhi_epi8(a, b));
  }
  return i;
}

// Sixteen source samples to 32 outputs per step: each step reads the sample
// after it, and the last source sample is left to the portable routine's
// rule. Returns the source samples done.
Index DoubleChromaBlocks(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                         int32_t count) {
  const Index sources = (Index{count} + 1) / 2;
  Index i = 0;
  for (; i + 17 <= sources; i += 16) {
    for (int k = 0; k < 2; ++k) {
      const uint8_t *s = k == 0 ? srcA : srcB;
      uint8_t *d = (k == 0 ? dstA : dstB) + 2 * i;
      const __m128i here = Load(s + i), odd = Mean<0>(here, Load(s + i + 1));
      Store(d, _mm_unpacklo_epi8(here, odd));
      Store(d + 16, _mm_unpackhi_epi8(here, odd));
    }
  }
  return i;
}

// ---- Zero fills -----------------------------------------------------------------

// Sixteen units of kUnit bytes (kUnit 16-byte stores) per step, the rest to
// the portable routine kRest.
template <int kUnit, void (*kRest)(uint8_t *, const uint8_t *, int32_t)>
void ClearRow(uint8_t *dst, const uint8_t *unused, int32_t count) {
  const __m128i zero = _mm_setzero_si128();
  Index i = 0;
  for (; i + 16 <= count; i += 16)
    for (int k = 0; k < kUnit; ++k) Store(dst + kUnit * i + 16 * k, zero);
  kRest(dst + kUnit * i, unused, count - static_cast<int32_t>(i));
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---- Packed 4:2:2 <-> Y,U,V,A ------------------------------------------------

void sse2::YUYV_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const Index p = PairsToYUVA<1>(dst, PackedReader<true>{src}, count, ConstAlpha(alpha));
  portable::YUYV_2_YUVA_Row(dst + 8 * p, src + 4 * p, count - static_cast<int32_t>(2 * p), alpha);
}
void sse2::UYVY_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const Index p = PairsToYUVA<1>(dst, PackedReader<false>{src}, count, ConstAlpha(alpha));
  portable::UYVY_2_YUVA_Row(dst + 8 * p, src + 4 * p, count - static_cast<int32_t>(2 * p), alpha);
}
void sse2::YUV422_2_YUVA_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count, uint8_t alpha) {
  const Index p = PairsToYUVA<1>(dst, PlanarReader{srcY, srcU, srcV}, count, ConstAlpha(alpha));
  portable::YUV422_2_YUVA_Row(dst + 8 * p, srcY + 2 * p, srcU + p, srcV + p,
                              count - static_cast<int32_t>(2 * p), alpha);
}

void sse2::YUVA_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const Index i = YUVAToPairs(PackedWriter<true>{dst}, src, count);
  portable::YUVA_2_YUYV_Row(dst + 2 * i, src + 4 * i, count - static_cast<int32_t>(i));
}
void sse2::YUVA_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const Index i = YUVAToPairs(PackedWriter<false>{dst}, src, count);
  portable::YUVA_2_UYVY_Row(dst + 2 * i, src + 4 * i, count - static_cast<int32_t>(i));
}
void sse2::YUVA_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) {
  const Index i = YUVAToPairs(PlanarWriter{dstY, dstU, dstV}, src, count);
  portable::YUVA_2_YUV422_Row(dstY + i, dstU + i / 2, dstV + i / 2, src + 4 * i,
                              count - static_cast<int32_t>(i));
}

// ---- Planar 4:2:2 <-> packed 4:2:2 -------------------------------------------

void sse2::YUV422_2_YUYV_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) {
  const Index p = MovePairs(PackedWriter<true>{dst}, PlanarReader{srcY, srcU, srcV}, count);
  portable::YUV422_2_YUYV_Row(dst + 4 * p, srcY + 2 * p, srcU + p, srcV + p,
                              count - static_cast<int32_t>(2 * p));
}
void sse2::YUV422_2_UYVY_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) {
  const Index p = MovePairs(PackedWriter<false>{dst}, PlanarReader{srcY, srcU, srcV}, count);
  portable::YUV422_2_UYVY_Row(dst + 4 * p, srcY + 2 * p, srcU + p, srcV + p,
                              count - static_cast<int32_t>(2 * p));
}
void sse2::YUYV_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) {
  const Index p = MovePairs(PlanarWriter{dstY, dstU, dstV}, PackedReader<true>{src}, count);
  portable::YUYV_2_YUV422_Row(dstY + 2 * p, dstU + p, dstV + p, src + 4 * p,
                              count - static_cast<int32_t>(2 * p));
}
void sse2::UYVY_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) {
  const Index p = MovePairs(PlanarWriter{dstY, dstU, dstV}, PackedReader<false>{src}, count);
  portable::UYVY_2_YUV422_Row(dstY + 2 * p, dstU + p, dstV + p, src + 4 * p,
                              count - static_cast<int32_t>(2 * p));
}

// ---- 24/32-bit RGB -----------------------------------------------------------

void sse2::RGB24_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const Index i = RGB24ToRGB32<false>(dst, src, count, PixelAlphaConst(alpha));
  portable::RGB24_2_RGB32_Row(dst + 4 * i, src + 3 * i, count - static_cast<int32_t>(i), alpha);
}
void sse2::RGB24_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const Index i = RGB24ToRGB32<true>(dst, src, count, PixelAlphaConst(alpha));
  portable::RGB24_2_BGR32_Row(dst + 4 * i, src + 3 * i, count - static_cast<int32_t>(i), alpha);
}
void sse2::RGB32_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const Index i = RGB32ToBGR24(dst, src, count);
  portable::RGB32_2_BGR24_Row(dst + 3 * i, src + 4 * i, count - static_cast<int32_t>(i));
}
void sse2::RGB32_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const Index i = SwapRB32Row(dst, src, count);
  portable::RGB32_SwapRB_Row(dst + 4 * i, src + 4 * i, count - static_cast<int32_t>(i));
}
void sse2::RGB24_SwapRB_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  const Index i = SwapRB24(dst, src, count);
  portable::RGB24_SwapRB_Row(dst + 3 * i, src + 3 * i, count - static_cast<int32_t>(i));
}

// ---- HSV and histogram -----------------------------------------------------------

void sse2::RGB24_2_HSV_Row(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src,
                           int32_t count) {
  const Index i = RGBToHSV<0, 2>(dstH, dstS, dstV, src, count);
  portable::RGB24_2_HSV_Row(dstH + i, dstS + i, dstV + i, src + 3 * i,
                            count - static_cast<int32_t>(i));
}
void sse2::BGR24_2_HSV_Row(uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src,
                           int32_t count) {
  const Index i = RGBToHSV<2, 0>(dstH, dstS, dstV, src, count);
  portable::BGR24_2_HSV_Row(dstH + i, dstS + i, dstV + i, src + 3 * i,
                            count - static_cast<int32_t>(i));
}

// One increment per sample is already as fast as the stores allow, so varied
// pixels stay with the portable loop. Runs of one colour (flat areas, borders,
// mattes) are found sixteen pixels at a time and counted with one add per
// channel instead of sixteen increments of the same entry, each waiting for
// the last. A cheap test of the last pixel against the first keeps varied
// rows from paying for the full comparison.
void sse2::RGB24_Histogram_Row(uint32_t *hist0, uint32_t *hist1, uint32_t *hist2,
                               const uint8_t *src, int32_t count) {
  Index counted = 0;
  for (Index i = 0; i + 16 <= count; i += 16) {
    const uint8_t *s = src + 3 * i;
    if (s[0] != s[45] || s[1] != s[46] || s[2] != s[47] || !SameColour16(s)) continue;
    portable::RGB24_Histogram_Row(hist0, hist1, hist2, src + 3 * counted,
                                  static_cast<int32_t>(i - counted));
    AddCount(hist0, s[0], 16);
    AddCount(hist1, s[1], 16);
    AddCount(hist2, s[2], 16);
    counted = i + 16;
  }
  portable::RGB24_Histogram_Row(hist0, hist1, hist2, src + 3 * counted,
                                count - static_cast<int32_t>(counted));
}

// ---- Key planes --------------------------------------------------------------------

// The key forms halve the odd pixel's chroma sum without the rounding one.
void sse2::YUYV_Key_2_YUVA_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                               int32_t count) {
  const Index p = PairsToYUVA<0>(dst, PackedReader<true>{src}, count, KeyAlpha{key});
  portable::YUYV_Key_2_YUVA_Row(dst + 8 * p, src + 4 * p, key + 2 * p,
                                count - static_cast<int32_t>(2 * p));
}
void sse2::YUVA_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  const Index i = YUVAToPairs(PackedWriter<true>{dst}, src, count, dstKey);
  portable::YUVA_2_YUYV_Key_Row(dst + 2 * i, dstKey + i, src + 4 * i,
                                count - static_cast<int32_t>(i));
}
void sse2::RGB24_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  const Index i = RGB24ToRGB32<true>(dst, src, count, PixelAlphaKey{key});
  portable::RGB24_Key_2_BGR32_Row(dst + 4 * i, src + 3 * i, key + i,
                                  count - static_cast<int32_t>(i));
}
void sse2::RGB24_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  const Index i = RGB24ToRGB32<false>(dst, src, count, PixelAlphaKey{key});
  portable::RGB24_Key_2_RGB32_Row(dst + 4 * i, src + 3 * i, key + i,
                                  count - static_cast<int32_t>(i));
}

// ---- Chroma planes -------------------------------------------------------------------

// src0 is read up to its last even byte only.
void sse2::Deinterleave_Pairs_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                  const uint8_t *src1, int32_t count) {
  const Index i = DeinterleaveBlocks(dst0, dst1, src0, src1, Index{count} - 1);
  portable::Deinterleave_Pairs_Row(dst0 + i, dst1 + i, src0 + 2 * i, src1 + 2 * i,
                                   count - static_cast<int32_t>(i));
}
// Below level 4 slot 144 runs slot 124's routine.
void sse2::Int32_2_Int16_Deinterleave_Row(uint8_t *dst0, uint8_t *dst1, const uint8_t *src0,
                                          const uint8_t *src1, int32_t count) {
  sse2::Deinterleave_Pairs_Row(dst0, dst1, src0, src1, count);
}
void sse2::UV_Deinterleave_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count) {
  const Index i = DeinterleaveBlocks(dstA, dstB, src, src, count);
  portable::UV_Deinterleave_Row(dstA + i, dstB + i, src + 2 * i, count - static_cast<int32_t>(i));
}
void sse2::UV_Interleave_Row(uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB,
                             int32_t count) {
  const Index i = InterleaveBlocks(dst, srcA, srcB, count);
  portable::UV_Interleave_Row(dst + 2 * i, srcA + i, srcB + i, count - static_cast<int32_t>(i));
}
void sse2::UV_422_2_444_Row(uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB,
                            int32_t count) {
  const Index i = DoubleChromaBlocks(dstA, dstB, srcA, srcB, count);
  portable::UV_422_2_444_Row(dstA + 2 * i, dstB + 2 * i, srcA + i, srcB + i,
                             count - static_cast<int32_t>(2 * i));
}

// ---- Zero fills; the count unit differs per slot ----------------------------------

void sse2::Clear_Row_A(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<1, &portable::Clear_Row_A>(dst, unused, count);
}
void sse2::Clear_Row_B(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<2, &portable::Clear_Row_B>(dst, unused, count);
}
void sse2::Clear_Row_C(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<4, &portable::Clear_Row_C>(dst, unused, count);
}
void sse2::Clear_Row_D(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<3, &portable::Clear_Row_D>(dst, unused, count);
}
void sse2::Clear_Row_E(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<8, &portable::Clear_Row_E>(dst, unused, count);
}

}  // namespace tqcs
