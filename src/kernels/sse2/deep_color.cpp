// Deep-colour row kernels, SSE2 tier: the 8/16-bit RGB repacks, RGB to
// 16-bit YUV 4:2:2, and 10-bit 4:2:2 and 8-bit 4:1:1 YUV to RGB.
//
// The kernels work on blocks of eight pixels (sixteen for 4:1:1), mostly
// held as four vectors of two pixels, four 16-bit words a pixel (component 0,
// 1, 2 and a fourth word for alpha or padding). Loads and stores cover only
// the block's own bytes; the pixels after the last whole block (and the last
// pair or group of the kernels that interpolate with the next one) go to the
// portable routine, which applies its own rules to the row's end.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Load;
using x86::Load32;
using x86::Load64;
using x86::ShiftWords;
using x86::Store;
using x86::Store64;
using Index = std::ptrdiff_t;

constexpr int kBlock = 8;  // pixels per block

// Eight pixels, two to a vector, each pixel four words.
struct Pixels8 {
  __m128i v[4];
};

inline __m128i Words(short w0, short w1, short w2, short w3) {
  return _mm_setr_epi16(w0, w1, w2, w3, w0, w1, w2, w3);
}

// Words 0-2 of each pixel kept, word 3 cleared.
inline __m128i Colour(__m128i v) { return _mm_and_si128(v, Words(-1, -1, -1, 0)); }

// Components 0 and 2 of every pixel exchanged.
inline __m128i SwapRB(__m128i v) {
  v = _mm_shufflelo_epi16(v, _MM_SHUFFLE(3, 0, 1, 2));
  return _mm_shufflehi_epi16(v, _MM_SHUFFLE(3, 0, 1, 2));
}

// Twelve bytes (two 3-word pixels) in bytes 0-11 spread to two 4-word pixels;
// word 3 of each is left over from the neighbouring samples.
inline __m128i Spread3(__m128i p) { return _mm_unpacklo_epi64(p, _mm_srli_si128(p, 6)); }

// 48 bytes of 3-word pixels (three vectors) as eight 4-word pixels.
inline Pixels8 Spread3x8(__m128i a, __m128i b, __m128i c) {
  return {{Spread3(a), Spread3(_mm_or_si128(_mm_srli_si128(a, 12), _mm_slli_si128(b, 4))),
           Spread3(_mm_or_si128(_mm_srli_si128(b, 8), _mm_slli_si128(c, 8))),
           Spread3(_mm_srli_si128(c, 4))}};
}

// Eight 3-sample pixels (24 samples, 8 or 16 bits) as 24 words in memory
// order, values unshifted.
struct Words24 {
  __m128i v[3];
};

template <class In>
inline Words24 ReadWords24(const In *src) {
  if constexpr (sizeof(In) == 2) {
    return {{Load(src), Load(src + 8), Load(src + 16)}};
  } else {
    const __m128i zero = _mm_setzero_si128(), a = Load(src), b = Load64(src + 16);
    return {{_mm_unpacklo_epi8(a, zero), _mm_unpackhi_epi8(a, zero), _mm_unpacklo_epi8(b, zero)}};
  }
}

// Samples 0 and 2 of sixteen 3-byte pixels (three vectors) exchanged: a byte
// takes the one two places right (sample 0), two places left (sample 2) or
// keeps its own (sample 1); each vector starts at its own pixel phase.
inline void SwapRB3Bytes(__m128i v[3]) {
  const __m128i m0 = _mm_setr_epi8(-1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1);
  const __m128i m1 = _mm_slli_si128(m0, 1), m2 = _mm_slli_si128(m0, 2);
  const __m128i a = v[0], b = v[1], c = v[2];
  // own where `mine`, the byte two right where `r`, two left where `l`.
  auto pick = [](__m128i own, __m128i right, __m128i left, __m128i mine, __m128i r, __m128i l) {
    return _mm_or_si128(_mm_and_si128(own, mine),
                        _mm_or_si128(_mm_and_si128(right, r), _mm_and_si128(left, l)));
  };
  // Byte 0 of a is sample 0, of b sample 1, of c sample 2.
  v[0] = pick(a, _mm_or_si128(_mm_srli_si128(a, 2), _mm_slli_si128(b, 14)), _mm_slli_si128(a, 2),
              m1, m0, m2);
  v[1] = pick(b, _mm_or_si128(_mm_srli_si128(b, 2), _mm_slli_si128(c, 14)),
              _mm_or_si128(_mm_slli_si128(b, 2), _mm_srli_si128(a, 14)), m0, m2, m1);
  v[2] = pick(c, _mm_srli_si128(c, 2), _mm_or_si128(_mm_slli_si128(c, 2), _mm_srli_si128(b, 14)),
              m2, m1, m0);
}

// Sixteen 3-sample pixels to 3-sample pixels (48 samples): a depth shift,
// and the exchange of samples 0 and 2 (done on bytes; every swapping kernel
// of this kind has an 8-bit side). Each vector is read before the bytes it
// covers are stored, so 16-bit to 16-bit runs in place.
template <int kShift, bool kSwap, class Out, class In>
inline void Repack48(Out *dst, const In *src) {
  if constexpr (sizeof(In) == 2 && sizeof(Out) == 2) {
    static_assert(!kSwap);
    for (int j = 0; j < 6; ++j) Store(dst + 8 * j, ShiftWords<kShift>(Load(src + 8 * j)));
  } else {
    static_assert(sizeof(In) != sizeof(Out) && kShift == (sizeof(In) == 1 ? 8 : -8));
    __m128i v[3];
    for (int j = 0; j < 3; ++j) {
      if constexpr (sizeof(In) == 1) {
        v[j] = Load(src + 16 * j);
      } else {
        v[j] = _mm_packus_epi16(_mm_srli_epi16(Load(src + 16 * j), 8),
                                _mm_srli_epi16(Load(src + 16 * j + 8), 8));
      }
    }
    if constexpr (kSwap) SwapRB3Bytes(v);
    const __m128i zero = _mm_setzero_si128();
    for (int j = 0; j < 3; ++j) {
      if constexpr (sizeof(Out) == 1) {
        Store(dst + 16 * j, v[j]);
      } else {  // a byte under a zero byte: its value << 8
        Store(dst + 16 * j, _mm_unpacklo_epi8(zero, v[j]));
        Store(dst + 16 * j + 8, _mm_unpackhi_epi8(zero, v[j]));
      }
    }
  }
}

// Eight pixels of kStride samples (8 or 16 bits) as words, values unshifted.
template <int kStride, class In>
inline Pixels8 Read8(const In *src) {
  const __m128i zero = _mm_setzero_si128();
  if constexpr (kStride == 3 && sizeof(In) == 2) {
    // Each pair of pixels from its own load; the last load ends at the
    // block's end.
    return {{Spread3(Load(src)), Spread3(Load(src + 6)), Spread3(Load(src + 12)),
             Spread3(_mm_srli_si128(Load(src + 16), 4))}};
  } else if constexpr (kStride == 3) {
    const Words24 w = ReadWords24(src);
    return Spread3x8(w.v[0], w.v[1], w.v[2]);
  } else if constexpr (sizeof(In) == 2) {
    return {{Load(src), Load(src + 8), Load(src + 16), Load(src + 24)}};
  } else {
    const __m128i a = Load(src), b = Load(src + 16);
    return {{_mm_unpacklo_epi8(a, zero), _mm_unpackhi_epi8(a, zero), _mm_unpacklo_epi8(b, zero),
             _mm_unpackhi_epi8(b, zero)}};
  }
}

// Eight pixels of words to kStride samples; words bound for bytes are 0..255
// (or saturate there).
template <int kStride, class Out>
inline void Write8(Out *dst, const Pixels8 &p) {
  static_assert(kStride == 4, "3-sample rows are written by the stream path");
  if constexpr (sizeof(Out) == 2) {
    for (int j = 0; j < 4; ++j) Store(dst + 8 * j, p.v[j]);
  } else {
    Store(dst, _mm_packus_epi16(p.v[0], p.v[1]));
    Store(dst + 16, _mm_packus_epi16(p.v[2], p.v[3]));
  }
}

// ------------------------------------------------------------ alpha sources
// Each gives, for the block at pixel i, the alpha words (words 3 and 7 of
// each vector, the rest zero) already at the destination depth.

struct SourceAlpha {};  // a four-sample source keeps its own fourth sample

struct ConstAlpha {
  __m128i words;
  explicit ConstAlpha(uint16_t a) : words(Words(0, 0, 0, static_cast<short>(a))) {}
  void Get(__m128i a[4], Index) const {
    for (int j = 0; j < 4; ++j) a[j] = words;
  }
};

// A key plane's bytes moved up to 16 bits.
struct KeyAlpha16 {
  const uint8_t *key;
  void Get(__m128i a[4], Index i) const {
    const __m128i zero = _mm_setzero_si128();
    const __m128i k = _mm_unpacklo_epi8(zero, Load64(key + i));  // k << 8, eight words
    const __m128i lo = _mm_unpacklo_epi16(zero, k), hi = _mm_unpackhi_epi16(zero, k);
    a[0] = _mm_unpacklo_epi32(zero, lo);
    a[1] = _mm_unpackhi_epi32(zero, lo);
    a[2] = _mm_unpacklo_epi32(zero, hi);
    a[3] = _mm_unpackhi_epi32(zero, hi);
  }
};

// The whole blocks of a repack (see portable RepackRgb); returns the pixels
// done.
template <int kIn, int kOut, int kShift, bool kSwap, class Out, class In, class Alpha>
int32_t RepackBlocks(Out *dst, const In *src, int32_t count, const Alpha &alpha) {
  constexpr bool kStream = kIn == 3 && kOut == 3;  // three samples stay three
  constexpr int kPixels = kStream ? 16 : kBlock;
  const int32_t blocks = x86::WholeBlocks<kPixels>(count);
  for (int32_t b = 0; b < blocks; ++b) {
    const Index i = Index{b} * kPixels;
    if constexpr (kStream) {
      Repack48<kShift, kSwap>(dst + kOut * i, src + kIn * i);
    } else {
      Pixels8 p = Read8<kIn>(src + kIn * i);
      if constexpr (kOut == 4 && kIn == 3) {
        __m128i a[4];
        alpha.Get(a, i);
        for (int j = 0; j < 4; ++j) p.v[j] = _mm_or_si128(Colour(ShiftWords<kShift>(p.v[j])), a[j]);
      } else {
        for (auto &v : p.v) v = ShiftWords<kShift>(v);
      }
      if constexpr (kSwap) {
        for (auto &v : p.v) v = SwapRB(v);
      }
      Write8<kOut>(dst + kOut * i, p);
    }
  }
  return blocks * kPixels;
}

// A repack slot: the blocks, then the rest through the portable routine.
template <int kIn, int kOut, int kShift, bool kSwap, class Out, class In, class Alpha = SourceAlpha>
void Repack(void (*tail)(Out *, const In *, int32_t), Out *dst, const In *src, int32_t count,
            const Alpha &alpha = {}) {
  const int32_t done = RepackBlocks<kIn, kOut, kShift, kSwap>(dst, src, count, alpha);
  tail(dst + Index{kOut} * done, src + Index{kIn} * done, count - done);
}

template <bool kSwap>
void RepackKey(void (*tail)(uint16_t *, const uint8_t *, const uint8_t *, int32_t), uint16_t *dst,
               const uint8_t *src, const uint8_t *key, int32_t count) {
  const int32_t done = RepackBlocks<3, 4, 8, kSwap>(dst, src, count, KeyAlpha16{key});
  tail(dst + Index{4} * done, src + Index{3} * done, key + done, count - done);
}

// ------------------------------------------------------- RGB to YUV 4:2:2
// Working values are the source bytes, or 16-bit samples >> 6 (0..1023), so
// every product fits _mm_madd_epi16 and every sum of three Q14 products
// (below 2^27) fits int32; after >> 14 (and the chroma offset) they fit int16,
// so the saturating pack is exact and the clamp is done on words.

// Lanes (a0 + a1, a2 + a3, b0 + b1, b2 + b3) of two madd results.
inline __m128i PairSums(__m128i a, __m128i b) {
  const __m128 fa = _mm_castsi128_ps(a), fb = _mm_castsi128_ps(b);
  return _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(2, 0, 2, 0))),
                       _mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(3, 1, 3, 1))));
}

// (w . c + 8192) >> 14 of four pixels (two vectors of two, word 3 holding 1
// against the weight 8192).
inline __m128i Weigh4(__m128i a, __m128i b, __m128i w) {
  return _mm_srai_epi32(PairSums(_mm_madd_epi16(a, w), _mm_madd_epi16(b, w)), 14);
}

// 0..2^kBits - 1, moved to the top of a 16-bit sample.
template <int kBits>
inline __m128i ClampUp(__m128i v) {
  v = _mm_min_epi16(_mm_max_epi16(v, _mm_setzero_si128()), _mm_set1_epi16((1 << kBits) - 1));
  return _mm_slli_epi16(v, 16 - kBits);
}

// The three weight rows: luma from elements 2-4 of coefY, U from 0-2 and V
// from 4-6 of coefUV, each with the rounding term.
struct YuvWeights {
  __m128i y, u, v;
  YuvWeights(const int16_t *cy, const int16_t *cuv)
      : y(Words(cy[2], cy[3], cy[4], 8192)),
        u(Words(cuv[0], cuv[1], cuv[2], 8192)),
        v(Words(cuv[4], cuv[5], cuv[6], 8192)) {}
};

// Eight pixels' outputs before the clamp: y the luma in pixel order, c the
// chroma of the four even pixels, U in words 0-3 and V in words 4-7.
struct Yuv8 {
  __m128i y, c;
};

template <int kStride, class In>
inline Yuv8 RgbToYuv8(const In *src, const YuvWeights &w) {
  constexpr int kBits = sizeof(In) == 1 ? 8 : 10;
  __m128i y, u, v;  // int32 results, four pixels a vector
  if constexpr (kStride == 4 && sizeof(In) == 1) {
    // 4-byte pixels stay 32-bit lanes: bytes 0 and 2 as one word pair, byte 1
    // with a 1 against the rounding term as another. No lanes to add.
    const __m128i b02 = _mm_set1_epi32(0x00FF00FF), one = _mm_set1_epi32(0x10000);
    const __m128i a = Load(src), b = Load(src + 16);
    const __m128i a02 = _mm_and_si128(a, b02), b02v = _mm_and_si128(b, b02);
    const __m128i a1 = _mm_or_si128(_mm_srli_epi32(_mm_slli_epi32(a, 16), 24), one);
    const __m128i b1 = _mm_or_si128(_mm_srli_epi32(_mm_slli_epi32(b, 16), 24), one);
    // Weights as (w0, w2) and (w1, 8192) word pairs.
    auto w02 = [](__m128i q) {
      return _mm_shufflehi_epi16(_mm_shufflelo_epi16(q, _MM_SHUFFLE(2, 0, 2, 0)),
                                 _MM_SHUFFLE(2, 0, 2, 0));
    };
    auto w1r = [](__m128i q) {
      return _mm_shufflehi_epi16(_mm_shufflelo_epi16(q, _MM_SHUFFLE(3, 1, 3, 1)),
                                 _MM_SHUFFLE(3, 1, 3, 1));
    };
    auto weigh = [&](__m128i c02, __m128i c1, __m128i q) {
      return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(c02, w02(q)), _mm_madd_epi16(c1, w1r(q))),
                            14);
    };
    y = _mm_packs_epi32(weigh(a02, a1, w.y), weigh(b02v, b1, w.y));
    auto even = [](__m128i x, __m128i z) {
      return _mm_castps_si128(
          _mm_shuffle_ps(_mm_castsi128_ps(x), _mm_castsi128_ps(z), _MM_SHUFFLE(2, 0, 2, 0)));
    };
    const __m128i e02 = even(a02, b02v), e1 = even(a1, b1);
    u = weigh(e02, e1, w.u);
    v = weigh(e02, e1, w.v);
  } else {
    Pixels8 p = Read8<kStride>(src);
    for (auto &q : p.v)
      q = _mm_or_si128(Colour(ShiftWords<(sizeof(In) == 1 ? 0 : -6)>(q)), Words(0, 0, 0, 1));
    y = _mm_packs_epi32(Weigh4(p.v[0], p.v[1], w.y), Weigh4(p.v[2], p.v[3], w.y));
    const __m128i even01 = _mm_unpacklo_epi64(p.v[0], p.v[1]),
                  even23 = _mm_unpacklo_epi64(p.v[2], p.v[3]);
    u = Weigh4(even01, even23, w.u);
    v = Weigh4(even01, even23, w.v);
  }
  return {y, _mm_add_epi16(_mm_packs_epi32(u, v), _mm_set1_epi16(1 << (kBits - 1)))};
}

// The whole blocks of an RGB to 4:2:2 row, each handed to put(pixel, Yuv8);
// returns the pixels done. The weights are read only when a block runs.
template <int kStride, class In, class Put>
int32_t RgbTo422Blocks(const In *src, int32_t count, const int16_t *cy, const int16_t *cuv,
                       Put put) {
  const int32_t blocks = x86::WholeBlocks<kBlock>(count);
  if (blocks == 0) return 0;
  const YuvWeights w(cy, cuv);
  for (int32_t b = 0; b < blocks; ++b) {
    const Index i = Index{b} * kBlock;
    put(i, RgbToYuv8<kStride>(src + kStride * i, w));
  }
  return blocks * kBlock;
}

// Packed 16-bit YUYV or UYVY.
template <int kStride, bool kUyvy, class In>
void RgbToPacked16(void (*tail)(uint16_t *, const In *, int32_t, const int16_t *, const int16_t *),
                   uint16_t *dst, const In *src, int32_t count, const int16_t *cy,
                   const int16_t *cuv) {
  const int32_t done = RgbTo422Blocks<kStride>(src, count, cy, cuv, [dst](Index i, Yuv8 o) {
    uint16_t *d = dst + 2 * i;
    if constexpr (sizeof(In) == 1) {
      // The byte pack is the clamp to 0..255; a byte under a zero byte is
      // its value << 8.
      const __m128i bytes = _mm_packus_epi16(o.y, o.c), zero = _mm_setzero_si128();
      const __m128i c = _mm_unpacklo_epi8(_mm_srli_si128(bytes, 8), _mm_srli_si128(bytes, 12));
      const __m128i yc = kUyvy ? _mm_unpacklo_epi8(c, bytes) : _mm_unpacklo_epi8(bytes, c);
      Store(d, _mm_unpacklo_epi8(zero, yc));
      Store(d + 8, _mm_unpackhi_epi8(zero, yc));
    } else {
      const __m128i y = ClampUp<10>(o.y), c = ClampUp<10>(o.c);
      const __m128i ci = _mm_unpacklo_epi16(c, _mm_srli_si128(c, 8));  // U0 V0 U1 V1 ...
      Store(d, kUyvy ? _mm_unpacklo_epi16(ci, y) : _mm_unpacklo_epi16(y, ci));
      Store(d + 8, kUyvy ? _mm_unpackhi_epi16(ci, y) : _mm_unpackhi_epi16(y, ci));
    }
  });
  tail(dst + Index{2} * done, src + Index{kStride} * done, count - done, cy, cuv);
}

// ------------------------------------------------------- YUV to RGB
// Centred chroma (-512..511, or -128..127) times an int16 weight fits
// _mm_madd_epi16 and a sum of two such products int32; the deltas after
// >> 14 are below 2^12 and Y + delta fits int16, so packs are exact and the
// clamp is done on words.

// The chroma weights as madd rows over interleaved U, V words (Rv reads V,
// Bu reads U, G reads both).
struct RgbWeights {
  __m128i r, g, b;
  RgbWeights(const int16_t *coefA, const int16_t *coefB)
      : r(Words(0, coefA[0], 0, coefA[0])),
        g(Words(coefB[0], coefA[1], coefB[0], coefA[1])),
        b(Words(coefB[1], 0, coefB[1], 0)) {}
};

// The delta of one colour for eight pixels in pixel order, from centred
// interleaved chroma: even holds each pixel pair's even pixel's U, V, odd its
// odd pixel's (four pairs).
inline __m128i Delta8(__m128i even, __m128i odd, __m128i w) {
  const __m128i round = _mm_set1_epi32(8192);
  const __m128i de = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(even, w), round), 14);
  const __m128i dd = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(odd, w), round), 14);
  return _mm_packs_epi32(_mm_unpacklo_epi32(de, dd), _mm_unpackhi_epi32(de, dd));
}

// Eight pixels' R, G, B words and the alpha words to four-component pixels,
// component 0 B when kBgr. 16-bit outputs are stored as they are, 8-bit ones
// through the unsigned saturating pack.
template <bool kBgr, class Out>
inline void StoreRgba8(Out *dst, __m128i r, __m128i g, __m128i b, __m128i a) {
  const __m128i c0 = kBgr ? b : r, c2 = kBgr ? r : b;
  const __m128i lo01 = _mm_unpacklo_epi16(c0, g), lo23 = _mm_unpacklo_epi16(c2, a);
  const __m128i hi01 = _mm_unpackhi_epi16(c0, g), hi23 = _mm_unpackhi_epi16(c2, a);
  Write8<4>(dst, Pixels8{{_mm_unpacklo_epi32(lo01, lo23), _mm_unpackhi_epi32(lo01, lo23),
                          _mm_unpacklo_epi32(hi01, hi23), _mm_unpackhi_epi32(hi01, hi23)}});
}

// Four pairs of a 4:2:2 row as 10-bit values: y the eight luma samples, c the
// pairs' U, V interleaved, next the same for the four pairs after them.
struct Pairs4 {
  __m128i y, c, next;
};

inline __m128i Low16(__m128i v) { return _mm_and_si128(v, _mm_set1_epi32(0xFFFF)); }
inline __m128i High16(__m128i v) { return _mm_srli_epi32(v, 16); }

// Packed 16-bit pairs; Y sits in the low word of each 32-bit lane for YUYV,
// in the high word for UYVY.
template <bool kUyvy>
struct PackedPairs16 {
  const uint16_t *src;
  static __m128i Luma(__m128i v) { return kUyvy ? High16(v) : Low16(v); }
  static __m128i Chroma(__m128i v) { return kUyvy ? Low16(v) : High16(v); }
  Pairs4 At(Index p) const {
    const __m128i a = _mm_srli_epi16(Load(src + 4 * p), 6);
    const __m128i b = _mm_srli_epi16(Load(src + 4 * p + 8), 6);
    const __m128i n = _mm_srli_epi16(Load64(src + 4 * p + 16), 6);  // pair p + 4
    const __m128i c = _mm_packs_epi32(Chroma(a), Chroma(b));
    const __m128i c4 = _mm_packs_epi32(Chroma(n), Chroma(n));
    return {_mm_packs_epi32(Luma(a), Luma(b)), c,
            _mm_or_si128(_mm_srli_si128(c, 4), _mm_slli_si128(c4, 12))};
  }
};

struct PlanarPairs16 {
  const uint16_t *y, *u, *v;
  static __m128i Chroma(const uint16_t *u, const uint16_t *v) {
    return _mm_srli_epi16(_mm_unpacklo_epi16(Load64(u), Load64(v)), 6);
  }
  Pairs4 At(Index p) const {
    return {_mm_srli_epi16(Load(y + 2 * p), 6), Chroma(u + p, v + p), Chroma(u + p + 1, v + p + 1)};
  }
};

// The whole blocks of four pairs that have a next pair inside the row (the
// last pair is always left to the portable routine); returns the pixels done.
// Output samples: 16-bit (value << 6, alpha kAlpha) or bytes (value >> 2,
// alpha 255).
template <bool kBgr, uint16_t kAlpha, class Out, class Reader>
int32_t Yuv10ToRgbBlocks(Out *dst, Reader src, int32_t count, const int16_t *coefA,
                         const int16_t *coefB) {
  const Index pairs = count / 2;
  if (pairs < 5) return 0;
  const RgbWeights w(coefA, coefB);
  const __m128i half = _mm_set1_epi16(512), top = _mm_set1_epi16(1023), zero = _mm_setzero_si128();
  const __m128i alpha = _mm_set1_epi16(static_cast<short>(kAlpha));
  Index p = 0;
  for (; p + 5 <= pairs; p += 4) {
    const Pairs4 s = src.At(p);
    const __m128i even = _mm_sub_epi16(s.c, half);
    const __m128i odd = _mm_sub_epi16(_mm_avg_epu16(s.c, s.next), half);
    __m128i rgb[3] = {Delta8(even, odd, w.r), Delta8(even, odd, w.g), Delta8(even, odd, w.b)};
    for (auto &v : rgb) {
      v = _mm_min_epi16(_mm_max_epi16(_mm_add_epi16(s.y, v), zero), top);
      v = sizeof(Out) == 2 ? _mm_slli_epi16(v, 6) : _mm_srli_epi16(v, 2);
    }
    StoreRgba8<kBgr>(dst + 8 * p, rgb[0], rgb[1], rgb[2], alpha);
  }
  return static_cast<int32_t>(2 * p);
}

// Packed 16-bit 4:2:2 to RGB: the blocks, then the rest.
template <bool kBgr, uint16_t kAlpha, bool kUyvy, class Out>
void Packed16ToRgb(void (*tail)(Out *, const uint16_t *, int32_t, const int16_t *, const int16_t *),
                   Out *dst, const uint16_t *src, int32_t count, const int16_t *coefA,
                   const int16_t *coefB) {
  const int32_t done =
      Yuv10ToRgbBlocks<kBgr, kAlpha>(dst, PackedPairs16<kUyvy>{src}, count, coefA, coefB);
  tail(dst + Index{4} * done, src + Index{2} * done, count - done, coefA, coefB);
}

template <bool kBgr, uint16_t kAlpha, class Out>
void Planar10ToRgb(void (*tail)(Out *, const uint16_t *, const uint16_t *, const uint16_t *,
                                int32_t, const int16_t *, const int16_t *),
                   Out *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV,
                   int32_t count, const int16_t *coefA, const int16_t *coefB) {
  const int32_t done =
      Yuv10ToRgbBlocks<kBgr, kAlpha>(dst, PlanarPairs16{srcY, srcU, srcV}, count, coefA, coefB);
  tail(dst + Index{4} * done, srcY + done, srcU + done / 2, srcV + done / 2, count - done, coefA,
       coefB);
}

// (w . c + 8192) >> 14 of four pixels of centred interleaved chroma.
inline __m128i Delta4(__m128i c, __m128i w) {
  return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(c, w), _mm_set1_epi32(8192)), 14);
}

// 4:1:1 chroma of the four pixels of group j (c: U, V words of four groups;
// next: of the four after them): ((4 - k) a + k b + 2) >> 2 less the centre,
// the centre folded into the rounding term (4 x 128 is a multiple of 4).
template <int kJ>
inline __m128i Chroma411(__m128i c, __m128i next) {
  const __m128i a = _mm_shuffle_epi32(c, kJ * 0x55), b = _mm_shuffle_epi32(next, kJ * 0x55);
  const __m128i sum = _mm_add_epi16(_mm_mullo_epi16(a, _mm_setr_epi16(4, 4, 3, 3, 2, 2, 1, 1)),
                                    _mm_mullo_epi16(b, _mm_setr_epi16(0, 0, 1, 1, 2, 2, 3, 3)));
  return _mm_srai_epi16(_mm_add_epi16(sum, _mm_set1_epi16(2 - 4 * 128)), 2);
}

// 4:1:1 to RGB32: blocks of four groups (16 pixels) that have a next group
// inside the row (the last group is always left to the portable routine).
template <bool kBgr>
void Yuv411ToRgb32(void (*tail)(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *,
                                int32_t, const int16_t *, const int16_t *),
                   uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                   int32_t count, const int16_t *coefA, const int16_t *coefB) {
  const Index groups = count / 4;
  Index g = 0;
  if (groups >= 5) {
    const RgbWeights w(coefA, coefB);
    const __m128i zero = _mm_setzero_si128(), alpha = _mm_set1_epi16(255);
    // U, V words of the four groups from `at`, interleaved.
    auto chroma = [&](Index at) {
      return _mm_unpacklo_epi8(_mm_unpacklo_epi8(Load32(srcU + at), Load32(srcV + at)), zero);
    };
    for (; g + 5 <= groups; g += 4) {
      const __m128i c = chroma(g), n = chroma(g + 1);
      const __m128i q[4] = {Chroma411<0>(c, n), Chroma411<1>(c, n), Chroma411<2>(c, n),
                            Chroma411<3>(c, n)};
      const __m128i y = Load(srcY + 4 * g);
      const __m128i ys[2] = {_mm_unpacklo_epi8(y, zero), _mm_unpackhi_epi8(y, zero)};
      for (int h = 0; h < 2; ++h) {
        auto colour = [&](__m128i wc) {
          return _mm_add_epi16(ys[h],
                               _mm_packs_epi32(Delta4(q[2 * h], wc), Delta4(q[2 * h + 1], wc)));
        };
        // Y + delta is within int16; the byte pack clamps it to 0..255.
        StoreRgba8<kBgr>(dst + 16 * g + 32 * h, colour(w.r), colour(w.g), colour(w.b), alpha);
      }
    }
  }
  tail(dst + 16 * g, srcY + 4 * g, srcU + g, srcV + g, count - static_cast<int32_t>(4 * g), coefA,
       coefB);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---------------------------------------------------------------- repacks

void sse2::RGB64_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<4, 4, -8, true>(&portable::RGB64_2_BGR32_Row, dst, src, count);
}

void sse2::BGR32_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<4, 4, 8, true>(&portable::BGR32_2_RGB64_Row, dst, src, count);
}

void sse2::RGB64_SwapRB_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<4, 4, 0, true>(&portable::RGB64_SwapRB_Row, dst, src, count);
}

void sse2::RGB48_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 4, 0, false>(&portable::RGB48_2_RGB64_Row, dst, src, count, ConstAlpha{0xFFFF});
}

void sse2::RGB48_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 4, 0, true>(&portable::RGB48_2_BGR64_Row, dst, src, count, ConstAlpha{0xFFFF});
}

void sse2::RGB24_2_RGB48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<3, 3, 8, false>(&portable::RGB24_2_RGB48_Row, dst, src, count);
}

void sse2::RGB24_2_BGR48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<3, 3, 8, true>(&portable::RGB24_2_BGR48_Row, dst, src, count);
}

void sse2::RGB24_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<3, 4, 8, false>(&portable::RGB24_2_RGB64_Row, dst, src, count, ConstAlpha{0xFFA0});
}

void sse2::RGB24_2_BGR64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  Repack<3, 4, 8, true>(&portable::RGB24_2_BGR64_Row, dst, src, count, ConstAlpha{0xFFA0});
}

void sse2::RGB24_Key_2_RGB64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  RepackKey<false>(&portable::RGB24_Key_2_RGB64_Row, dst, src, key, count);
}

void sse2::RGB24_Key_2_BGR64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key,
                                 int32_t count) {
  RepackKey<true>(&portable::RGB24_Key_2_BGR64_Row, dst, src, key, count);
}

void sse2::RGB48_2_RGB30_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 3, -6, false>(&portable::RGB48_2_RGB30_Row, dst, src, count);
}

void sse2::RGB48_2_BGR24_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 3, -8, true>(&portable::RGB48_2_BGR24_Row, dst, src, count);
}

void sse2::RGB48_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 4, -8, false>(&portable::RGB48_2_RGB32_Row, dst, src, count, ConstAlpha{255});
}

void sse2::RGB48_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 4, -8, true>(&portable::RGB48_2_BGR32_Row, dst, src, count, ConstAlpha{255});
}

void sse2::RGB48_2_RGB64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 4, 0, false>(&portable::RGB48_2_RGB64_Opaque_Row, dst, src, count, ConstAlpha{0xFFA0});
}

void sse2::RGB48_2_BGR64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  Repack<3, 4, 0, true>(&portable::RGB48_2_BGR64_Opaque_Row, dst, src, count, ConstAlpha{0xFFA0});
}

// ---------------------------------------------------------------- RGB to YUV

void sse2::RGB48_2_YUYV16_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<3, false>(&portable::RGB48_2_YUYV16_Row, dst, src, count, coefY, coefUV);
}

void sse2::RGB48_2_UYVY16_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<3, true>(&portable::RGB48_2_UYVY16_Row, dst, src, count, coefY, coefUV);
}

void sse2::RGB24_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<3, false>(&portable::RGB24_2_YUYV16_Row, dst, src, count, coefY, coefUV);
}

void sse2::RGB24_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<3, true>(&portable::RGB24_2_UYVY16_Row, dst, src, count, coefY, coefUV);
}

void sse2::RGB32_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<4, false>(&portable::RGB32_2_YUYV16_Row, dst, src, count, coefY, coefUV);
}

void sse2::RGB32_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count,
                              const int16_t *coefY, const int16_t *coefUV) {
  RgbToPacked16<4, true>(&portable::RGB32_2_UYVY16_Row, dst, src, count, coefY, coefUV);
}

void sse2::RGB48_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                 const uint16_t *src, int32_t count, const int16_t *coefY,
                                 const int16_t *coefUV) {
  const int32_t done = RgbTo422Blocks<3>(src, count, coefY, coefUV, [=](Index i, Yuv8 o) {
    const __m128i c = ClampUp<10>(o.c);
    Store(dstY + i, ClampUp<10>(o.y));
    Store64(dstU + i / 2, c);
    Store64(dstV + i / 2, _mm_srli_si128(c, 8));
  });
  portable::RGB48_2_YUV422_16_Row(dstY + done, dstU + done / 2, dstV + done / 2,
                                  src + 3 * Index{done}, count - done, coefY, coefUV);
}

// ---------------------------------------------------------------- YUV to RGB
// 16-bit outputs carry the constant alpha 0xFFA0 (packed sources) or 0xFC00
// (planar sources); 8-bit outputs 255.

void sse2::YUYV16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 0xFFA0, false>(&portable::YUYV16_2_RGB64_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 0xFFA0, true>(&portable::UYVY16_2_RGB64_Row, dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 0xFFA0, false>(&portable::YUYV16_2_BGR64_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 0xFFA0, true>(&portable::UYVY16_2_BGR64_Row, dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 255, false>(&portable::YUYV16_2_RGB32_Row, dst, src, count, coefA, coefB);
}

void sse2::YUYV16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 255, false>(&portable::YUYV16_2_BGR32_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<false, 255, true>(&portable::UYVY16_2_RGB32_Row, dst, src, count, coefA, coefB);
}

void sse2::UYVY16_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count,
                              const int16_t *coefA, const int16_t *coefB) {
  Packed16ToRgb<true, 255, true>(&portable::UYVY16_2_BGR32_Row, dst, src, count, coefA, coefB);
}

void sse2::YUV422_10Bit_2_RGB64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<false, 0xFC00>(&portable::YUV422_10Bit_2_RGB64_Row, dst, srcY, srcU, srcV, count,
                               coefA, coefB);
}

void sse2::YUV422_10Bit_2_BGR64_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<true, 0xFC00>(&portable::YUV422_10Bit_2_BGR64_Row, dst, srcY, srcU, srcV, count,
                              coefA, coefB);
}

void sse2::YUV422_10Bit_2_RGB32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<false, 255>(&portable::YUV422_10Bit_2_RGB32_Row, dst, srcY, srcU, srcV, count,
                            coefA, coefB);
}

void sse2::YUV422_10Bit_2_BGR32_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                    const uint16_t *srcV, int32_t count, const int16_t *coefA,
                                    const int16_t *coefB) {
  Planar10ToRgb<true, 255>(&portable::YUV422_10Bit_2_BGR32_Row, dst, srcY, srcU, srcV, count, coefA,
                           coefB);
}

void sse2::YUV411_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv411ToRgb32<false>(&portable::YUV411_2_RGB32_Row, dst, srcY, srcU, srcV, count, coefA, coefB);
}

void sse2::YUV411_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, const int16_t *coefA,
                              const int16_t *coefB) {
  Yuv411ToRgb32<true>(&portable::YUV411_2_BGR32_Row, dst, srcY, srcU, srcV, count, coefA, coefB);
}

}  // namespace tqcs
