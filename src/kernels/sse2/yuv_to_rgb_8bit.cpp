// 8-bit YUV to RGB matrix kernels, SSE2 tier: packed or planar 4:2:2 and
// YUVA 4:4:4 to 3- or 4-byte RGB, R-first or B-first.
//
// One body for every member: a reader turns 16 source pixels into luma (16-bit
// lanes) and one chroma pair per pixel in a 32-bit lane, the chroma of the
// layout's first byte (V for R-first, U for B-first) in the low half. The
// pairs are centred and scaled for x86/exact_products.hpp, so one 16-bit
// multiply gives the first and the third byte's delta of a pixel side by side,
// exactly as the portable code shifts it, and one madd the green delta (the
// only sum of two products). Luma is added, the unsigned pack clamps, and the
// layout interleaves (first, third) pairs with (green, alpha) pairs.
//
// Ranges: every scaled chroma input is at most 1024 in magnitude, so a
// product with an int16 weight is below 2^25, a sum of two below 2^26, and
// every truncated delta within +-1024; the 16-bit luma adds (2y + 1 at most
// 511) and the signed 32-to-16 pack are exact, and the unsigned pack clamps
// to 0..255 as the portable code does.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/exact_products.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using Index = std::ptrdiff_t;
using x86::Load;
using x86::Load32;
using x86::Load64;
using x86::Store;
using x86::Store64;
using x86::StoreHigh64;

// Sixteen source pixels: luma of pixels 0-7 and 8-15, the scaled chroma pairs
// of pixels 4i to 4i + 3 in c[i], and the source's own alpha bytes where it
// has them.
struct Block {
  __m128i y[2];
  __m128i c[4];
  __m128i a;
};

using x86::Centred256;
using x86::ScaleFrom256;

// (U, V) pairs of 16-bit lanes in the order a layout wants: (V, U) when
// kVFirst.
template <bool kVFirst>
inline __m128i InOrder(__m128i uv) {
  if constexpr (kVFirst) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(uv, _MM_SHUFFLE(2, 3, 0, 1)),
                               _MM_SHUFFLE(2, 3, 0, 1));
  } else {
    return uv;
  }
}

// ---- 4:2:2 ------------------------------------------------------------------
// The even pixel takes its pair's centred chroma with a shift of 14, the odd
// pixel the sum of its pair's and the next pair's with a shift of 15, both
// truncating.
// The readers hold a pair's centred chroma times 256 (Centred256).

// Pairs p to p + 3 as centred chroma lanes c (times 256) and those of pairs
// p + 1 to p + 4 as next: the scaled inputs of pixels 2p to 2p + 7.
inline void PairsToPixels(__m128i c, __m128i next, __m128i *out) {
  const __m128i even = ScaleFrom256<14>(c),
                odd = _mm_add_epi16(ScaleFrom256<15>(c), ScaleFrom256<15>(next));
  out[0] = _mm_unpacklo_epi32(even, odd);
  out[1] = _mm_unpackhi_epi32(even, odd);
}

// Each block reads the chroma of the pair after it, so the last pair (2
// pixels) is left to the portable routine.
constexpr int kKeep422 = 2;

// Luma in 16-bit lanes; chroma in the high byte of 16-bit lanes.
struct YUYV {
  static __m128i Luma(__m128i x) { return _mm_and_si128(x, _mm_set1_epi16(0xFF)); }
  static __m128i Chroma(__m128i x) { return _mm_and_si128(x, _mm_set1_epi16(-0x100)); }
};
struct UYVY {
  static __m128i Luma(__m128i x) { return _mm_srli_epi16(x, 8); }
  static __m128i Chroma(__m128i x) { return _mm_slli_epi16(x, 8); }
};

template <class Order, bool kVFirst>
struct PackedReader {
  static constexpr int kKeep = kKeep422;
  static constexpr bool kRound = false;
  const uint8_t *src;
  static __m128i Pairs(__m128i x) { return Centred256(InOrder<kVFirst>(Order::Chroma(x))); }
  Block Read() const {
    const uint8_t *s = src;
    const __m128i x0 = Load(s), x1 = Load(s + 16);
    const __m128i c0 = Pairs(x0), c1 = Pairs(x1), c8 = Pairs(Load32(s + 32));
    Block b{};
    b.y[0] = Order::Luma(x0);
    b.y[1] = Order::Luma(x1);
    PairsToPixels(c0, _mm_or_si128(_mm_srli_si128(c0, 4), _mm_slli_si128(c1, 12)), b.c);
    PairsToPixels(c1, _mm_or_si128(_mm_srli_si128(c1, 4), _mm_slli_si128(c8, 12)), b.c + 2);
    return b;
  }
};

template <bool kVFirst>
struct PlanarReader {
  static constexpr int kKeep = kKeep422;
  static constexpr bool kRound = false;
  const uint8_t *y, *u, *v;
  // Eight pairs from pair p as centred chroma lanes (times 256), pairs p to
  // p + 3 in out[0] and p + 4 to p + 7 in out[1]: the top bit of each byte is
  // flipped, and the byte goes to the high half of its lane.
  void Chroma(Index p, __m128i *out) const {
    const uint8_t *first = kVFirst ? v : u, *second = kVFirst ? u : v;
    const __m128i pairs = _mm_xor_si128(_mm_unpacklo_epi8(Load64(first + p), Load64(second + p)),
                                        _mm_set1_epi8(-0x80));
    const __m128i zero = _mm_setzero_si128();
    out[0] = _mm_unpacklo_epi8(zero, pairs);
    out[1] = _mm_unpackhi_epi8(zero, pairs);
  }
  Block Read() const {
    const __m128i luma = Load(y), zero = _mm_setzero_si128();
    __m128i c[2], next[2];
    Chroma(0, c);
    Chroma(1, next);
    Block b{};
    b.y[0] = _mm_unpacklo_epi8(luma, zero);
    b.y[1] = _mm_unpackhi_epi8(luma, zero);
    PairsToPixels(c[0], next[0], b.c);
    PairsToPixels(c[1], next[1], b.c + 2);
    return b;
  }
};

// ---- 4:4:4 ------------------------------------------------------------------
// Each pixel's own chroma with a shift of 14, rounding: scaled for a shift of
// 13, truncated, then halved with the luma (x86::Halve).

template <bool kVFirst>
struct YuvaReader {
  static constexpr int kKeep = 0;
  static constexpr bool kRound = true;
  const uint8_t *src;
  Block Read() const {
    const __m128i low = _mm_set1_epi32(0xFF), high = _mm_set1_epi16(-0x100);
    // Y U V A as 16-bit lanes (Y | U << 8, V | A << 8), or swapped within
    // each pixel when V comes first: multiplying the lane that holds the
    // wanted sample in its low byte by 256 moves it to the high byte, where
    // the other lane has its own.
    const __m128i up = kVFirst ? _mm_set1_epi32(0x00010100) : _mm_set1_epi32(0x01000001);
    __m128i x[4], luma[4], alpha[4];
    Block b{};
    for (int i = 0; i < 4; ++i) x[i] = Load(src + 16 * i);
    for (int i = 0; i < 4; ++i) {
      const __m128i pair = _mm_and_si128(_mm_mullo_epi16(InOrder<kVFirst>(x[i]), up), high);
      b.c[i] = ScaleFrom256<13>(Centred256(pair));
      luma[i] = _mm_and_si128(x[i], low);
      alpha[i] = _mm_srli_epi32(x[i], 24);
    }
    b.y[0] = _mm_packs_epi32(luma[0], luma[1]);
    b.y[1] = _mm_packs_epi32(luma[2], luma[3]);
    b.a =
        _mm_packus_epi16(_mm_packs_epi32(alpha[0], alpha[1]), _mm_packs_epi32(alpha[2], alpha[3]));
    return b;
  }
};

// ---- Alpha ----------------------------------------------------------------------

struct ConstAlpha {
  __m128i value;
  explicit ConstAlpha(uint8_t a) : value(_mm_set1_epi8(static_cast<char>(a))) {}
  __m128i operator()(const Block &) const { return value; }
};

// One byte per pixel from a key plane.
struct KeyAlpha {
  const uint8_t *key;
  __m128i operator()(const Block &) const { return Load(key); }
};

struct SourceAlpha {
  __m128i operator()(const Block &b) const { return b.a; }
};

// ---- Arithmetic -------------------------------------------------------------------

// Element 0 of each row as weights on the chroma pairs: the first and third
// byte's (R from V and B from U, in the pair's order) and green's.
struct Weights {
  __m128i outer, g;
};
inline __m128i PairOf(int16_t lo, int16_t hi) {
  return _mm_set1_epi32(static_cast<int32_t>(
      static_cast<uint16_t>(lo) | static_cast<uint32_t>(static_cast<uint16_t>(hi)) << 16));
}
template <bool kVFirst>
inline Weights LoadWeights(const int16_t *rv, const int16_t *gu, const int16_t *gv,
                           const int16_t *bu) {
  if constexpr (kVFirst) return {PairOf(rv[0], bu[0]), PairOf(gv[0], gu[0])};
  return {PairOf(bu[0], rv[0]), PairOf(gu[0], gv[0])};
}

// Sixteen pixels as two registers of (first, third) byte pairs, pixels 0-7
// and 8-15, and one register of green bytes: luma plus the deltas, clamped.
// The rounding readers scale for a shift of 13; their luma enters as 2y + 1
// and every sum is halved (x86::Halve).
struct Channels {
  __m128i outer[2], g;
};
template <bool kRound>
inline __m128i Finish(__m128i sum) {
  if constexpr (kRound) return x86::Halve(sum);
  return sum;
}
template <bool kRound>
inline Channels ToChannels(const Block &b, const Weights &w) {
  Channels out;
  __m128i g[2];
  for (int k = 0; k < 2; ++k) {
    const __m128i *c = b.c + 2 * k;
    const __m128i y = kRound ? x86::TwicePlusOne(b.y[k]) : b.y[k];
    const __m128i lo = _mm_add_epi16(x86::ProductHigh(c[0], w.outer), _mm_unpacklo_epi16(y, y));
    const __m128i hi = _mm_add_epi16(x86::ProductHigh(c[1], w.outer), _mm_unpackhi_epi16(y, y));
    out.outer[k] = _mm_packus_epi16(Finish<kRound>(lo), Finish<kRound>(hi));
    g[k] = Finish<kRound>(_mm_add_epi16(
        _mm_packs_epi32(x86::PairSumHigh(c[0], w.g), x86::PairSumHigh(c[1], w.g)), y));
  }
  out.g = _mm_packus_epi16(g[0], g[1]);
  return out;
}

// ---- Layouts ----------------------------------------------------------------------
// Store16(d, channels, alpha) writes 16 pixels: each (first, third) pair
// interleaved with a (green, alpha) pair.

template <bool kBlueFirst>
struct Rgb32 {
  static constexpr int kBytes = 4;
  static constexpr bool kVFirst = !kBlueFirst;
  static void Store16(uint8_t *d, const Channels &c, __m128i a) {
    const __m128i ga[2] = {_mm_unpacklo_epi8(c.g, a), _mm_unpackhi_epi8(c.g, a)};
    for (int k = 0; k < 2; ++k) {
      Store(d + 32 * k, _mm_unpacklo_epi8(c.outer[k], ga[k]));
      Store(d + 32 * k + 16, _mm_unpackhi_epi8(c.outer[k], ga[k]));
    }
  }
};

// Four pixels of 4 bytes with a zero fourth byte as two pairs of 3-byte
// pixels, at bytes 0-5 and 8-13 (the rest zero): in each 64-bit half a + b
// 2^32 becomes a + b 2^24 by subtracting b (2^32 - 2^24), one unsigned 32 by
// 32 multiply of b (below 2^24), exact in 64 bits.
inline __m128i PairUp(__m128i p) {
  return _mm_sub_epi64(p, _mm_mul_epu32(_mm_srli_epi64(p, 32), _mm_set1_epi64x(0xFF000000)));
}

// Each pair is stored as 8 bytes whose last two the next store overwrites;
// the last pair of the block is stored with the two bytes before it, so
// nothing past the block's 48 bytes is written.
template <bool kBlueFirst>
struct Rgb24 {
  static constexpr int kBytes = 3;
  static constexpr bool kVFirst = !kBlueFirst;
  static void Store16(uint8_t *d, const Channels &c, __m128i) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i g0[2] = {_mm_unpacklo_epi8(c.g, zero), _mm_unpackhi_epi8(c.g, zero)};
    __m128i q[4];
    for (int k = 0; k < 2; ++k) {
      q[2 * k] = PairUp(_mm_unpacklo_epi8(c.outer[k], g0[k]));
      q[2 * k + 1] = PairUp(_mm_unpackhi_epi8(c.outer[k], g0[k]));
    }
    for (int k = 0; k < 4; ++k) {
      Store64(d + 12 * k, q[k]);
      if (k < 3) StoreHigh64(d + 12 * k + 6, q[k]);
    }
    Store64(d + 40, _mm_or_si128(_mm_srli_epi64(q[3], 32),
                                 _mm_slli_epi64(_mm_unpackhi_epi64(q[3], q[3]), 16)));
  }
};

// One block of 16 pixels, read whole before it is written.
template <class Layout, class Reader, class Alpha>
inline void ToRgb(uint8_t *dst, const Reader &src, const Alpha &alpha, const Weights &w) {
  const Block b = src.Read();
  Layout::Store16(dst, ToChannels<Reader::kRound>(b, w), alpha(b));
}

using RGB24 = Rgb24<false>;
using BGR24 = Rgb24<true>;
using RGB32 = Rgb32<false>;
using BGR32 = Rgb32<true>;

// The row shapes, in blocks of 16 pixels. Three-byte layouts take no alpha.
template <K kSlot, class Layout, class Order>
void PackedRow(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_T4) {
  using R = PackedReader<Order, Layout::kVFirst>;
  const Weights w = LoadWeights<Layout::kVFirst>(rv, gu, gv, bu);
  const ConstAlpha a(alpha);
  const auto body = [&](uint8_t *d, const uint8_t *s) { ToRgb<Layout>(d, R{s}, a, w); };
  if constexpr (Layout::kBytes == 4) {
    x86::InBlocks<kSlot, 16, R::kKeep>(body, dst, src, count, alpha, rv, gu, gv, bu);
  } else {
    x86::InBlocks<kSlot, 16, R::kKeep>(body, dst, src, count, rv, gu, gv, bu);
  }
}

// The key forms: alpha from the key plane, which the blocks read no further
// than their own pixels.
template <K kSlot, class Layout, class Order>
void PackedKeyRow(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count, TCS_T4) {
  using R = PackedReader<Order, Layout::kVFirst>;
  const Weights w = LoadWeights<Layout::kVFirst>(rv, gu, gv, bu);
  x86::InBlocks<kSlot, 16, R::kKeep>(
      [&](uint8_t *d, const uint8_t *s, const uint8_t *k) {
        ToRgb<Layout>(d, R{s}, KeyAlpha{k}, w);
      },
      dst, src, key, count, rv, gu, gv, bu);
}

template <K kSlot, class Layout>
void PlanarRow(uint8_t *dst, const uint8_t *y, const uint8_t *u, const uint8_t *v, int32_t count,
               uint8_t alpha, TCS_T4) {
  using R = PlanarReader<Layout::kVFirst>;
  const Weights w = LoadWeights<Layout::kVFirst>(rv, gu, gv, bu);
  const ConstAlpha a(alpha);
  const auto body = [&](uint8_t *d, const uint8_t *sy, const uint8_t *su, const uint8_t *sv) {
    ToRgb<Layout>(d, R{sy, su, sv}, a, w);
  };
  if constexpr (Layout::kBytes == 4) {
    x86::InBlocks<kSlot, 16, R::kKeep>(body, dst, y, u, v, count, alpha, rv, gu, gv, bu);
  } else {
    x86::InBlocks<kSlot, 16, R::kKeep>(body, dst, y, u, v, count, rv, gu, gv, bu);
  }
}

template <K kSlot, class Layout>
void YuvaRow(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  using R = YuvaReader<Layout::kVFirst>;
  const Weights w = LoadWeights<Layout::kVFirst>(rv, gu, gv, bu);
  x86::InBlocks<kSlot, 16, R::kKeep>(
      [&](uint8_t *d, const uint8_t *s) { ToRgb<Layout>(d, R{s}, SourceAlpha{}, w); }, dst, src,
      count, rv, gu, gv, bu);
}

}  // namespace
}  // namespace tqcs::sse2

// The slots. Qualified definitions: each must match its declaration exactly.
namespace tqcs {

// Packed 4:2:2 -> RGB.
void sse2::YUYV_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::YUYV_2_RGB32_Row, RGB32, YUYV>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::YUYV_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::YUYV_2_BGR32_Row, BGR32, YUYV>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::UYVY_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::UYVY_2_RGB32_Row, RGB32, UYVY>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::UYVY_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::UYVY_2_BGR32_Row, BGR32, UYVY>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::YUYV_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::YUYV_2_RGB24_Row, RGB24, YUYV>(dst, src, count, 0, rv, gu, gv, bu);
}
void sse2::YUYV_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::YUYV_2_BGR24_Row, BGR24, YUYV>(dst, src, count, 0, rv, gu, gv, bu);
}
void sse2::UYVY_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::UYVY_2_RGB24_Row, RGB24, UYVY>(dst, src, count, 0, rv, gu, gv, bu);
}
void sse2::UYVY_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::UYVY_2_BGR24_Row, BGR24, UYVY>(dst, src, count, 0, rv, gu, gv, bu);
}

// Packed 4:2:2 plus key plane -> RGB32 / BGR32, alpha from the key.
void sse2::YUYV_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::YUYV_Key_2_RGB32_Row, RGB32, YUYV>(dst, src, key, count, rv, gu, gv, bu);
}
void sse2::YUYV_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::YUYV_Key_2_BGR32_Row, BGR32, YUYV>(dst, src, key, count, rv, gu, gv, bu);
}
void sse2::UYVY_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::UYVY_Key_2_RGB32_Row, RGB32, UYVY>(dst, src, key, count, rv, gu, gv, bu);
}
void sse2::UYVY_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::UYVY_Key_2_BGR32_Row, BGR32, UYVY>(dst, src, key, count, rv, gu, gv, bu);
}

// Planar 4:2:2 -> RGB.
void sse2::YUV422_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  PlanarRow<K::YUV422_2_RGB32_Row, RGB32>(dst, srcY, srcU, srcV, count, alpha, rv, gu, gv, bu);
}
void sse2::YUV422_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  PlanarRow<K::YUV422_2_BGR32_Row, BGR32>(dst, srcY, srcU, srcV, count, alpha, rv, gu, gv, bu);
}
void sse2::YUV422_2_RGB24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, TCS_T4) {
  PlanarRow<K::YUV422_2_RGB24_Row, RGB24>(dst, srcY, srcU, srcV, count, 0, rv, gu, gv, bu);
}
void sse2::YUV422_2_BGR24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, TCS_T4) {
  PlanarRow<K::YUV422_2_BGR24_Row, BGR24>(dst, srcY, srcU, srcV, count, 0, rv, gu, gv, bu);
}

// YUVA 4:4:4 -> RGB, rounding; 4-byte output copies the source's alpha.
void sse2::YUVA_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_RGB32_Row, RGB32>(dst, src, count, rv, gu, gv, bu);
}
void sse2::YUVA_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_BGR32_Row, BGR32>(dst, src, count, rv, gu, gv, bu);
}
void sse2::YUVA_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_RGB24_Row, RGB24>(dst, src, count, rv, gu, gv, bu);
}
void sse2::YUVA_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_BGR24_Row, BGR24>(dst, src, count, rv, gu, gv, bu);
}

}  // namespace tqcs
